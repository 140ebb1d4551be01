// The line plot as calculation: the pixels of a straight line, what they measure, and the plot as shapes. Nothing here
// knows a window. The line is that of LinePlotSettings, from Xstart, Ystart to Xend, Yend, both ends included.
#pragma once

#include "analysis/line_settings.h"
#include "analysis/measured_frame.h"
#include "analysis/plot_picture.h"
#include "analysis/plot_report.h"
#include "platform/types.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// One more than the columns or the rows between the ends, whichever are more.
std::int64_t LinePoints(const LinePlotSettings& line);

// Column and row of point i, 0 to LinePoints - 1. The line goes pixel by pixel along the axis of more pixels, along the
// rows where both are equal; across it goes by the whole part of i x slope, where slope = (float)across / (float)along
// and the product is taken at full width. Rounding may leave the last point one pixel short of the end.
Point LinePoint(const LinePlotSettings& line, std::int64_t i);

// The counts along the line, in order, of a frame of size columns x rows. False where memory is refused, or an end lies
// outside the frame; then samples is as it was.
bool SampleLine(std::span<const std::int16_t> frame, Point size, const LinePlotSettings& line,
                std::vector<std::int16_t>& samples);

struct LineMeasure {
    Extremes extremes;  // counts
    UnitSums sums;      // values in the unit, with the second pass
};
LineMeasure MeasureLine(std::span<const std::int16_t> samples, const LinePlotSettings& line, std::int32_t unit);

// sqrt(sum of squares / n): the divisor is n, not n - 1. nullopt below two points; 0 where the values' sum is 0.
std::optional<double> LineDeviation(const LineMeasure& measure);
PlotReport ReportLine(const LineMeasure& measure, std::int32_t unit);

// YplotMax: the maximum, at least the minimum + 20, at most the range's high count. YplotMin: the minimum, at most the
// maximum - 30; nothing limits it. Where the range's high count lies at or below all samples it doesn't limit either:
// the axis would turn over.
void AutoscaleLine(LinePlotSettings& settings, const Extremes& extremes, CountRange range);

// Logical pixels that a label takes.
using LabelWidth = std::function<int(std::string_view)>;
// The plot in area, with the bounds and the grid of settings; labels of the value axis in the unit. The step of the
// point labels is 1000 from 501 to 1000 points, so that the first alone is labelled. Nothing where there are no samples
// or no room for a box.
PlotPicture LayOutLinePlot(const Rect& area, std::span<const std::int16_t> samples, const LinePlotSettings& settings,
                           std::int32_t unit, const LabelWidth& labelWidth);

// "Signal (Counts) vs Line Pixel Number".
std::string LineTitle(std::int32_t unit);

// The figures as comma-separated values: notes on line, unit, mean and deviation, a line of names, then a line a point.
// Texts are Latin-1.
std::string LineFigures(std::span<const std::int16_t> samples, const LinePlotSettings& line, std::int32_t unit);

}  // namespace kelvo
