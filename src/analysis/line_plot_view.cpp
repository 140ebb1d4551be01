#include "analysis/line_plot_view.h"

#include "analysis/line_plot.h"
#include "analysis/line_settings_write.h"
#include "analysis/measured_frame.h"
#include "analysis/plot_paint.h"
#include "display/display_pipeline.h"
#include "pixel/region_marks.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "state/display_state.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr int kTitle = 601;

// What was drawn last; nullopt: draw in any case.
struct Drawn {
    LinePlotSettings settings;
    std::int32_t unit = 0;
    friend bool operator==(const Drawn&, const Drawn&) = default;
};
std::optional<Drawn> drawn;

// The line on the screen, which is painted again as the window changes, and saved.
struct ShownLine {
    std::vector<std::int16_t> samples;
    LinePlotSettings settings;
    std::int32_t unit = 0;
};
ShownLine shown;

bool pictureIsMarked = false;

// Measures new samples and shows plot and figures.
void ShowLine(HWND dialog, std::vector<std::int16_t> samples)
{
    const LineMeasure measure = MeasureLine(samples, LineSettings, DisplayUnit);
    if (LineSettings.Yautoscale) AutoscaleLine(write::line.LineSettings, measure.extremes, RangeOnView());
    shown = {.samples = std::move(samples), .settings = LineSettings, .unit = DisplayUnit};
    PaintLinePlot(dialog);
    ShowPlotReport(dialog, ReportLine(measure, DisplayUnit));
}

}  // namespace

void DrawLinePlot(HWND dialog)
{
    if (drawn == Drawn{LineSettings, DisplayUnit}) return;
    const bool newUnit = !drawn || drawn->unit != DisplayUnit;
    drawn = {LineSettings, DisplayUnit};
    if (newUnit) ShowLineTitle(dialog);

    std::vector<std::int16_t> samples;
    if (!SampleLine(FrameToMeasure(), FrameSizeOnView(), LineSettings, samples)) {
        ShowLineMark(0);
        MessageBox(dialog, "Failure to allocate Intensity memory!", kMessageCaption);
        return;
    }
    ShowLine(dialog, std::move(samples));
    drawn->settings = LineSettings;  // the axis has followed the data
    ShowLineMark(1);
}

void ForgetLinePlot()
{
    drawn.reset();
}

void PaintLinePlot(HWND dialog)
{
    const HWND plot = DlgItemWindow(dialog, kLinePlotControl);
    const auto labelWidth = [plot](std::string_view text) { return PlotTextWidth(plot, text); };
    PaintPlot(plot, LayOutLinePlot(PlotArea(plot), shown.samples, shown.settings, shown.unit, labelWidth));
}

std::string ShownLineFigures()
{
    return LineFigures(shown.samples, shown.settings, shown.unit);
}

void ShowLineMark(std::int32_t on)
{
    const std::span<const std::int16_t> frame = FrameToMeasure();
    if (frame.empty()) return;
    pictureIsMarked = on != 0 && frame.size() == LineScratchFrame.size();
    if (!pictureIsMarked) {
        DrawFrame(frame);
        return;
    }
    std::ranges::copy(frame, write::line.LineScratchFrame.begin());
    MarkLine(write::line.LineScratchFrame, LineSettings.Xstart, LineSettings.Ystart, LineSettings.Xend,
             LineSettings.Yend);
    DrawFrame(LineScratchFrame);
}

void ShowLineTitle(HWND dialog)
{
    SetDlgItemText(dialog, kTitle, LineTitle(DisplayUnit));
}

void EndLinePlot()
{
    if (pictureIsMarked) ShowLineMark(0);
    shown = {};
    std::vector<std::int16_t>().swap(write::line.LineScratchFrame);
}

void ResetLinePlotView()
{
    drawn.reset();
    shown = {};
    pictureIsMarked = false;
}

}  // namespace kelvo
