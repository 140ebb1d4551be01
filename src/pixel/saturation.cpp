#include "pixel/saturation.h"

#include <algorithm>

namespace kelvo {

double SaturatedShare(std::span<const std::int16_t> rawCounts)
{
    if (rawCounts.empty()) return 0;
    const auto saturated = std::ranges::count_if(rawCounts, IsSaturated);
    return static_cast<double>(saturated) / static_cast<double>(rawCounts.size());
}

}  // namespace kelvo
