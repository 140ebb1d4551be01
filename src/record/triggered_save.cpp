#include "record/triggered_save.h"

#include "acquire/averaging.h"
#include "grabber/board.h"
#include "grabber/frame_size.h"
#include "imagefile/header_write.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/long_run.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/window.h"
#include "record/live_video.h"
#include "record/triggered_save_write.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/head_state.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/gather.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

namespace kelvo {

namespace write {
TriggeredSaveVariables triggered;
}

constinit const TriggerSettings& triggerSettings = write::triggered.triggerSettings;
constinit const std::int32_t& AcquisitionRunning = write::triggered.AcquisitionRunning;
constinit const std::int32_t& TriggersLeft = write::triggered.TriggersLeft;
constinit const std::int32_t& TrigFirstPass = write::triggered.TrigFirstPass;

namespace {

constexpr const char* kSection = "Trigger";

// Keys that are numbers, and those that are texts: these keep the value where no number stands.
struct SettingKey {
    const char* name = nullptr;
    std::int32_t TriggerSettings::*field = nullptr;
    bool isText = false;
};
constexpr SettingKey kKeys[] = {
    {"CodeTrigger", &TriggerSettings::CodeTrigger},
    {"Type1", &TriggerSettings::Type1},
    {"NumTriggers", &TriggerSettings::NumTriggers, true},
    {"TriggerDelay", &TriggerSettings::TriggerDelay, true},
    {"NumFramesToAverage", &TriggerSettings::NumFramesToAverage},
    {"VgaOffDuringSave", &TriggerSettings::VgaOffDuringSave},
    {"SoftwareAll", &TriggerSettings::SoftwareAll},
    {"Left", &TriggerSettings::Left, true},
    {"Top", &TriggerSettings::Top, true},
    {"Right", &TriggerSettings::Right, true},
    {"Bottom", &TriggerSettings::Bottom, true},
    {"IntensityLo1", &TriggerSettings::IntensityLo1, true},
    {"IntensityHi1", &TriggerSettings::IntensityHi1, true},
};

constexpr std::uint32_t kGatherMode = kTakeNewFrames | kAverageFloat | kNewFramesOnly;
constexpr std::int32_t kDefaultIdentity = 18290;
constexpr std::int16_t kFloatBytes = 4;
constexpr std::int16_t kFloatData = 8;  // DataType

// What a run keeps between two steps.
struct Run {
    std::string path;
    bool fileStands = false;
    bool keyHasToComeUp = false;
    std::int32_t done = 0;
    std::vector<std::int16_t> work;
    std::vector<float> frame;
};
Run run;

bool testFailed = false;
std::int32_t waitedMs = 0;  // of the wait for the trigger that is under way

const StateNames kStateNames{
    Named("AcquisitionRunning", AcquisitionRunning),
    Named("TriggersLeft", TriggersLeft),
    Named("TrigFirstPass", TrigFirstPass),
    Named("Trigger.CodeTrigger", triggerSettings.CodeTrigger),
    Named("Trigger.Type1", triggerSettings.Type1),
    Named("Trigger.NumTriggers", triggerSettings.NumTriggers),
    Named("Trigger.TriggerDelay", triggerSettings.TriggerDelay),
    Named("Trigger.NumFramesToAverage", triggerSettings.NumFramesToAverage),
    Named("Trigger.VgaOffDuringSave", triggerSettings.VgaOffDuringSave),
    Named("Trigger.SoftwareAll", triggerSettings.SoftwareAll),
    Named("Trigger.Left", triggerSettings.Left),
    Named("Trigger.Top", triggerSettings.Top),
    Named("Trigger.Right", triggerSettings.Right),
    Named("Trigger.Bottom", triggerSettings.Bottom),
    Named("Trigger.IntensityLo1", triggerSettings.IntensityLo1),
    Named("Trigger.IntensityHi1", triggerSettings.IntensityHi1),
};

// ---- Triggers

// A frame of 16 bits has no sum and no float: the mode says so in the lowest bits alone.
std::uint32_t ModeOf16Bits(std::uint32_t mode)
{
    if (mode & kSum32) return mode - (kSum32 - kAverage16);
    if (mode & kAverageFloat) return mode - (kAverageFloat - kAverage16);
    return mode;
}

// The place of an image pixel in a frame as AverageFrames gives it: without a calibration in readout order.
std::size_t PlaceOf(std::size_t pixel)
{
    return CalType == 0 && pixel < DecomList.size() ? DecomList[pixel] : pixel;
}

double MeanOfRectangle(std::span<const std::int16_t> frame)
{
    const std::int32_t left = std::clamp(triggerSettings.Left, 0, ActiveConfig.Hroi - 1);
    const std::int32_t top = std::clamp(triggerSettings.Top, 0, ActiveConfig.Vroi - 1);
    const std::int32_t right = std::clamp(triggerSettings.Right, left, ActiveConfig.Hroi - 1);
    const std::int32_t bottom = std::clamp(triggerSettings.Bottom, top, ActiveConfig.Vroi - 1);
    const auto columns = static_cast<std::size_t>(ActiveConfig.Hroi);
    double sum = 0;
    for (std::int32_t y = top; y <= bottom; ++y) {
        for (std::int32_t x = left; x <= right; ++x) {
            const std::size_t place = PlaceOf(static_cast<std::size_t>(y) * columns + static_cast<std::size_t>(x));
            if (place < frame.size()) sum += frame[place];
        }
    }
    return sum / static_cast<double>(RectangleValues(left, top, right, bottom));
}

int TestIntensity(std::uint32_t gatherMode)
{
    const std::size_t values = CameraFrameValues();
    std::vector<std::int16_t> own;  // outside a run
    const bool ready = values > 0 && (run.work.size() == values || AllocateBlock(own, values));
    const std::span<std::int16_t> frame = own.empty() ? std::span(run.work) : std::span(own);
    testFailed =
        !ready || !BeginLiveVideo() ||
        !AverageFrames(frame, {}, 1, 0, 0, ActiveConfig.Hroi - 1, ActiveConfig.Vroi - 1, ModeOf16Bits(gatherMode));
    if (testFailed) return 0;
    const double mean = MeanOfRectangle(frame);
    return mean >= triggerSettings.IntensityLo1 && mean <= triggerSettings.IntensityHi1 ? 1 : 0;
}

int TestExternal(bool armFirst)
{
    constexpr std::int32_t kWaitMs = 10'000;
    if (armFirst && !ArmExternalTrigger(1)) {
        MessageBox(hWndMain, "Unable to start triggered acquisiton", "Frame Grabber Warning");
    }
    if (!WaitExternalTrigger(kWaitMs)) return 0;
    if (!ArmExternalTrigger(0)) {
        MessageBox(hWndMain, "Error starting grab after trigger to image processing board", "Frame Grabber Error!");
    }
    return 1;
}

// ---- The file

// The pattern of the offset's bits, read as a float: how this field has always been filled. Ordinary offsets give 0.
std::int16_t OffsetWord(std::int32_t offset)
{
    const auto pattern = static_cast<double>(std::bit_cast<float>(offset));
    constexpr double kBeyond = std::numeric_limits<std::int32_t>::max();
    if (!(std::fabs(pattern) < kBeyond)) return 0;
    return static_cast<std::int16_t>(static_cast<std::int32_t>(pattern));
}

SpiffHeaderRecord HeaderOfRun()
{
    const std::int32_t right = ActiveConfig.Hroi - 1;
    const std::int32_t bottom = ActiveConfig.Vroi - 1;
    const auto steps = static_cast<std::int16_t>(triggerSettings.NumTriggers);
    SpiffHeaderRecord header;
    header.SpiffHeaderIdentity = GetPrivateProfileInt("Setup", "SpiffHeaderIdentity", kDefaultIdentity, IniFilePath);
    header.SpiffTime = static_cast<std::int32_t>(WallClockSeconds());
    header.SpiffStepCount = steps;
    header.SpiffDisplayHigh = DisplayHigh;
    header.SpiffDisplayLow = DisplayLow;
    header.SpiffLeft = 0;
    header.SpiffTop = 0;
    header.SpiffFlag = 1;
    header.SpiffWidth = static_cast<std::int16_t>(right + 1);
    header.SpiffHeight = static_cast<std::int16_t>(bottom + 1);
    header.SpiffOffsetWord = OffsetWord(VideoOffset[1]);
    header.SpiffScaleA = 1.0F;
    header.SpiffStepCountF = static_cast<float>(steps);
    header.SpiffScaleB = 1.0F;
    BuildImageHeader(&header.Image, 0, 0, 0, 0, right, bottom);
    header.Image.FramesAveraged = static_cast<std::int16_t>(triggerSettings.NumFramesToAverage);
    header.Image.SampleBytes = kFloatBytes;
    header.Image.DataType = kFloatData;
    return header;
}

bool WriteWhole(File& file, std::span<const std::byte> bytes)
{
    return file.Write(bytes) == bytes.size();
}

StepWritten WriteFirstFrame()
{
    std::optional<NewFile> file = NewFile::Begin(run.path);
    if (!file) return StepWritten::kNotOpened;
    HeaderKeeper former;
    const SpiffHeaderRecord header = HeaderOfRun();
    if (!WriteWhole(file->Contents(), std::as_bytes(std::span(&header, 1)))) return StepWritten::kNoHeader;
    if (!WriteWhole(file->Contents(), std::as_bytes(std::span(run.frame))) || !file->Keep()) return StepWritten::kCut;
    former.KeepNew();
    write::file.SpiffHeader = header;
    run.fileStands = true;
    return StepWritten::kYes;
}

// A part of a frame isn't one: the frames behind it must begin where their number says.
std::int64_t EndOfFrames(std::int64_t length)
{
    constexpr std::int64_t kHeader = sizeof(SpiffHeaderRecord);
    const auto frameBytes = static_cast<std::int64_t>(std::span(run.frame).size_bytes());
    return kHeader + std::max<std::int64_t>(length - kHeader, 0) / frameBytes * frameBytes;
}

StepWritten AppendFrame()
{
    std::optional<File> file = File::Open(run.path, FileMode::kReadWrite);
    if (!file) return StepWritten::kNotOpened;
    const std::int64_t end = EndOfFrames(file->Length());
    if (!file->SetLength(end) || !file->Seek(end)) return StepWritten::kNotOpened;
    if (WriteWhole(*file, std::as_bytes(std::span(run.frame)))) {
        return file->Close() ? StepWritten::kYes : StepWritten::kCut;
    }
    std::ignore = file->SetLength(end);  // where even that fails the next step does it
    return StepWritten::kCut;
}

// What TestTrigger gets for the next step.
std::int32_t ArmedAtStart()
{
    if (triggerSettings.Type1 == kTriggerIntensity) return static_cast<std::int32_t>(kGatherMode);
    return triggerSettings.Type1 == kTriggerExternal ? 1 : 0;
}

bool EnterKeyIsDown()
{
    return KeyIsDown(Key::kReturn);
}

}  // namespace

void ReadTriggerKeys()
{
    constexpr TriggerSettings kDefaults;
    for (const auto& key : kKeys) {
        std::int32_t& value = write::triggered.triggerSettings.*key.field;
        const std::int32_t otherwise = kDefaults.*key.field;
        if (key.isText) {
            const std::string text = GetPrivateProfileString(kSection, key.name, Format("%d", otherwise), IniFilePath);
            value = ScanDecimal(text).value_or(value);
        } else {
            value = GetPrivateProfileInt(kSection, key.name, otherwise, IniFilePath);
        }
    }
}

void WriteTriggerKey(const char* key, std::int32_t value)
{
    WritePrivateProfileString(kSection, key, Format("%d", value), IniFilePath);
}

int TestTrigger(std::int32_t type, std::int32_t armed, std::int32_t /*extra*/)
{
    testFailed = false;
    switch (type) {
        case kTriggerSoftware:
            return triggerSettings.SoftwareAll == 0 || armed == 0 || EnterKeyIsDown() ? 1 : 0;
        case kTriggerIntensity:
            return TestIntensity(static_cast<std::uint32_t>(armed));
        case kTriggerExternal:
            return TestExternal(armed != 0);
        case kTriggerSerial:
            return 0;
        default:
            return 1;
    }
}

bool TriggerTestFailed()
{
    return testFailed;
}

int ArmExternalTrigger(std::int32_t on)
{
    waitedMs = 0;
    return SetTriggerMode(on);
}

int WaitExternalTrigger(std::int32_t msec)
{
    constexpr std::int32_t kSliceMs = 50;
    constexpr std::int32_t kMsPerHundredth = 10;
    const std::int32_t slice = std::clamp(msec, 0, kSliceMs);
    if (icp_wait_trig(IcpModule, FrameA, slice / kMsPerHundredth) == 1) {
        waitedMs = 0;
        return 1;
    }
    waitedMs += slice;
    if (waitedMs >= msec) {
        waitedMs = 0;
        icp_trig_snap(IcpModule, FrameA);
    }
    return 0;
}

RunBegan BeginTriggeredRun()
{
    run = {};
    const std::size_t values = CameraFrameValues();
    if (!AllocateBlock(run.work, values)) return RunBegan::kNoIntegerMemory;
    if (!AllocateBlock(run.frame, values)) return RunBegan::kNoFloatMemory;
    write::triggered.TriggersLeft = triggerSettings.NumTriggers;
    write::triggered.TrigFirstPass = ArmedAtStart();
    return RunBegan::kYes;
}

void NameTriggeredFile(const std::string& path)
{
    run.path = path;
}

bool TriggerHasFired()
{
    const std::int32_t type = triggerSettings.Type1;
    if (run.keyHasToComeUp && EnterKeyIsDown()) return false;
    run.keyHasToComeUp = false;
    const bool fired = TestTrigger(type, TrigFirstPass, 0) != 0;
    // The external trigger is armed once for each step; the board stays armed while nothing comes.
    if (type == kTriggerExternal) write::triggered.TrigFirstPass = fired ? 1 : 0;
    if (!fired) return false;
    if (type == kTriggerSoftware) {
        write::triggered.TrigFirstPass = 1;
        run.keyHasToComeUp = triggerSettings.SoftwareAll != 0;
    }
    --write::triggered.TriggersLeft;
    ++run.done;
    return true;
}

std::int32_t TriggersDone()
{
    return run.done;
}

int GatherTriggeredFrame()
{
    ResetGather();
    // The live view freezes where the board fails it, and a frozen frame would be the one of an earlier step.
    if (!BeginLiveVideo()) return 0;
    return AverageFrames(std::span(run.frame), {}, static_cast<std::uint32_t>(triggerSettings.NumFramesToAverage), 0, 0,
                         ActiveConfig.Hroi - 1, ActiveConfig.Vroi - 1, kGatherMode);
}

StepWritten WriteTriggeredFrame()
{
    return run.fileStands ? AppendFrame() : WriteFirstFrame();
}

void EndTriggeredRun()
{
    EndLongRun(LongRun::kTriggeredSave);
    run = {};
    write::triggered.AcquisitionRunning = 0;
    write::triggered.TriggersLeft = 0;
    write::triggered.TrigFirstPass = 0;
}

void ResetTriggeredSave()
{
    EndTriggeredRun();
    write::triggered = {};
    testFailed = false;
    waitedMs = 0;
}

}  // namespace kelvo
