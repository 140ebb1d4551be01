// Contrast, brightness and range against the table they give.
#include "display/lookup_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;

// The table written as one loop over counts with a running index, entry by entry.
void WritePlainly(std::vector<std::uint8_t>& table, const LutWindow& window, CountRange live)
{
    std::size_t at = 0;
    const auto put = [&](int value) {
        if (at < table.size()) table[at] = static_cast<std::uint8_t>(value);
        ++at;
    };
    std::int64_t count = live.low;
    for (; count < window.start; ++count) put(0);
    const float step = 255.0F / static_cast<float>(window.end - window.start);
    volatile float sum = 0.0F;  // kept in memory: rounded to single after each addition
    for (count = window.start; count < window.end; ++count) {
        put(static_cast<int>(sum));
        sum = sum + step;
    }
    for (count = window.end; count <= live.high; ++count) put(255);
}

ImageHeaderRecord Header(int version, int low, int high)
{
    ImageHeaderRecord header;
    header.HeaderVersion = static_cast<std::int16_t>(version);
    header.DisplayLow = static_cast<std::int16_t>(low);
    header.DisplayHigh = static_cast<std::int16_t>(high);
    return header;
}

// 17571.151923916 x 0.93238053321369 ^ contrast, worked out to 50 decimal places.
TEST(LookupTable, WidthFollowsContrastSmoothlyAtFullScale)
{
    struct Row {
        int contrast, width;
    };
    for (const Row row :
         {Row{1, 16382}, {2, 15275}, {10, 8724}, {16, 5731}, {34, 1625}, {50, 530}, {76, 85}, {99, 17}}) {
        EXPECT_EQ(WindowWidth(16383, row.contrast), row.width) << row.contrast;
    }
}

TEST(LookupTable, ContrastOneAtFullScaleIsANearlyFullRamp)
{
    // The product is 16382.99999999996.
    EXPECT_EQ(WindowOf(16383, 1, 1000), (LutWindow{16382, 0, 16382}));
}

TEST(LookupTable, ContrastHundredAtFullScaleIsSixteenCounts)
{
    // The product is 15.9999999999987, and the floor lifts it.
    EXPECT_EQ(WindowWidth(16383, 100), 16);
    EXPECT_EQ(WindowOf(16383, 100, 1000), (LutWindow{16, 0, 16}));
}

TEST(LookupTable, BrightnessOnePutsTheWindowAtTheTop)
{
    EXPECT_EQ(WindowOf(16383, 16, 1), (LutWindow{5731, 16383 - 5731, 16383}));
    EXPECT_EQ(WindowOf(16383, 100, 1), (LutWindow{16, 16367, 16383}));
}

TEST(LookupTable, BrightnessMovesTheWindowInStepsOf999)
{
    // (16383 - 5731) x (1000 - brightness) / 999, cut.
    EXPECT_EQ(WindowOf(16383, 16, 580), (LutWindow{5731, 4478, 4478 + 5731}));
    EXPECT_EQ(WindowOf(16383, 16, 837), (LutWindow{5731, 1738, 1738 + 5731}));
    EXPECT_EQ(WindowOf(16383, 16, 1000), (LutWindow{5731, 0, 5731}));
}

TEST(LookupTable, AWindowAsWideAsTheSpanStartsAtZeroForEveryBrightness)
{
    EXPECT_EQ(WindowWidth(4095, 2), 4095);  // 4095 ^ 2 / 0.945 is far above the span
    for (int brightness = 1; brightness <= 1000; ++brightness) {
        EXPECT_EQ(PlaceWindow(4095, 4095, brightness), (LutWindow{4095, 0, 4095})) << brightness;
    }
}

TEST(LookupTable, AwayFromFullScaleTheWidthIsTheSpanOrThirtyTwoBitsOfAHugeProduct)
{
    for (const std::int64_t span : {255, 1000, 4095, 16382, 16384}) {
        const long double factor = powl(10.0L, log10l(16.0L / static_cast<long double>(span)) / 99.0L);
        const long double base = static_cast<long double>(span) / factor;
        EXPECT_EQ(WindowWidth(span, 2), span);
        const auto product = static_cast<std::int64_t>(base * base * base * factor);
        ASSERT_GT(base * base * base * factor - static_cast<long double>(product), 1e-3L) << "too near a whole number";
        std::int64_t low = product % 4294967296;
        if (low >= 2147483648) low -= 4294967296;
        EXPECT_EQ(WindowWidth(span, 3), std::max<std::int64_t>(16, std::min(low, span))) << span;
    }
}

TEST(LookupTable, AWidthPastTheLargestIntegerIsTheFloor)
{
    EXPECT_EQ(WindowWidth(4095, 10), 16);  // about 10 ^ 36
    EXPECT_EQ(WindowWidth(16384, 100), 16);
    EXPECT_EQ(WindowWidth(16384, 5000), 16);  // infinite
}

