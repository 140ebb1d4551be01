#include "record/trace_window.h"

#include "analysis/plot_paint.h"
#include "analysis/plot_save.h"
#include "analysis/trace_csv.h"
#include "analysis/trace_plot.h"
#include "imagefile/stored_frames.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "record/live_trace.h"
#include "regions/region_list.h"
#include "regions/spectrum.h"
#include "regions/trace_file.h"
#include "resources/help_contexts.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/gather.h"
#include "ui/status.h"
#include "viewing/viewing.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
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

constexpr std::uint32_t kRefreshTimer = 1;
constexpr std::int64_t kRefreshMs = 250;

std::optional<Trace> ofFile;  // stands in front of the live one until that is begun again
bool wasLive = false;         // at the last look

const Trace& ShownTrace()
{
    return ofFile ? *ofFile : LiveTrace();
}

TraceFigure ChosenFigure(HWND dialog)
{
    return static_cast<TraceFigure>(std::max(ListSelection(dialog, kFigure), 0));
}

const TraceLine* ChosenLine(HWND dialog, const Trace& trace)
{
    const int chosen = std::max(ListSelection(dialog, kRegion), 0);
    return chosen < std::ssize(trace.lines) ? &trace.lines[static_cast<std::size_t>(chosen)] : nullptr;
}

// The view's regions; the whole picture where there are none.
std::vector<Region> RegionsToTrace(std::int32_t columns, std::int32_t rows)
{
    if (!Regions.empty()) return Regions;
    Region picture;
    picture.name = "picture";
    picture.place = {0, 0, columns - 1, rows - 1};
    return {picture};
}

// ---- What is plotted

double ValueOf(const TracePoint& point, TraceFigure figure)
{
    switch (figure) {
        case TraceFigure::kDeviation:
            return point.deviation;
        case TraceFigure::kMinimum:
            return point.minimum;
        case TraceFigure::kMaximum:
            return point.maximum;
        case TraceFigure::kMean:
        case TraceFigure::kSpectrum:
            break;
    }
    return point.mean;
}

struct Plotted {
    std::vector<double> places{};
    std::vector<double> values{};
    std::vector<std::size_t> breaks{};
    std::string title{};
    std::string ofFrames{};
};

Plotted PlottedTrace(const Trace& trace, const TraceLine& line, TraceFigure figure)
{
    Plotted plotted{.title = trace.hasTimes ? "Seconds from the first frame" : "Frame"};
    for (std::size_t i = 0; i < line.points.size(); ++i) {
        plotted.places.push_back(trace.hasTimes ? SecondsOf(trace.frames[i]) : static_cast<double>(i + 1));
        plotted.values.push_back(ValueOf(line.points[i], figure));
    }
    for (const TraceGap& gap : TraceGapsOf(trace.frames)) plotted.breaks.push_back(gap.before);
    return plotted;
}

Plotted PlottedSpectrum(const Trace& trace, const TraceLine& line)
{
    const std::optional<Spectrum> spectrum = SpectrumOf(trace.frames, MeansOf(line));
    if (!spectrum) {
        return {.ofFrames = trace.frames.empty()
                                ? std::string()
                                : Format("A spectrum needs %zu frames without a gap.", kLeastSpectrumFrames)};
    }
    Plotted plotted{.title = spectrum->intervalSeconds > 0 ? "Frequency (Hz): amplitude in counts"
                                                           : "Cycles per frame: amplitude in counts",
                    .ofFrames = FramesOfSpectrum(*spectrum, trace.frames.size())};
    plotted.values = spectrum->amplitudes;
    for (std::size_t k = 0; k < plotted.values.size(); ++k) plotted.places.push_back(FrequencyOf(*spectrum, k));
    return plotted;
}

