#include "record/trace_window.h"

#include "analysis/plot_paint.h"
#include "analysis/plot_save.h"
#include "analysis/trace_csv.h"
#include "analysis/trace_plot.h"
#include "display/units.h"
#include "imagefile/stored_frames.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "record/live_trace.h"
#include "regions/bad_detectors.h"
#include "regions/region_list.h"
#include "regions/spectrum.h"
#include "regions/trace_file.h"
#include "resources/help_contexts.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/gather.h"
#include "ui/status.h"
#include "viewing/playback.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr int kSave = 1606;
constexpr int kLive = 22401;
constexpr int kStop = 22402;
constexpr int kFile = 22403;
constexpr int kRegion = 22404;
constexpr int kFigure = 22405;  // in the order of TraceFigure
constexpr int kPlot = 22406;
constexpr int kSource = 22407;
constexpr int kFrames = 22408;
constexpr int kTime = 22409;
constexpr int kGaps = 22410;
constexpr int kMean = 22411;
constexpr int kDeviation = 22412;
constexpr int kOfFrames = 22413;  // what a spectrum is of, or why there is none
constexpr int kUnit = 22414;
constexpr int kFirst = 22415;
constexpr int kLast = 22416;
constexpr int kLeaveOut = 22417;
constexpr int kMessage = 22418;
constexpr int kPixels = 22419;

constexpr std::uint32_t kRefreshTimer = 1;
constexpr std::int64_t kRefreshMs = 250;
constexpr std::size_t kFramesAtFullPace =
    200'000;  // of a longer trace the plot follows more slowly, for it takes longer

HWND hDlgTraces = nullptr;

std::optional<Trace> ofFile;             // stands in front of the live one until that is begun again
std::optional<std::int32_t> chosenUnit;  // by the operator; the unit on view where he chose none, or none that fits

// What the window holds beside its fields.
struct Shown {
    bool wasLive = false;               // at the last look
    std::vector<Region> liveRegions{};  // that the live trace began with
    std::uint32_t liveLists = 0;        // CalibrationListsVersion, likewise
    std::string filePath{};             // that the range is of
    std::int64_t fileFrames = 0;
    std::string message{};
};
Shown shown;

const Trace& ShownTrace()
{
    return ofFile ? *ofFile : LiveTrace();
}

TraceFigure ChosenFigure(HWND dialog)
{
    return static_cast<TraceFigure>(std::max(ListSelection(dialog, kFigure), 0));
}

std::size_t ChosenUnit(HWND dialog)
{
    return static_cast<std::size_t>(std::max(ListSelection(dialog, kUnit), 0));
}

// Whose values are shown, and how.
struct ShownLine {
    const TraceLine& line;
    TraceScale scale{};
};
std::optional<ShownLine> ChosenLine(HWND dialog, const Trace& trace)
{
    const auto chosen = static_cast<std::size_t>(std::max(ListSelection(dialog, kRegion), 0));
    if (chosen >= trace.lines.size()) return std::nullopt;
    return ShownLine{.line = trace.lines[chosen], .scale = ScaleOf(trace, ChosenUnit(dialog), chosen)};
}

// The view's regions; the whole picture where there are none.
std::vector<Region> RegionsToTrace(std::int32_t columns, std::int32_t rows)
{
    return Regions.empty() ? std::vector<Region>{WholePicture(columns, rows)} : Regions;
}

// ---- What is plotted

double FigureOf(const TraceValue& value, TraceFigure figure)
{
    switch (figure) {
        case TraceFigure::kDeviation:
            return value.deviation;
        case TraceFigure::kMinimum:
            return static_cast<double>(value.minimum);
        case TraceFigure::kMaximum:
            return static_cast<double>(value.maximum);
        case TraceFigure::kMean:
        case TraceFigure::kSpectrum:
            break;
    }
    return value.mean;
}

std::vector<double> FiguresOf(const ShownLine& shownLine, TraceFigure figure)
{
    std::vector<double> figures;
    figures.reserve(shownLine.line.points.size());
    for (const TracePoint& point : shownLine.line.points) {
        figures.push_back(FigureOf(ValueOf(point, shownLine.scale), figure));
    }
    return figures;
}

struct Plotted {
    std::vector<double> places{};
    std::vector<double> values{};
    std::vector<std::size_t> breaks{};
    std::string title{};
    std::string ofFrames{};
};

