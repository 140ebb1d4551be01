#include "calib/one_point_run.h"

#include "acquire/averaging.h"
#include "calib/calibration_report.h"
#include "calib/calibration_run.h"
#include "calib/calibration_set.h"
#include "calib/last_set.h"
#include "calib/one_point.h"
#include "calib/orientation.h"
#include "calib/report_dialog.h"
#include "calib/run_steps.h"
#include "calib/source_dialogs.h"
#include "calib/two_point.h"
#include "display/display_pipeline.h"
#include "head/video_settings.h"
#include "pixel/bad_pixels.h"
#include "pixel/decommutation.h"
#include "pixel/unsaved_set.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/display_state.h"
#include "state/windows.h"
#include "ui/gather.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

OnePointSettings OnePointSettingsInForce()
{
    return {.minOffset = CalSettings.MinOffset,
            .maxOffset = CalSettings.MaxOffset,
            .replaceNoisy = ReplaceNoisy != 0,
            .allowedNoise = CalSettings.AllowedNoiseLevel};
}

struct OnePointRun : RunRecord {
    OnePointRun(HWND parent, const CameraConfig& camera, FormerCalibration& inForce)
        : RunRecord(parent, camera, inForce),
          typeBefore(CalType),
          update(CalType != 0),
          formerHasFiles(!SetWithoutFiles()),
          settings(OnePointSettingsInForce())
    {
    }

    std::int32_t typeBefore;
    bool update;  // of the calibration that was in force
    bool formerHasFiles;
    OnePointSettings settings;

    std::vector<std::int16_t> frame;
    std::vector<OnePointClass> classes;
    OnePointResult result;
    std::string formerCalFile;
    std::string formerDecomFile;

    // The calibration that is updated has no files yet: what stands under its name is another one.
    bool UpdatesMemory() const { return update && !formerHasFiles; }
};

std::string NewCalPath()
{
    return DefaultDir + "/last.cal";
}

// --- Steps ----------------------------------------------------------------------------------------------------------

StepOutcome AllocateFrame(OnePointRun& run)
{
    if (!AllocateBlock(run.frame, run.pixels)) return FailTelling("Failure to allocate video memory!");
    const bool measuresNoise = !run.update && CalSettings.NumFrames != 1 && ReplaceNoisy != 0;
    if (measuresNoise && !AllocateBlock(run.noise, run.pixels)) {
        return FailTelling("Failure to allocate or lock StdDev memory!");
    }
    return StepOutcome::kGoOn;
}

StepOutcome CaptureFrame(OnePointRun& run)
{
    const int captured = GetCalibData(run.frame, run.noise, CalSettings.NumFrames);
    if (!captured) return StepOutcome::kNoFrames;
    MessageBeep(Sound::kDefault);
    return StepOutcome::kGoOn;
}

bool ReadGains(const std::string& path, std::vector<float>& gains)
{
    auto file = File::Open(path, FileMode::kReadWrite);
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(gains));
    return file && file->Read(bytes) == bytes.size();
}

// Those of a set that has no files yet are in memory.
bool FillFormerGains(OnePointRun& run)
{
    const UnsavedSet* const unsaved = SetWithoutFiles();
    if (!unsaved) return ReadGains(SetFile(CalSettings.CalFile, ".gai"), run.gains);
    if (unsaved->gains.size() != run.pixels) return false;
    run.gains = unsaved->gains;
    return true;
}

StepOutcome FillGains(OnePointRun& run)
{
    if (!AllocateBlock(run.gains, run.pixels)) return FailTelling("Failure to allocate or lock Gain memory!");
    if (run.update) {
        TellStep("Reading in gain list from file");
        if (!FillFormerGains(run)) return FailWithBeep();
        if (AllocateBlock(run.fileGains, run.pixels)) run.fileGains = run.gains;
        return StepOutcome::kGoOn;
    }
    TellStep("Setting all gains to identical value");
    std::ranges::fill(run.gains, 1.0F);
    return StepOutcome::kGoOn;
}

