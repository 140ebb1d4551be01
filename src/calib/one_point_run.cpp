// The one-point run: new offsets from one source, for no calibration (all gains 1) or for the one in force (its gains).
#include "acquire/averaging.h"
#include "calib/calibration.h"
#include "calib/calibration_report.h"
#include "calib/calibration_run.h"
#include "calib/last_set.h"
#include "calib/one_point.h"
#include "calib/orientation.h"
#include "calib/run_steps.h"
#include "calib/two_point.h"
#include "config/frame_rate_table.h"
#include "display/display_pipeline.h"
#include "head/video_settings.h"
#include "pixel/bad_pixels.h"
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
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/status.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

// Without the capture board the mode asks for no frames at all.
constexpr std::uint32_t kMeanWithBoard = kAverage16 | kTakeNewFrames | kShowProgress;
constexpr std::uint32_t kMeanWithoutBoard = kAverage16 | kShowProgress | kPlainFrame | kWithoutBoard;

// How a step ends: the run goes on; it has failed, and the unity state comes back; or it stops with all as it stands.
enum class Outcome { kGoOn, kFailed, kStopped };

OnePointSettings SettingsOfRun()
{
    return {.minOffset = CalSettings.MinOffset,
            .maxOffset = CalSettings.MaxOffset,
            .replaceNoisy = ReplaceNoisy != 0,
            .allowedNoise = CalSettings.AllowedNoiseLevel};
}

struct Run {
    Run(HWND parent, const CameraConfig& camera)
        : window(parent),
          config(camera),
          typeBefore(CalType),
          update(CalType != 0),
          pixels(PixelsOf(camera)),
          settings(SettingsOfRun())
    {
    }

    HWND window;
    const CameraConfig& config;
    std::int32_t typeBefore;
    bool update;  // of the calibration that was in force
    std::size_t pixels;
    OnePointSettings settings;

    std::vector<std::int16_t> frame;
    std::vector<float> noise;  // empty: not measured
    std::vector<float> gains;
    std::vector<OnePointClass> classes;
    DecomTable table;
    std::vector<std::int16_t> offsets;
    bool offsetsLeaveRange = false;

    OnePointResult result;
    CalibrationReport report;
    std::string formerCalFile;
    std::unique_ptr<SetReplacement> files;
    bool listsAreSaved = true;
    std::optional<Hourglass> waiting;
};

void Status(std::string_view text)
{
    StatusMessage(text, kLeftAligned);
}

Outcome Fail(std::string_view text)
{
    MessageBox(hWndMain, text, kMessageCaption);
    return Outcome::kFailed;
}

Outcome FailWithBeep()
{
    MessageBeep(Sound::kExclamation);
    return Outcome::kFailed;
}

std::string NewCalPath()
{
    return DefaultDir + "/last.cal";
}

// --- Steps ----------------------------------------------------------------------------------------------------------

Outcome AllocateFrame(Run& run)
{
    if (!AllocateBlock(run.frame, run.pixels)) return Fail("Failure to allocate video memory!");
    const bool measuresNoise = !run.update && CalSettings.NumFrames != 1 && ReplaceNoisy != 0;
    if (measuresNoise && !AllocateBlock(run.noise, run.pixels)) {
        return Fail("Failure to allocate or lock StdDev memory!");
    }
    return Outcome::kGoOn;
}

Outcome CaptureFrame(Run& run)
{
    const int captured = GetCalibData(run.frame, run.noise, CalSettings.NumFrames);
    if (!captured) return Outcome::kFailed;
    MessageBeep(Sound::kDefault);
    return Outcome::kGoOn;
}

bool ReadGains(const std::string& path, std::vector<float>& gains)
{
    auto file = File::Open(path, FileMode::kReadWrite);
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(gains));
    return file && file->Read(bytes) == bytes.size();
}

