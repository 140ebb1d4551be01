#include "shell/commands.h"

#include "badpixel/geometry_dialog.h"
#include "calib/calibration_set.h"
#include "calib/calibration_selection.h"
#include "calib/calibration_dialog.h"
#include "calib/two_point_run.h"
#include "calib/one_point_run.h"
#include "calib/orientation.h"
#include "camera/configuration_dialog.h"
#include "camera/turn_on.h"
#include "display/color_map.h"
#include "display/display_dialog.h"
#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "head/video_setup.h"
#include "pixel/bad_pixels.h"
#include "platform/application.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/help.h"
#include "platform/menu.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "resources/menu.h"
#include "shell/about.h"
#include "shell/bitmap_command.h"
#include "shell/color_scale.h"
#include "shell/cursor_command.h"
#include "shell/frame_account_window.h"
#include "shell/saturation_overlay.h"
#include "shell/sequence_naming.h"
#include "shell/shutdown.h"
#include "shell/unbuilt.h"
#include "simcam/bench_window.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/recent_files.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/image_cursor.h"
#include "video/video.h"
#include "video/zoom_pan.h"
#include "viewing/playback.h"
#include "viewing/save_dialog.h"
#include "viewing/saving.h"
#include "viewing/viewing.h"

#include <algorithm>
#include <iterator>