std::string_view NameOf(TraceFigure figure)
{
    constexpr std::string_view kNames[] = {"mean", "deviation", "minimum", "maximum", "amplitude"};
    return kNames[static_cast<std::size_t>(figure)];
}

std::string TitleOf(std::string_view axis, TraceFigure figure, const std::string& unit)
{
    return std::string(axis) + ": " + std::string(NameOf(figure)) + " in " + unit;
}

Plotted PlottedTrace(const Trace& trace, const ShownLine& line, TraceFigure figure, const std::string& unit)
{
    Plotted plotted{.values = FiguresOf(line, figure),
                    .title = TitleOf(trace.hasTimes ? "Seconds from the first frame" : "Frame", figure, unit)};
    for (std::size_t i = 0; i < plotted.values.size(); ++i) {
        plotted.places.push_back(trace.hasTimes ? SecondsOf(trace.frames[i]) : static_cast<double>(i + 1));
    }
    for (const TraceGap& gap : TraceGapsOf(trace.frames)) plotted.breaks.push_back(gap.before);
    return plotted;
}

Plotted PlottedSpectrum(const Trace& trace, const ShownLine& line, const std::string& unit)
{
    const std::optional<Spectrum> spectrum = SpectrumOf(trace.frames, MeansOf(line.line, line.scale));
    if (!spectrum) {
        return {.ofFrames = trace.frames.empty()
                                ? std::string()
                                : Format("A spectrum needs %zu frames without a gap.", kLeastSpectrumFrames)};
    }
    const std::string_view axis = spectrum->intervalSeconds > 0 ? "Frequency (Hz)" : "Cycles per frame";
    Plotted plotted{.title = TitleOf(axis, TraceFigure::kSpectrum, unit),
                    .ofFrames = FramesOfSpectrum(*spectrum, trace.frames.size())};
    plotted.values = spectrum->amplitudes;
    for (std::size_t k = 0; k < plotted.values.size(); ++k) plotted.places.push_back(FrequencyOf(*spectrum, k));
    return plotted;
}

Plotted WhatIsPlotted(HWND dialog)
{
    const Trace& trace = ShownTrace();
    const std::optional<ShownLine> line = ChosenLine(dialog, trace);
    if (!line) return {};
    const TraceFigure figure = ChosenFigure(dialog);
    const std::string unit = UnitTextOf(trace, ChosenUnit(dialog));
    return figure == TraceFigure::kSpectrum ? PlottedSpectrum(trace, *line, unit)
                                            : PlottedTrace(trace, *line, figure, unit);
}

void PaintTrace(HWND dialog)
{
    const HWND control = DlgItemWindow(dialog, kPlot);
    const Plotted plotted = WhatIsPlotted(dialog);
    const TracePlot plot{
        .places = plotted.places, .values = plotted.values, .breaks = plotted.breaks, .title = plotted.title};
    PaintPlot(control, TracePicture(PlotArea(control), plot,
                                    [control](std::string_view text) { return PlotTextWidth(control, text); }));
    SetDlgItemText(dialog, kOfFrames, plotted.ofFrames);
}

// ---- What is told of it

std::string SourceText(const Trace& trace)
{
    const auto source = std::ranges::find(trace.origin, "source", &std::pair<std::string, std::string>::first);
    return source == trace.origin.end() ? std::string() : source->second;
}

void ShowMeans(HWND dialog, const Trace& trace, const std::optional<ShownLine>& line)
{
    if (!line || line->line.points.empty()) {
        SetDlgItemText(dialog, kMean, "-");
        SetDlgItemText(dialog, kDeviation, "-");
        return;
    }
    const std::vector<double> figures = FiguresOf(*line, ChosenFigure(dialog));
    const auto frames = static_cast<double>(figures.size());
    double sum = 0;
    for (const double figure : figures) sum += figure;
    const double mean = sum / frames;
    double squares = 0;
    for (const double figure : figures) squares += (figure - mean) * (figure - mean);
    const std::size_t unit = ChosenUnit(dialog);
    const auto text = [&](double value) {
        return unit == 0 ? Format("%.3f", value) : Format("%.4f ", value) + UnitTextOf(trace, unit);
    };
    SetDlgItemText(dialog, kMean, text(mean));
    SetDlgItemText(dialog, kDeviation, frames > 1 ? text(std::sqrt(squares / (frames - 1))) : "-");
}