// The list of a set that has no files yet can't be read from one: its detectors get a gain of 0, as those that the
// gains show.
void RejectListed(OnePointRun& run, const BadDetMap& listed)
{
    const PositionRule rule = PositionRuleOf(run.config);
    for (std::size_t i = 0; i < listed.size() && i < run.pixels; ++i) {
        if (listed[i] == 0) continue;
        const auto columns = static_cast<std::size_t>(run.config.Hroi);
        const std::int64_t place =
            rule.InTable(static_cast<std::int32_t>(i / columns), static_cast<std::int32_t>(i % columns));
        if (place < 0 || std::cmp_greater_equal(place, run.table.size())) continue;
        const std::uint32_t detector = run.table[static_cast<std::size_t>(place)];
        if (detector < run.gains.size()) run.gains[detector] = 0;
    }
}

StepOutcome LoadTable(OnePointRun& run)
{
    std::optional<DecomTable> table = LoadDecomList(run.config);
    if (!table) return FailTelling("Failure to get decommutation order!");
    run.table = *std::move(table);
    if (run.UpdatesMemory()) RejectListed(run, SetWithoutFiles()->badDetectors);
    return StepOutcome::kGoOn;
}

// Where no pixel is good after all, the plain state of the beginning stands already.
StepOutcome TellNoGoodPixels(StepOutcome outcome)
{
    FailTelling("Failure to find good pixels!");
    return outcome;
}

StepOutcome FindMean(OnePointRun& run)
{
    TellStep("Calculating average of all pixels");
    const float mean = MeanOfPixels(run.frame, run.table);
    if (!SubstBadPixels) {
        run.result = AcceptAllPixels(mean, run.noise, run.pixels);
        return StepOutcome::kGoOn;
    }
    const std::optional<float> inside = MeanInsideWindow(run.frame, run.table, mean, run.settings);
    if (!inside) return TellNoGoodPixels(StepOutcome::kFailed);
    TellStep("Replace bad pixels");
    AllocateBlock(run.classes, run.pixels);  // without it the report has no map
    const auto result =
        RejectOutsideWindow(run.frame, run.noise, run.table, *inside, run.settings, run.gains, run.classes);
    if (!result) return TellNoGoodPixels(StepOutcome::kStopped);
    run.result = *result;
    return StepOutcome::kGoOn;
}

