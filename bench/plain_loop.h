// What the frame path is measured against: the formula of correction written down as it reads, pixel after pixel. In a
// source of its own, compiled with -O2 whatever the rest is compiled with.
#pragma once

#include <cstddef>
#include <cstdint>

// Gains must be tame (a quotient within 32 bits). table: 65536 gray values, by the count's 16-bit pattern.
void PlainLoop(const std::uint32_t* decom, const std::int16_t* offset, const float* gain, std::int32_t dataOffset,
               const std::int16_t* raw, const std::uint8_t* table, std::size_t pixels, std::int16_t* frame,
               std::uint8_t* grays);