Outcome FillGains(Run& run)
{
    if (!AllocateBlock(run.gains, run.pixels)) return Fail("Failure to allocate or lock Gain memory!");
    if (run.update) {
        Status("Reading in gain list from file");
        return ReadGains(SetFile(CalSettings.CalFile, ".gai"), run.gains) ? Outcome::kGoOn : FailWithBeep();
    }
    Status("Setting all gains to identical value");
    std::ranges::fill(run.gains, 1.0F);
    return Outcome::kGoOn;
}

Outcome LoadTable(Run& run)
{
    std::optional<DecomTable> table = LoadDecomList(run.config);
    if (!table) return Fail("Failure to get decommutation order!");
    run.table = *std::move(table);
    return Outcome::kGoOn;
}

// Where no pixel is good after all, the plain state of the beginning stands already.
Outcome TellNoGoodPixels(Outcome outcome)
{
    Fail("Failure to find good pixels!");
    return outcome;
}

Outcome FindMean(Run& run)
{
    Status("Calculating average of all pixels");
    const float mean = MeanOfPixels(run.frame, run.table);
    if (!SubstBadPixels) {
        run.result = AcceptAllPixels(mean, run.noise, run.pixels);
        return Outcome::kGoOn;
    }
    const std::optional<float> inside = MeanInsideWindow(run.frame, run.table, mean, run.settings);
    if (!inside) return TellNoGoodPixels(Outcome::kFailed);
    Status("Replace bad pixels");
    AllocateBlock(run.classes, run.pixels);  // without it the report has no map
    const auto result =
        RejectOutsideWindow(run.frame, run.noise, run.table, *inside, run.settings, run.gains, run.classes);
    if (!result) return TellNoGoodPixels(Outcome::kStopped);
    run.result = *result;
    return Outcome::kGoOn;
}

void ReportClasses(Run& run)
{
    CalibrationReport& report = run.report;
    report.title = run.update ? "1 Point Update" : "1 Point Calibration";
    report.frameCount = CalSettings.NumFrames;
    report.columns = run.config.Hroi;
    report.rows = run.config.Vroi;
    std::array<std::int32_t, 4> counts{};
    std::vector<std::uint8_t> classes;
    std::vector<std::uint8_t> good;
    if (AllocateBlock(classes, run.pixels) && AllocateBlock(good, run.pixels)) {
        for (std::size_t i = 0; i < run.pixels; ++i) {
            classes[i] = run.classes.empty() ? 0 : static_cast<std::uint8_t>(run.classes[i]);
            good[i] = classes[i] == 0 && run.gains[i] != 0 ? 1 : 0;
            ++counts.at(classes[i]);
        }
    }
    if (auto residual = NonUniformityOf(run.frame, good, SourceName("low source", TemperatureCold))) {
        report.before.push_back(*std::move(residual));
    }
    report.classes = {{"Below the window about the mean", counts[1], 0x5B8CFF},
                      {"Above the window about the mean", counts[2], 0xFF4D4D},
                      {"Noisy", counts[3], 0xFFFFFF}};
    MapClasses(report, classes, run.table);
}

// What the installation tells is all there is to it: the offsets follow in any case.
Outcome InstallGains(Run& run)
{
    ReportClasses(run);
    DownloadGains(run.gains);
    return Outcome::kGoOn;
}

Outcome FindOffsets(Run& run)
{
    float meanGain = 0;
    float meanOffset = 0;
    std::int32_t rangeFlag = 0;
    std::optional<std::vector<std::int16_t>> offsets =
        CalculateOffsets(run.gains, run.frame, run.result.mean, meanGain, meanOffset, rangeFlag);
    if (!offsets) return FailWithBeep();
    run.offsets = *std::move(offsets);
    run.offsetsLeaveRange = rangeFlag != 0;
    IntensityCold = RoundCounts(run.result.mean);
    CalSettings.IntensityCold = IntensityCold;
    CalSettings.TemperatureCold = TemperatureCold;
    return Outcome::kGoOn;
}

