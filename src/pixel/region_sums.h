// What the statistics of a rectangle are made of: its sums and extremes, on whatever instruction set the machine has,
// bit for bit alike.
//
// Sums are taken in double, in eight parts: sample c of a row, counted from the rectangle's left side, joins part
// c mod 8, rows from top to bottom; at the end neighbours are added, ((0 + 1) + (2 + 3)) + ((4 + 5) + (6 + 7)). Of
// samples of 16-bit size every sum is exact, whatever the order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace kelvo {

// Samples in memory: no alignment is asked for, strideBytes leads from a row to the next.
struct SampleRows {
    const std::byte* first = nullptr;
    std::size_t columns = 0;
    std::size_t rows = 0;
    std::size_t strideBytes = 0;
};

template <typename Sample>
struct RegionSums {
    double sum = 0;
    double squares = 0;  // each square rounded to double before it is added
    // Of those that are numbers; without one the ends as they stand here.
    Sample least = std::numeric_limits<Sample>::has_infinity ? std::numeric_limits<Sample>::infinity()
                                                             : std::numeric_limits<Sample>::max();
    Sample most = std::numeric_limits<Sample>::has_infinity ? -std::numeric_limits<Sample>::infinity()
                                                            : std::numeric_limits<Sample>::lowest();
};

RegionSums<std::int32_t> SumIntegers(const SampleRows& rows);
RegionSums<float> SumFloats(const SampleRows& rows);

}  // namespace kelvo
