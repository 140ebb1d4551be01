// The one-point arithmetic, on numbers worked by hand.
#include "calib/one_point.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Shorts = std::vector<std::int16_t>;
using Floats = std::vector<float>;
using Table = std::vector<std::uint32_t>;

Table InOrder(std::size_t count)
{
    Table table(count);
    std::iota(table.begin(), table.end(), 0U);
    return table;
}

OnePointSettings Within(std::int32_t minOffset, std::int32_t maxOffset)
{
    return {.minOffset = minOffset, .maxOffset = maxOffset, .replaceNoisy = true, .allowedNoise = 9.0F};
}

TEST(OnePointMean, IsOfThePixelsNotOfTheDetectors)
{
    const Shorts frame = {100, 200, 300, 400};
    EXPECT_EQ(MeanOfPixels(frame, InOrder(4)), 250.0F);
    EXPECT_EQ(MeanOfPixels(frame, Table{3, 3, 3, 0}), 325.0F);  // replaced pixels count as their source
}

// Mean 1000, window 900 to 1200.
TEST(OnePointMean, AValueOnABoundIsOutsideInTheFirstPassAndInsideInTheSecond)
{
    const Shorts frame = {900, 901, 1199, 1200};
    const auto inside = MeanInsideWindow(frame, InOrder(4), 1000.0F, Within(100, 200));
    ASSERT_TRUE(inside);
    EXPECT_EQ(inside.value_or(0), 1050.0F);  // of 901 and 1199

    Floats gains(4, 1.0F);
    const auto found = RejectOutsideWindow(frame, {}, InOrder(4), 1000.0F, Within(100, 200), gains, {});
    ASSERT_TRUE(found);
    const OnePointResult result = found.value_or(OnePointResult{});
    EXPECT_EQ(result.good, 4);
    EXPECT_EQ(result.mean, 1050.0F);
    EXPECT_THAT(gains, Each(1.0F));
}

TEST(OnePointMean, TheSecondPassZeroesTheGainsOfWhatLiesOutside)
{
    const Shorts frame = {899, 900, 1000, 1200, 1201};
    Floats gains = {1.5F, 1.25F, 0.0F, 0.75F, 2.0F};
    std::vector<OnePointClass> classes(5);
    const auto found = RejectOutsideWindow(frame, {}, InOrder(5), 1000.0F, Within(100, 200), gains, classes);
    ASSERT_TRUE(found);
    const OnePointResult result = found.value_or(OnePointResult{});
    EXPECT_EQ(result.good, 3);
    EXPECT_THAT(gains, ElementsAre(0.0F, 1.25F, 0.0F, 0.75F, 0.0F)) << "kept gains don't change, a kept zero stays";
    EXPECT_THAT(classes, ElementsAre(OnePointClass::kLow, OnePointClass::kGood, OnePointClass::kGood,
                                     OnePointClass::kGood, OnePointClass::kHigh));
}

TEST(OnePointMean, WithNoPixelInsideThereIsNone)
{
    const Shorts frame = {0, 2000};
    EXPECT_FALSE(MeanInsideWindow(frame, InOrder(2), 1000.0F, Within(100, 100)));
    Floats gains(2, 1.0F);
    EXPECT_FALSE(RejectOutsideWindow(frame, {}, InOrder(2), 1000.0F, Within(100, 100), gains, {}));
    EXPECT_THAT(gains, Each(0.0F));
}

TEST(OnePointMean, NoiseAtTheLevelPassesAndAboveItDoesNot)
{
    const Shorts frame(3, 1000);
    const Floats noise = {9.0F, 9.001F, 3.0F};
    Floats gains(3, 1.0F);
    const auto found = RejectOutsideWindow(frame, noise, InOrder(3), 1000.0F, Within(100, 100), gains, {});
    ASSERT_TRUE(found);
    const OnePointResult result = found.value_or(OnePointResult{});
    EXPECT_EQ(result.good, 2);
    EXPECT_FLOAT_EQ(result.noiseMean, 6.0F);
    EXPECT_THAT(gains, ElementsAre(1.0F, 0.0F, 1.0F));
}

TEST(OnePointMean, DetectorsAreReachedThroughTheTable)
{
    const Shorts frame = {5000, 1000};
    const Floats noise = {1.0F, 4.0F};
    Floats gains(2, 1.0F);
    const auto found = RejectOutsideWindow(frame, noise, Table{1, 1}, 1000.0F, Within(100, 100), gains, {});
    ASSERT_TRUE(found);
    const OnePointResult result = found.value_or(OnePointResult{});
    EXPECT_FLOAT_EQ(result.noiseMean, 4.0F);
    EXPECT_THAT(gains, Each(1.0F)) << "no pixel reads detector 0";
}

TEST(OnePointMean, WithoutSubstitutionNoDetectorIsRejected)
{
    const OnePointResult result = AcceptAllPixels(1234.5F, Floats{4.0F, 100.0F}, 2);
    EXPECT_EQ(result.good, 2);
    EXPECT_EQ(result.mean, 1234.5F);
    EXPECT_EQ(result.noiseMean, 52.0F);
    EXPECT_EQ(AcceptAllPixels(1.0F, {}, 2).noiseMean, 0.0F);
}

// 20 x 5.04 = 100.8; 20 x 2000 = 40000 = -25536 in 16 bits.
TEST(OnePointNoise, IsTruncatedAndNotLimited)
{
    const Floats noise = {5.04F, 1638.35F, 2000.0F, 0.0F};
    Shorts list(4);
    NoiseToSteps(noise, list);
    EXPECT_EQ(list[0], 100);
    EXPECT_NEAR(list[1], 32767, 1);
    EXPECT_EQ(list[2], -25536);
    EXPECT_EQ(list[3], 0);
}

TEST(OnePointText, OfANewCalibration)
{
    const OnePointResult result = {.mean = 7500.25F, .noiseMean = 5.25F, .good = 981};
    EXPECT_EQ(OnePointResultText(result, 1000, false, true, 20.0F),
              "Total bad pixels =     19 (  1.9 %)\n\nMean signal =  7500.2 counts @ 20.000"
              "\n\nMean noise =     5.2 counts");
}

TEST(OnePointText, OfAnUpdate)
{
    const OnePointResult result = {.mean = 7500.0F, .noiseMean = 0, .good = 1000};
    EXPECT_EQ(OnePointResultText(result, 1000, true, false, -999.0F),
              "Total new bad pixels =      0 (  0.0 %)\n\nMean signal =  7500.0 counts");
}

TEST(OnePointText, ATemperatureIsShownAbove274BelowZeroOnly)
{
    const OnePointResult result = {.mean = 1, .noiseMean = 0, .good = 1};
    EXPECT_THAT(OnePointResultText(result, 1, false, false, -999.0F), Not(HasSubstr("@")));
    EXPECT_THAT(OnePointResultText(result, 1, false, false, -274.0F), Not(HasSubstr("@")));
    EXPECT_THAT(OnePointResultText(result, 1, false, false, -273.0F), HasSubstr(" @ -273.000"));
}

}  // namespace
}  // namespace kelvo