TEST(LookupTable, ASpanWithoutALogarithmHasTheFloorAsWidth)
{
    EXPECT_EQ(WindowWidth(0, 16), 16);
    EXPECT_EQ(WindowWidth(-100, 16), 16);
    EXPECT_EQ(WindowWidth(-100, 17), 16);
}

TEST(LookupTable, TheFloorWinsOverASmallSpan)
{
    EXPECT_EQ(WindowWidth(5, 2), 16);
    // (5 - 16) x 999 / 999 = -11; the window ends with the span.
    EXPECT_EQ(WindowOf(5, 2, 1), (LutWindow{16, -11, 5}));
    EXPECT_EQ(WindowOf(5, 2, 1000), (LutWindow{16, 0, 5}));
    // -11 x 500 / 999 = -5.5, cut toward zero.
    EXPECT_EQ(WindowOf(5, 2, 500).start, -5);
}

TEST(LookupTable, LiveRangeIsTakenAsItIsWithoutAFile)
{
    EXPECT_EQ(LutRange({100, 4195}, nullptr), (CountRange{100, 4195}));
    EXPECT_EQ(LutRange({-100, 4195}, nullptr), (CountRange{0, 4195}));
}

TEST(LookupTable, AFileFromVersionFourBringsItsRange)
{
    const ImageHeaderRecord header = Header(4, 10, 16393);
    EXPECT_EQ(LutRange({0, 4095}, &header), (CountRange{10, 16393}));
}

TEST(LookupTable, AnOlderFileTakesTheLiveSpanFromZero)
{
    const ImageHeaderRecord header = Header(3, 10, 16393);
    EXPECT_EQ(LutRange({1000, 5095}, &header), (CountRange{0, 4095}));
}

TEST(LookupTable, ANegativeLowIsZeroAndAHighOfZeroIsTheLiveOne)
{
    const ImageHeaderRecord header = Header(8, -8192, 0);
    EXPECT_EQ(LutRange({-8192, 8191}, &header), (CountRange{0, 8191}));
}

TEST(LookupTable, RampRisesFromBlackToWhite)
{
    std::vector<std::uint8_t> table(12, 7);
    FillLut(table, {5, 2, 7}, {0, 9});  // step 51
    EXPECT_THAT(table, ElementsAre(0, 0, 0, 51, 102, 153, 204, 255, 255, 255, 7, 7));
}

TEST(LookupTable, ALowAboveZeroShiftsTheRampTowardLowerEntries)
{
    std::vector<std::uint8_t> table(12, 7);
    FillLut(table, {5, 2, 7}, {1, 9});
    EXPECT_THAT(table, ElementsAre(0, 0, 51, 102, 153, 204, 255, 255, 255, 7, 7, 7));
}

TEST(LookupTable, ALowBeyondTheWindowsStartLeavesNoBlack)
{
    std::vector<std::uint8_t> table(8, 7);
    FillLut(table, {5, 2, 7}, {6, 8});
    EXPECT_THAT(table, ElementsAre(0, 51, 102, 153, 204, 255, 255, 7));
}

TEST(LookupTable, EntriesBeyondTheTableAreDropped)
{
    std::vector<std::uint8_t> table(70000, 7);
    FillLut(table, {10, 0, 10}, {0, 65535});
    EXPECT_EQ(table[65534], 255);
    EXPECT_EQ(table[65535], 7);
}

TEST(LookupTable, AHugeRangeFillsTheTableAndEnds)
{
    std::vector<std::uint8_t> table(kLutEntries, 7);
    FillLut(table, WindowOf(2147483647, 1, 1), {0, 2147483647});
    EXPECT_THAT(table, Each(0));
    FillLut(table, {16, -2000000000, -1999999984}, {-2147483647, 2147483647});
    EXPECT_EQ(table[0], 0);
}

TEST(LookupTable, AnEmptyWindowGivesAStepFromBlackToWhite)
{
    std::vector<std::uint8_t> table(6, 7);
    FillLut(table, {16, 3, 3}, {0, 4});
    EXPECT_THAT(table, ElementsAre(0, 0, 0, 255, 255, 7));
}

TEST(LookupTable, EveryEntryIsThatOfTheRunningSum)
{
    std::mt19937 random(20);
    for (int i = 0; i < 200; ++i) {
        const CountRange live{static_cast<std::int32_t>(random() % 4) * 100,
                              static_cast<std::int32_t>(random() % 20000)};
        const std::int64_t span = random() % 3 ? 16383 : live.Span();
        const LutWindow window =
            WindowOf(span, static_cast<int>(random() % 100) + 1, static_cast<int>(random() % 1000) + 1);
        std::vector<std::uint8_t> table(kLutEntries, 7);
        std::vector<std::uint8_t> plain(kLutEntries, 7);
        FillLut(table, window, live);
        WritePlainly(plain, window, live);
        ASSERT_EQ(table, plain) << "span " << span << " window " << window.start << " to " << window.end << " live "
                                << live.low << " to " << live.high;
    }
}

}  // namespace
}  // namespace kelvo
