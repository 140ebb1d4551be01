#include "shell/state_table.h"

#include "config/settings.h"
#include "grabber/board_state.h"
#include "grabber/frame_account.h"
#include "grabber/host_frames.h"
#include "head/camera_head.h"
#include "head/comm_link.h"
#include "head/video_setup.h"
#include "imagefile/header.h"
#include "script/script.h"
#include "script/state_registry.h"
#include "simcam/bench_window.h"
#include "state/buffer_state.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/docking.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/image_cursor.h"
#include "viewing/save_dialog.h"
#include "viewing/saving.h"

#include <optional>
#include <span>
#include <string>
#include <utility>

namespace kelvo {

namespace {

StateValue Number(double value)
{
    return value;
}

std::span<const std::int16_t> FrameOnView()
{
    if (ViewingFile) return ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
    return LiveFrame;
}

std::optional<int> CountAt(int x, int y)
{
    const int width = ViewingFile ? ImageHeader.ImageWidth : ActiveConfig.Hroi;
    const int height = ViewingFile ? ImageHeader.ImageHeight : ActiveConfig.Vroi;
    if (x < 0 || y < 0 || x >= width || y >= height) return std::nullopt;
    const std::span<const std::int16_t> frame = FrameOnView();
    const auto index = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    if (index >= frame.size()) return std::nullopt;
    return frame[index];
}

std::optional<int> RawSampleAt(std::int64_t i)
{
    const std::span<const std::int16_t> frame = ViewingFile ? FrameOnView() : std::span<const std::int16_t>(RawFrame);
    if (i < 0 || i >= std::ssize(frame)) return std::nullopt;
    return frame[static_cast<std::size_t>(i)];
}

void RegisterFrames()
{
    RegisterVariable("CameraOn", CameraOn);
    RegisterVariable("LiveVideo", LiveVideo);
    RegisterVariable("ViewingFile", ViewingFile);
    RegisterVariable("DisplayEnabled", DisplayEnabled);
    RegisterVariable("GrabberPresent", GrabberPresent);
    RegisterVariable("SteppingFrames", SteppingFrames);
    RegisterVariable("ViewingSequence", ViewingSequence);
    RegisterVariable("LoadName", LoadName);
    RegisterVariable("SequencePath", SequencePath);
    RegisterVariable("CurrentFrame", CurrentFrame);
    RegisterVariable("SequenceFrameIndex", SequenceFrameIndex);
    RegisterVariable("LastFrame", LastFrame);
    RegisterVariable("SequenceLastFrame", SequenceLastFrame);
    RegisterVariable("CursorX", CursorX);
    RegisterVariable("CursorY", CursorY);
    RegisterVariable("CursorValue", CursorValue);
    RegisterVariable("ImageCursorOn", ImageCursorOn);
    RegisterVariable("TrackballMode", TrackballMode);
    RegisterState("ImageBuffer", [] { return StateValue{static_cast<std::int64_t>(ImageBuffer.size())}; });
}

void RegisterBoardState()
{
    RegisterVariable("DataOffset", DataOffset);
    RegisterVariable("FramePitch", FramePitch);
    RegisterVariable("FrameRows", FrameRows);
    RegisterVariable("PeriodicUpdates", PeriodicUpdates);
    RegisterVariable("HostFramesAllocated", HostFramesAllocated);
    RegisterVariable("HostFrameNext", HostFrameNext);
    RegisterVariable("HostFrameBytes", HostFrameBytes);
    RegisterVariable("AveragingCapacity", AveragingCapacity);
    RegisterVariable("numBufFrames", numBufFrames);
}

void RegisterFrameAccount()
{
    RegisterState("FramesDelivered", [] { return StateValue{CurrentFrameAccount().delivered}; });
    RegisterState("FramesShown", [] { return StateValue{CurrentFrameAccount().shown}; });
    RegisterState("FramesLost", [] { return StateValue{CurrentFrameAccount().lost}; });
    RegisterState("FramesMissed", [] { return StateValue{CurrentFrameAccount().missed}; });
}

void RegisterDisplay()
{
    RegisterVariable("Contrast", Contrast);
    RegisterVariable("Brightness", Brightness);
    RegisterVariable("ResetContrast", ResetContrast);
    RegisterVariable("ResetBrightness", ResetBrightness);
    RegisterVariable("ImageColor", ImageColor);
    RegisterVariable("GrayScale", GrayScale);
    RegisterVariable("GrayColorBar", GrayColorBar);
    RegisterVariable("TempScale", TempScale);
    RegisterVariable("TempHisto", TempHisto);
    RegisterVariable("MirrorHoriz", MirrorHoriz);
    RegisterVariable("MirrorVert", MirrorVert);
    RegisterVariable("RotateCCW", RotateCCW);
    RegisterVariable("SubstBadPixels", SubstBadPixels);
    RegisterVariable("DisplayLow", DisplayLow);
    RegisterVariable("DisplayHigh", DisplayHigh);
    RegisterVariable("DisplayUnit", DisplayUnit);
    RegisterVariable("Xzoom", Xzoom);
    RegisterVariable("Yzoom", Yzoom);
    RegisterVariable("Xpan", Xpan);
    RegisterVariable("Ypan", Ypan);
    RegisterVariable("Xoffset", Xoffset);
    RegisterVariable("Yoffset", Yoffset);
    RegisterVariable("ViewScaleGain", ViewScaleGain);
    RegisterVariable("ViewScaleOffset", ViewScaleOffset);
    RegisterVariable("DisplayLut", DisplayLut);
    RegisterVariable("ColorMap", ColorMap);
}

void RegisterShell()
{
    RegisterVariable("StatusText", StatusText);
    RegisterVariable("StatusAlign", StatusAlign);
    RegisterVariable("ClientWidth", ClientWidth);
    RegisterVariable("ClientHeight", ClientHeight);
    RegisterVariable("TextHeight", TextHeight);
    RegisterVariable("ViewWidth", ViewWidth);
    RegisterVariable("ViewHeight", ViewHeight);
    RegisterState("PanelHeight", [] { return StateValue{std::int64_t{PanelHeight()}}; });
    RegisterVariable("HelpMode", HelpMode);
    RegisterVariable("DefaultDir", DefaultDir);
    RegisterVariable("IniFilePath", IniFilePath);
    RegisterVariable("CameraFilePath", CameraFilePath);
    RegisterVariable("BuffBrdFilePath", BuffBrdFilePath);
    RegisterVariable("SeqFilePath", SeqFilePath);
    RegisterVariable("HelpFilePath", HelpFilePath);
    RegisterVariable("FilePathBuf", FilePathBuf);
    RegisterVariable("ViewFilePath", ViewFilePath);
    RegisterVariable("CnfFilePath", CnfFilePath);
    RegisterVariable("LastFileDirectory", LastFileDirectory);
}

void RegisterSaving()
{
    RegisterVariable("FramesToAverageImage", FramesToAverageImage);
    RegisterVariable("FramesToAverageSeq", FramesToAverageSeq);
    RegisterVariable("SeqNumber", SeqNumber);
    RegisterVariable("SeqNumberStart", SeqNumberStart);
    RegisterVariable("SaveDialogMode", SaveDialogMode);
    RegisterVariable("SaveAverage", SaveAverage);
    RegisterVariable("SaveStdDev", SaveStdDev);
}

void RegisterCamera()
{
    RegisterVariable("CalType", CalType);
    RegisterVariable("IntensityCold", IntensityCold);
    RegisterVariable("IntensityHot", IntensityHot);
    RegisterVariable("TemperatureCold", TemperatureCold);
    RegisterVariable("TemperatureHot", TemperatureHot);
    RegisterVariable("VoltsLow", VoltsLow);
    RegisterVariable("VoltsHigh", VoltsHigh);
    RegisterVariable("FrameRate", FrameRate);
    RegisterVariable("IndexFrameRate", IndexFrameRate);
    RegisterVariable("IndexIntegrationTime", IndexIntegrationTime);
    RegisterVariable("IntegrationTime", IntegrationTime);
    RegisterVariable("VideoGain", VideoGain);
    RegisterVariable("VideoOffset", VideoOffset);
    RegisterVariable("ByteSwap", ByteSwap);
    RegisterVariable("IrigEnable", IrigEnable);
    RegisterVariable("NumGrayLevels", NumGrayLevels);
    RegisterVariable("ActiveCamera", ActiveCamera);
    RegisterVariable("nCommPort", nCommPort);
    RegisterVariable("CommPortOpen", CommPortOpen);
    RegisterVariable("Description", ActiveConfig.Description);
    RegisterVariable("Hroi", ActiveConfig.Hroi);
    RegisterVariable("Vroi", ActiveConfig.Vroi);
    RegisterVariable("Hactive", ActiveConfig.Hactive);
    RegisterVariable("Vactive", ActiveConfig.Vactive);
    RegisterVariable("NumOutputs", ActiveConfig.NumOutputs);
    RegisterVariable("NumChannels", ActiveConfig.NumChannels);
    RegisterVariable("DualCamera", ActiveConfig.DualCamera);
    RegisterVariable("BufferCapture", ActiveConfig.BufferCapture);
    RegisterVariable("UnityGain", ActiveConfig.UnityGain);
    RegisterVariable("UnityOffset", ActiveConfig.UnityOffset);
}

// A field of a packed record has no address to keep: each is read when it is asked for.
void RegisterCalibrationSet()
{
    RegisterVariable("CalSettings.CalFile", CalSettings.CalFile);
    RegisterVariable("CalSettings.GainFile", CalSettings.GainFile);
    RegisterVariable("CalSettings.OffsetFile", CalSettings.OffsetFile);
    RegisterVariable("CalSettings.DecomFile", CalSettings.DecomFile);
    RegisterVariable("CalSettings.BadDetFile", CalSettings.BadDetFile);
    RegisterVariable("CalSettings.NumFrames", CalSettings.NumFrames);
    RegisterVariable("CalSettings.ChosenType", CalSettings.ChosenType);
    RegisterVariable("ReplaceNoisy", ReplaceNoisy);
    RegisterVariable("BadDetCount", BadDetCount);
}

void RegisterHeader()
{
    RegisterState("ImageHeader.ByteSwap", [] { return Number(ImageHeader.ByteSwap); });
    RegisterState("ImageHeader.ImageWidth", [] { return Number(ImageHeader.ImageWidth); });
    RegisterState("ImageHeader.ImageHeight", [] { return Number(ImageHeader.ImageHeight); });
    RegisterState("ImageHeader.SampleBytes", [] { return Number(ImageHeader.SampleBytes); });
    RegisterState("ImageHeader.HeaderVersion", [] { return Number(ImageHeader.HeaderVersion); });
    RegisterState("ImageHeader.FrameCount", [] { return Number(ImageHeader.FrameCount); });
    RegisterState("ImageHeader.FrameRate", [] { return Number(ImageHeader.FrameRate); });
    RegisterState("ImageHeader.IntegrationMsec", [] { return Number(ImageHeader.IntegrationMsec); });
    RegisterState("ImageHeader.IntensityCold", [] { return Number(ImageHeader.IntensityCold); });
    RegisterState("ImageHeader.IntensityHot", [] { return Number(ImageHeader.IntensityHot); });
    RegisterState("ImageHeader.TemperatureCold", [] { return Number(ImageHeader.TemperatureCold); });
    RegisterState("ImageHeader.TemperatureHot", [] { return Number(ImageHeader.TemperatureHot); });
    RegisterState("ImageHeader.DisplayLow", [] { return Number(ImageHeader.DisplayLow); });
    RegisterState("ImageHeader.DisplayHigh", [] { return Number(ImageHeader.DisplayHigh); });
    RegisterState("ImageHeader.DataType", [] { return Number(ImageHeader.DataType); });
    RegisterState("ImageHeader.FramesAveraged", [] { return Number(ImageHeader.FramesAveraged); });
    RegisterState("ImageHeader.ImageHeaderDataOffset", [] { return Number(ImageHeader.ImageHeaderDataOffset); });
}

}  // namespace

void RegisterProgramState()
{
    RegisterFrames();
    RegisterBoardState();
    RegisterFrameAccount();
    RegisterDisplay();
    RegisterShell();
    RegisterSaving();
    RegisterCamera();
    RegisterCalibrationSet();
    RegisterHeader();

    ScriptHooks hooks;
    hooks.pixel = CountAt;
    hooks.raw = RawSampleAt;
    hooks.source = PutBenchSource;
    hooks.truth = BenchTruth;
    hooks.registers = BenchHeadRegisters;
    SetScriptHooks(std::move(hooks));
}

}  // namespace kelvo
