// From counts to gray values: the one step that every pixel of every frame drawn goes through.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo {

// A gray value for each 16-bit pattern that a count can have, so that the look-up needs no limits. Made from the lookup
// table once a frame: the counts of a frame are many more.
using GrayTable = std::array<std::uint8_t, 65536>;

// A negative count shows as count 0, one at or above lut's length as its last entry. lut must not be empty.
void FillGrayTable(GrayTable& table, std::span<const std::uint8_t> lut);

// Where a frame's gray values go while its counts are made: those of its first rows, in each from firstColumn on. A
// null table: nowhere. rowStride in bytes; negative where rows are stored from the bottom up.
struct GrayRows {
    const GrayTable* table = nullptr;
    std::uint8_t* top = nullptr;  // of row 0, column firstColumn
    std::ptrdiff_t rowStride = 0;
    std::size_t rows = 0;
    std::size_t firstColumn = 0;
};

// grays[i] = the gray value of counts[i]. grays must be as long as counts.
void LookUpGrays(std::span<const std::int16_t> counts, const GrayTable& table, std::span<std::uint8_t> grays);

}  // namespace kelvo
