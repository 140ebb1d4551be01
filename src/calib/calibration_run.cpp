// The two-point run, and what it shares with the one-point run (one_point_run.cpp): offsets and downloads.
#include "calib/calibration_run.h"

#include "acquire/averaging.h"
#include "calib/calibration.h"
#include "calib/calibration_report.h"
#include "calib/last_set.h"
#include "calib/orientation.h"
#include "calib/run_steps.h"
#include "calib/two_point.h"
#include "config/frame_rate_table.h"
#include "pixel/bad_pixels.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"
#include "pixel/unity_coefficients.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/status.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

// Without the capture board the mode asks for no frames at all.
constexpr std::uint32_t kSumWithBoard = kSum32 | kTakeNewFrames | kShowProgress;
constexpr std::uint32_t kSumWithoutBoard = kSum32 | kShowProgress | kPlainFrame | 0x020;

// How a step ends: the run goes on; it has failed, and the unity state comes back; or it stops with all as it stands.
enum class Outcome { kGoOn, kFailed, kStopped };

TwoPointSettings SettingsOfRun(const CameraConfig& config)
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

struct Run {
    Run(HWND parent, const CameraConfig& camera, std::int32_t& done)
        : window(parent), config(camera), doneFlag(done), settings(SettingsOfRun(camera)), pixels(PixelsOf(camera))
    {
    }

    HWND window;
    CameraConfig config;
    std::int32_t& doneFlag;
    TwoPointSettings settings;
    std::size_t pixels;

    std::vector<std::int32_t> lowSums;  // later the means
    std::vector<std::int32_t> highSums;
    std::vector<float> noise;
    std::vector<std::int16_t> shorts;  // the noise list, later the low means
    std::vector<float> gains;
    std::vector<DetectorClass> classes;
    DecomTable table;
    std::vector<std::int16_t> offsets;
    bool offsetsLeaveRange = false;

    TwoPointResult result;
    CalibrationReport report;
    SetReplacement files{LastCalPath()};
    bool listsAreSaved = true;
    std::optional<Hourglass> waiting;
};

void Status(std::string_view text)
{
    StatusMessage(text, kLeftAligned);
}

Outcome Fail(std::string_view text, std::string_view caption = kMessageCaption)
{
    MessageBox(hWndMain, text, caption);
    return Outcome::kFailed;
}

template <typename Entry>
void Free(std::vector<Entry>& list)
{
    std::vector<Entry>().swap(list);
}

// --- Frames ---------------------------------------------------------------------------------------------------------

Outcome AllocateSums(Run& run)
{
    if (!AllocateBlock(run.lowSums, run.pixels)) return Fail("Failure to allocate or lock LowSumBuffer memory!");
    if (!AllocateBlock(run.highSums, run.pixels)) return Fail("Failure to allocate or lock HighSumBuffer memory!");
    if (run.settings.replaceNoisy && !AllocateBlock(run.noise, run.pixels)) {
        return Fail("Failure to allocate or lock NoiseBuffer memory!");
    }
    return Outcome::kGoOn;
}

// Sums of no frames at all are zero throughout: they would pass for a source without flux.
bool Gathered(std::span<const std::int32_t> sums)
{
    return std::ranges::any_of(sums, [](std::int32_t sum) { return sum != 0; });
}

// What AverageFrames gave; sums hold zeros where nothing was gathered.
int Capture(Run& run, std::span<std::int32_t> sums, std::span<float> noise)
{
    if (run.settings.frameCount == 0 || !StartLiveVideo()) return 0;
    return AverageFrames(sums, noise, run.settings.frameCount, 0, 0, run.config.Hroi - 1, run.config.Vroi - 1,
                         GrabberPresent ? kSumWithBoard : kSumWithoutBoard);
}

Outcome FailAcquisition()
{
    return Fail("Video Data Acquisition Failed, Hardware error!", "Kelvo Calibration Error!");
}

Outcome CaptureLow(Run& run)
{
    Status("Starting frame capture");
    const int captured = Capture(run, run.lowSums, run.noise);
    return captured && Gathered(run.lowSums) ? Outcome::kGoOn : FailAcquisition();
}