std::string GapsText(const Trace& trace)
{
    const std::vector<TraceGap> gaps = TraceGapsOf(trace.frames);
    std::int64_t missing = 0;
    for (const TraceGap& gap : gaps) missing += gap.missing;
    if (gaps.empty()) return "none";
    return Format("%zu, %lld %s missing", gaps.size(), static_cast<long long>(missing),
                  missing == 1 ? "frame" : "frames");
}

void ShowFigures(HWND dialog)
{
    const Trace& trace = ShownTrace();
    SetDlgItemText(dialog, kSource, SourceText(trace));
    SetDlgItemText(dialog, kFrames, Format("%zu", trace.frames.size()));
    const bool isTimed = trace.hasTimes && !trace.frames.empty();
    SetDlgItemText(dialog, kTime, isTimed ? Format("%.3f s", SecondsOf(trace.frames.back())) : "-");
    SetDlgItemText(dialog, kGaps, trace.frames.empty() ? "-" : GapsText(trace));
    const std::optional<ShownLine> line = ChosenLine(dialog, trace);
    SetDlgItemText(dialog, kPixels, line ? std::to_string(line->line.pixels) + LeftOutText(line->line) : "-");
    ShowMeans(dialog, trace, line);
}

void EnableControls(HWND dialog)
{
    const bool runs = LiveTraceRuns();
    EnableDlgItem(dialog, kLive, !runs && CameraOn != 0);
    EnableDlgItem(dialog, kStop, runs);
    EnableDlgItem(dialog, kSave, !runs && !ShownTrace().frames.empty());
    EnableDlgItem(dialog, kLeaveOut, !runs);
    for (const int control : {kFile, kFirst, kLast}) EnableDlgItem(dialog, control, !runs && ViewingFile != 0);
}

// The regions and units of the trace, which needn't be those of the view any more.
void ListLinesAndUnits(HWND dialog)
{
    const Trace& trace = ShownTrace();
    const int chosen = std::max(ListSelection(dialog, kRegion), 0);
    ListClear(dialog, kRegion);
    for (const TraceLine& line : trace.lines) ListAdd(dialog, kRegion, line.name);
    const int last = ListCount(dialog, kRegion) - 1;
    if (last >= 0) ListSelect(dialog, kRegion, std::min(chosen, last));

    const std::int32_t wanted = chosenUnit.value_or(DisplayUnit);
    ListClear(dialog, kUnit);
    for (const TraceUnit& unit : trace.units) {
        ListAdd(dialog, kUnit, unit.text);
        if (unit.unit == wanted || unit.unit == kUnitCounts) ListSelect(dialog, kUnit, ListCount(dialog, kUnit) - 1);
    }
}

// One that stands already isn't painted anew.
void Tell(HWND dialog, std::string_view text, bool warns = false)
{
    if (shown.message == text) return;
    shown.message = text;
    SetDlgItemText(dialog, kMessage, text);
    WarnDlgItem(dialog, kMessage, warns);
}

// A field that won't do.
void Refuse(HWND dialog, int field, std::string_view why)
{
    MessageBeep(Sound::kDefault);
    Tell(dialog, why, true);
    FocusDlgItem(dialog, field);
}

void ShowTrace(HWND dialog)
{
    ShowFigures(dialog);
    EnableControls(dialog);
    PaintTrace(dialog);
}

void PickUnit(HWND dialog)
{
    const std::size_t chosen = ChosenUnit(dialog);
    const std::vector<TraceUnit>& units = ShownTrace().units;
    if (chosen < units.size()) chosenUnit = units[chosen].unit;
    ShowTrace(dialog);
}

// ---- What the view does meanwhile

// The range is that of the whole file as long as nobody changes it, also while the file grows.
void FollowFile(HWND dialog)
{
    const std::int64_t frames = ViewingFile == 0 ? 0 : std::max<std::int64_t>(FramesToPlay(), 1);
    const bool isAnother = frames == 0 || shown.filePath != ViewFilePath;
    if (!isAnother && frames == shown.fileFrames) return;
    const auto text = [frames](std::int64_t number) { return frames == 0 ? std::string() : std::to_string(number); };
    if (isAnother) SetDlgItemText(dialog, kFirst, text(0));
    if (isAnother || GetDlgItemText(dialog, kLast) == std::to_string(shown.fileFrames - 1)) {
        SetDlgItemText(dialog, kLast, text(frames - 1));
    }
    shown.filePath = frames == 0 ? std::string() : std::string(ViewFilePath);
    shown.fileFrames = frames;
}

