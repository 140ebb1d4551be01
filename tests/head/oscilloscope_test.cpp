// The oscilloscope's plot, marks and texts, against dots worked by hand and the plain definition.
#include "head/oscilloscope.h"

#include "platform/memory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Counts = std::vector<std::int16_t>;

ScopePlot Plot(int width, int height)
{
    ScopePlot plot;
    EXPECT_TRUE(AllocatePlot(plot, width, height));
    return plot;
}

// The plot as text, a line a row: '#' for a dot.
std::vector<std::string> Shown(const ScopePlot& plot)
{
    std::vector<std::string> rows;
    for (int y = 0; y < plot.height; ++y) {
        std::string row;
        for (int x = 0; x < plot.width; ++x) {
            const auto byte = plot.bits[static_cast<std::size_t>(y * plot.width / 8 + x / 8)];
            row += (byte >> (7 - x % 8)) % 2 != 0 ? '#' : '.';
        }
        rows.push_back(row);
    }
    return rows;
}

Counts Counting(int count)
{
    Counts counts(static_cast<std::size_t>(count));
    std::iota(counts.begin(), counts.end(), std::int16_t{0});
    return counts;
}

TEST(Oscilloscope, TheWidthIsRoundedDownToSixteenAndTheBlockHoldsOneBitADot)
{
    const ScopePlot plot = Plot(47, 5);
    EXPECT_EQ(plot.width, 32);
    EXPECT_EQ(plot.height, 5);
    EXPECT_THAT(plot.bits, SizeIs(20));
    EXPECT_THAT(Plot(15, 5).bits, IsEmpty());
    EXPECT_THAT(Plot(-3, 5).bits, IsEmpty());
}

TEST(Oscilloscope, RefusedMemoryLeavesNoPlot)
{
    ScopePlot plot = Plot(32, 5);
    FailAllocation(1);
    EXPECT_FALSE(AllocatePlot(plot, 64, 64));
    EXPECT_EQ(plot.width, 0);
    PlotFrame(plot, Counting(64), 0, 64, 1);  // nothing to draw on
    EXPECT_THAT(plot.bits, IsEmpty());
}

TEST(Oscilloscope, EachPixelIsADotOverItsNumber)
{
    ScopePlot plot = Plot(16, 4);
    PlotFrame(plot, Counts{3, 2, 1, 0, 0, 1, 2, 3, 3, 3, 0, 0, 1, 2, 1, 2}, 0, 3, 1);
    EXPECT_THAT(Shown(plot), ElementsAre("#......###......",  //
                                         ".#....#......#.#",  //
                                         "..#..#......#.#.",  //
                                         "...##.....##...."));
    EXPECT_EQ(plot.bits[0], 0x81) << "the highest bit is the leftmost column";
}

TEST(Oscilloscope, SeveralPixelsShareAColumnAndTheLastByteTakesTheRest)
{
    // 40 values over 16 columns: two a column; 24 are left for the last eight, three each.
    ScopePlot plot = Plot(16, 40);
    PlotFrame(plot, Counting(40), 0, 39, 1);
    for (int value = 0; value < 40; ++value) {
        const int column = value < 16 ? value / 2 : 8 + (value - 16) / 3;
        const auto row = Shown(plot).at(static_cast<std::size_t>(39 - value));
        EXPECT_EQ(row, std::string(static_cast<std::size_t>(column), '.') + "#" +
                           std::string(static_cast<std::size_t>(15 - column), '.'))
            << value;
    }
}

TEST(Oscilloscope, WhatIsLeftBelowEightPixelsIsNotPlotted)
{
    // 22 values: one a column, 14 left, one for each of the last eight; six go.
    ScopePlot plot = Plot(16, 22);
    PlotFrame(plot, Counting(22), 0, 21, 1);
    EXPECT_EQ(Shown(plot)[21 - 15], "...............#");
    EXPECT_EQ(Shown(plot)[21 - 16], "................");
}

TEST(Oscilloscope, TheResolutionThinsEachColumn)
{
    // Four a column, of which the first and the fourth are plotted.
    ScopePlot plot = Plot(16, 64);
    PlotFrame(plot, Counting(64), 0, 63, 3);
    const auto rows = Shown(plot);
    for (std::size_t value = 0; value < 64; ++value) {
        const bool plotted = value % 4 == 0 || value % 4 == 3;
        EXPECT_EQ(rows[63 - value].find('#'), plotted ? value / 4 : std::string::npos) << value;
    }
}

