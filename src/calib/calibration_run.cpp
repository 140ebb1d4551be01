#include "calib/calibration_run.h"

#include "acquire/averaging.h"
#include "calib/orientation.h"
#include "calib/report_file.h"
#include "calib/run_steps.h"
#include "calib/two_point.h"
#include "head/video_settings.h"
#include "pixel/bad_pixels.h"
#include "pixel/unity_coefficients.h"
#include "pixel/unsaved_set.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "state/cal_settings.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/gather.h"

#include <utility>

namespace kelvo {

namespace {

// A set that doesn't say of which camera it is can't be loaded; the settings may leave it to the default.
void NameCamera()
{
    if (HasProfileKey("Setup", "ActiveCamera", IniFilePath)) return;
    WritePrivateProfileString("Setup", "ActiveCamera", std::to_string(ActiveCamera), IniFilePath);
}

UnsavedSet SetOf(const RunRecord& run)
{
    return {.gains = run.fileGains.empty() ? run.gains : run.fileGains,
            .offsets = run.offsets,
            .noise = {},
            .badDetectors = SubstBadPixels ? BadDetList : BadDetMap()};
}

// What the run's file holds: its list has gone by now. One that couldn't be written again is still in memory.
std::string NoiseOfSet()
{
    constexpr std::size_t kLongestNoise = std::size_t{1} << 30;
    if (auto noise = ReadWholeFile(SetFile(CalSettings.CalFile, ".noi"), kLongestNoise)) return *std::move(noise);
    return SetWithoutFiles() ? SetWithoutFiles()->noise : std::string();
}

void CompleteSet(RunRecord& run)
{
    if (!run.files) return;  // a step before this one has begun them
    const std::string calPath = CalSettings.CalFile;
    UnsavedSet set = SetOf(run);
    set.noise = NoiseOfSet();
    NameCamera();
    SaveVideoSettings(IniFilePath);
    if (run.listsAreSaved) SaveReport(run.report);
    if (run.listsAreSaved && CopySettingsTo(calPath) && run.files->Commit()) {
        ForgetUnsavedSet();
        return;
    }
    run.files->RollBack();
    KeepUnsavedSet(std::move(set));
    MessageBox(run.window,
               "The calibration is in force, but its files couldn't be saved.\nThe former ones stand:\n" + calPath,
               "Kelvo File Error!");
}

// Where nothing was in force the plain state of the beginning is.
void EndWithFormer(RunRecord& run)
{
    if (run.former.IsCalibration()) {
        run.former.PutBack();
    } else {
        ResetUnityGainOffset(run.config);
        run.former.PutBackChoices();
    }
}

}  // namespace

bool BeginRun(RunRecord& run)
{
    ResetGather();
    run.waiting.emplace();
    run.former.TakeTables();
    return SetCommutationOrder() != 0;
}

RunEnd EndRun(RunRecord& run, StepOutcome outcome)
{
    switch (outcome) {
        case StepOutcome::kGoOn:
            return RunEnd::kCompleted;
        case StepOutcome::kCancelled:
            ResetUnityGainOffset(run.config);
            run.former.PutBackChoices();
            return RunEnd::kCancelled;
        case StepOutcome::kNoFrames:
            EndWithFormer(run);
            return RunEnd::kNoFrames;
        case StepOutcome::kFailed:
            ResetUnityGainOffset(run.config);
            return RunEnd::kFailed;
        case StepOutcome::kStopped:
            break;
    }
    return RunEnd::kFailed;
}

StepOutcome FailTelling(std::string_view text, std::string_view caption)
{
    MessageBox(hWndMain, text, caption);
    return StepOutcome::kFailed;
}

StepOutcome EndWithoutFrames(std::string_view text, std::string_view caption)
{
    FailTelling(text, caption);
    return StepOutcome::kNoFrames;
}

StepOutcome FailWithBeep()
{
    MessageBeep(Sound::kExclamation);
    return StepOutcome::kFailed;
}

std::uint32_t CaptureMode(std::uint32_t kind)
{
    constexpr std::uint32_t kNoFrames = kPlainFrame | 0x020;
    return kind | kShowProgress | (GrabberPresent ? kTakeNewFrames | kNewFramesOnly : kNoFrames);
}

bool OpenFiles(RunRecord& run, const std::string& calPath)
{
    run.files.emplace(calPath);
    if (run.files->Begin()) return true;
    MessageBox(run.window, "Failed to save file: " + calPath, "Kelvo File Error!");
    return false;
}

std::optional<MeanCoefficients> TakeOffsets(RunRecord& run, std::span<const std::int16_t> lowMeans, float meanLow)
{
    MeanCoefficients means;
    std::int32_t rangeFlag = 0;
    std::optional<std::vector<std::int16_t>> offsets =
        CalculateOffsets(run.gains, lowMeans, meanLow, means.gain, means.offset, rangeFlag);
    if (!offsets) return std::nullopt;
    run.offsets = *std::move(offsets);
    run.offsetsLeaveRange = rangeFlag != 0;
    return means;
}

StepOutcome InstallOffsets(RunRecord& run)
{
    return DownloadOffsets(run.offsets) ? StepOutcome::kGoOn : FailWithBeep();
}

bool SubstituteAndMap(RunRecord& run)
{
    DecomTable plain;
    if (AllocateBlock(plain, run.table.size())) plain = run.table;
    if (!SubstituteBadPixels(run.gains, run.table, &run.badListIsSaved)) return false;
    run.listsAreSaved = run.listsAreSaved && run.badListIsSaved;
    if (SubstBadPixels) MapListed(run.report, BadDetList);
    MapAnswers(run.report, plain, run.table);
    OrientMap(run.report);
    return true;
}

void TakeOver(const RunRecord& run)
{
    if (run.badListIsSaved) {
        ForgetUnsavedSet();
    } else {
        KeepUnsavedSet(SetOf(run));
    }
}

StepOutcome SaveSet(RunRecord& run)
{
    CompleteSet(run);
    run.waiting.reset();
    ShowDegrees();
    return StepOutcome::kGoOn;
}

std::optional<std::vector<std::int16_t>> CalculateOffsets(std::span<const float> gainList,
                                                          std::span<const std::int16_t> lowMeans, float meanLow,
                                                          float& meanGain, float& meanOffset, std::int32_t& rangeFlag)
{
    TellStep("Calculating Offsets...");
    std::vector<std::int16_t> offsets;
    if (!AllocateBlock(offsets, gainList.size())) {
        MessageBox(hWndMain, "Failure to allocate OffsetList memory!", kMessageCaption);
        return std::nullopt;
    }
    const OffsetResult result = OffsetsOf(gainList, lowMeans, meanLow, offsets);
    meanGain = result.meanGain;
    meanOffset = result.meanOffset;
    rangeFlag = result.outOfRange ? 1 : 0;
    return offsets;
}

}  // namespace kelvo
