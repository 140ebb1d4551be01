#include "calib/two_point_run.h"

#include "acquire/averaging.h"
#include "calib/calibration_report.h"
#include "calib/calibration_run.h"
#include "calib/last_set.h"
#include "calib/orientation.h"
#include "calib/report_dialog.h"
#include "calib/run_steps.h"
#include "calib/source_dialogs.h"
#include "calib/two_point.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/display_state_write.h"
#include "state/windows.h"
#include "ui/gather.h"
#include "ui/status.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

TwoPointSettings TwoPointSettingsFor(const CameraConfig& config)
{
    return {.frameCount = CalSettings.NumFrames,
            .noiseFloor = CalSettings.NoiseFloor,
            .gainRange = CalSettings.GainAcceptanceRange,
            .minOffset = CalSettings.MinOffset,
            .maxOffset = CalSettings.MaxOffset,
            .replaceNoisy = ReplaceNoisy != 0 && CalSettings.NumFrames != 1,
            .allowedNoise = CalSettings.AllowedNoiseLevel,
            .unityOffset = config.UnityOffset};
}

struct TwoPointRun : RunRecord {
    TwoPointRun(HWND parent, const CameraConfig& camera, std::int32_t& done, FormerCalibration& inForce)
        : RunRecord(parent, camera, inForce), doneFlag(done), settings(TwoPointSettingsFor(camera))
    {
    }

    std::int32_t& doneFlag;
    TwoPointSettings settings;

    std::vector<std::int32_t> lowSums;  // later the means
    std::vector<std::int32_t> highSums;
    std::vector<std::int16_t> shorts;  // the noise list, later the low means
    std::vector<DetectorClass> classes;
    TwoPointResult result;
};

template <typename Entry>
void Free(std::vector<Entry>& list)
{
    std::vector<Entry>().swap(list);
}

// --- Frames ---------------------------------------------------------------------------------------------------------

StepOutcome AllocateSums(TwoPointRun& run)
{
    if (!AllocateBlock(run.lowSums, run.pixels)) return FailTelling("Failure to allocate or lock LowSumBuffer memory!");
    if (!AllocateBlock(run.highSums, run.pixels))
        return FailTelling("Failure to allocate or lock HighSumBuffer memory!");
    if (run.settings.replaceNoisy && !AllocateBlock(run.noise, run.pixels)) {
        return FailTelling("Failure to allocate or lock NoiseBuffer memory!");
    }
    return StepOutcome::kGoOn;
}

// True where all frames that were asked for are gathered.
bool Capture(TwoPointRun& run, std::span<std::int32_t> sums, std::span<float> noise)
{
    if (run.settings.frameCount == 0 || !EnsureLiveVideo()) return false;
    return AverageFrames(sums, noise, run.settings.frameCount, 0, 0, run.config.Hroi - 1, run.config.Vroi - 1,
                         CaptureMode(kSum32)) &&
           WereGathered<std::int32_t>(sums);
}

StepOutcome FailAcquisition()
{
    return EndWithoutFrames(WhyNothingWasGathered("Video Data Acquisition Failed, Hardware error!"),
                            "Kelvo Calibration Error!");
}

StepOutcome CaptureLow(TwoPointRun& run)
{
    TellStep("Starting frame capture");
    return Capture(run, run.lowSums, run.noise) ? StepOutcome::kGoOn : FailAcquisition();
}

StepOutcome AskForHighSource(TwoPointRun& run)
{
    MessageBeep(Sound::kDefault);
    run.waiting.reset();
    SetPointer(Pointer::kArrow);
    if (!HotSourceDialog(run.window)) return StepOutcome::kCancelled;
    run.waiting.emplace();
    return StepOutcome::kGoOn;
}

StepOutcome CaptureHigh(TwoPointRun& run)
{
    const bool captured = Capture(run, run.highSums, {});
    MessageBeep(Sound::kDefault);
    return captured ? StepOutcome::kGoOn : FailAcquisition();
}

// --- Lists ----------------------------------------------------------------------------------------------------------