namespace kelvo {

namespace {

// How a command ends: most reset the status line; some end early and leave it.
enum class Ending { kResetStatus, kLeaveStatus };
using Handler = Ending (*)();

Ending NotAvailable()
{
    TellNotAvailable();
    return Ending::kResetStatus;
}

Ending AfterLoad(int shown)
{
    if (!shown) return Ending::kResetStatus;
    AddRecentFile(ViewFilePath);
    return Ending::kResetStatus;
}

Ending LoadImageFile()
{
    StopPlaying();
    FileDialogTemplate = kImageTemplate;
    SteppingFrames = 0;
    std::string path = "*.img";
    if (!SelectFile(hWndMain, path, kSelectToOpen)) return Ending::kLeaveStatus;
    return AfterLoad(ViewImage(path, 0));
}

Ending NameSequenceForLoading()
{
    StopPlaying();
    FileDialogTemplate = kSequenceTemplate;
    std::string path = "*.seq";
    if (!SelectFile(hWndMain, path, kSelectToOpen)) return Ending::kLeaveStatus;
    return AfterLoad(ViewSequence(path));
}

Ending NextFrame()
{
    StopPlaying();
    if (LoadName.empty()) {
        SendMessage(hWndMain, WM_COMMAND, kCmdNameSequenceToLoad, 0);
        return Ending::kLeaveStatus;
    }
    LoadNext();
    return Ending::kResetStatus;
}

Ending PreviousFrame()
{
    StopPlaying();
    LoadLast();
    return Ending::kResetStatus;
}

Ending SaveImageFile()
{
    StopPlaying();
    FileDialogTemplate = kImageTemplate;
    SaveDialogMode = kSaveImages;
    if (!SaveDialog(hWndMain)) return Ending::kLeaveStatus;
    const Hourglass hourglass;
    SaveImage(FilePathBuf, static_cast<std::uint32_t>(FramesToAverageImage));
    return Ending::kResetStatus;
}

Ending NameSequence()
{
    FileDialogTemplate = kSequenceTemplate;
    SaveDialogMode = kSaveSequences;
    if (SaveDialog(hWndMain)) NameSequenceForSaving(FilePathBuf);
    return Ending::kResetStatus;
}

Ending SaveNextOfSequence()
{
    StopPlaying();
    const Hourglass hourglass;
    SaveSequence(SeqFilePath, SeqNumber, static_cast<std::uint32_t>(FramesToAverageSeq));
    return Ending::kResetStatus;
}

Ending SaveBitmap()
{
    StopPlaying();
    return SaveBitmapCommand() ? Ending::kResetStatus : Ending::kLeaveStatus;
}

Ending PrinterSetup()
{
    const Hourglass hourglass;
    OpenDesktopTool("printers");
    return Ending::kResetStatus;
}

Ending Exit()
{
    StatusString(CameraOn ? 2 : 3, 0);
    MessageBeep(Sound::kDefault);
    const Button answer =
        MessageBox(hWndMain, "\nDo you wish to exit?", "QVF Vantir", BoxIcon::kQuestion, BoxButtons::kYesNo);
    if (answer != Button::kYes) return Ending::kResetStatus;
    ShutDown();
    return Ending::kLeaveStatus;
}

Ending DisplaySetup()
{
    DisplayDialog(hWndMain);
    return Ending::kResetStatus;
}

Ending Configuration()
{
    // The cursor's place belongs to the camera and the zoom that may change.
    const bool cursorWasOn = ImageCursorOn != 0;
    if (cursorWasOn) SendMessage(hWndMain, WM_COMMAND, kCmdImageCursor, 0);
    ConfigurationDialog(hWndMain);
    if (cursorWasOn) SendMessage(hWndMain, WM_COMMAND, kCmdImageCursor, 0);
    return Ending::kResetStatus;
}

Ending ImageSetup()
{
    GeometryDialog(hWndMain);
    CheckMenuItem(hWndMain, kCmdReplaceBadPixels, SubstBadPixels != 0);
    return Ending::kResetStatus;
}

Ending ReplaceBadPixels()
{
    ToggleBadPixelReplacement(hWndMain);
    return Ending::kResetStatus;
}

void OpenBench()
{
    OpenBenchWindow(hWndMain);
}

Ending LoadPreviousCalibration()
{
    if (!CameraOn) {
        MessageBox(hWndMain, "Camera must be on in order\nto load a calibration", kMessageCaption);
        return Ending::kResetStatus;
    }
    if (!ChooseCalibrationToOpen(hWndMain)) return Ending::kResetStatus;
    CheckMenuItem(hWndMain, kCmdReplaceBadPixels, SubstBadPixels != 0);
    if (!LoadCalibration(hWndMain, FilePathBuf)) return Ending::kResetStatus;
    StatusString(1, 0);
    return Ending::kLeaveStatus;
}

Ending SaveCalibration()
{
    if (!ChooseCalibrationToSave(hWndMain)) return Ending::kResetStatus;
    const std::string path = FilePathBuf;
    if (!SaveCalibrationAs(path)) MessageBox(hWndMain, "Failed to save file: " + path, "Kelvo File Error!");
    return Ending::kResetStatus;
}

// A one-point run determines offsets alone. The calibration that it was to replace comes back if it fails.
void RunOnePoint()
{
    const std::int32_t typeBefore = CalType;
    CalType = 0;
    if (OnePointCalibrate(hWndMain) || typeBefore == 0) return;
    LoadCalibration(hWndMain, std::string(CalSettings.CalFile));
}

// Of the type that the calibration dialog ended with.
void RunChosenCalibration()
{
    if (CalSettings.ChosenType == 1) {
        RunOnePoint();
    } else {
        TwoPointCalibrate(hWndMain, ActiveConfig, CalDone);
    }
}

Ending NewCalibration()
{
    if (RunCalibrationDialog(hWndMain)) RunChosenCalibration();
    return Ending::kResetStatus;
}

Ending UpdateCalibration()
{
    OnePointCalibrate(hWndMain);
    return Ending::kResetStatus;
}

Ending VideoSetup()
{
    const std::int32_t cameraWasOn = CameraOn;
    VideoSetupDialog(hWndMain);
    if (CameraOn == cameraWasOn) return Ending::kResetStatus;
    SetMenuText(hWndMain, kCmdTurnOn, CameraOn ? "&Turn Vantir off" : "&Turn Vantir on");
    DrawMenuBar(hWndMain);
    return Ending::kResetStatus;
}

// A coefficient file or any other stored file on view; the histogram over it joins later. A list of bad detectors is
// only loaded.
Ending ViewStatistics()
{
    std::string path;
    SelectStatisticsFile(hWndMain, path, kStatisticsFiles);
    if (path.empty()) return Ending::kLeaveStatus;
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    if (EqualIgnoringCase(extension, ".cal")) return Ending::kResetStatus;
    if (EqualIgnoringCase(extension, ".bad")) {
        BadDetMap map(static_cast<std::size_t>(std::max(ActiveConfig.Vroi, 0)) *
                      static_cast<std::size_t>(std::max(ActiveConfig.Hroi, 0)));
        LoadBadDetFile(path, map, ActiveConfig);
        return Ending::kResetStatus;
    }
    if (ViewImage(path, 0)) TellNotAvailable();
    return Ending::kResetStatus;
}

Ending FreezeFrame()
{
    ToggleFreeze(LiveVideo);
    if (LiveVideo) DisplayUnit = PickAvailableUnit(DisplayUnit);
    return Ending::kResetStatus;
}

void ChooseColorMap(int id)
{
    ImageColor = static_cast<std::int16_t>(id);
    SetColorMap(ImageColor);
    DrawFileOnView();
}

Ending NormalGray()
{
    ChooseColorMap(kNormalGray);
    return Ending::kResetStatus;
}

Ending InvertedGray()
{
    ChooseColorMap(kInvertedGray);
    return Ending::kResetStatus;
}

Ending NormalColor()
{
    ChooseColorMap(kNormalColor);
    return Ending::kResetStatus;
}

Ending CycleColorMap()
{
    NextColorMap();
    ChooseColorMap(ImageColor);
    return Ending::kResetStatus;
}

Ending ImageCursor()
{
    ToggleImageCursor();
    return Ending::kLeaveStatus;
}

Ending Trackball()
{
    TrackballToggle();
    return Ending::kLeaveStatus;
}

void ShowFittingPointer()
{
    if (TrackballMode) {
        SetPointer(Pointer::kTrackball);
    } else {
        SetPointer(ImageCursorOn ? Pointer::kCross : Pointer::kArrow);
    }
}

// With two cameras the operator makes sure of the one that is calibrated.
bool IsCameraToCalibrate()
{
    if (!ActiveConfig.DualCamera) return true;
    return MessageBox(hWndMain, "About to start calibration of camera:\n\n" + ActiveConfig.Description, kMessageCaption,
                      BoxIcon::kExclamation, BoxButtons::kOkCancel) == Button::kOk;
}

// After a turn-on without a calibration: the operator sets the video up, then calibrates.
void SetUpVideo()
{
    SetDisplayGeometry(Xpan, Ypan, Xzoom, Yzoom, Xoffset, Yoffset);
    VideoSetupDialog(hWndMain);
    if (CameraOn && RunCalibrationDialog(hWndMain) && IsCameraToCalibrate()) RunChosenCalibration();
    CheckMenuItem(hWndMain, kCmdReplaceBadPixels, SubstBadPixels != 0);
}

Ending TurnOn()
{
    if (TurnOnDialog(hWndMain)) SetUpVideo();
    SetDisplayGeometry(Xpan, Ypan, Xzoom, Yzoom, Xoffset, Yoffset);
    DisplayUnit = PickAvailableUnit(DisplayUnit);
    TempScale = 1;
    BuildDisplayLut(Contrast, Brightness);
    DrawColorBar();
    StatusString(1, 0);
    ShowFittingPointer();
    return Ending::kLeaveStatus;
}

template <void (*show)()>
Ending Run()
{
    show();
    return Ending::kResetStatus;
}

void ShowKeysHelp()
{
    ShowHelpContext(770);
}

void ShowTutorial()
{
    ShowHelpContext(771);
}

void SearchHelp()
{
    ShowHelpSearch("");
}

void ShowDialogHelp()
{
    ShowHelpContext(1048);
}

struct Command {
    int id;
    Handler run;
};

constexpr Command kCommands[] = {
    {kCmdHostRamCapture, NotAvailable},
    {kCmdSaveImage, SaveImageFile},
    {kCmdLoadImage, LoadImageFile},
    {kCmdNameSequenceForSaving, NameSequence},
    {kCmdSaveSequence, SaveNextOfSequence},
    {kCmdContinuousSave, NotAvailable},
    {kCmdTriggeredSave, NotAvailable},
    {kCmdNameSequenceToLoad, NameSequenceForLoading},
    {kCmdLoadNext, NextFrame},
    {kCmdLoadLast, PreviousFrame},
    {kCmdSaveBitmap, SaveBitmap},
    {kCmdPrintBitmap, NotAvailable},
    {kCmdPrinterSetup, PrinterSetup},
    {kCmdExit, Exit},
    {kCmdDisplaySetup, DisplaySetup},
    {kCmdVideoSetup, VideoSetup},
    {kCmdImageSetup, ImageSetup},
    {kCmdConfiguration, Configuration},
    {124, Run<ShowDialogHelp>},
    {kCmdSaveTiff8, NotAvailable},
    {kCmdSaveTiff16, NotAvailable},
    {kCmdNewCalibration, NewCalibration},
    {kCmdUpdateCalibration, UpdateCalibration},
    {kCmdSaveCalibration, SaveCalibration},
    {kCmdLoadCalibration, LoadPreviousCalibration},
    {kCmdApplyCalibration, NotAvailable},
    {kCmdViewStatistics, ViewStatistics},
    {kCmdFreeze, FreezeFrame},
    {kCmdReplaceBadPixels, ReplaceBadPixels},
    {kCmdNormalGray, NormalGray},
    {kCmdInvertedGray, InvertedGray},
    {kCmdNormalColor, NormalColor},
    {kCmdImageCursor, ImageCursor},
    {kCmdTrackball, Trackball},
    {kCmdNextColorMap, CycleColorMap},
    {kCmdHistogram, NotAvailable},
    {kCmdLinePlot, NotAvailable},
    {kCmdImageMath, NotAvailable},
    {kCmdTurnOn, TurnOn},
    {kCmdHelpContents, Run<ShowHelpContents>},
    {kCmdHelpSearch, Run<SearchHelp>},
    {kCmdHelpKeys, Run<ShowKeysHelp>},
    {kCmdHelpOnHelp, Run<ShowHelpOnHelp>},
    {kCmdDesktopTutorial, Run<ShowTutorial>},  // the desktop has none of its own to run
    {kCmdKelvoTutorial, Run<ShowTutorial>},
    {kCmdAbout, Run<ShowAbout>},
    {kCmdViewGoToFrame, Run<GoToFrameDialog>},
    {kCmdViewPlay, Run<StartPlaying>},
    {kCmdViewStop, Run<StopPlaying>},
    {kCmdViewCopyPicture, Run<CopyPicture>},
    {kCmdViewFitContrast, Run<FitContrastOnView>},
    {kCmdViewFrameAccount, Run<ToggleFrameAccount>},
    {kCmdViewColorScale, Run<ToggleColorScale>},
    {kCmdViewSaturation, Run<ToggleSaturationOverlay>},
    {kCmdBench, Run<OpenBench>},
};

LRESULT Finish(Ending ending)
{
    if (ending == Ending::kLeaveStatus) return 1;
    StatusString(1, 0);
    return 0;
}

Ending OpenRecent(std::size_t place)
{
    if (place >= RecentFiles().size()) return Ending::kResetStatus;
    OpenStoredFile(std::string(RecentFiles()[place]));
    return Ending::kResetStatus;
}

}  // namespace

LRESULT RunCommand(HWND window, int id)
{
    if (id >= kCmdZoomPanFirst && id <= kCmdZoomPanLast) {
        ZoomPanCommand(id);
        return Finish(ImageCursorOn ? Ending::kLeaveStatus : Ending::kResetStatus);  // the read-out stays
    }
    if (id >= kCmdUserFirst && id <= kCmdUserLast) return Finish(NotAvailable());
    if (id >= kCmdRecentFirst && id < kCmdRecentFirst + kRecentFileCount) {
        return Finish(OpenRecent(static_cast<std::size_t>(id - kCmdRecentFirst)));
    }
    const auto* const command = std::ranges::find(kCommands, id, &Command::id);
    if (command == std::end(kCommands)) return DefWindowProc(window, WM_COMMAND, static_cast<WPARAM>(id), 0);
    return Finish(command->run());
}

LRESULT ShowCommandHelp(HWND window, int id)
{
    HelpMode = 0;
    if (const int context = HelpContextOf(id)) {
        ShowHelpContext(context);
        return 0;
    }
    MessageBox(hWndMain, "Help not available for this Menu item.", kMessageCaption);
    return DefWindowProc(window, WM_COMMAND, static_cast<WPARAM>(id), 0);
}

}  // namespace kelvo