TEST(Oscilloscope, AResolutionBelowOneIsOne)
{
    ScopePlot thinned = Plot(16, 64);
    ScopePlot whole = Plot(16, 64);
    PlotFrame(whole, Counting(64), 0, 63, 1);
    for (const std::int32_t resolution : {0, -5}) {
        PlotFrame(thinned, Counting(64), 0, 63, resolution);
        EXPECT_EQ(thinned.bits, whole.bits);
    }
}

TEST(Oscilloscope, ValuesBeyondTheRangeLieAtItsEnds)
{
    ScopePlot plot = Plot(16, 3);
    Counts counts(16, 100);
    counts[0] = -32768;
    counts[1] = 32767;
    counts[2] = 99;
    PlotFrame(plot, counts, 100, 200, 1);
    EXPECT_THAT(Shown(plot), ElementsAre(".#..............", "................", "#.##############"));
}

TEST(Oscilloscope, RowsAreTruncatedAndTheLowestCountIsTheLastRow)
{
    // 255 rows below the first for 16383 counts: 64 counts below the top are 0.996 rows, 65 are 1.01.
    ScopePlot plot = Plot(16, 256);
    Counts counts(16, 0);
    counts[0] = 16383;
    counts[1] = 16319;
    counts[2] = 16318;
    PlotFrame(plot, counts, 0, 16383, 1);
    const auto rows = Shown(plot);
    EXPECT_EQ(rows[0], "##..............");
    EXPECT_EQ(rows[1], "..#.............");
    EXPECT_EQ(rows[255], "...#############");
}

TEST(Oscilloscope, ARangeWithoutExtentPutsAllDotsInTheTopRow)
{
    for (const auto& [low, high] : {std::pair{5, 5}, {9, 2}}) {
        ScopePlot plot = Plot(16, 3);
        PlotFrame(plot, Counting(16), low, high, 1);
        EXPECT_THAT(Shown(plot), ElementsAre("################", "................", "................"));
    }
}

TEST(Oscilloscope, AFrameSmallerThanThePlotFillsItsFirstColumns)
{
    ScopePlot plot = Plot(32, 4);
    PlotFrame(plot, Counts{0, 1, 2, 3, 3}, 0, 3, 1);
    EXPECT_EQ(Shown(plot)[0], "...##...........................");
    PlotFrame(plot, {}, 0, 3, 1);
    EXPECT_THAT(plot.bits, Each(0)) << "the former plot is gone";
}

TEST(Oscilloscope, RandomFramesFollowTheDefinition)
{
    std::mt19937 random(11);
    for (int run = 0; run < 20; ++run) {
        const int width = 16 * static_cast<int>(1 + random() % 8);
        const int height = static_cast<int>(2 + random() % 90);
        const auto low = static_cast<std::int32_t>(random() % 3000) - 1500;
        const std::int32_t high = low + 1 + static_cast<std::int32_t>(random() % 20000);
        const auto step = static_cast<std::int32_t>(1 + random() % 4);
        Counts frame(random() % 6000);
        for (auto& count : frame) count = static_cast<std::int16_t>(random());

        ScopePlot expected = Plot(width, height);
        const auto pixels = static_cast<std::int64_t>(frame.size());
        std::int64_t each = std::max<std::int64_t>(pixels / width, 1);
        std::int64_t at = 0;
        for (int x = 0; x < width; ++x) {
            if (x == width - 8) each = std::max<std::int64_t>(pixels - at, 0) / 8;
            for (std::int64_t i = at; i < std::min(at + each, pixels); i += step) {
                const std::int64_t value = std::clamp<std::int64_t>(frame[static_cast<std::size_t>(i)], low, high);
                const std::int64_t y = (high - value) * (height - 1) / (high - low);
                expected.bits[static_cast<std::size_t>(y * width / 8 + x / 8)] |=
                    static_cast<std::uint8_t>(128 >> (x % 8));
            }
            at += each;
        }
        ScopePlot plot = Plot(width, height);
        PlotFrame(plot, frame, low, high, step);
        EXPECT_EQ(plot.bits, expected.bits) << width << " x " << height << ", " << pixels;
    }
}

TEST(Oscilloscope, DotsAreBlackOnTheirBackground)
{
    ScopePlot plot = Plot(16, 2);
    plot.bits = {0x80, 0x01, 0x00, 0x40};
    DeviceBitmap picture{.width = 1, .height = 1, .pixels = {1}};
    PlotPicture(plot, 0x00FF00, picture);
    ASSERT_EQ(picture.width, 16);
    ASSERT_EQ(picture.height, 2);
    ASSERT_THAT(picture.pixels, SizeIs(32));
    for (std::size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(picture.pixels[i], i == 0 || i == 15 || i == 25 ? 0x000000U : 0x00FF00U) << i;
    }
}

