// Frames added up, pixel by pixel: what averaging does between two captures.
#pragma once

#include <cstdint>
#include <span>

namespace kelvo {

// sums[i] += frame[i], in 32 bits that wrap, or in single precision; squares[i] += frame[i] squared, where squares
// isn't empty. sums, and squares if there are any, are at least as long as frame.
void AddFrame(std::span<const std::int16_t> frame, std::span<std::int32_t> sums, std::span<double> squares);
void AddFrame(std::span<const std::int16_t> frame, std::span<float> sums, std::span<double> squares);

}  // namespace kelvo
