// What a rectangle of samples measures: mean, deviation and extremes. Pure arithmetic on the block that it is given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo {

constexpr std::int32_t kFloatSamples = 8;  // type: 32-bit floats; any other number: signed 32-bit integers

// Mean of the rectangle (inclusive on all four sides, columns left to right, rows top to bottom) of a frame: data
// begins with its first sample, stride is its row length in samples, type says what the samples are.
//
// minimum and maximum come in with the caller's seeds and take each sample that lies beyond them, a float truncated
// toward zero (and held to 32 bits). stdDev, where it isn't null, is the sample standard deviation
//     sqrt(|sum of squares - (sum / n) x sum| / (n - 1)),    sums in double, in the order of region_sums.h,
// and 0 for a single sample. Floats that are no number are no extremes. A rectangle of fewer than one sample, and one
// that doesn't lie in data, gives 0.0 and touches nothing; with right before left and bottom above top as well n is
// positive and nothing is visited: 0.0.
double RegionStatistics(std::span<const std::byte> data, std::int32_t left, std::int32_t top, std::int32_t right,
                        std::int32_t bottom, std::int32_t stride, std::int32_t type, float* stdDev,
                        std::int32_t& minimum, std::int32_t& maximum);

}  // namespace kelvo
