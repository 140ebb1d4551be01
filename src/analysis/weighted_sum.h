// The arithmetic of image math: two frames of counts to one, sample by sample,
//
//     source1 x C1 + source2 x C2 + C3
//
// in double, from left to right, truncated toward zero. A product of a count and a single is exact in double, so that
// at most the two additions round, alike on every machine.
#pragma once

#include <cstdint>
#include <span>

namespace kelvo {

struct Weights {
    float c1 = 0;  // 0: source 1 isn't looked at
    float c2 = 0;  // 0: source 2 isn't looked at
    float c3 = 0;
};

// A sum as it is stored: of the whole number toward zero, 64 bits wide, the low 16 bits (40000.0 gives -25536). 0 for
// what 64 bits don't hold and for no number.
std::int16_t StoredSum(double sum);
// It isn't stored as it is: beyond -32768 to 32767, or no number.
bool LeavesSixteenBits(double sum);

// result[i] for each sample of result, row after row, whatever the rows' lengths: a source that is looked at holds at
// least as many. Returns how many sums left 16 bits.
std::int64_t WeightedSum(const Weights& weights, std::span<const std::int16_t> source1,
                         std::span<const std::int16_t> source2, std::span<std::int16_t> result);

}  // namespace kelvo