// From here on the files of the last set change; they come back unless the run completes the new set.
StepOutcome AverageSums(TwoPointRun& run)
{
    TellStep("Calculating calibration coefficients...");
    if (!AllocateBlock(run.shorts, run.pixels)) return FailTelling("Failure to allocate video memory!");
    run.result.means = SumsToMeans(run.lowSums, run.highSums, run.noise, run.shorts, run.settings);
    if (!OpenFiles(run, LastCalPath())) return StepOutcome::kFailed;
    const std::string path = LastSetFile(".noi");
    if (FileExists(path)) DeleteFileNamed(path);
    if (!run.settings.replaceNoisy) return StepOutcome::kGoOn;
    Free(run.noise);
    SaveNoise(path, run.shorts);
    return StepOutcome::kGoOn;
}

StepOutcome CheckArray(TwoPointRun& run)
{
    if (!EnoughGoodDetectors(run.result.means, run.pixels)) {
        return FailTelling("Calibration failed due to too few good detectors in array.");
    }
    TellStep("Calculating Means...");
    if (EnoughRange(run.result.means, run.settings.noiseFloor)) return StepOutcome::kGoOn;
    return FailTelling("Calibration failed due to insufficient range\nbetween low source and high source.");
}

constexpr std::array<std::uint32_t, kDetectorClasses> kClassColors = {0x202428, 0x5B8CFF, 0xFF4D4D, 0xFF9F40, 0xFFE14D,
                                                                      0x4CD964, 0x40E0FF, 0xB57BFF, 0xFF6BE8, 0xFFFFFF};

std::vector<std::uint8_t> MarksOf(std::span<const DetectorClass> classes, bool good)
{
    std::vector<std::uint8_t> marks;
    if (!AllocateBlock(marks, classes.size())) return marks;
    std::ranges::transform(classes, marks.begin(), [good](DetectorClass of) {
        return good ? static_cast<std::uint8_t>(of == DetectorClass::kGood) : static_cast<std::uint8_t>(of);
    });
    return marks;
}

void AddBefore(TwoPointRun& run, std::span<const std::int32_t> means, std::string_view source, float temperature)
{
    const std::vector<std::uint8_t> good = MarksOf(run.classes, true);
    if (auto residual = NonUniformityOf(means, good, SourceName(source, temperature))) {
        run.report.before.push_back(*std::move(residual));
    }
}

void ReportDetectorClasses(TwoPointRun& run)
{
    CalibrationReport& report = run.report;
    report.title = "2 Point Calibration";
    report.facts = FactsOfRun(run.settings.frameCount);
    report.frameCount = run.settings.frameCount;
    report.columns = run.config.Hroi;
    report.rows = run.config.Vroi;
    AddBefore(run, run.lowSums, "low source", TemperatureCold);
    AddBefore(run, run.highSums, "high source", TemperatureHot);
    for (std::size_t i = 1; i < kDetectorClasses; ++i) {
        const auto of = static_cast<DetectorClass>(i);
        report.classes.push_back({DetectorClassName(of), run.result.counts[of], kClassColors.at(i)});
    }
    MapClasses(report, MarksOf(run.classes, false), run.table);
}

StepOutcome CalculateGains(TwoPointRun& run)
{
    TellStep("Calculating Gains...");
    if (!AllocateBlock(run.gains, run.pixels)) return FailTelling("Failure to allocate Gain List memory!");
    std::optional<DecomTable> table = LoadDecomList(run.config);
    if (!table) {
        MessageBox(run.window, "Failure to load Decommutation array into memory!", kMessageCaption);
        StatusString(kIdleHint, kLeftAligned);
        return StepOutcome::kFailed;
    }
    run.table = *std::move(table);
    AllocateBlock(run.classes, run.pixels);  // without it the report has no map
    run.result.counts = ClassifyDetectors(run.lowSums, run.highSums, run.shorts, run.result.means, run.settings,
                                          run.gains, run.classes);
    ReportDetectorClasses(run);
    Free(run.highSums);
    MessageBox(run.window, BadPixelCountText(run.result.counts, run.pixels), "Bad pixel count", BoxIcon::kInformation);
    return StepOutcome::kGoOn;
}

StepOutcome InstallGains(TwoPointRun& run)
{
    if (DownloadGains(run.gains)) return StepOutcome::kGoOn;
    MessageBeep(Sound::kExclamation);
    return FailTelling("Failure to download Gain list!", "Kelvo Download Error!");
}