TEST(Oscilloscope, MarksStandAtTheTenthsOfTheHeight)
{
    EXPECT_THAT(MarkRows(101), ElementsAre(0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100));
    EXPECT_THAT(MarkRows(256), ElementsAre(0, 25, 51, 76, 102, 127, 153, 178, 204, 229, 255));
    EXPECT_THAT(MarkRows(0), Each(0));
}

TEST(Oscilloscope, LabelsGoFromTheHighestCountDownToTheLowest)
{
    EXPECT_THAT(MarkCounts(0, 1000), ElementsAre(1000, 900, 800, 700, 600, 500, 400, 300, 200, 100, 0));
    EXPECT_THAT(MarkCounts(0, 16383), ElementsAre(16383, 14744, 13106, 11468, 9829, 8191, 6553, 4914, 3276, 1638, 0));
    EXPECT_THAT(MarkCounts(-50, 50), ElementsAre(50, 40, 30, 20, 10, 0, -10, -20, -30, -40, -50));
}

TEST(Oscilloscope, TheTitleNamesTheQuantityAndItsUnit)
{
    EXPECT_EQ(ScopeTitle(0), "Signal (Counts) vs Pixel Number");
    EXPECT_EQ(ScopeTitle(1), "Signal (V) vs Pixel Number");
    EXPECT_EQ(ScopeTitle(2),
              "Temperature (\xB0"
              "C) vs Pixel Number");
}

TEST(Oscilloscope, FrameRatesHaveMoreDecimalsTheLowerTheyAre)
{
    EXPECT_EQ(FrameRateText(100.04F), "100.0");
    EXPECT_EQ(FrameRateText(10.5F), "10.5");
    EXPECT_EQ(FrameRateText(10.0F), "10.00") << "ten isn't above ten";
    EXPECT_EQ(FrameRateText(1.25F), "1.25");
    EXPECT_EQ(FrameRateText(1.0F), "1.000");
    EXPECT_EQ(FrameRateText(0.5F), "0.500");
    EXPECT_EQ(FrameRateText(0.0625F), "0.0625");
    EXPECT_EQ(FrameRateText(0.0F), "0.0000");
}

TEST(Oscilloscope, APageIsFourRowsAndStopsTwoRowsBeforeTheEnd)
{
    EXPECT_EQ(PageBack(10), 6);
    EXPECT_EQ(PageBack(3), 0);
    EXPECT_EQ(PageOn(10, 62), 14);
    EXPECT_EQ(PageOn(57, 62), 60) << "rows 0 to 61: one is left to step to";
    EXPECT_EQ(PageOn(61, 62), 60);
    EXPECT_EQ(PageOn(0, 1), 0);
    EXPECT_EQ(PageOn(-1, 0), 0);
}

// --- The good band ---

TEST(ScopeBand, LiesAtATenthFromEachEndOfTheConverter)
{
    EXPECT_EQ(kGoodSignalLow, 16383 / 10);
    EXPECT_EQ(kGoodSignalHigh, 16383 - 16383 / 10);
    // 401 rows of the whole range: 1638 counts are 39.99 rows from the bottom.
    EXPECT_EQ(RowOfCount(16383, 0, 16383, 401), 0);
    EXPECT_EQ(RowOfCount(0, 0, 16383, 401), 400);
    EXPECT_EQ(RowOfCount(kGoodSignalLow, 0, 16383, 401), 360);
    EXPECT_EQ(RowOfCount(kGoodSignalHigh, 0, 16383, 401), 39);
}

TEST(ScopeBand, HasNoRowOutsideThePlot)
{
    EXPECT_EQ(RowOfCount(99, 100, 200, 401), std::nullopt);
    EXPECT_EQ(RowOfCount(201, 100, 200, 401), std::nullopt);
    EXPECT_EQ(RowOfCount(100, 100, 100, 401), std::nullopt);
    EXPECT_EQ(RowOfCount(150, 100, 200, 0), std::nullopt);
}

TEST(ScopeSaturation, IsAShareInPercent)
{
    EXPECT_EQ(SaturatedText(0.00125), "Saturated: 0.12 %");
    EXPECT_EQ(SaturatedText(1), "Saturated: 100.00 %");
}

}  // namespace
}  // namespace kelvo