Outcome AskAboutRange(Run& run)
{
    if (!run.offsetsLeaveRange) return Outcome::kGoOn;
    if (AcceptOffsetRange(run.window)) return Outcome::kGoOn;
    Status("Downloading Unity Coefficients");
    return Outcome::kFailed;
}

Outcome InstallOffsets(Run& run)
{
    return DownloadOffsets(run.offsets) ? Outcome::kGoOn : FailWithBeep();
}

// From here on the files of the set change; they come back unless the run completes the set.
Outcome OpenSet(Run& run)
{
    const std::string calPath = run.update ? CalSettings.CalFile : NewCalPath();
    run.files = std::make_unique<SetReplacement>(calPath);
    if (!run.files->Begin()) {
        MessageBox(run.window, "Failed to save file: " + calPath, "Kelvo File Error!");
        return Outcome::kFailed;
    }
    CalType = run.typeBefore >= 1 ? run.typeBefore : 1;
    run.formerCalFile = CalSettings.CalFile;
    CalSettings.CalFile = calPath;
    return Outcome::kGoOn;
}

// CalType stays. The set is named as before, so that the caller can load it again.
Outcome Substitute(Run& run)
{
    if (!SubstituteBadPixels(run.gains, run.table)) {
        CalSettings.CalFile = run.formerCalFile;
        return Outcome::kStopped;
    }
    if (SubstBadPixels) MapListed(run.report, BadDetList);
    OrientMap(run.report);
    return Outcome::kGoOn;
}

Outcome PutInForce(Run& run)
{
    Status("Setting Image orientation...");
    SetImageOrientation(SubstBadPixels, MirrorHoriz, MirrorVert, RotateCCW, CalSettings.BadDetFile, run.config,
                        FrameRateRowAt(IndexFrameRate).ReadoutShift);
    DisplayLow = 0;
    DisplayHigh = FullScaleCounts();
    SetVoltsRange(VideoGain[0], VideoOffset[0]);
    BuildDisplayLut(Contrast, Brightness);
    return Outcome::kGoOn;
}

Outcome ShowResults(Run& run)
{
    run.report.calPath = CalSettings.CalFile;
    MeasureAfter(run.report, SourceName("low source", TemperatureCold), CalSettings.NumFrames);
    const bool tellNoise = !run.update && CalSettings.NumFrames >= 2 && ReplaceNoisy != 0;
    const std::string text = OnePointResultText(run.result, run.pixels, run.update, tellNoise, TemperatureCold);
    run.waiting.reset();
    ShowResult(run.window, text, "Calibration results", run.report);
    run.waiting.emplace();
    return Outcome::kGoOn;
}

void WriteListKeys()
{
    WriteCalFileKey("BadDetFile", CalSettings.BadDetFile);
    WriteCalFileKey("DecomFile", CalSettings.DecomFile);
    WriteCalFileKey("GainFile", CalSettings.GainFile);
    WriteCalFileKey("OffsetFile", CalSettings.OffsetFile);
}

Outcome WriteKeys(Run& run)
{
    WriteCalKey("TemperatureCold", Format("%f", static_cast<double>(TemperatureCold)));
    WriteCalKey("IntensityCold", std::to_string(IntensityCold));
    WriteListKeys();
    WriteCalKey("CalFile", CalSettings.CalFile);
    if (!run.update) WriteCalKey("CalType", "1");
    if (!run.config.DualCamera) WriteCalKey("DriverNumber", std::to_string(ActiveCamera));
    return Outcome::kGoOn;
}

// The frame's memory serves the noise list: the offsets stand by now.
void SaveNewNoise(Run& run)
{
    if (run.noise.empty()) return;
    NoiseToSteps(run.noise, run.frame);
    std::vector<float>().swap(run.noise);
    SaveNoise(SetFile(CalSettings.CalFile, ".noi"), run.frame);
}

