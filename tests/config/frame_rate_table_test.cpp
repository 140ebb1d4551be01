#include "config/frame_rate_table_write.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace kelvo {
namespace {

TEST(FrameRateTable, EveryRowIsZeroWhateverTheIndex)
{
    constexpr std::array<char, sizeof(FrameRateRow)> kZeros{};
    for (const std::int32_t index : {0, 3, 10, 1000000, -1, std::numeric_limits<std::int32_t>::min()}) {
        const FrameRateRow row = FrameRateRowAt(index);
        EXPECT_EQ(std::memcmp(&row, kZeros.data(), kZeros.size()), 0) << index;
    }
}

TEST(FrameRateTable, ARowOfTheTableIsReadByItsIndex)
{
    write::rates.FrameRateTable.resize(4);
    write::rates.FrameRateTable[3].ReadoutShift = 7;
    write::rates.FrameRateTable[3].Mode = 'e';
    EXPECT_EQ(FrameRateRowAt(3).ReadoutShift, 7);
    EXPECT_EQ(FrameRateRowAt(3).Mode, 'e');
    EXPECT_EQ(FrameRateRowAt(2).Mode, 0);
    EXPECT_EQ(FrameRateRowAt(4).Mode, 0);
    EXPECT_EQ(FrameRateRowAt(-1).Mode, 0);
}

TEST(FrameRateTable, AnEmptyRowLeavesTheRate)
{
    float rate = 59.5F;
    ScanFrameRate(FrameRateRowAt(3), rate);
    EXPECT_EQ(rate, 59.5F);
}

TEST(FrameRateTable, ATextOfARowIsTheRate)
{
    FrameRateRow row;
    std::memcpy(row.RateText.data(), "120.5 Hz", 8);
    float rate = 0;
    ScanFrameRate(row, rate);
    EXPECT_EQ(rate, 120.5F);
    row.RateText.fill('1');  // no terminator: the field ends the text
    ScanFrameRate(row, rate);
    EXPECT_EQ(rate, 111111111111.0F);
}

}  // namespace
}  // namespace kelvo
