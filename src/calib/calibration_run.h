// What the two calibration runs have in common (two_point_run.h, one_point_run.h).
//
// A run is one long procedure: it asks for the sources (CAL_COLD, CAL_HOT), gathers CalSettings.NumFrames frames of
// each through AverageFrames, calculates (calib/two_point.h, calib/one_point.h), installs the lists, replaces bad
// pixels, writes the set and shows a result box, from which a report opens (calib/calibration_report.h). Live video is
// started before each capture if the image is frozen. The files of a set change as one thing (calib/last_set.h): a run
// that doesn't complete leaves the former ones.
//
// Each run is a table of steps over a record of its own, and Complete takes them. A run that fails, or is cancelled
// once it has begun, leaves the camera uncalibrated: CalType 0, the plain table, gain 1 and one offset for all. Without
// frames nothing has been learnt, and the calibration that was in force is back (calib/former_calibration.h). What
// differs from that is told with the run.
#pragma once

#include "calib/calibration_report.h"
#include "calib/former_calibration.h"
#include "calib/last_set.h"
#include "pixel/decommutation.h"
#include "platform/box.h"
#include "platform/pointer.h"
#include "platform/types.h"
#include "state/camera_config.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// How a step ends: the run goes on; it has failed, and the unity state comes back; the operator has cancelled, and his
// choices of the CALIB dialog go too; no frames came, and what was in force is back; or it stops with all as it stands.
enum class StepOutcome { kGoOn, kFailed, kCancelled, kNoFrames, kStopped };

// How a run ends. After kCancelled and kNoFrames all that was to be put back is.
enum class RunEnd { kCompleted, kCancelled, kNoFrames, kFailed };

// What both runs carry from step to step. Lists are in readout order, config.Vroi x config.Hroi entries each.
struct RunRecord {
    RunRecord(HWND parent, const CameraConfig& camera, FormerCalibration& inForce)
        : window(parent), config(camera), pixels(PixelsOf(camera)), former(inForce)
    {
    }

    HWND window;
    CameraConfig config;
    std::size_t pixels;
    FormerCalibration& former;  // taken before the CALIB dialog, where there was one

    std::vector<float> noise;  // empty: not measured
    std::vector<float> gains;
    std::vector<float> fileGains;  // what the set's .gai holds, where that is something else: an update's
    DecomTable table;
    std::vector<std::int16_t> offsets;
    bool offsetsLeaveRange = false;

    CalibrationReport report;
    std::optional<SetReplacement> files;  // from the moment in which files of the set change
    bool badListIsSaved = true;           // false: what stands under its name is a former one
    bool listsAreSaved = true;            // false: so it is with any of them
    std::optional<Hourglass> waiting;
};

// A step of a run's own, or one that works on what both carry.
template <typename Run>
class RunStep {
  public:
    constexpr RunStep(StepOutcome (*own)(Run&)) : own_(own) {}
    constexpr RunStep(StepOutcome (*shared)(RunRecord&)) : shared_(shared) {}
    StepOutcome operator()(Run& run) const { return own_ ? own_(run) : shared_(run); }

  private:
    StepOutcome (*own_)(Run&) = nullptr;
    StepOutcome (*shared_)(RunRecord&) = nullptr;
};

// Before the first step: hourglass, unity coefficients and the plain table. False where those can't be installed.
bool BeginRun(RunRecord& run);
// After the last one: what the outcome of a run that didn't complete leaves in force.
RunEnd EndRun(RunRecord& run, StepOutcome outcome);

// A whole run: the steps in order until one doesn't go on. kFailed where it couldn't begin.
template <typename Run>
RunEnd Complete(Run& run, std::span<const RunStep<Run>> steps)
{
    if (!BeginRun(run)) return RunEnd::kFailed;
    StepOutcome outcome = StepOutcome::kGoOn;
    for (const RunStep<Run>& step : steps) {
        outcome = step(run);
        if (outcome != StepOutcome::kGoOn) break;
    }
    return EndRun(run, outcome);
}

// Ways to fail: a box over the main window, after which the outcome of the second is kNoFrames; the exclamation sound
// alone.
StepOutcome FailTelling(std::string_view text, std::string_view caption = kMessageCaption);
StepOutcome EndWithoutFrames(std::string_view text, std::string_view caption);
StepOutcome FailWithBeep();

// The mode of AverageFrames for a run that sums (kSum32) or averages (kAverage16): frames of an earlier capture would
// be taken for the source that stands there now. Without the capture board it asks for no frames at all.
std::uint32_t CaptureMode(std::uint32_t kind);
// Sums or means of no frames at all are zero throughout: they would pass for a source without flux.
template <typename Value>
bool WereGathered(std::span<const Value> values)
{
    return std::ranges::any_of(values, [](Value value) { return value != 0; });
}

// The former files of the set are copied aside, and come back unless the run completes. False after "Failed to save
// file: %s" under "Kelvo File Error!".
bool OpenFiles(RunRecord& run, const std::string& calPath);

// The run's offsets of its gains and the low source. nullopt as CalculateOffsets.
struct MeanCoefficients {
    float gain = 0;
    float offset = 0;
};
std::optional<MeanCoefficients> TakeOffsets(RunRecord& run, std::span<const std::int16_t> lowMeans, float meanLow);

// Step: the run's offsets are the ones in force.
StepOutcome InstallOffsets(RunRecord& run);
// Bad pixels take a neighbour's entry, and the report's map shows which they are. False as SubstituteBadPixels.
bool SubstituteAndMap(RunRecord& run);
// The set in force is the run's own from here on. Where its list of bad detectors couldn't be written it is held in
// memory at once: the table that follows must not be made of the former list.
void TakeOver(const RunRecord& run);
// Step: the settings as they stand, video set-up and camera included, become CalSettings.CalFile; then the files hold.
// Where anything failed the former files come back, the operator is told, and the set in force stays in memory
// (pixel/unsaved_set.h). The report goes with the set; live video reads in degrees.
StepOutcome SaveSet(RunRecord& run);

// Each detector's offset, low mean - meanLow x gain, rounded half away from zero; rangeFlag 1: one doesn't fit 16 bits,
// and its low bits are stored. meanGain and meanOffset are those of detectors with a gain, 0 where there are none. All
// lists in readout order. nullopt after "Failure to allocate OffsetList memory!".
std::optional<std::vector<std::int16_t>> CalculateOffsets(std::span<const float> gainList,
                                                          std::span<const std::int16_t> lowMeans, float meanLow,
                                                          float& meanGain, float& meanOffset, std::int32_t& rangeFlag);

}  // namespace kelvo