void SaveNewGains(Run& run)
{
    Status("Saving gain calibration file");
    CalSettings.GainFile = SetFile(CalSettings.CalFile, ".gai");
    run.listsAreSaved = SaveGains(CalSettings.GainFile, run.gains);
}

Outcome SaveLists(Run& run)
{
    if (!run.update) {
        SaveNewNoise(run);
        SaveNewGains(run);
    }
    Status("Saving offset calibration file");
    CalSettings.OffsetFile = SetFile(CalSettings.CalFile, ".off");
    run.listsAreSaved = SaveOffsets(CalSettings.OffsetFile, run.offsets) && run.listsAreSaved;
    // The lists got their names after the keys were written: without this a new set would name those of another one.
    if (!run.update) WriteListKeys();
    return Outcome::kGoOn;
}

Outcome SaveSet(Run& run)
{
    CompleteSet(run.window, *run.files, CalSettings.CalFile, run.listsAreSaved);
    if (!CalSettings.CalFile.empty()) SaveReport(run.report);
    run.waiting.reset();
    ShowDegrees();
    return Outcome::kGoOn;
}

// An update without a calibration is a new one-point run, under the name of the run that was chosen last.
const char* TitleOfRun(bool update)
{
    if (update) return "1 Point Update";
    return CalSettings.ChosenType == 1 ? "1 Point Calibration" : "2 Point Calibration";
}

using Step = Outcome (*)(Run&);
constexpr Step kSteps[] = {
    AllocateFrame,  CaptureFrame, FillGains,  LoadTable,  FindMean,    InstallGains, FindOffsets, AskAboutRange,
    InstallOffsets, OpenSet,      Substitute, PutInForce, ShowResults, WriteKeys,    SaveLists,   SaveSet,
};

Outcome TakeSteps(Run& run)
{
    for (const Step step : kSteps) {
        if (const Outcome outcome = step(run); outcome != Outcome::kGoOn) return outcome;
    }
    return Outcome::kGoOn;
}

}  // namespace

int OnePointCalibrate(HWND window)
{
    const bool update = CalType != 0;
    Status(update ? " Perform 1 point update to current calibration (determine new offsets)"
                  : " Perform 1 point calibration (determine offsets only)");
    if (!update) CalSettings.NumSources = 1;
    if (!ColdSourceDialog(window, TitleOfRun(update))) return 0;
    Run run(window, ActiveConfig);
    run.waiting.emplace();
    if (!SetCommutationOrder()) return 0;
    const Outcome outcome = TakeSteps(run);
    if (outcome == Outcome::kFailed) ResetUnityGainOffset(CameraConfig(ActiveConfig));
    return outcome == Outcome::kGoOn ? 1 : 0;
}

int GetCalibData(std::span<std::int16_t> frame, std::span<float> noise, std::uint32_t frameCount)
{
    Status("Getting calibration data...");
    const Hourglass hourglass;
    const bool live = StartLiveVideo();
    CalType = 0;
    if (frame.size() < PixelsOf(ActiveConfig)) {
        MessageBeep(Sound::kExclamation);
        MessageBox(hWndMain, "Invalid data array size", "GetCalibData Error");
        return 0;
    }
    const int captured = live && frameCount != 0 &&
                         AverageFrames(frame, noise, frameCount, 0, 0, ActiveConfig.Hroi - 1, ActiveConfig.Vroi - 1,
                                       GrabberPresent ? kMeanWithBoard : kMeanWithoutBoard);
    // The mean of no frames at all is zero throughout.
    const bool gathered = std::ranges::any_of(frame, [](std::int16_t count) { return count != 0; });
    if (captured && gathered) return 1;
    if (noise.empty()) MessageBeep(Sound::kExclamation);
    MessageBox(hWndMain, "Video Data Acquisition Failed, Hardware error",
               noise.empty() ? std::string_view("GetCalibData Error") : kMessageCaption);
    return 0;
}

}  // namespace kelvo