StepOutcome FindOffsets(TwoPointRun& run)
{
    TruncateMeans(run.lowSums, run.shorts);
    Free(run.lowSums);
    const std::optional<MeanCoefficients> means = TakeOffsets(run, run.shorts, run.result.means.meanLow);
    if (!means) return FailTelling("Failure to lock Gain list memory!");
    run.result.offsets.meanGain = means->gain;
    run.result.offsets.meanOffset = means->offset;
    TellStep("Calculating calibration statistics...");
    run.result.spread = SpreadOf(run.gains, run.offsets, means->gain, means->offset);
    return StepOutcome::kGoOn;
}

// The full range of the converter, and one coefficient for all.
void FillUnity(const CameraConfig& config)
{
    const bool rising = config.UnityGain >= 0;
    write::display.DisplayHigh = rising ? config.UnityOffset - 1 : config.UnityOffset;
    write::display.DisplayLow = rising ? -config.UnityOffset : 1 - config.UnityOffset;
    const auto pixels = static_cast<std::int32_t>(PixelsOf(config));
    if (!FillCoefficients(kGainKind, 0, pixels, config.UnityGain)) {
        MessageBox(hWndMain, "Hardware Timeout Error, Download of Gain Coefficients", kMessageCaption);
    }
    if (!FillCoefficients(kOffsetKind, 0, pixels, config.ZeroOffset)) {
        MessageBox(hWndMain, "Hardware Timeout Error, Download of Offset Coefficients", kMessageCaption);
    }
}

StepOutcome AskAboutRange(TwoPointRun& run)
{
    if (!run.offsetsLeaveRange) return StepOutcome::kGoOn;
    run.waiting.reset();
    SetPointer(Pointer::kArrow);
    const bool accepted = AcceptOffsetRange(run.window);
    run.waiting.emplace();
    if (accepted) return StepOutcome::kGoOn;
    TellStep("Downloading Unity Coefficients");
    FillUnity(run.config);
    return StepOutcome::kFailed;
}

// --- The set --------------------------------------------------------------------------------------------------------

StepOutcome SaveOffsetFile(TwoPointRun& run)
{
    TellStep("Saving offset calibration file...");
    write::calSet.CalSettings.OffsetFile = LastSetFile(".off");
    run.listsAreSaved = SaveOffsets(CalSettings.OffsetFile, run.offsets);
    write::calSet.CalSettings.CalFile = LastCalPath();
    return StepOutcome::kGoOn;
}

StepOutcome Substitute(TwoPointRun& run)
{
    return SubstituteAndMap(run) ? StepOutcome::kGoOn : StepOutcome::kStopped;
}

StepOutcome SaveGainFile(TwoPointRun& run)
{
    TellStep("Saving gain calibration file");
    write::calSet.CalSettings.GainFile = LastSetFile(".gai");
    run.listsAreSaved = SaveGains(CalSettings.GainFile, run.gains) && run.listsAreSaved;
    return StepOutcome::kGoOn;
}

StepOutcome TakeEffect(TwoPointRun& run)
{
    TellStep("Setting Image orientation...");
    run.doneFlag = 1;
    write::cal.CalType = 2;
    TakeOver(run);
    RebuildTable(run.config);
    return StepOutcome::kGoOn;
}

StepOutcome SaveDecommutation(TwoPointRun& run)
{
    TellStep("Saving Decommutation order in file...");
    write::calSet.CalSettings.DecomFile = LastSetFile(".dcm");
    if (SaveTableInForce(CalSettings.DecomFile)) return StepOutcome::kGoOn;
    MessageBox(run.window, "Failed to save file: " + CalSettings.DecomFile, kMessageCaption);
    run.listsAreSaved = false;
    return StepOutcome::kGoOn;
}

StepOutcome WriteSetKeys(TwoPointRun& /*run*/)
{
    TellStep("Saving calibration (.cal) file...");
    WriteCalFileKey("BadDetFile", CalSettings.BadDetFile);
    WriteCalFileKey("DecomFile", CalSettings.DecomFile);
    WriteCalFileKey("GainFile", CalSettings.GainFile);
    WriteCalFileKey("OffsetFile", CalSettings.OffsetFile);
    WriteCalKey("CalType", "2");
    WriteCalKey("CalFile", CalSettings.CalFile);
    WriteCalKey("DriverNumber", std::to_string(ActiveCamera));
    return StepOutcome::kGoOn;
}

