#include "analysis/histogram_drawing.h"

#include "analysis/histogram.h"
#include "analysis/histogram_plot.h"
#include "analysis/histogram_settings_write.h"
#include "analysis/measured_frame.h"
#include "analysis/plot_paint.h"
#include "analysis/plot_report.h"
#include "analysis/plot_save.h"
#include "display/display_pipeline.h"
#include "display/units.h"
#include "pixel/region_marks.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <tuple>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int32_t kNothingDrawn = -1;

// What the plot was drawn with.
struct Drawn {
    HistSettingsRecord settings;
    std::int32_t unit = kNothingDrawn;
    friend bool operator==(const Drawn&, const Drawn&) = default;
};
Drawn drawn;

// What was counted and measured for it.
struct Counted {
    FrameRect rectangle;
    CountTable table;
    SampleFigures figures;
    std::vector<std::uint32_t> bins;
};
Counted counted;

auto RegionOf(const Drawn& one)
{
    const HistSettingsRecord& s = one.settings;
    return std::tuple(one.unit, s.Xsize, s.Ysize, s.Xposition, s.Yposition);
}

std::string UnitTitle(std::int32_t unit)
{
    std::string name;
    std::string unitText;
    GetUnitName(unit, name, unitText);
    return unitText.empty() ? name : Format("%s (%s)", name.c_str(), unitText.c_str());
}

std::string UnitText(std::int32_t counts)
{
    std::string text;
    CountsToUnit(counts, DisplayUnit, &text);
    return text;
}

// --- Counting -------------------------------------------------------------------------------------------------------

void CountRegion()
{
    const Point size = FrameSizeOnView();
    counted.rectangle = CountedRectangle(HistSettings, size);
    const std::vector<std::span<const std::int16_t>> rows = RowsOf(FrameToMeasure(), size.x, counted.rectangle);
    CountSamples(rows, counted.table);
    counted.figures = MeasureSamples(rows, counted.rectangle, counted.table,
                                     [](std::int32_t counts) { return CountsToUnit(counts, DisplayUnit, nullptr); });
}

// The bins of the value axis in force. False after a box where memory is refused.
bool MakeBins(HWND dialog)
{
    const auto bins = static_cast<std::size_t>(HistSettings.XplotMax + 3 - HistSettings.XplotMin);
    if (!AllocateBlock(counted.bins, bins)) {
        MessageBox(dialog, Format("Failed to allocate memory for %u histogram bins.", static_cast<unsigned>(bins)),
                   "Memory Allocation Error");
        return false;
    }
    FillBins(counted.table, HistSettings.XplotMin, HistSettings.XplotMax, counted.bins);
    return true;
}

// An axis that follows the data has other bins than the one before it.
bool MakeBinsToScale(HWND dialog)
{
    if (!MakeBins(dialog)) return false;
    if (!HistSettings.Xautoscale) return true;
    FitValueAxis(write::histogram.HistSettings, counted.figures);
    return MakeBins(dialog);
}

// --- Showing --------------------------------------------------------------------------------------------------------

// A deviation of equal samples is exactly 0, without digits behind the point.
std::string ShownDeviation(const SampleFigures& figures)
{
    if (!figures.deviation) return {};
    return figures.sumOfSquares == 0 ? "0" : DeviationText(*figures.deviation, DisplayUnit);
}

PlotReport ReportOf(const SampleFigures& figures)
{
    PlotReport report;
    if (figures.samples == 0) return report;
    report.mean = MeanText(figures.mean, DisplayUnit);
    report.deviation = ShownDeviation(figures);
    ReportExtremes(report, figures.extremes, DisplayUnit);
    return report;
}

void ClearPlot(HWND dialog)
{
    PaintPlot(DlgItemWindow(dialog, kHistogramPlot), {});
}

}  // namespace

void DrawHistogram(HWND dialog)
{
    const Drawn now{HistSettings, DisplayUnit};
    if (now == drawn) return;
    const bool regionChanged = RegionOf(now) != RegionOf(drawn);
    drawn = now;

    if (regionChanged) CountRegion();
    if (!MakeBinsToScale(dialog)) {
        ClearPlot(dialog);
        ShowHistogramRegion(nullptr);
        ForgetDrawnHistogram();
        return;
    }
    if (regionChanged) ShowPlotReport(dialog, ReportOf(counted.figures));
    FitNumberAxis(write::histogram.HistSettings, counted.bins);
    drawn.settings = HistSettings;  // the axes' new ends are no change by the operator
    RepaintHistogram(dialog);
    if (regionChanged) ShowHistogramRegion(&counted.rectangle);
}

void ForgetDrawnHistogram()
{
    drawn.unit = kNothingDrawn;
}

void RepaintHistogram(HWND dialog)
{
    const HWND control = DlgItemWindow(dialog, kHistogramPlot);
    if (counted.bins.empty()) {
        ClearPlot(dialog);
        return;
    }
    PaintPlot(control, HistogramPicture(PlotArea(control), drawn.settings, counted.bins,
                                        {.title = UnitTitle(DisplayUnit), .textOf = UnitText}));
}

void ShowHistogramRegion(const FrameRect* rectangle)
{
    const std::span<const std::int16_t> frame = FrameToMeasure();
    if (frame.empty()) return;
    if (!rectangle) {
        DrawFrame(frame);
        return;
    }
    std::vector<std::int16_t>& scratch = write::histogram.HistScratchFrame;
    if (scratch.size() < frame.size() && !AllocateBlock(scratch, frame.size())) {
        MessageBox(hWndMain, "Failure to allocate video memory!", kMessageCaption);
        return;
    }
    const std::span<std::int16_t> marked = std::span(scratch).first(frame.size());
    std::ranges::copy(frame, marked.begin());
    MarkRectangle(marked, rectangle->left, rectangle->top, rectangle->right, rectangle->bottom);
    DrawFrame(marked);
}

std::string HistogramCsv()
{
    const FrameRect& region = counted.rectangle;
    const SampleFigures& figures = counted.figures;
    const PlotReport report = ReportOf(figures);
    std::string csv = CsvNote("file", ViewingFile ? ViewFilePath : std::string("live")) +
                      CsvNote("region", Format("columns %d to %d, rows %d to %d", region.left, region.right, region.top,
                                               region.bottom)) +
                      CsvNote("unit", UnitTitle(DisplayUnit)) +
                      CsvNote("samples", Format("%llu", static_cast<unsigned long long>(figures.samples))) +
                      CsvNote("mean", CsvNumber(figures.mean)) +
                      CsvNote("deviation", figures.deviation ? CsvNumber(static_cast<float>(*figures.deviation)) : "") +
                      CsvNote("minimum", report.minimum + " " + report.minimumPlace) +
                      CsvNote("maximum", report.maximum + " " + report.maximumPlace);
    if (counted.bins.empty()) return csv;
    csv += CsvNote("samples below", Format("%u", counted.bins.front()));
    csv += CsvNote("samples above", Format("%u", counted.bins.back()));
    csv += "counts,value,samples\n";
    const std::int32_t first = drawn.settings.XplotMin;
    for (std::size_t i = 1; i + 1 < counted.bins.size(); ++i) {
        const std::int32_t counts = first + static_cast<std::int32_t>(i) - 1;
        csv += Format("%d,%s,%u\n", counts, CsvNumber(CountsToUnit(counts, DisplayUnit, nullptr)).c_str(),
                      counted.bins[i]);
    }
    return csv;
}

void FreeHistogram()
{
    write::histogram.HistScratchFrame = {};
    counted = {};
    drawn = {};
}

}  // namespace kelvo
