// The frame graph as values: the figures of a pixel's counts over frames, and the plot of them as shapes. Pure but for
// the units, in which it reads counts as they are in force (display/units.h).
#pragma once

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

namespace kelvo {

// A count in the unit on view, as the conversion gives it.
using CountValue = std::function<float(std::int32_t count)>;

struct GraphFigures {
    double mean = 0;                  // sum / frames, 0 of none
    std::optional<double> deviation;  // the sample's, from the sum of squares / (frames - 1); none for fewer than two
    std::int32_t minimum = 0;         // counts, and the frame that reached it first
    std::int32_t minimumFrame = 0;
    std::int32_t maximum = 0;
    std::int32_t maximumFrame = 0;
};
// counts: those of the frames from first on. The second pass, about the mean, is for more than two frames: of two the
// deviation is 0, and so it is where all counts are the same.
GraphFigures FiguresOf(std::span<const std::int16_t> counts, std::int32_t first, const CountValue& value);

// As the operator reads them: a deviation of 0 as "0"; frames by their own numbers. In a unit that falls as counts rise
// the two extremes change their names.
PlotReport ReportOf(const GraphFigures& figures, std::int32_t unit);

struct FrameGraphPlot {
    std::span<const std::int16_t> counts;
    std::int32_t first = 0;
    CountRange range;  // of the value axis
    bool squareRoot = false;
};

// The range of the value axis: that of the counts, or the two limits held inside what the source can show.
CountRange RangeOf(const GraphFigures& figures);
CountRange HeldInside(const CountRange& limits, const CountRange& shown);

// Frames from one long mark to the next over a graph of last - first frames.
std::int64_t FrameStep(std::int64_t frames);

// The plot in a control of that area. text: a label of the value axis; width: of a text in pixels. Frame labels that
// would touch the one before are left out: toward its end a square root stands close.
PlotPicture FrameGraphPicture(const Rect& area, const FrameGraphPlot& plot,
                              const std::function<std::string(std::int32_t count)>& text,
                              const std::function<int(std::string_view text)>& width);

// The lines of a file: "frame,counts,value" and one for each frame.
std::string GraphLines(std::span<const std::int16_t> counts, std::int32_t first, const CountValue& value);

}  // namespace kelvo
