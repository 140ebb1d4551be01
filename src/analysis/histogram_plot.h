// Where everything of a histogram stands: box, axes, labels, bars, in the logical pixels of its control. Pure.
#pragma once

#include "analysis/histogram.h"
#include "analysis/plot_picture.h"
#include "platform/types.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace kelvo {

// What the axes say.
struct HistogramTexts {
    std::string title;                                // below the value axis
    std::function<std::string(std::int32_t)> textOf;  // a count in the unit on view
};

// The number axis that is linear: where it ends and how it is divided. Counts are numbers of samples.
struct LinearAxis {
    std::int64_t step = 1;
    std::int64_t ticks = 1;   // steps from bottom to top
    std::int64_t extent = 1;  // what the box is high
};
// max lies above min. The step is the first of a table that suits the span; beyond 100000 it is max - min / 10, whose
// order of operations plots that were noted down rest on.
LinearAxis LinearAxisOf(std::int32_t min, std::int32_t max);

// The number axis that is logarithmic: height in pixels over the foot, which stands 3 pixels above the box's bottom, of
// a number of samples, 1 or more. max is taken as 2 at least; above 10 it leaves a margin on top, as far as twice
// itself.
int LogHeight(std::int64_t samples, std::int32_t max, int boxHeight);

// Plot of bins as FillBins gives them, for XplotMin to XplotMax of the settings, in a control's client rectangle. A
// control that is too small for the box shows nothing. Bars that begin at the same pixel are given as one, the highest.
PlotPicture HistogramPicture(const Rect& client, const HistSettingsRecord& settings,
                             std::span<const std::uint32_t> bins, const HistogramTexts& texts);

}  // namespace kelvo
