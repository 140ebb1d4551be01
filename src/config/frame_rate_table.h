// The frame rate table: one row a frame rate of the head, selected by IndexFrameRate. No head of today brings such a
// table: it is empty, and every row reads as zero. Readers honour the fields all the same, for a head that does.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvo {

struct [[gnu::packed]] FrameRateRow {
    std::int32_t ReadoutShift = 0;  // samples by which the readout is late at this rate
    char Mode = 0;                  // 'e' or 'E': an external clock gives the rate
    std::array<std::uint8_t, 12> Reserved5{};
    std::array<char, 12> RateText{};  // Hz, closed by a zero byte; empty: this row tells no rate
};
static_assert(sizeof(FrameRateRow) == 29);
static_assert(offsetof(FrameRateRow, RateText) == 17);

extern const std::vector<FrameRateRow>& FrameRateTable;

// The row of an index; an index that names none has a zero row too.
FrameRateRow FrameRateRowAt(std::int32_t index);

// The rate of a row in Hz into rate; a row that tells none leaves it as it was.
void ScanFrameRate(const FrameRateRow& row, float& rate);

// No rows, as before the table is read.
void ResetFrameRateTable();

}  // namespace kelvo
