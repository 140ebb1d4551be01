#include "analysis/histogram.h"

#include "display/units.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace kelvo {

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using Rows = std::vector<std::span<const std::int16_t>>;

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

HistSettingsRecord Rectangle(std::int32_t x, std::int32_t y, std::int32_t columns, std::int32_t rows)
{
    return {.Xsize = columns, .Ysize = rows, .Xposition = x, .Yposition = y};
}

float AsCounts(std::int32_t count)
{
    return static_cast<float>(count);
}

CountTable TableOf(const Rows& rows)
{
    CountTable table;
    CountSamples(rows, table);
    return table;
}

std::vector<std::uint32_t> BinsOf(const std::vector<std::int16_t>& samples, std::int32_t low, std::int32_t high)
{
    std::vector<std::uint32_t> bins(static_cast<std::size_t>(high - low) + 3);
    FillBins(TableOf({std::span(samples)}), low, high, bins);
    return bins;
}

SampleFigures FiguresOf(const std::vector<std::int16_t>& frame, std::int32_t width, const FrameRect& rectangle,
                        const std::function<float(std::int32_t)>& valueOf = AsCounts)
{
    const Rows rows = RowsOf(frame, width, rectangle);
    return MeasureSamples(rows, rectangle, TableOf(rows), valueOf);
}

// --- The rectangle ---------------------------------------------------------------------------------------------------

TEST(HistogramRectangle, FitsFromNoughtToTheLastPixel)
{
    constexpr Point kSize{10, 8};
    EXPECT_TRUE(RectangleFits(Rectangle(5, 4, 2, 2), kSize));
    EXPECT_TRUE(RectangleFits(Rectangle(4, 3, 8, 6), kSize));    // 0 to 8, 0 to 6
    EXPECT_TRUE(RectangleFits(Rectangle(4, 3, 9, 7), kSize));    // 0 to 9, 0 to 7
    EXPECT_FALSE(RectangleFits(Rectangle(4, 3, 10, 7), kSize));  // from -1
    EXPECT_FALSE(RectangleFits(Rectangle(4, 3, 9, 8), kSize));
    EXPECT_FALSE(RectangleFits(Rectangle(5, 3, 9, 7), kSize));  // to 10
    EXPECT_FALSE(RectangleFits(Rectangle(9, 3, 1, 1), kSize));  // 9 + ceil(1 / 2)
    EXPECT_FALSE(RectangleFits(Rectangle(-1, 3, 1, 1), kSize));
}

TEST(HistogramRectangle, OfNoPixelOrFewerDoesntFit)
{
    EXPECT_FALSE(RectangleFits(Rectangle(5, 4, 0, 2), {10, 8}));
    EXPECT_FALSE(RectangleFits(Rectangle(5, 4, 2, -2), {10, 8}));
}

TEST(HistogramRectangle, OfNumbersAtTheEndOf32BitsDoesntFit)
{
    for (const std::int32_t edge : {kMost, kLeast}) {
        EXPECT_FALSE(RectangleFits(Rectangle(edge, 4, 2, 2), {10, 8}));
        EXPECT_FALSE(RectangleFits(Rectangle(5, edge, 2, 2), {10, 8}));
        EXPECT_FALSE(RectangleFits(Rectangle(5, 4, edge, 2), {10, 8}));
        EXPECT_FALSE(RectangleFits(Rectangle(5, 4, 2, edge), {10, 8}));
    }
}

TEST(HistogramRectangle, IsAQuarterOfTheFrameInItsMiddleAfterAReset)
{
    HistSettingsRecord settings = Rectangle(kMost, kLeast, 0, 0);
    CentreRectangle(settings, {320, 241});
    EXPECT_EQ(settings, Rectangle(159, 120, 80, 60));
    EXPECT_TRUE(RectangleFits(settings, {320, 241}));
}

