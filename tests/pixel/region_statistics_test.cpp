// Mean, deviation and extremes of a rectangle, against sums by hand and a calculation in two passes.
#include "pixel/region_statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace kelvo {
namespace {

constexpr std::int32_t kIntegers = 4;  // any number but 8
constexpr std::int32_t kSeed = 7;

struct Measured {
    double mean = 0;
    float deviation = -1;
    std::int32_t minimum = std::numeric_limits<std::int32_t>::max();
    std::int32_t maximum = std::numeric_limits<std::int32_t>::min();
};

struct Place {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
};

template <typename Sample>
Measured Measure(const std::vector<Sample>& frame, const Place& place, std::int32_t stride)
{
    constexpr std::int32_t kType = std::is_same_v<Sample, float> ? kFloatSamples : kIntegers;
    Measured m;
    m.mean = RegionStatistics(std::as_bytes(std::span(frame)), place.left, place.top, place.right, place.bottom, stride,
                              kType, &m.deviation, m.minimum, m.maximum);
    return m;
}

// Three rows of four.
const std::vector<std::int32_t> kFrame = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};

TEST(RegionStatistics, TakesTheRectangleWithAllFourSides)
{
    const Measured m = Measure(kFrame, {1, 0, 2, 1}, 4);  // 2 3 / 6 7
    EXPECT_EQ(m.mean, 4.5);
    EXPECT_EQ(m.minimum, 2);
    EXPECT_EQ(m.maximum, 7);
    EXPECT_FLOAT_EQ(m.deviation, std::sqrt(17.0F / 3.0F));  // 6.25 + 2.25 + 2.25 + 6.25 over 3
}

TEST(RegionStatistics, OfOnePixelIsThatPixel)
{
    Measured m = Measure(kFrame, {3, 2, 3, 2}, 4);
    EXPECT_EQ(m.mean, 12.0);
    EXPECT_EQ(m.deviation, 0.0F);
    EXPECT_EQ(m.minimum, 12);
    EXPECT_EQ(m.maximum, 12);
}

TEST(RegionStatistics, LeavesExtremesThatTheSamplesDoNotPass)
{
    float deviation = -1;
    std::int32_t minimum = -5;
    std::int32_t maximum = 100;
    const auto bytes = std::as_bytes(std::span(kFrame));
    EXPECT_EQ(RegionStatistics(bytes, 0, 0, 3, 2, 4, kIntegers, &deviation, minimum, maximum), 6.5);
    EXPECT_EQ(minimum, -5);
    EXPECT_EQ(maximum, 100);
}

TEST(RegionStatistics, RightBelowLeftGivesZeroAndTouchesNothing)
{
    for (const Place& place : {Place{2, 0, 1, 2}, Place{3, 0, 0, 2}, Place{0, 2, 3, 0}}) {
        float deviation = kSeed;
        std::int32_t minimum = kSeed;
        std::int32_t maximum = kSeed;
        EXPECT_EQ(RegionStatistics(std::as_bytes(std::span(kFrame)), place.left, place.top, place.right, place.bottom,
                                   4, kIntegers, &deviation, minimum, maximum),
                  0.0);
        EXPECT_EQ(deviation, static_cast<float>(kSeed));
        EXPECT_EQ(minimum, kSeed);
        EXPECT_EQ(maximum, kSeed);
    }
}

TEST(RegionStatistics, BothSidesReversedVisitNothing)
{
    const Measured m = Measure(kFrame, {3, 2, 0, 0}, 4);  // n is -2 x -1
    EXPECT_EQ(m.mean, 0.0);
    EXPECT_EQ(m.deviation, 0.0F);
    EXPECT_EQ(m.maximum, std::numeric_limits<std::int32_t>::min());
}

TEST(RegionStatistics, ARectangleBeyondTheBlockGivesZeroAndTouchesNothing)
{
    for (const Place& place : {Place{0, 0, 4, 0}, Place{-1, 0, 1, 0}, Place{0, -1, 1, 1}, Place{0, 0, 0, 3},
                               Place{0, 0, 0, std::numeric_limits<std::int32_t>::max()}}) {
        const Measured m = Measure(kFrame, place, 4);
        EXPECT_EQ(m.mean, 0.0);
        EXPECT_EQ(m.deviation, -1.0F);
    }
}

TEST(RegionStatistics, WorksWithoutAPlaceForTheDeviation)
{
    std::int32_t minimum = 0;
    std::int32_t maximum = 0;
    EXPECT_EQ(RegionStatistics(std::as_bytes(std::span(kFrame)), 0, 1, 3, 1, 4, kIntegers, nullptr, minimum, maximum),
              6.5);
    EXPECT_EQ(maximum, 8);
}

TEST(RegionStatistics, FloatsAreTruncatedTowardZeroForTheExtremesAlone)
{
    const Measured m = Measure(std::vector<float>{-2.75F, 3.5F, 0.25F}, {0, 0, 2, 0}, 3);
    EXPECT_EQ(m.minimum, -2);
    EXPECT_EQ(m.maximum, 3);
    EXPECT_DOUBLE_EQ(m.mean, 1.0 / 3.0);
}

TEST(RegionStatistics, AFloatBeyond32BitsIsHeldToThem)
{
    const Measured m = Measure(std::vector<float>{1e20F, -1e20F}, {0, 0, 1, 0}, 2);
    EXPECT_EQ(m.minimum, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(m.maximum, std::numeric_limits<std::int32_t>::max());
}

// Squares of 32-bit integers overflow any integer of theirs: 2 x (2^31 - 1)^2.
TEST(RegionStatistics, SquaresAreTakenInDouble)
{
    constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
    const Measured m = Measure(std::vector<std::int32_t>{kLargest, -kLargest}, {0, 0, 1, 0}, 2);
    EXPECT_EQ(m.mean, 0.0);
    EXPECT_FLOAT_EQ(m.deviation, static_cast<float>(kLargest * std::sqrt(2.0)));
}

TEST(RegionStatistics, AgreesWithTwoPassesOnRandomFrames)
{
    std::mt19937 random(4711);
    std::uniform_int_distribution<std::int32_t> counts(0, 16383);
    std::uniform_int_distribution<std::int32_t> columns(0, 30);
    std::uniform_int_distribution<std::int32_t> rows(0, 20);
    for (int round = 0; round < 50; ++round) {
        constexpr std::int32_t kStride = 31;
        std::vector<std::int32_t> frame(kStride * 21);
        for (std::int32_t& sample : frame) sample = counts(random);
        const auto [left, right] = std::minmax({columns(random), columns(random)});
        const auto [top, bottom] = std::minmax({rows(random), rows(random)});
        std::vector<double> inside;
        for (std::int32_t y = top; y <= bottom; ++y) {
            for (std::int32_t x = left; x <= right; ++x) {
                inside.push_back(frame[static_cast<std::size_t>(y * kStride + x)]);
            }
        }
        double mean = 0;
        for (const double sample : inside) mean += sample / static_cast<double>(inside.size());
        double squares = 0;
        for (const double sample : inside) squares += (sample - mean) * (sample - mean);
        const double deviation = inside.size() > 1 ? std::sqrt(squares / static_cast<double>(inside.size() - 1)) : 0.0;

        const Measured m = Measure(frame, {left, top, right, bottom}, kStride);
        EXPECT_NEAR(m.mean, mean, 1e-8);
        EXPECT_NEAR(m.deviation, deviation, 1e-2);
        EXPECT_EQ(m.minimum, *std::ranges::min_element(inside));
        EXPECT_EQ(m.maximum, *std::ranges::max_element(inside));
    }
}

}  // namespace
}  // namespace kelvo
