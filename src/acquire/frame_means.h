// Means and deviations of the sums of raw frames (acquire/frame_sums.h): what averaging ends with. Two machines that
// gather the same frames give the same numbers to the bit.
#pragma once

#include <cstdint>
#include <span>

namespace kelvo {

// The sample deviation of each pixel in counts, worked out in double and rounded once: the root of
// (squares - sum x sum / count) / (count - 1). count is above 1; sums and squares belong together. Entries that either
// list doesn't have are left out.
void DeviationsOfSums(std::span<const std::int32_t> sums, std::span<const double> squares, std::int32_t count,
                      std::span<float> deviations);
void DeviationsOfSums(std::span<const float> sums, std::span<const double> squares, std::int32_t count,
                      std::span<float> deviations);

// Means without their fraction, as 16 bits, and the deviations, which here take sum / count x sum.
void MeansOfSums(std::span<const std::int32_t> sums, std::span<const double> squares, std::int32_t count,
                 std::span<std::int16_t> means, std::span<float> deviations);

}  // namespace kelvo