TEST(HistogramRectangle, IsAPixelAtLeastAfterAReset)
{
    HistSettingsRecord settings;
    CentreRectangle(settings, {3, 1});
    EXPECT_EQ(settings, Rectangle(1, 0, 1, 1));
    EXPECT_EQ(CountedRectangle(settings, {3, 1}), (FrameRect{.left = 1, .top = 0, .right = 1, .bottom = 0}));
}

TEST(HistogramRectangle, IsCountedByOtherBoundsThanItIsTestedBy)
{
    // An odd size lies about its centre, an even one has its additional pixel on the right: 4..6, 2..3.
    EXPECT_EQ(CountedRectangle(Rectangle(5, 2, 3, 2), {10, 8}),
              (FrameRect{.left = 4, .top = 2, .right = 6, .bottom = 3}));
}

TEST(HistogramRectangle, IsCountedFromNoughtWhereItBeginsBefore)
{
    EXPECT_EQ(CountedRectangle(Rectangle(0, 1, 6, 6), {10, 8}),
              (FrameRect{.left = 0, .top = 0, .right = 3, .bottom = 4}));
}

TEST(HistogramRectangle, ReachesOnePastTheLastColumnAndRow)
{
    EXPECT_EQ(CountedRectangle(Rectangle(9, 7, 2, 2), {10, 8}),
              (FrameRect{.left = 9, .top = 7, .right = 10, .bottom = 8}));
    EXPECT_EQ(CountedRectangle(Rectangle(9, 7, 10, 8), {10, 8}),
              (FrameRect{.left = 5, .top = 4, .right = 10, .bottom = 8}));
}

TEST(HistogramRectangle, AtTheEndsOf32BitsHasNoSamplesAndNoOverflow)
{
    const std::vector<std::int16_t> frame(80);
    for (const std::int32_t x : {kMost, kLeast, 0}) {
        for (const std::int32_t size : {kMost, kLeast, 0}) {
            const FrameRect counted = CountedRectangle(Rectangle(x, x, size, size), {10, 8});
            EXPECT_LE(RowsOf(frame, 10, counted).size(), 8U);
        }
    }
}

TEST(HistogramRows, TakeTheNextRowsFirstSampleAtTheColumnBehindTheLast)
{
    const std::vector<std::int16_t> frame = {1, 2, 3, 4, 5, 6};
    const Rows rows = RowsOf(frame, 3, {.left = 2, .top = 0, .right = 3, .bottom = 1});
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_THAT(rows[0], ElementsAre(3, 4));
    EXPECT_THAT(rows[1], ElementsAre(6));  // the next one would lie behind the frame
}

TEST(HistogramRows, BehindTheFrameAreLeftOut)
{
    const std::vector<std::int16_t> frame = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(RowsOf(frame, 3, {.left = 0, .top = 1, .right = 2, .bottom = 2}).size(), 1U);
    EXPECT_THAT(RowsOf(frame, 3, {.left = 0, .top = 2, .right = 2, .bottom = 4}), IsEmpty());
    EXPECT_THAT(RowsOf(frame, 3, {.left = 2, .top = 0, .right = 1, .bottom = 1}), IsEmpty());
    EXPECT_THAT(RowsOf({}, 3, {.left = 0, .top = 0, .right = 1, .bottom = 1}), IsEmpty());
    EXPECT_THAT(RowsOf(frame, 0, {.left = 0, .top = 0, .right = 1, .bottom = 1}), IsEmpty());
}

// --- Bins ------------------------------------------------------------------------------------------------------------

TEST(HistogramBins, CountEachValueBetweenTheLimits)
{
    EXPECT_THAT(BinsOf({5, 7, 5, 6, 5}, 5, 8), ElementsAre(0, 3, 1, 1, 0, 0));
}

TEST(HistogramBins, HaveOneForAllBelowAndOneForAllAbove)
{
    EXPECT_THAT(BinsOf({-32768, 4, 5, 8, 9, 32767}, 5, 8), ElementsAre(2, 1, 0, 0, 1, 2));
}

