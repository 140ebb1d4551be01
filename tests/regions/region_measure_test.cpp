#include "regions/region_measure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace kelvo {
namespace {

RegionFigures Measure(const std::vector<std::int16_t>& frame, std::int32_t columns, RegionPlace place,
                      const MeasureOptions& options = {}, RegionShape shape = RegionShape::kRectangle)
{
    const auto rows = static_cast<std::int32_t>(frame.size()) / columns;
    return MeasureRegion(frame, columns, rows, PixelsOf(shape, place, columns, rows), options);
}

TEST(RegionMeasure, FourPixelsByHand)
{
    // 2 4 / 4 10: mean 5, squares of the distances 9 + 1 + 1 + 25 = 36, by 3 is 12.
    const std::vector<std::int16_t> frame{7, 2, 4, 7, 4, 10};
    const RegionFigures figures = Measure(frame, 3, {1, 0, 2, 1});
    EXPECT_EQ(figures.pixels, 4U);
    EXPECT_EQ(figures.sum, 2 + 4 + 4 + 10);
    EXPECT_EQ(figures.mean, 5.0);
    EXPECT_EQ(figures.deviation, std::sqrt(12.0));
    EXPECT_EQ(figures.least, (PixelCount{2, 1, 0}));
    EXPECT_EQ(figures.most, (PixelCount{10, 2, 1}));
    EXPECT_EQ(figures.leftOut, 0U);
    EXPECT_FALSE(figures.saturated);
    EXPECT_FALSE(figures.outsideSources);
}

TEST(RegionMeasure, APointHasNoDeviationAndNothingHasNoPixels)
{
    const std::vector<std::int16_t> frame{7, -3, 4, 7};
    const RegionFigures point = Measure(frame, 2, {1, 0, 1, 0}, {}, RegionShape::kPoint);
    EXPECT_EQ(point.pixels, 1U);
    EXPECT_EQ(point.mean, -3.0);
    EXPECT_EQ(point.deviation, 0.0);
    EXPECT_EQ(point.least, point.most);
    EXPECT_EQ(Measure(frame, 2, {5, 5, 9, 9}).pixels, 0U);
}

TEST(RegionMeasure, OfEqualExtremesTheFirstRowByRowCounts)
{
    const std::vector<std::int16_t> frame{5, 9, 5, 9, 5, 9};
    const RegionFigures figures = Measure(frame, 2, {0, 0, 1, 2});
    EXPECT_EQ(figures.least, (PixelCount{5, 0, 0}));
    EXPECT_EQ(figures.most, (PixelCount{9, 1, 0}));
}

TEST(RegionMeasure, BadDetectorsAreLeftOutAndCounted)
{
    const std::vector<std::int16_t> frame{0, 2, 4, 6, 30000, 8};
    const std::vector<std::uint8_t> bad{1, 0, 0, 0, 1, 0};
    const RegionFigures figures = Measure(frame, 3, {0, 0, 2, 1}, {.bad = bad});
    EXPECT_EQ(figures.pixels, 4U);
    EXPECT_EQ(figures.leftOut, 2U);
    EXPECT_EQ(figures.mean, 5.0);
    EXPECT_EQ(figures.least, (PixelCount{2, 1, 0}));
    EXPECT_EQ(figures.most, (PixelCount{8, 2, 1}));
    const std::vector<std::uint8_t> all(6, 1);
    EXPECT_EQ(Measure(frame, 3, {0, 0, 2, 1}, {.bad = all}).leftOut, 6U);
    EXPECT_EQ(Measure(frame, 3, {0, 0, 2, 1}, {.bad = all}).pixels, 0U);
    const std::vector<std::uint8_t> ofAnotherFrame(5, 1);
    EXPECT_EQ(Measure(frame, 3, {0, 0, 2, 1}, {.bad = ofAnotherFrame}).pixels, 6U);
}

TEST(RegionMeasure, TheEndsOfTheConverterAreThoseOfItsOwnCounts)
{
    const std::vector<std::int16_t> frame{0, 1, 16382, 16383};
    EXPECT_EQ(Measure(frame, 2, {0, 0, 1, 1}, {.countsAreRaw = true}).saturated, 2U);
    // Pixel 0 comes from detector 3, pixel 1 from detector 2 and so on; an entry that leads nowhere doesn't count.
    const std::vector<std::int16_t> raw{16383, 5000, 0, 16383};
    const std::vector<std::uint32_t> decom{3, 2, 1, 9};
    EXPECT_EQ(Measure(frame, 2, {0, 0, 1, 1}, {.raw = raw, .decomList = decom}).saturated, 2U);
    EXPECT_EQ(Measure(frame, 2, {0, 1, 1, 1}, {.raw = raw, .decomList = decom}).saturated, 0U);
}

TEST(RegionMeasure, OutsideOfTheSourcesIsBeyondTheirCounts)
{
    const std::vector<std::int16_t> frame{3999, 4000, 9000, 9001};
    EXPECT_EQ(Measure(frame, 2, {0, 0, 1, 1}, {.sources = CountRange{4000, 9000}}).outsideSources, 2U);
    EXPECT_EQ(Measure(frame, 2, {1, 0, 1, 0}, {.sources = CountRange{4000, 9000}}).outsideSources, 0U);
}

TEST(RegionMeasure, AFrameThatIsTooShortOrRunsBesideItGiveNoPixels)
{
    const std::vector<std::int16_t> frame(5, 7);
    const std::vector<PixelRun> runs{{0, 0, 1}, {7, 0, 1}, {-1, 0, 0}, {1, -4, 9}, {1, 3, 2}};
    EXPECT_EQ(MeasureRegion(frame, 3, 2, runs, {}).pixels, 0U);
    EXPECT_EQ(MeasureRegion(frame, 2, 2, runs, {}).pixels, 4U);
    EXPECT_EQ(MeasureRegion(frame, 0, 2, runs, {}).pixels, 0U);
    EXPECT_EQ(MeasureRegion(frame, -3, -2, runs, {}).pixels, 0U);
}

// A constant frame of the largest counts, where sums in double would leave a deviation behind.
TEST(RegionMeasure, ALargeConstantFrameHasExactlyItsCountAndNoDeviation)
{
    const std::vector<std::int16_t> frame(1024 * 1024, -32768);
    const RegionFigures figures = Measure(frame, 1024, {0, 0, 1023, 1023});
    EXPECT_EQ(figures.mean, -32768.0);
    EXPECT_EQ(figures.deviation, 0.0);
}

TEST(RegionMeasure, EqualsThePlainDefinitionPixelByPixel)
{
    std::mt19937 random(3);
    std::uniform_int_distribution<int> count(-32768, 32767);
    std::uniform_int_distribution<int> side(-6, 45);
    std::uniform_int_distribution<int> shape(0, 3);
    constexpr int kColumns = 37;
    constexpr int kRows = 29;
    for (int round = 0; round < 200; ++round) {
        std::vector<std::int16_t> frame(kColumns * kRows);
        std::vector<std::uint8_t> bad(frame.size());
        for (std::int16_t& c : frame) c = static_cast<std::int16_t>(count(random));
        for (std::uint8_t& b : bad) b = random() % 8 == 0 ? 1 : 0;
        const RegionPlace place{side(random), side(random), side(random), side(random)};
        const auto runs = PixelsOf(static_cast<RegionShape>(shape(random)), place, kColumns, kRows);
        const RegionFigures figures =
            MeasureRegion(frame, kColumns, kRows, runs, {.bad = bad, .sources = CountRange{-9000, 12000}});

        std::vector<long double> good;
        std::size_t leftOut = 0;
        std::size_t outside = 0;
        for (const PixelRun& run : runs) {
            for (int x = run.first; x <= run.last; ++x) {
                const auto i = static_cast<std::size_t>(run.row * kColumns + x);
                if (bad[i]) {
                    ++leftOut;
                    continue;
                }
                good.push_back(frame[i]);
                if (frame[i] < -9000 || frame[i] > 12000) ++outside;
            }
        }
        EXPECT_EQ(figures.pixels, good.size());
        EXPECT_EQ(figures.leftOut, leftOut);
        EXPECT_EQ(figures.outsideSources, outside);
        if (good.empty()) continue;
        long double mean = 0;
        for (const long double c : good) mean += c / static_cast<long double>(good.size());
        long double spread = 0;
        for (const long double c : good) spread += (c - mean) * (c - mean);
        EXPECT_NEAR(figures.mean, static_cast<double>(mean), 1e-9);
        if (good.size() == 1) continue;
        const long double n1 = static_cast<long double>(good.size()) - 1;
        EXPECT_NEAR(figures.deviation, static_cast<double>(std::sqrt(spread / n1)), 1e-8);
    }
}

}  // namespace
}  // namespace kelvo