void ReportWindowClasses(OnePointRun& run)
{
    CalibrationReport& report = run.report;
    report.title = run.update ? "1 Point Update" : "1 Point Calibration";
    report.facts = FactsOfRun(CalSettings.NumFrames);
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
StepOutcome ReportAndInstallGains(OnePointRun& run)
{
    ReportWindowClasses(run);
    DownloadGains(run.gains);
    return StepOutcome::kGoOn;
}

StepOutcome FindNewOffsets(OnePointRun& run)
{
    if (!TakeOffsets(run, run.frame, run.result.mean)) return FailWithBeep();
    write::cal.IntensityCold = RoundCounts(run.result.mean);
    write::calSet.CalSettings.IntensityCold = IntensityCold;
    write::calSet.CalSettings.TemperatureCold = TemperatureCold;
    return StepOutcome::kGoOn;
}

StepOutcome AcceptNewRange(OnePointRun& run)
{
    if (!run.offsetsLeaveRange) return StepOutcome::kGoOn;
    if (AcceptOffsetRange(run.window)) return StepOutcome::kGoOn;
    TellStep("Downloading Unity Coefficients");
    return StepOutcome::kFailed;
}

// From here on the files of the set change; they come back unless the run completes the set.
StepOutcome OpenSet(OnePointRun& run)
{
    const std::string calPath = run.update ? CalSettings.CalFile : NewCalPath();
    if (!OpenFiles(run, calPath)) return StepOutcome::kFailed;
    write::cal.CalType = run.typeBefore >= 1 ? run.typeBefore : 1;
    run.formerCalFile = CalSettings.CalFile;
    write::calSet.CalSettings.CalFile = calPath;
    return StepOutcome::kGoOn;
}

bool IsTableOfFrame(const OnePointRun& run, const std::string& path)
{
    const std::size_t bytes = run.table.size() * sizeof(DecomTable::value_type);
    const std::optional<std::string> contents = ReadWholeFile(path, bytes);
    return contents && contents->size() == bytes;
}

// A set without a table can't be copied, and is told of at each load: where there is none this run's own goes into it,
// as it stands before bad pixels are replaced. A table that the set has already stays.
StepOutcome SaveOwnTable(OnePointRun& run)
{
    const std::string own = SetFile(CalSettings.CalFile, ".dcm");
    run.formerDecomFile = CalSettings.DecomFile;
    if (!run.update) write::calSet.CalSettings.DecomFile = own;
    if (run.formerHasFiles && IsTableOfFrame(run, CalSettings.DecomFile)) return StepOutcome::kGoOn;
    TellStep("Saving Decommutation order in file...");
    write::calSet.CalSettings.DecomFile = own;
    run.listsAreSaved = SaveList(own, BytesOf(std::span<const std::uint32_t>(run.table)), run.table.size()) != 0;
    return StepOutcome::kGoOn;
}

// The former calibration is gone from here on; an update of one that has no files yet goes on without any.
void NoteUnsaved(const OnePointRun& run)
{
    const UnsavedSet* const former = SetWithoutFiles();
    if (!run.UpdatesMemory() || !former) {
        TakeOver(run);
        return;
    }
    UnsavedSet set{.gains = former->gains, .offsets = run.offsets, .noise = former->noise, .badDetectors = {}};
    if (SubstBadPixels) set.badDetectors = BadDetList;
    KeepUnsavedSet(std::move(set));
}

// CalType stays. The set is named as before, so that the caller can load it again.
StepOutcome SubstituteInSet(OnePointRun& run)
{
    const std::string formerBadDetFile = CalSettings.BadDetFile;
    if (run.UpdatesMemory()) write::calSet.CalSettings.BadDetFile.clear();  // its list is in the gains
    if (SubstituteAndMap(run)) {
        NoteUnsaved(run);
        return StepOutcome::kGoOn;
    }
    write::calSet.CalSettings.BadDetFile = formerBadDetFile;
    write::calSet.CalSettings.CalFile = run.formerCalFile;
    write::calSet.CalSettings.DecomFile = run.formerDecomFile;
    return StepOutcome::kStopped;
}

StepOutcome OrientAndShowRange(OnePointRun& run)
{
    TellStep("Setting Image orientation...");
    RebuildTable(run.config);
    ShowFullScale();
    BuildDisplayLut(Contrast, Brightness);
    return StepOutcome::kGoOn;
}

StepOutcome ShowResults(OnePointRun& run)
{
    run.report.calPath = CalSettings.CalFile;
    MeasureAfter(run.report, SourceName("low source", TemperatureCold), CalSettings.NumFrames);
    const bool tellNoise = !run.update && CalSettings.NumFrames >= 2 && ReplaceNoisy != 0;
    if (tellNoise) run.report.facts.push_back(NoiseFact(double{run.result.noiseMean}, 0));
    const std::string text = OnePointResultText(run.result, run.pixels, run.update, tellNoise, TemperatureCold);
    run.waiting.reset();
    ShowResult(run.window, text, "Calibration results", run.report);
    run.waiting.emplace();
    return StepOutcome::kGoOn;
}

void WriteListKeys()
{
    WriteCalFileKey("BadDetFile", CalSettings.BadDetFile);
    WriteCalFileKey("DecomFile", CalSettings.DecomFile);
    WriteCalFileKey("GainFile", CalSettings.GainFile);
    WriteCalFileKey("OffsetFile", CalSettings.OffsetFile);
}

StepOutcome WriteSourceKeys(OnePointRun& run)
{
    WriteCalKey("TemperatureCold", Format("%f", static_cast<double>(TemperatureCold)));
    WriteCalKey("IntensityCold", std::to_string(IntensityCold));
    WriteListKeys();
    WriteCalKey("CalFile", CalSettings.CalFile);
    if (!run.update) WriteCalKey("CalType", "1");
    if (!run.config.DualCamera) WriteCalKey("DriverNumber", std::to_string(ActiveCamera));
    return StepOutcome::kGoOn;
}

// The frame's memory serves the noise list: the offsets stand by now. The noise of a former run is none of this one's.
void SaveNewNoise(OnePointRun& run)
{
    const std::string path = SetFile(CalSettings.CalFile, ".noi");
    if (FileExists(path)) DeleteFileNamed(path);
    if (run.noise.empty()) return;
    NoiseToSteps(run.noise, run.frame);
    std::vector<float>().swap(run.noise);
    SaveNoise(path, run.frame);
}

void SaveNewGains(OnePointRun& run)
{
    TellStep("Saving gain calibration file");
    write::calSet.CalSettings.GainFile = SetFile(CalSettings.CalFile, ".gai");
    run.listsAreSaved = SaveGains(CalSettings.GainFile, run.gains) && run.listsAreSaved;
}

// What stands under the name of the set is another one: all of it is written.
void SaveFormerLists(OnePointRun& run, const UnsavedSet& unsaved)
{
    const std::string noise = SetFile(CalSettings.CalFile, ".noi");
    if (FileExists(noise)) DeleteFileNamed(noise);
    if (!unsaved.noise.empty()) run.listsAreSaved = ReplaceFile(noise, unsaved.noise) && run.listsAreSaved;
    write::calSet.CalSettings.GainFile = SetFile(CalSettings.CalFile, ".gai");
    run.listsAreSaved = SaveGains(CalSettings.GainFile, unsaved.gains) && run.listsAreSaved;
}

StepOutcome SaveLists(OnePointRun& run)
{
    if (!run.update) {
        SaveNewNoise(run);
        SaveNewGains(run);
    } else if (run.UpdatesMemory() && SetWithoutFiles()) {
        SaveFormerLists(run, *SetWithoutFiles());
    }
    TellStep("Saving offset calibration file");
    write::calSet.CalSettings.OffsetFile = SetFile(CalSettings.CalFile, ".off");
    run.listsAreSaved = SaveOffsets(CalSettings.OffsetFile, run.offsets) && run.listsAreSaved;
    // The lists got their names after the keys were written: without this a new set would name those of another one.
    if (!run.update || run.UpdatesMemory()) WriteListKeys();
    return StepOutcome::kGoOn;
}

// An update without a calibration is a new one-point run, under the name of the run that was chosen last.
const char* TitleOfRun(bool update)
{
    if (update) return "1 Point Update";
    return CalSettings.ChosenType == 1 ? "1 Point Calibration" : "2 Point Calibration";
}

constexpr RunStep<OnePointRun> kOnePointSteps[] = {
    AllocateFrame,      CaptureFrame,   FillGains,       LoadTable, FindMean,     ReportAndInstallGains,
    FindNewOffsets,     AcceptNewRange, InstallOffsets,  OpenSet,   SaveOwnTable, SubstituteInSet,
    OrientAndShowRange, ShowResults,    WriteSourceKeys, SaveLists, SaveSet,
};

}  // namespace