StepOutcome KeepSources(TwoPointRun& run)
{
    TellStep("Calculating more statistics...");
    write::cal.IntensityCold = RoundCounts(run.result.means.meanLow);
    write::cal.IntensityHot = RoundCounts(run.result.means.meanHigh);
    write::calSet.CalSettings.IntensityCold = IntensityCold;
    write::calSet.CalSettings.IntensityHot = IntensityHot;
    write::calSet.CalSettings.TemperatureCold = TemperatureCold;
    write::calSet.CalSettings.TemperatureHot = TemperatureHot;
    WriteCalKey("TemperatureCold", Format("%f", static_cast<double>(TemperatureCold)));
    WriteCalKey("TemperatureHot", Format("%f", static_cast<double>(TemperatureHot)));
    WriteCalKey("IntensityCold", std::to_string(IntensityCold));
    WriteCalKey("IntensityHot", std::to_string(IntensityHot));
    return StepOutcome::kGoOn;
}

// --- The result -----------------------------------------------------------------------------------------------------

// A set of two temperatures reads degrees off a straight line, and a source's radiance isn't one.
std::string NoteOnStraightLine()
{
    if (TemperatureCold >= TemperatureHot || TemperatureCold <= -273.0F) return {};
    constexpr double kFromUm = 3;
    constexpr double kToUm = 5;
    const double error = StraightLineError(TemperatureCold, TemperatureHot, kFromUm, kToUm);
    return Format(
        "Between the sources a reading in \xB0"
        "C lies on a straight line. Against Planck's law\n"
        "(black body, 3 to 5 \xB5m) it is off by %.2f \xB0"
        "C half-way.",
        error);
}

// Counts a kelvin; 0 where the temperatures of the sources don't tell it.
double ResponseOf(const TwoPointRun& run)
{
    const bool known = TemperatureCold > -274.0F && TemperatureHot > TemperatureCold;
    return known ? static_cast<double>(run.result.means.meanDelta) / (double{TemperatureHot} - double{TemperatureCold})
                 : 0;
}

StepOutcome ShowStatistics(TwoPointRun& run)
{
    run.report.calPath = LastCalPath();
    if (run.settings.replaceNoisy) {
        run.report.facts.push_back(NoiseFact(double{run.result.means.noiseMean}, ResponseOf(run)));
    }
    run.report.note = NoteOnStraightLine();
    MeasureAfter(run.report, SourceName("high source", TemperatureHot), run.settings.frameCount);
    run.waiting.reset();
    SetPointer(Pointer::kArrow);
    TellStep("Calibration results");
    ShowResult(run.window,
               TwoPointResultText(run.result, run.pixels, run.settings.replaceNoisy, TemperatureCold, TemperatureHot),
               "Kelvo Calibration Statistics", run.report);
    return StepOutcome::kGoOn;
}

constexpr RunStep<TwoPointRun> kTwoPointSteps[] = {
    AllocateSums, CaptureLow,        AskForHighSource, CaptureHigh,   AverageSums,    CheckArray, CalculateGains,
    InstallGains, FindOffsets,       InstallOffsets,   AskAboutRange, SaveOffsetFile, Substitute, SaveGainFile,
    TakeEffect,   SaveDecommutation, WriteSetKeys,     KeepSources,   ShowStatistics, SaveSet,
};

class KeptPointer {
  public:
    KeptPointer() : before_(CurrentPointer()) {}
    ~KeptPointer() { SetPointer(before_); }
    KeptPointer(const KeptPointer&) = delete;
    KeptPointer& operator=(const KeptPointer&) = delete;

  private:
    Pointer before_;
};

}  // namespace

RunEnd RunTwoPoint(HWND window, const CameraConfig& config, std::int32_t& doneFlag, FormerCalibration& former)
{
    if (!ColdSourceDialog(window, "2 Point Calibration")) {
        former.PutBack();
        return RunEnd::kCancelled;
    }
    TellStep("Initializing variables...");
    const KeptPointer pointer;
    TwoPointRun run(window, config, doneFlag, former);
    doneFlag = 0;
    return Complete<TwoPointRun>(run, kTwoPointSteps);
}

int TwoPointCalibrate(HWND window, const CameraConfig& config, std::int32_t& doneFlag)
{
    FormerCalibration former;
    return RunTwoPoint(window, config, doneFlag, former) == RunEnd::kCompleted ? 1 : 0;
}

}  // namespace kelvo
