// The ticks of a scale of values beside a bar of colours: where they stand and what they say. Pure.
#pragma once

#include "display/lookup_table.h"

#include <string>
#include <vector>

namespace kelvo {

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