// But for their numbers, which a file or a script gives anew.
bool AreTheSame(std::span<const Region> some, std::span<const Region> others)
{
    return std::ranges::equal(some, others, [](const Region& one, Region other) {
        other.number = one.number;
        return one == other;
    });
}

// What the live trace doesn't take part in.
void TellChanges(HWND dialog)
{
    if (!AreTheSame(RegionsToTrace(ActiveConfig.Hroi, ActiveConfig.Vroi), shown.liveRegions)) {
        Tell(dialog, "The regions have changed: the trace goes on with those that it began with.", true);
    } else if (CalibrationListsVersion != shown.liveLists) {
        Tell(dialog, "The correction has changed: the trace goes on with the one that it began with.", true);
    } else {
        Tell(dialog, "");
    }
}

// The choice is also that of the regions' window.
void FollowChoice(HWND dialog)
{
    const bool leavesOut = LeaveBadDetectorsOut != 0;
    if (IsDlgButtonChecked(dialog, kLeaveOut) != leavesOut) CheckDlgButton(dialog, kLeaveOut, leavesOut);
}

void ShowEnd(HWND dialog)
{
    ShowTrace(dialog);
    if (!LiveTraceMessage().empty()) MessageBox(dialog, LiveTraceMessage(), kMessageCaption, BoxIcon::kInformation);
}

std::int64_t PaceOf(const Trace& trace)
{
    return kRefreshMs * static_cast<std::int64_t>(1 + trace.frames.size() / kFramesAtFullPace);
}

void Refresh(HWND dialog)
{
    FollowFile(dialog);
    FollowChoice(dialog);
    if (LiveTraceRuns()) {
        TellChanges(dialog);
        ShowTrace(dialog);
    } else {
        EnableControls(dialog);
    }
    const bool runs = LiveTraceRuns();
    SetTimer(dialog, kRefreshTimer, runs ? PaceOf(ShownTrace()) : kRefreshMs);
    if (std::exchange(shown.wasLive, runs) && !runs) ShowEnd(dialog);
}

// ---- Its commands

void LeaveOut(HWND dialog)
{
    ChooseBadDetectors(IsDlgButtonChecked(dialog, kLeaveOut));
}

void BeginLive(HWND dialog)
{
    if (ModalIsOpen()) {  // which may take frames of the board itself
        Refuse(dialog, kLive, "Not while another dialog waits: leave that one first.");
        return;
    }
    std::string why;
    std::vector<Region> regions = RegionsToTrace(ActiveConfig.Hroi, ActiveConfig.Vroi);
    const BadPixels bad = LeaveBadDetectorsOut != 0 ? BadPixels::kLeftOut : BadPixels::kMeasured;
    if (!StartLiveTrace(regions, why, bad)) {
        MessageBox(dialog, why, kMessageCaption, BoxIcon::kInformation);
        return;
    }
    ofFile.reset();
    shown.wasLive = true;
    shown.liveRegions = std::move(regions);
    shown.liveLists = CalibrationListsVersion;
    Tell(dialog, "");
    ListLinesAndUnits(dialog);
    FollowFile(dialog);
    ShowTrace(dialog);
    FocusDlgItem(dialog, kStop);
}

void StopLive(HWND dialog)
{
    StopLiveTrace();
    shown.wasLive = false;
    Tell(dialog, "");
    ShowEnd(dialog);
    if (hDlgTraces) FocusDlgItem(dialog, kSave);
}

bool TellProgress(std::int64_t read, std::int64_t of)
{
    StatusMessage(Format("Traced %lld of %lld frames", static_cast<long long>(read), static_cast<long long>(of)),
                  kLeftAligned);
    return GatherGoesOn();
}

