// The formula of correction for one pixel: the definition and the ends of the fast path share it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace kelvo {

// Toward zero; INT32_MIN where 32 bits don't hold the value, and for what isn't a number.
inline std::int32_t TruncateToInt(double value)
{
    constexpr double kBelow = -2147483649.0;
    constexpr double kAbove = 2147483648.0;
    if (!(value > kBelow && value < kAbove)) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

// a + b - c in 32 bits, wrapping.
inline std::int32_t WrappedSum(std::int32_t a, std::int32_t b, std::int32_t c)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b) -
                                     static_cast<std::uint32_t>(c));
}

// The corrected count: CalType 0, 1 and 2.
inline std::int16_t PlainCount(std::int32_t dataOffset, std::int16_t raw)
{
    return static_cast<std::int16_t>(std::max(WrappedSum(dataOffset, raw, 0), 0));
}

inline std::int16_t OffsetCount(std::int32_t dataOffset, std::int16_t raw, std::int16_t offset)
{
    return static_cast<std::int16_t>(WrappedSum(dataOffset, raw, offset));
}

inline std::int16_t GainCount(std::int32_t dataOffset, std::int16_t raw, std::int16_t offset, float gain)
{
    const double value = WrappedSum(dataOffset, raw, offset);
    return static_cast<std::int16_t>(TruncateToInt(value / double{gain}));
}

}  // namespace kelvo
