// Contrast and brightness that suit a picture: the pair whose window comes nearest to the counts between the darkest
// and the brightest half hundredth of its good pixels.
#pragma once

#include "display/lookup_table.h"

#include <cstdint>
#include <span>
#include <string>

namespace kelvo {

// The counts that 0.5 % of the good pixels lie at or below, and at or above: of n sorted ones number
// floor((n - 1) / 200) from either end. bad: non-zero for each pixel that isn't good; where it doesn't fit the frame,
// or leaves nothing, all are good. The frame must not be empty.
CountRange CentralCounts(std::span<const std::int16_t> frame, std::span<const std::uint8_t> bad = {});

struct ContrastFit {
    std::int32_t contrast = 0;
    std::int32_t brightness = 0;
    std::string reason;  // not empty: why there is no fit, for the operator
};

// range is LutRange's, live the range of live video, which the table is laid over. Every contrast and brightness is
// tried; the best has the least |start - low| + |end - high|, and of equal ones the first in rising contrast, then
// brightness. No fit without pixels, and none for a span other than 16383: only there does the width follow contrast in
// small steps.
ContrastFit FitContrast(std::span<const std::int16_t> frame, CountRange range, CountRange live,
                        std::span<const std::uint8_t> bad = {});

// Whether over 95 % of the frame's good pixels show as the first or the last shade of a look-up table, which must not
// be empty. bad as above.
bool HardlySeen(std::span<const std::int16_t> frame, std::span<const std::uint8_t> lut,
                std::span<const std::uint8_t> bad = {});

}  // namespace kelvo
