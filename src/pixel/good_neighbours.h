// Which good neighbour answers for each bad pixel.
#pragma once

#include "pixel/search_pattern.h"

#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

// Image indexes, row x columns + column.
struct PixelAnswer {
    std::uint32_t bad = 0;
    std::uint32_t source = 0;
};

// For each non-zero pixel of badMap (rows x columns, at least 1 each) the neighbour that the first step of the pattern
// leads to which is inside and zero in badMap; pixels without one are left out. Ordered by bad.
// Every step is tried once for all pixels that wait, 64 at a time: a long pattern over an array that is nearly all bad
// stays a matter of seconds.
std::vector<PixelAnswer> FindGoodNeighbours(std::span<const std::uint8_t> badMap, std::int32_t rows,
                                            std::int32_t columns, const SearchPattern& pattern);

}  // namespace kelvo