TEST(HistogramBins, ReachFromTheLowestToTheHighestCount)
{
    const std::vector<std::uint32_t> bins = BinsOf({-32768, -32768, 32767}, kLowestCount, kHighestCount);
    ASSERT_EQ(bins.size(), 65538U);
    EXPECT_EQ(bins[0], 0U);
    EXPECT_EQ(bins[1], 2U);
    EXPECT_EQ(bins[65536], 1U);
    EXPECT_EQ(bins[65537], 0U);
}

TEST(HistogramBins, AgreeWithTheDefinitionOnAnyFrame)
{
    std::mt19937 random(1);
    for (int round = 0; round < 50; ++round) {
        const int width = 1 + static_cast<int>(random() % 40);
        const int height = 1 + static_cast<int>(random() % 30);
        std::vector<std::int16_t> frame(static_cast<std::size_t>(width * height));
        for (std::int16_t& count : frame) count = static_cast<std::int16_t>(random() % 3000);
        const auto settings =
            Rectangle(static_cast<std::int32_t>(random()) % width, static_cast<std::int32_t>(random()) % height,
                      1 + static_cast<std::int32_t>(random() % 40), 1 + static_cast<std::int32_t>(random() % 30));
        const FrameRect counted = CountedRectangle(settings, {width, height});
        constexpr std::int32_t kLow = 1000;
        constexpr std::int32_t kHigh = 1900;

        std::vector<std::uint32_t> expected(kHigh + 3 - kLow);
        for (int row = counted.top; row <= counted.bottom; ++row) {
            for (int column = counted.left; column <= counted.right; ++column) {
                const auto index = static_cast<std::size_t>(column + row * width);
                if (index >= frame.size()) continue;
                const std::int32_t count = frame[index];
                if (count < kLow) {
                    ++expected.front();
                } else if (count > kHigh) {
                    ++expected.back();
                } else {
                    ++expected[static_cast<std::size_t>(1 + count - kLow)];
                }
            }
        }
        std::vector<std::uint32_t> bins(expected.size());
        FillBins(TableOf(RowsOf(frame, width, counted)), kLow, kHigh, bins);
        ASSERT_EQ(bins, expected);
    }
}

TEST(HistogramBins, OutsideTheLimitsNeverSetTheNumberAxis)
{
    const std::vector<std::uint32_t> bins = {90, 3, 0, 7, 80};
    EXPECT_EQ(RangeOfBins(bins).smallest, 0U);
    EXPECT_EQ(RangeOfBins(bins).largest, 7U);
}

// --- What the samples measure ---------------------------------------------------------------------------------------

TEST(HistogramFigures, OfOnePixelHaveNoDeviation)
{
    const SampleFigures figures = FiguresOf({1, 2, 3, 4}, 2, {.left = 1, .top = 0, .right = 1, .bottom = 0});
    EXPECT_EQ(figures.samples, 1U);
    EXPECT_EQ(figures.mean, 2.0F);
    EXPECT_FALSE(figures.deviation);
    EXPECT_EQ(figures.extremes.minimum, 2);
    EXPECT_EQ(figures.extremes.minimumAt, (Point{1, 0}));
    EXPECT_EQ(figures.extremes.maximumAt, (Point{1, 0}));
}

TEST(HistogramFigures, DivideByTheNumberOfSamplesAndNotByOneLess)
{
    // 2, 4, 4, 4, 5, 5, 7, 9: mean 5, squares 9 + 1 + 1 + 1 + 0 + 0 + 4 + 16 = 32, 32 / 8 = 4.
    const SampleFigures figures =
        FiguresOf({2, 4, 4, 4, 5, 5, 7, 9}, 8, {.left = 0, .top = 0, .right = 7, .bottom = 0});
    EXPECT_EQ(figures.mean, 5.0F);
    EXPECT_EQ(figures.sumOfSquares, 32.0);
    EXPECT_EQ(figures.deviation, 2.0);
}

TEST(HistogramFigures, TellTheFirstOfEqualExtremes)
{
    const SampleFigures figures = FiguresOf({5, 9, 1, 1, 9, 5}, 3, {.left = 0, .top = 0, .right = 2, .bottom = 1});
    EXPECT_EQ(figures.extremes.minimum, 1);
    EXPECT_EQ(figures.extremes.minimumAt, (Point{2, 0}));
    EXPECT_EQ(figures.extremes.maximum, 9);
    EXPECT_EQ(figures.extremes.maximumAt, (Point{1, 0}));
}

