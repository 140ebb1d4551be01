// The ends of the converter: a raw count there tells only that the signal lies beyond.
#pragma once

#include <cstdint>
#include <span>

namespace kelvo {

constexpr int kConverterBits = 14;
constexpr std::int16_t kConverterLow = 0;
constexpr std::int16_t kConverterHigh = (1 << kConverterBits) - 1;

constexpr bool IsSaturated(std::int16_t rawCount)
{
    return rawCount <= kConverterLow || rawCount >= kConverterHigh;
}

// The part of raw counts that lies at an end, from 0 to 1; 0 of no counts.
double SaturatedShare(std::span<const std::int16_t> rawCounts);

}  // namespace kelvo