RunEnd RunOnePoint(HWND window, FormerCalibration& former)
{
    const bool update = CalType != 0;
    TellStep(update ? " Perform 1 point update to current calibration (determine new offsets)"
                    : " Perform 1 point calibration (determine offsets only)");
    if (!update) write::calSet.CalSettings.NumSources = 1;
    if (!ColdSourceDialog(window, TitleOfRun(update))) {
        former.PutBack();
        return RunEnd::kCancelled;
    }
    OnePointRun run(window, ActiveConfig, former);
    return Complete<OnePointRun>(run, kOnePointSteps);
}

int OnePointCalibrate(HWND window)
{
    FormerCalibration former;
    return RunOnePoint(window, former) == RunEnd::kCompleted ? 1 : 0;
}

int GetCalibData(std::span<std::int16_t> frame, std::span<float> noise, std::uint32_t frameCount)
{
    TellStep("Getting calibration data...");
    const Hourglass hourglass;
    const bool live = EnsureLiveVideo();
    write::cal.CalType = 0;
    if (frame.size() < PixelsOf(ActiveConfig)) {
        MessageBeep(Sound::kExclamation);
        MessageBox(hWndMain, "Invalid data array size", "GetCalibData Error");
        return 0;
    }
    const int captured = live && frameCount != 0 &&
                         AverageFrames(frame, noise, frameCount, 0, 0, ActiveConfig.Hroi - 1, ActiveConfig.Vroi - 1,
                                       CaptureMode(kAverage16));
    if (captured && WereGathered<std::int16_t>(frame)) return 1;
    if (noise.empty()) MessageBeep(Sound::kExclamation);
    MessageBox(hWndMain, WhyNothingWasGathered("Video Data Acquisition Failed, Hardware error"),
               noise.empty() ? std::string_view("GetCalibData Error") : kMessageCaption);
    return 0;
}

}  // namespace kelvo