std::optional<std::int64_t> NumberIn(HWND dialog, int field)
{
    const std::string whole = GetDlgItemText(dialog, field);
    const std::string_view text = Trimmed(whole);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// Counted from 0, as on the play bar. A file that grows is taken as it is by then.
std::optional<StoredRange> RangeIn(HWND dialog)
{
    const std::optional<std::int64_t> first = NumberIn(dialog, kFirst);
    const std::optional<std::int64_t> last = NumberIn(dialog, kLast);
    const std::int64_t highest = shown.fileFrames - 1;
    if (first && last && *first >= 0 && *last >= *first && *last <= highest) {
        return StoredRange{.first = *first, .last = *last == highest ? -1 : *last};
    }
    const bool isFirst = !first || *first < 0 || *first > highest;
    Refuse(dialog, isFirst ? kFirst : kLast,
           Format("Please enter frames from 0 to %lld, the first one not behind the last one.",
                  static_cast<long long>(highest)));
    return std::nullopt;
}

std::optional<Trace> TraceFileOnView(const StoredRange& range, std::string& why)
{
    why = WhyNoneIsLeftOut();
    if (!why.empty()) {
        why += "\nThe window of the regions (View > Regions...) has a button for the set.";
        return std::nullopt;
    }
    const Hourglass hourglass;
    std::optional<StoredFrames> file = StoredFrames::Open(ViewFilePath, why);
    if (!file) {
        why = "The file on view " + why + ".";
        return std::nullopt;
    }
    const std::vector<Region> regions =
        RegionsToTrace(static_cast<std::int32_t>(file->Columns()), static_cast<std::int32_t>(file->Rows()));
    const FileTraceOptions options{.range = range, .bad = BadDetectorsOnView(), .badBy = BadDetectorSet};
    const Gather gather(file->Frames() > 1);
    return TraceOfFile(*file, regions, options, TellProgress, why);
}

void TraceFile(HWND dialog)
{
    FollowFile(dialog);
    const std::optional<StoredRange> range = RangeIn(dialog);
    if (!range) return;
    std::string why;
    std::optional<Trace> trace = TraceFileOnView(*range, why);
    if (!trace) {
        StatusMessage(why.empty() ? "Stopped by Esc: the trace is as it was" : "", kLeftAligned);
        if (!why.empty()) MessageBox(dialog, why, kMessageCaption, BoxIcon::kInformation);
        return;
    }
    StatusMessage(Format("Traced %zu frames", trace->frames.size()), kLeftAligned);
    Tell(dialog, "");
    ofFile = std::move(trace);
    ListLinesAndUnits(dialog);
    ShowTrace(dialog);
}

void Save(HWND dialog)
{
    const bool isSpectrum = ChosenFigure(dialog) == TraceFigure::kSpectrum;
    const std::size_t unit = ChosenUnit(dialog);
    SavePlot(dialog, [isSpectrum, unit] {
        return isSpectrum ? SpectrumCsv(ShownTrace(), unit) : TraceCsv(ShownTrace(), unit);
    });
}

void Open(HWND dialog)
{
    hDlgTraces = dialog;
    shown = {};
    DlgItemWindow(dialog, kPlot);  // made before the dialog is laid out
    ListSelect(dialog, kFigure, 0);
    ListLinesAndUnits(dialog);
    FollowFile(dialog);
    FollowChoice(dialog);
    ShowFigures(dialog);
    EnableControls(dialog);
    DockDialog(dialog);
    FocusDlgItem(dialog, ViewingFile != 0 || CameraOn == 0 ? kFile : kLive);
    SetTimer(dialog, kRefreshTimer, kRefreshMs);
}

void Close(HWND dialog)
{
    StopLiveTrace();
    EndDialog(dialog, 0);
}

void Forget(HWND /*dialog*/)
{
    StopLiveTrace();
    hDlgTraces = nullptr;
}

constexpr DialogEntry kEntries[] = {
    {kLive, BeginLive},
    {kStop, StopLive},
    {kFile, TraceFile},
    {kRegion, ShowTrace, kSelectionChanged},
    {kFigure, ShowTrace, kSelectionChanged},
    {kUnit, PickUnit, kSelectionChanged},
    {kLeaveOut, LeaveOut},
    {kSave, Save},
    {kIdCancel, Close},
    OnTimer(kRefreshTimer, Refresh),
    OnPaint(kPlot, PaintTrace),
};
constexpr DialogFrame kDialog{.name = "TRACES",
                              .procedure = fnTRACESDlgProc,
                              .open = Open,
                              .entries = kEntries,
                              .helpContext = kHelpTraces,
                              .destroyed = Forget};

}  // namespace

HWND TraceWindow()
{
    return hDlgTraces;
}

void OpenTraceWindow()
{
    if (hDlgTraces) {
        BringToFront(hDlgTraces, {});
        return;
    }
    OpenModelessDialog(kDialog, hWndMain);
}

void CloseTraceWindow()
{
    if (hDlgTraces) Close(hDlgTraces);
}

LRESULT fnTRACESDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kDialog, dialog, message, wParam, lParam);
}

void ResetTraceWindow()
{
    hDlgTraces = nullptr;
    ofFile.reset();
    chosenUnit.reset();
    shown = {};
}

}  // namespace kelvo