Outcome AskForHighSource(Run& run)
{
    MessageBeep(Sound::kDefault);
    run.waiting.reset();
    SetPointer(Pointer::kArrow);
    if (!HotSourceDialog(run.window)) return Outcome::kFailed;
    run.waiting.emplace();
    return Outcome::kGoOn;
}

// Whatever the capture says, frames that were gathered are used.
Outcome CaptureHigh(Run& run)
{
    Capture(run, run.highSums, {});
    MessageBeep(Sound::kDefault);
    return Gathered(run.highSums) ? Outcome::kGoOn : FailAcquisition();
}

// --- Lists ----------------------------------------------------------------------------------------------------------

// From here on the files of the last set change; they come back unless the run completes the new set.
Outcome AverageSums(Run& run)
{
    Status("Calculating calibration coefficients...");
    if (!AllocateBlock(run.shorts, run.pixels)) return Fail("Failure to allocate video memory!");
    run.result.means = SumsToMeans(run.lowSums, run.highSums, run.noise, run.shorts, run.settings);
    if (!run.files.Begin()) return Fail("Failed to save file: " + LastCalPath(), "Kelvo File Error!");
    const std::string path = LastSetFile(".noi");
    if (FileExists(path)) DeleteFileNamed(path);
    if (!run.settings.replaceNoisy) return Outcome::kGoOn;
    Free(run.noise);
    SaveNoise(path, run.shorts);
    return Outcome::kGoOn;
}