Plotted WhatIsPlotted(HWND dialog)
{
    const Trace& trace = ShownTrace();
    const TraceLine* const line = ChosenLine(dialog, trace);
    if (!line) return {};
    const TraceFigure figure = ChosenFigure(dialog);
    return figure == TraceFigure::kSpectrum ? PlottedSpectrum(trace, *line) : PlottedTrace(trace, *line, figure);
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

void ShowMeans(HWND dialog, const TraceLine* line)
{
    const TraceFigure figure = ChosenFigure(dialog);
    if (!line || line->points.empty()) {
        SetDlgItemText(dialog, kMean, "-");
        SetDlgItemText(dialog, kDeviation, "-");
        return;
    }
    const auto frames = static_cast<double>(line->points.size());
    double sum = 0;
    for (const TracePoint& point : line->points) sum += ValueOf(point, figure);
    const double mean = sum / frames;
    double squares = 0;
    for (const TracePoint& point : line->points) squares += std::pow(ValueOf(point, figure) - mean, 2);
    SetDlgItemText(dialog, kMean, Format("%.3f", mean));
    SetDlgItemText(dialog, kDeviation, frames > 1 ? Format("%.3f", std::sqrt(squares / (frames - 1))) : "-");
}

std::string GapsText(const Trace& trace)
{
    const std::vector<TraceGap> gaps = TraceGapsOf(trace.frames);
    std::int64_t missing = 0;
    for (const TraceGap& gap : gaps) missing += gap.missing;
    return gaps.empty() ? "none" : Format("%zu, %lld frames missing", gaps.size(), static_cast<long long>(missing));
}

void ShowFigures(HWND dialog)
{
    const Trace& trace = ShownTrace();
    SetDlgItemText(dialog, kSource, SourceText(trace));
    SetDlgItemText(dialog, kFrames, Format("%zu", trace.frames.size()));
    const bool isTimed = trace.hasTimes && !trace.frames.empty();
    SetDlgItemText(dialog, kTime, isTimed ? Format("%.3f s", SecondsOf(trace.frames.back())) : "-");
    SetDlgItemText(dialog, kGaps, trace.frames.empty() ? "-" : GapsText(trace));
    ShowMeans(dialog, ChosenLine(dialog, trace));
}

void EnableButtons(HWND dialog)
{
    const bool runs = LiveTraceRuns();
    EnableDlgItem(dialog, kLive, !runs && CameraOn != 0);
    EnableDlgItem(dialog, kStop, runs);
    EnableDlgItem(dialog, kFile, !runs && ViewingFile != 0);
    EnableDlgItem(dialog, kSave, !runs && !ShownTrace().frames.empty());
}

// The regions of the trace, which needn't be those of the view any more.
void ListRegions(HWND dialog)
{
    const int chosen = std::max(ListSelection(dialog, kRegion), 0);
    ListClear(dialog, kRegion);
    for (const TraceLine& line : ShownTrace().lines) ListAdd(dialog, kRegion, line.name);
    const int last = ListCount(dialog, kRegion) - 1;
    if (last >= 0) ListSelect(dialog, kRegion, std::min(chosen, last));
}

void ShowTrace(HWND dialog)
{
    ShowFigures(dialog);
    EnableButtons(dialog);
    PaintTrace(dialog);
}

// ---- Its commands

void Refresh(HWND dialog)
{
    const bool isLive = LiveTraceRuns();
    if (!isLive && !wasLive) return;
    ShowTrace(dialog);
    wasLive = LiveTraceRuns();
    if (wasLive) return;
    KillTimer(dialog, kRefreshTimer);
    EnableButtons(dialog);
    if (!LiveTraceMessage().empty()) MessageBox(dialog, LiveTraceMessage(), kMessageCaption, BoxIcon::kInformation);
}

void BeginLive(HWND dialog)
{
    std::string why;
    if (!StartLiveTrace(RegionsToTrace(ActiveConfig.Hroi, ActiveConfig.Vroi), why)) {
        MessageBox(dialog, why, kMessageCaption, BoxIcon::kInformation);
        return;
    }
    ofFile.reset();
    wasLive = true;
    ListRegions(dialog);
    SetTimer(dialog, kRefreshTimer, kRefreshMs);
    ShowTrace(dialog);
    FocusDlgItem(dialog, kStop);
}

void StopLive(HWND dialog)
{
    StopLiveTrace();
    Refresh(dialog);
    FocusDlgItem(dialog, kSave);
}

bool TellProgress(std::int64_t read, std::int64_t of)
{
    StatusMessage(Format("Traced %lld of %lld frames", static_cast<long long>(read), static_cast<long long>(of)),
                  kLeftAligned);
    return GatherGoesOn();
}

std::optional<Trace> TraceFileOnView(std::string& why)
{
    const Hourglass hourglass;
    std::optional<StoredFrames> file = StoredFrames::Open(ViewFilePath, why);
    if (!file) {
        why = "The file on view " + why + ".";
        return std::nullopt;
    }
    const std::vector<Region> regions =
        RegionsToTrace(static_cast<std::int32_t>(file->Columns()), static_cast<std::int32_t>(file->Rows()));
    const Gather gather(file->Frames() > 1);
    return TraceOfFile(*file, regions, {}, TellProgress, why);
}

void TraceFile(HWND dialog)
{
    std::string why;
    std::optional<Trace> trace = TraceFileOnView(why);
    if (!trace) {
        StatusMessage(why.empty() ? "Stopped by Esc: the trace is as it was" : "", kLeftAligned);
        if (!why.empty()) MessageBox(dialog, why, kMessageCaption, BoxIcon::kInformation);
        return;
    }
    StatusMessage(Format("Traced %zu frames", trace->frames.size()), kLeftAligned);
    ofFile = std::move(trace);
    ListRegions(dialog);
    ShowTrace(dialog);
}

void Save(HWND dialog)
{
    const bool isSpectrum = ChosenFigure(dialog) == TraceFigure::kSpectrum;
    SavePlot(dialog, [isSpectrum] { return isSpectrum ? SpectrumCsv(ShownTrace()) : TraceCsv(ShownTrace()); });
}

void Open(HWND dialog)
{
    DlgItemWindow(dialog, kPlot);  // made before the dialog is laid out
    wasLive = false;
    ListSelect(dialog, kFigure, 0);
    ListRegions(dialog);
    ShowFigures(dialog);
    EnableButtons(dialog);
    DockDialog(dialog);
    FocusDlgItem(dialog, CameraOn != 0 ? kLive : kFile);
}

void Close(HWND dialog)
{
    StopLiveTrace();
    EndDialog(dialog, 0);
}

constexpr DialogEntry kEntries[] = {
    {kLive, BeginLive},
    {kStop, StopLive},
    {kFile, TraceFile},
    {kRegion, ShowTrace, kSelectionChanged},
    {kFigure, ShowTrace, kSelectionChanged},
    {kSave, Save},
    {kIdCancel, Close},
    OnTimer(kRefreshTimer, Refresh),
    OnPaint(kPlot, PaintTrace),
};

LRESULT fnTRACESDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kDialog{
    .name = "TRACES", .procedure = fnTRACESDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpTraces};
LRESULT fnTRACESDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kDialog, dialog, message, wParam, lParam);
}

}  // namespace

void OpenTraceWindow()
{
    RunDialog(kDialog, hWndMain);
    StopLiveTrace();
}

void ResetTraceWindow()
{
    ofFile.reset();
    wasLive = false;
}

}  // namespace kelvo
