// What the line plot measures and how it shows it: section LinePlot of kelvo.ini. The dialog LINEPLOT and its set-up
// LINEAXIS change it.
#pragma once

#include "analysis/measured_frame.h"
#include "platform/types.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace kelvo {

// The fields are keys of the section too, but for the two bounds of the value axis.
struct LinePlotSettings {
    std::int32_t Xstart = 0;  // column of the start, 0 to the image's last
    std::int32_t Ystart = 0;  // row of the start
    std::int32_t Xend = 0;
    std::int32_t Yend = 0;
    std::int32_t YplotMin = 0;    // lowest count of the value axis
    std::int32_t YplotMax = 0;    // highest count of the value axis
    std::int32_t Yautoscale = 1;  // 1: the value axis follows the data
    std::int32_t Xgridlines = 1;  // 1: lines up the plot
    std::int32_t Ygridlines = 1;  // 1: lines across it
    friend bool operator==(const LinePlotSettings&, const LinePlotSettings&) = default;
};

extern const LinePlotSettings& LineSettings;

// A frame of the size on view that bears the line's mark, so that the frame that is measured stays without one. Empty
// while no line plot is open.
extern const std::vector<std::int16_t>& LineScratchFrame;

// The keys in force, the value axis over the whole range, and the line inside an image of size columns x rows: one that
// isn't is set anew (ResetLine).
void ReadLineSettings(std::string_view file, Point size, CountRange range);
// The line inside an image of that size, as at opening, and the value axis over the range. The rest stays.
void FitLineSettings(Point size, CountRange range);
// The seven keys, with "%d".
void WriteLineSettings(std::string_view file);

// Where any of the four coordinates lies outside the image: from the image's middle to an eighth of its sides.
LinePlotSettings LineInside(LinePlotSettings settings, Point size);

// As at the start of the program.
void ResetLineSettings();

}  // namespace kelvo