Outcome CheckArray(Run& run)
{
    if (!EnoughGoodDetectors(run.result.means, run.pixels)) {
        return Fail("Calibration failed due to too few good detectors in array.");
    }
    Status("Calculating Means...");
    if (EnoughRange(run.result.means, run.settings.noiseFloor)) return Outcome::kGoOn;
    return Fail("Calibration failed due to insufficient range\nbetween low source and high source.");
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

void AddBefore(Run& run, std::span<const std::int32_t> means, std::string_view source, float temperature)
{
    const std::vector<std::uint8_t> good = MarksOf(run.classes, true);
    if (auto residual = NonUniformityOf(means, good, SourceName(source, temperature))) {
        run.report.before.push_back(*std::move(residual));
    }
}

void ReportClasses(Run& run)
{
    CalibrationReport& report = run.report;
    report.title = "2 Point Calibration";
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

Outcome CalculateGains(Run& run)
{
    Status("Calculating Gains...");
    if (!AllocateBlock(run.gains, run.pixels)) return Fail("Failure to allocate Gain List memory!");
    std::optional<DecomTable> table = LoadDecomList(run.config);
    if (!table) {
        MessageBox(run.window, "Failure to load Decommutation array into memory!", kMessageCaption);
        StatusString(kIdleHint, kLeftAligned);
        return Outcome::kFailed;
    }
    run.table = *std::move(table);
    AllocateBlock(run.classes, run.pixels);  // without it the report has no map
    run.result.counts = ClassifyDetectors(run.lowSums, run.highSums, run.shorts, run.result.means, run.settings,
                                          run.gains, run.classes);
    ReportClasses(run);
    Free(run.highSums);
    MessageBox(run.window, BadPixelCountText(run.result.counts, run.pixels), "Bad pixel count", BoxIcon::kInformation);
    return Outcome::kGoOn;
}

Outcome InstallGains(Run& run)
{
    if (DownloadGains(run.gains)) return Outcome::kGoOn;
    MessageBeep(Sound::kExclamation);
    return Fail("Failure to download Gain list!", "Kelvo Download Error!");
}

Outcome FindOffsets(Run& run)
{
    TruncateMeans(run.lowSums, run.shorts);
    Free(run.lowSums);
    std::int32_t rangeFlag = 0;
    OffsetResult& found = run.result.offsets;
    std::optional<std::vector<std::int16_t>> offsets =
        CalculateOffsets(run.gains, run.shorts, run.result.means.meanLow, found.meanGain, found.meanOffset, rangeFlag);
    if (!offsets) return Fail("Failure to lock Gain list memory!");
    run.offsets = *std::move(offsets);
    run.offsetsLeaveRange = rangeFlag != 0;
    Status("Calculating calibration statistics...");
    run.result.spread = SpreadOf(run.gains, run.offsets, found.meanGain, found.meanOffset);
    return Outcome::kGoOn;
}

Outcome InstallOffsets(Run& run)
{
    if (DownloadOffsets(run.offsets)) return Outcome::kGoOn;
    MessageBeep(Sound::kExclamation);
    return Outcome::kFailed;
}

// The full range of the converter, and one coefficient for all.
void FillUnity(const CameraConfig& config)
{
    const bool rising = config.UnityGain >= 0;
    DisplayHigh = rising ? config.UnityOffset - 1 : config.UnityOffset;
    DisplayLow = rising ? -config.UnityOffset : 1 - config.UnityOffset;
    const auto pixels = static_cast<std::int32_t>(PixelsOf(config));
    if (!FillCoefficients(kGainKind, 0, pixels, config.UnityGain)) {
        MessageBox(hWndMain, "Hardware Timeout Error, Download of Gain Coefficients", kMessageCaption);
    }
    if (!FillCoefficients(kOffsetKind, 0, pixels, config.ZeroOffset)) {
        MessageBox(hWndMain, "Hardware Timeout Error, Download of Offset Coefficients", kMessageCaption);
    }
}

Outcome AskAboutRange(Run& run)
{
    if (!run.offsetsLeaveRange) return Outcome::kGoOn;
    run.waiting.reset();
    SetPointer(Pointer::kArrow);
    const bool accepted = AcceptOffsetRange(run.window);
    run.waiting.emplace();
    if (accepted) return Outcome::kGoOn;
    Status("Downloading Unity Coefficients");
    FillUnity(run.config);
    return Outcome::kFailed;
}

// --- The set --------------------------------------------------------------------------------------------------------

Outcome SaveOffsetFile(Run& run)
{
    Status("Saving offset calibration file...");
    CalSettings.OffsetFile = LastSetFile(".off");
    run.listsAreSaved = SaveOffsets(CalSettings.OffsetFile, run.offsets);
    CalSettings.CalFile = LastCalPath();
    return Outcome::kGoOn;
}

Outcome Substitute(Run& run)
{
    if (!SubstituteBadPixels(run.gains, run.table)) return Outcome::kStopped;
    if (SubstBadPixels) MapListed(run.report, BadDetList);
    OrientMap(run.report);
    return Outcome::kGoOn;
}

Outcome SaveGainFile(Run& run)
{
    Status("Saving gain calibration file");
    CalSettings.GainFile = LastSetFile(".gai");
    run.listsAreSaved = SaveGains(CalSettings.GainFile, run.gains) && run.listsAreSaved;
    return Outcome::kGoOn;
}

Outcome PutInForce(Run& run)
{
    Status("Setting Image orientation...");
    run.doneFlag = 1;
    CalType = 2;
    SetImageOrientation(SubstBadPixels, MirrorHoriz, MirrorVert, RotateCCW, CalSettings.BadDetFile, run.config,
                        FrameRateRowAt(IndexFrameRate).ReadoutShift);
    return Outcome::kGoOn;
}

Outcome SaveDecommutation(Run& run)
{
    Status("Saving Decommutation order in file...");
    CalSettings.DecomFile = LastSetFile(".dcm");
    if (CopyFileTo(DecomTempPath(), CalSettings.DecomFile, false)) return Outcome::kGoOn;
    MessageBox(run.window, "Failed to save file: " + CalSettings.DecomFile, kMessageCaption);
    run.listsAreSaved = false;
    return Outcome::kGoOn;
}

Outcome WriteKeys(Run& /*run*/)
{
    Status("Saving calibration (.cal) file...");
    WriteCalFileKey("BadDetFile", CalSettings.BadDetFile);
    WriteCalFileKey("DecomFile", CalSettings.DecomFile);
    WriteCalFileKey("GainFile", CalSettings.GainFile);
    WriteCalFileKey("OffsetFile", CalSettings.OffsetFile);
    WriteCalKey("CalType", "2");
    WriteCalKey("CalFile", CalSettings.CalFile);
    WriteCalKey("DriverNumber", std::to_string(ActiveCamera));
    return Outcome::kGoOn;
}

Outcome KeepSources(Run& run)
{
    Status("Calculating more statistics...");
    IntensityCold = RoundCounts(run.result.means.meanLow);
    IntensityHot = RoundCounts(run.result.means.meanHigh);
    CalSettings.IntensityCold = IntensityCold;
    CalSettings.IntensityHot = IntensityHot;
    CalSettings.TemperatureCold = TemperatureCold;
    CalSettings.TemperatureHot = TemperatureHot;
    WriteCalKey("TemperatureCold", Format("%f", static_cast<double>(TemperatureCold)));
    WriteCalKey("TemperatureHot", Format("%f", static_cast<double>(TemperatureHot)));
    WriteCalKey("IntensityCold", std::to_string(IntensityCold));
    WriteCalKey("IntensityHot", std::to_string(IntensityHot));
    return Outcome::kGoOn;
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

Outcome ShowStatistics(Run& run)
{
    run.report.calPath = LastCalPath();
    run.report.note = NoteOnStraightLine();
    MeasureAfter(run.report, SourceName("high source", TemperatureHot), run.settings.frameCount);
    run.waiting.reset();
    SetPointer(Pointer::kArrow);
    Status("Calibration results");
    ShowResult(run.window,
               TwoPointResultText(run.result, run.pixels, run.settings.replaceNoisy, TemperatureCold, TemperatureHot),
               "Kelvo Calibration Statistics", run.report);
    return Outcome::kGoOn;
}

Outcome SaveSet(Run& run)
{
    CompleteSet(run.window, run.files, LastCalPath(), run.listsAreSaved);
    if (!CalSettings.CalFile.empty()) SaveReport(run.report);
    ShowDegrees();
    return Outcome::kGoOn;
}

using Step = Outcome (*)(Run&);
constexpr Step kSteps[] = {
    AllocateSums, CaptureLow,        AskForHighSource, CaptureHigh,   AverageSums,    CheckArray, CalculateGains,
    InstallGains, FindOffsets,       InstallOffsets,   AskAboutRange, SaveOffsetFile, Substitute, SaveGainFile,
    PutInForce,   SaveDecommutation, WriteKeys,        KeepSources,   ShowStatistics, SaveSet,
};

Outcome TakeSteps(Run& run)
{
    for (const Step step : kSteps) {
        if (const Outcome outcome = step(run); outcome != Outcome::kGoOn) return outcome;
    }
    return Outcome::kGoOn;
}

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

int TwoPointCalibrate(HWND window, const CameraConfig& config, std::int32_t& doneFlag)
{
    if (!ColdSourceDialog(window, "2 Point Calibration")) return 0;
    StatusMessage("Initializing variables...", kLeftAligned);
    const KeptPointer pointer;
    Run run(window, config, doneFlag);
    run.waiting.emplace();
    doneFlag = 0;
    if (!SetCommutationOrder()) return 0;
    const Outcome outcome = TakeSteps(run);
    if (outcome == Outcome::kFailed) ResetUnityGainOffset(CameraConfig(config));
    return outcome == Outcome::kGoOn ? 1 : 0;
}

std::optional<std::vector<std::int16_t>> CalculateOffsets(std::span<const float> gainList,
                                                          std::span<const std::int16_t> lowMeans, float meanLow,
                                                          float& meanGain, float& meanOffset, std::int32_t& rangeFlag)
{
    StatusMessage("Calculating Offsets...", kLeftAligned);
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

std::int32_t DownloadGains(std::span<const float> gainList)
{
    StatusMessage("Downloading Gains...", kLeftAligned);
    if (DownloadCoefficients(kGainKind, BytesOf(gainList))) return 1;
    MessageBox(hWndMain, "Hardware Timeout Error, Download of Gain Coefficients", kMessageCaption);
    return 0;
}

std::int32_t DownloadOffsets(std::span<const std::int16_t> offsetList)
{
    StatusMessage("Downloading Offsets...", kLeftAligned);
    if (DownloadCoefficients(kOffsetKind, BytesOf(offsetList))) return 1;
    MessageBox(hWndMain, "Hardware Timeout Error, Download of Offset Coefficients", kMessageCaption);
    return 0;
}

}  // namespace kelvo
