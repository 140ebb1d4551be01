// The integration table of the InSb head: an index names a pair of row and column counters, ordered from the longest
// integration at index 0 to the shortest. Pure arithmetic on the window and the frame size.
#pragma once

#include "head/head_records.h"

#include <cstdint>

namespace kelvo {

// Rows and columns for which the detector integrates.
struct IntegrationCounters {
    std::int16_t lines = 0;
    std::int16_t cols = 0;
    bool inTable = false;  // no clamp was needed: callers end their lists at the first false
};

// Three regions: steps of a third of a line every 4 rows, fifths of a line over the last 15 rows, then columns in steps
// of 4. The counters are stored as 16 bits, then clamped to 0 and one below the frame size; the clamped values stay in
// the result.
IntegrationCounters LookUpIntegration(std::int32_t index, const FpaSerialWordRecord& word,
                                      const HeadTimingRecord& timing);

// Milliseconds for which the counters integrate at a frame rate (Hz): their pixels' share of the frame period. 0 where
// the frame has no size or the rate isn't above 0.
double IntegrationMsec(const IntegrationCounters& counters, const HeadTimingRecord& timing, float frameRate);

}  // namespace kelvo
