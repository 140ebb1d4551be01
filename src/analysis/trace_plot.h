// The plot of a trace or its spectrum as shapes: values over seconds, frames or frequency, on axes with round numbers.
// Pure.
#pragma once

#include "analysis/plot_picture.h"
#include "platform/types.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

// Round numbers from low on, each a step of 1, 2 or 5 times a power of ten behind the one before.
struct RoundAxis {
    double low = 0;
    double step = 1;
    int steps = 1;     // 1 to mostSteps + 1; low + steps x step isn't below the highest value
    int decimals = 0;  // that the step needs
};
// Around values from least to most; of equal ones a step around them.
RoundAxis RoundAxisOf(double least, double most, int mostSteps);
std::string AxisText(const RoundAxis& axis, double value);

struct TracePlot {
    std::span<const double> places;       // along the axis, rising
    std::span<const double> values;       // one each
    std::span<const std::size_t> breaks;  // indexes that aren't joined to the one before
    std::string title;                    // of the axis
};
// In a control of that area; width: of a text in pixels. Only the axes' frame without points.
PlotPicture TracePicture(const Rect& area, const TracePlot& plot,
                         const std::function<int(std::string_view text)>& width);

}  // namespace kelvo
