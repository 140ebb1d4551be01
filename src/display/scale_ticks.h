// A scale of values beside a bar of colours: how it lies, where its ticks stand and what they say. Pure.
#pragma once

#include "display/lookup_table.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

// The bar, a tick to its right, and the tick's label; the title above the bar. Logical pixels from the scale's left and
// upper edge.
inline constexpr int kScaleBarLeft = 12;
inline constexpr int kScaleBarRight = 36;
inline constexpr int kScaleTickRight = 42;
inline constexpr int kScaleLabelLeft = 47;
inline constexpr int kScaleTitleTop = 6;
inline constexpr int kScaleLeastLines = 6;  // one lower than that many lines of text isn't drawn

// One dark ground in all themes: colours are judged against it. 0x00BBGGRR, and 0x00RRGGBB alike.
inline constexpr std::uint32_t kScaleGround = 0x00262626;
inline constexpr std::uint32_t kScaleInk = 0x00E6E6E6;

struct ScaleBar {
    int top = 0;
    int bottom = 0;
};
// Below the title, with room for half a label at each end.
ScaleBar PlaceScaleBar(int height, int labelHeight);

// A straight line between counts and values. A value may fall as counts rise.
struct ScaleLine {
    CountRange counts;
    double lowValue = 0;   // at counts.low
    double highValue = 0;  // at counts.high
    bool whole = false;    // values are counts: no tick between two of them
};

struct ScaleTick {
    double value = 0;
    int y = 0;  // logical pixels, on the bar
    std::string label;
};

// Ticks at multiples of 1, 2 or 5 times a power of ten, as many as stand apart by two label heights. The line's
// low end lies at bottom, its high end at top. None where the line has no length, or its values are no numbers.
std::vector<ScaleTick> PlaceScaleTicks(const ScaleLine& line, int top, int bottom, int labelHeight);

}  // namespace kelvo