TEST(HistogramFigures, TellPlacesInTheFrame)
{
    const SampleFigures figures =
        FiguresOf({9, 9, 9, 9, 5, 6, 9, 7, 8}, 3, {.left = 1, .top = 1, .right = 2, .bottom = 2});
    EXPECT_EQ(figures.extremes.minimumAt, (Point{1, 1}));
    EXPECT_EQ(figures.extremes.maximumAt, (Point{2, 2}));
}

TEST(HistogramFigures, HaveNoPlaceForWhatNoSampleTookFromTheSeed)
{
    const SampleFigures high = FiguresOf({0x7FFE, 0x7FFF}, 2, {.left = 0, .top = 0, .right = 1, .bottom = 0});
    EXPECT_EQ(high.extremes.minimum, 0x7FFE);
    EXPECT_FALSE(high.extremes.minimumAt);
    EXPECT_EQ(high.extremes.maximumAt, (Point{1, 0}));
    const SampleFigures low = FiguresOf({-0x7FFF, -0x8000}, 2, {.left = 0, .top = 0, .right = 1, .bottom = 0});
    EXPECT_EQ(low.extremes.minimum, -0x8000);
    EXPECT_EQ(low.extremes.minimumAt, (Point{1, 0}));
    EXPECT_EQ(low.extremes.maximum, -0x7FFF);
    EXPECT_FALSE(low.extremes.maximumAt);
}

TEST(HistogramFigures, OfNoSamplesAreNone)
{
    const SampleFigures figures = FiguresOf({}, 3, {.left = 0, .top = 0, .right = 1, .bottom = 1});
    EXPECT_EQ(figures.samples, 0U);
    EXPECT_FALSE(figures.deviation);
    EXPECT_FALSE(figures.extremes.minimumAt);
}

TEST(HistogramFigures, CountWhatLiesBesideTheAxisToo)
{
    const std::vector<std::int16_t> samples = {10, 20, 3000};
    EXPECT_EQ(FiguresOf(samples, 3, {.left = 0, .top = 0, .right = 2, .bottom = 0}).mean, 1010.0F);
    EXPECT_THAT(BinsOf(samples, 5, 25), testing::Contains(1U).Times(3));  // 10, 20 and the outer bin
}

// The plain loop of the definition, sample by sample.
TEST(HistogramFigures, AreThoseOfAPlainLoopBitForBit)
{
    std::mt19937 random(2);
    const auto valueOf = [](std::int32_t count) { return static_cast<float>(count * 0.0137 - 40.3); };
    for (int round = 0; round < 20; ++round) {
        std::vector<std::int16_t> frame(37 * 29);
        for (std::int16_t& count : frame) count = static_cast<std::int16_t>(random());
        const FrameRect rectangle{.left = 3, .top = 2, .right = 30, .bottom = 27};

        double sum = 0;
        std::uint32_t samples = 0;
        for (int row = 2; row <= 27; ++row) {
            for (int column = 3; column <= 30; ++column) {
                sum += static_cast<double>(valueOf(frame[static_cast<std::size_t>(column + row * 37)]));
                ++samples;
            }
        }
        const float mean = static_cast<float>(sum) / static_cast<float>(samples);
        double squares = 0;
        for (int row = 2; row <= 27; ++row) {
            for (int column = 3; column <= 30; ++column) {
                const double value = static_cast<double>(valueOf(frame[static_cast<std::size_t>(column + row * 37)]));
                const double difference = static_cast<double>(mean) - value;
                squares += difference * static_cast<double>(static_cast<float>(difference));
            }
        }

        const SampleFigures figures = FiguresOf(frame, 37, rectangle, valueOf);
        EXPECT_EQ(figures.samples, samples);
        EXPECT_EQ(figures.mean, mean);
        EXPECT_EQ(figures.sumOfSquares, squares);
        EXPECT_EQ(figures.deviation, std::sqrt(squares / samples));
    }
}

TEST(HistogramFigures, AskForEachValueThatOccursOnce)
{
    std::vector<std::int32_t> asked;
    FiguresOf({7, 5, 7, 9, 5}, 5, {.left = 0, .top = 0, .right = 4, .bottom = 0}, [&](std::int32_t count) {
        asked.push_back(count);
        return 0.0F;
    });
    EXPECT_THAT(asked, ElementsAre(5, 7, 9));
}

// --- The axes' ends --------------------------------------------------------------------------------------------------

HistSettingsRecord FittedTo(const std::vector<std::int16_t>& samples)
{
    HistSettingsRecord settings{.XplotMin = 1, .XplotMax = 2};
    const auto last = static_cast<std::int32_t>(samples.size()) - 1;
    FitValueAxis(settings, FiguresOf(samples, last + 1, {.left = 0, .top = 0, .right = last, .bottom = 0}));
    return settings;
}

TEST(HistogramAxes, FollowTheDataFromMinimumToMaximum)
{
    const HistSettingsRecord settings = FittedTo({300, 120, 450});
    EXPECT_EQ(settings.XplotMin, 120);
    EXPECT_EQ(settings.XplotMax, 450);
}

TEST(HistogramAxes, OfEqualSamplesAreOneCountLong)
{
    const HistSettingsRecord settings = FittedTo({300, 300, 300});
    EXPECT_EQ(settings.XplotMin, 300);
    EXPECT_EQ(settings.XplotMax, 301);
}

TEST(HistogramAxes, StayWithinTheirEnds)
{
    EXPECT_EQ(FittedTo({-32768, -32768}).XplotMin, -0x7FFF);
    EXPECT_EQ(FittedTo({-32768, -32768}).XplotMax, -0x7FFE);
    EXPECT_EQ(FittedTo({32767, 32767}).XplotMin, 0x7FFE);
    EXPECT_EQ(FittedTo({32767, 32767}).XplotMax, 0x7FFF);
}

TEST(HistogramAxes, StayAsTheyAreWithoutSamples)
{
    EXPECT_EQ(FittedTo({}).XplotMin, 1);
    EXPECT_EQ(FittedTo({}).XplotMax, 2);
}

TEST(HistogramAxes, OfNumbersFollowTheInnerBins)
{
    HistSettingsRecord settings{.YplotMin = 3, .YplotMax = 5};
    FitNumberAxis(settings, std::vector<std::uint32_t>{90, 4, 9, 70});
    EXPECT_EQ(settings.YplotMin, 4);
    EXPECT_EQ(settings.YplotMax, 9);
}

TEST(HistogramAxes, OfNumbersReachTwoAtLeast)
{
    HistSettingsRecord settings;
    FitNumberAxis(settings, std::vector<std::uint32_t>{90, 1, 1, 70});
    EXPECT_EQ(settings.YplotMin, 1);
    EXPECT_EQ(settings.YplotMax, 2);
    FitNumberAxis(settings, std::vector<std::uint32_t>{90, 5, 5, 70});
    EXPECT_EQ(settings.YplotMin, 4);
    EXPECT_EQ(settings.YplotMax, 5);
}

TEST(HistogramAxes, OfNumbersThatDontFollowKeepTheirEnds)
{
    HistSettingsRecord settings{.YplotMin = 3, .YplotMax = 50, .Yautoscale = 0};
    FitNumberAxis(settings, std::vector<std::uint32_t>{90, 4, 9, 70});
    EXPECT_EQ(settings.YplotMin, 3);
    EXPECT_EQ(settings.YplotMax, 50);
    settings.YplotMax = kLeast;
    FitNumberAxis(settings, std::vector<std::uint32_t>{90, 4, 9, 70});
    EXPECT_EQ(settings.YplotMin, 1);
    EXPECT_EQ(settings.YplotMax, 2);
}

}  // namespace

}  // namespace kelvo
