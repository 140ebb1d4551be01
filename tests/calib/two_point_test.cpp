// The two-point arithmetic, on numbers worked by hand.
#include "calib/two_point.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Longs = std::vector<std::int32_t>;
using Shorts = std::vector<std::int16_t>;
using Floats = std::vector<float>;

// One frame, so that sums are means, and no noise.
TwoPointSettings Plain()
{
    TwoPointSettings settings;
    settings.frameCount = 1;
    settings.replaceNoisy = false;
    return settings;
}

TwoPointSettings WithNoise()
{
    TwoPointSettings settings = Plain();
    settings.replaceNoisy = true;
    return settings;
}

// 20 detectors at 1000 and 2000, of which a test changes some.
struct Array {
    Longs low = Longs(20, 1000);
    Longs high = Longs(20, 2000);
    Floats noise = Floats(20, 5.0F);
    Shorts noiseList = Shorts(20);
    Floats gains = Floats(20);
    std::vector<DetectorClass> classes = std::vector<DetectorClass>(20);
    ArrayMeans means;
    ClassCounts counts;

    void Average(const TwoPointSettings& settings) { means = SumsToMeans(low, high, noise, noiseList, settings); }
    // Means are given: the classes alone.
    void Classify(const TwoPointSettings& settings, float meanLow, float meanDelta)
    {
        means.meanLow = meanLow;
        means.meanDelta = meanDelta;
        counts = ClassifyDetectors(low, high, noiseList, means, settings, gains, classes);
    }
};

// --- Sums to means --------------------------------------------------------------------------------------------------

TEST(TwoPointMeans, OneFrameIsItselfTheMean)
{
    Array array;
    array.low[3] = -7;
    array.Average(Plain());
    EXPECT_EQ(array.low[0], 1000);
    EXPECT_EQ(array.low[3], -7);
    EXPECT_EQ(array.high[3], 2000);
}

// (sum + n / 2) / n in whole numbers: 30 frames add 15; below zero the division truncates upward.
TEST(TwoPointMeans, SumsAreRoundedByHalfAFrameCountAndTruncated)
{
    TwoPointSettings settings = Plain();
    settings.frameCount = 30;
    Array array;
    array.low = Longs(20, 30000);
    array.high = Longs(20, 90000);
    array.low[0] = 30014;   // 30029 / 30 = 1000
    array.low[1] = 30015;   // 30030 / 30 = 1001
    array.low[2] = -30014;  // -29999 / 30 = -999
    array.low[3] = -30046;  // -30031 / 30 = -1001
    settings.frameCount = 30;
    array.Average(settings);
    EXPECT_EQ(array.low[0], 1000);
    EXPECT_EQ(array.low[1], 1001);
    EXPECT_EQ(array.low[2], -999);
    EXPECT_EQ(array.low[3], -1001);
    EXPECT_EQ(array.high[0], 3000);

    settings.frameCount = 3;  // half of 3 is 1
    array.low = Longs(20, 5);
    array.high = Longs(20, 300);
    array.Average(settings);
    EXPECT_EQ(array.low[0], 2);
}

TEST(TwoPointMeans, AResponseOfTheNoiseFloorItselfIsDead)
{
    Array array;
    array.high[0] = 1025;
    array.high[1] = 1026;
    array.high[2] = 975;
    array.high[3] = 974;
    array.Average(Plain());
    EXPECT_EQ(array.means.dead, 2);
    EXPECT_EQ(array.means.good, 18);
    EXPECT_EQ(array.high[0], 1000) << "a dead detector has no response from here on";
    EXPECT_EQ(array.high[2], 1000);
    EXPECT_EQ(array.high[1], 1026);
    EXPECT_EQ(array.high[3], 974);
}

TEST(TwoPointMeans, AreOfGoodDetectorsOnly)
{
    Array array;
    array.high[0] = array.low[0] = 16383;  // dead
    array.low[1] = 1019;
    array.high[1] = 2038;
    array.Average(Plain());
    EXPECT_EQ(array.means.meanLow, 1001.0F);    // (18 x 1000 + 1019) / 19
    EXPECT_EQ(array.means.meanHigh, 2002.0F);   // (18 x 2000 + 2038) / 19
    EXPECT_EQ(array.means.meanDelta, 1001.0F);  // (18 x 1000 + 1019) / 19
}

TEST(TwoPointMeans, OneDetectorInTwentyIsTooFewAndOneMorePasses)
{
    ArrayMeans means;
    means.good = 5;
    EXPECT_FALSE(EnoughGoodDetectors(means, 100));
    means.good = 6;
    EXPECT_TRUE(EnoughGoodDetectors(means, 100));
    means.good = 5;  // 119 / 20 = 5, 99 / 20 = 4
    EXPECT_FALSE(EnoughGoodDetectors(means, 119));
    EXPECT_TRUE(EnoughGoodDetectors(means, 99));
    means.good = 0;
    EXPECT_FALSE(EnoughGoodDetectors(means, 0));
}

TEST(TwoPointMeans, OfTooFewGoodDetectorsThereAreNone)
{
    Array array;
    array.high = array.low;
    array.high[7] = 9000;
    array.Average(WithNoise());
    EXPECT_EQ(array.means.good, 1);
    EXPECT_EQ(array.means.meanLow, 0.0F);
    EXPECT_EQ(array.means.noiseMean, 0.0F);
    EXPECT_EQ(array.means.noiseStd, 0.0F);
}

TEST(TwoPointMeans, ARangeOfTheNoiseFloorItselfPasses)
{
    ArrayMeans means;
    means.meanDelta = 25.0F;
    EXPECT_TRUE(EnoughRange(means, 25));
    means.meanDelta = std::nextafter(25.0F, 0.0F);
    EXPECT_FALSE(EnoughRange(means, 25));
    means.meanDelta = -25.0F;
    EXPECT_TRUE(EnoughRange(means, 25));
    means.meanDelta = -24.5F;
    EXPECT_FALSE(EnoughRange(means, 25));
}

// --- The noise list -------------------------------------------------------------------------------------------------

TEST(TwoPointNoise, IsStoredInTwentiethsRounded)
{
    Array array;
    array.noise = {0.0F, 0.0249F, 0.025F, 5.0F, 5.024F, 5.026F, 9.0F};
    array.noise.resize(20);
    array.Average(WithNoise());
    // x 20 + 0.5 truncated: 0.998 and 1.0 (0.025 as a float lies above), 100.98, 101.02
    EXPECT_EQ(array.noiseList[0], 0);
    EXPECT_EQ(array.noiseList[1], 0);
    EXPECT_EQ(array.noiseList[2], 1);
    EXPECT_EQ(array.noiseList[3], 100);
    EXPECT_EQ(array.noiseList[4], 100);
    EXPECT_EQ(array.noiseList[5], 101);
    EXPECT_EQ(array.noiseList[6], 180);
}

// 32767 twentieths are 1638.35 counts. Above that 16 bits turn negative, which is stored as 0: a detector so noisy
// isn't taken for a noisy one. From 3276.8 counts on the bits come round once more.
TEST(TwoPointNoise, Above1638CountsTheListHoldsZero)
{
    TwoPointSettings settings = WithNoise();
    settings.unityOffset = 16384;  // the limit 32767 leaves all that 16 bits hold
    Array array;
    array.noise = {1638.3F, 1638.4F, 2000.0F, 3276.7F, 3277.0F};
    array.noise.resize(20);
    array.Average(settings);
    EXPECT_EQ(array.noiseList[0], 32766);
    EXPECT_EQ(array.noiseList[1], 0);
    EXPECT_EQ(array.noiseList[2], 0);
    EXPECT_EQ(array.noiseList[3], 0);
    EXPECT_EQ(array.noiseList[4], 4);  // 65540.5 truncated less 65536

    array.Classify(settings, 1000, 1000);
    EXPECT_EQ(array.classes[0], DetectorClass::kNoisy);
    EXPECT_EQ(array.classes[1], DetectorClass::kGood);
    EXPECT_EQ(array.classes[2], DetectorClass::kGood);
    EXPECT_EQ(array.classes[4], DetectorClass::kGood);
}

TEST(TwoPointNoise, IsLimitedByTheUnityOffset)
{
    Array array;
    array.noise[0] = 1000.0F;  // 20000 twentieths
    TwoPointSettings settings = WithNoise();
    settings.unityOffset = 8192;
    array.Average(settings);
    EXPECT_EQ(array.noiseList[0], 16383);
    EXPECT_EQ(array.noiseList[1], 100);
    settings.unityOffset = -4096;
    array.Average(settings);
    EXPECT_THAT(array.noiseList, Each(0));
    settings.unityOffset = 0;
    array.Average(settings);
    EXPECT_THAT(array.noiseList, Each(0));
    settings.unityOffset = 1;
    array.Average(settings);
    EXPECT_THAT(array.noiseList, Each(1));
}

TEST(TwoPointNoise, MeanAndDeviationAreOfGoodDetectors)
{
    Array array;
    array.noise.assign(20, 4.0F);
    for (std::size_t i = 0; i < 10; ++i) array.noise[i] = 6.0F;
    array.high[19] = 1000;
    array.noise[19] = 100.0F;  // dead
    array.Average(WithNoise());
    // 10 sixes and 9 fours: sum 96, squares 504; variance (504 - 96 x 96 / 19) / 18.
    EXPECT_FLOAT_EQ(array.means.noiseMean, static_cast<float>(96.0 / 19));
    EXPECT_FLOAT_EQ(array.means.noiseStd, static_cast<float>(std::sqrt((504 - 9216.0 / 19) / 18)));
}

// 2 to the 24th and then ones: a single-precision sum stands still, one in double wouldn't.
TEST(TwoPointNoise, IsSummedInReadoutOrderInSinglePrecision)
{
    Array array;
    array.noise.assign(20, 1.0F);
    array.noise[0] = 16777216.0F;
    array.Average(WithNoise());
    EXPECT_EQ(array.means.noiseMean, 16777216.0F / 20);
    std::swap(array.noise[0], array.noise[19]);  // the ones first: 16777216 + 19 rounds to 16777236
    array.Average(WithNoise());
    EXPECT_EQ(array.means.noiseMean, 16777236.0F / 20);
}

TEST(TwoPointNoise, OfNoSpreadHasADeviationOfZeroAndIsANumber)
{
    Array array;
    array.noise.assign(20, 5.1F);
    array.Average(WithNoise());
    EXPECT_NEAR(array.means.noiseStd, 0.0F, 0.01F);
    EXPECT_FALSE(std::isnan(array.means.noiseStd));
}

// --- Classes --------------------------------------------------------------------------------------------------------

// Means 1000 and 100; the range 0.25 is exact in binary: 75 to 125 counts.
struct ClassCase {
    std::int32_t low;
    std::int32_t high;
    DetectorClass of;
};

TEST(TwoPointClasses, TheFirstRuleThatFitsNamesTheClass)
{
    const std::vector<ClassCase> cases = {
        {1000, 1000, DetectorClass::kOpen},  // exactly the mean
        {999, 999, DetectorClass::kOpen},
        {1001, 1001, DetectorClass::kShort},
        {1001, 1127, DetectorClass::kLowResponseAbove},
        {1000, 1126, DetectorClass::kLowResponseBelow},
        {500, 626, DetectorClass::kLowResponseBelow},  // before its offset
        {1001, 1075, DetectorClass::kHighResponseAbove},
        {1000, 1074, DetectorClass::kHighResponseBelow},
        {1000, 874, DetectorClass::kLowResponseBelow},  // by the size of the response
        {599, 699, DetectorClass::kLowOffset},
        {600, 700, DetectorClass::kGood},
        {1400, 1500, DetectorClass::kGood},
        {1401, 1501, DetectorClass::kHighOffset},
        {1000, 1125, DetectorClass::kGood},  // exactly the upper limit
        {1000, 1075, DetectorClass::kGood},  // exactly the lower one
        {1000, 900, DetectorClass::kGood},
    };
    TwoPointSettings settings = Plain();
    settings.gainRange = 0.25F;
    Array array;
    array.low.resize(cases.size());
    array.high.resize(cases.size());
    array.gains.resize(cases.size());
    array.classes.resize(cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        array.low[i] = cases[i].low;
        array.high[i] = cases[i].high;
    }
    array.Classify(settings, 1000, 100);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_EQ(array.classes[i], cases[i].of) << cases[i].low << ' ' << cases[i].high;
        const float gain = static_cast<float>(cases[i].high - cases[i].low) / 100.0F;
        EXPECT_EQ(array.gains[i], cases[i].of == DetectorClass::kGood ? gain : 0.0F) << i;
    }
    EXPECT_EQ(array.counts.Bad(), 11);
    EXPECT_EQ(array.counts[DetectorClass::kGood], 5);
    EXPECT_EQ(array.counts[DetectorClass::kOpen], 2);
    EXPECT_EQ(array.counts[DetectorClass::kLowResponseBelow], 3);
}

TEST(TwoPointClasses, ANoisyDetectorIsOneAboveTheLevel)
{
    TwoPointSettings settings = WithNoise();
    Array array;
    array.noiseList = Shorts(20, 180);  // 9.0 counts, the level itself
    array.noiseList[2] = 181;
    array.Classify(settings, 1000, 1000);
    EXPECT_EQ(array.counts[DetectorClass::kNoisy], 1);
    EXPECT_EQ(array.classes[2], DetectorClass::kNoisy);
    EXPECT_EQ(array.gains[2], 0.0F);
    settings.replaceNoisy = false;
    array.Classify(settings, 1000, 1000);
    EXPECT_EQ(array.counts.Bad(), 0);
}

// The coefficient, not the detector, has the "low response": stored results are compared by these names.
TEST(TwoPointClasses, ANegativeResponseOfTheWholeArrayGivesPositiveGains)
{
    Array array;
    std::swap(array.low, array.high);
    array.Average(Plain());
    EXPECT_EQ(array.means.meanDelta, -1000.0F);
    EXPECT_TRUE(EnoughRange(array.means, 25));
    array.counts =
        ClassifyDetectors(array.low, array.high, array.noiseList, array.means, Plain(), array.gains, array.classes);
    EXPECT_THAT(array.gains, Each(1.0F));
}

TEST(TwoPointClasses, ARangeAboveOneAcceptsEveryWeakDetector)
{
    TwoPointSettings settings = Plain();
    settings.gainRange = 1.0F;  // lower limit 0, upper 2
    settings.noiseFloor = 0;
    Array array;
    array.high[0] = 1001;
    array.high[1] = 3000;
    array.high[2] = 3001;
    array.Classify(settings, 1000, 1000);
    EXPECT_EQ(array.gains[0], 0.001F);
    EXPECT_EQ(array.gains[1], 2.0F);
    EXPECT_EQ(array.gains[2], 0.0F);
}

// --- Offsets --------------------------------------------------------------------------------------------------------

TEST(TwoPointOffsets, AreRoundedHalfAwayFromZero)
{
    // low - 1000 x gain
    const Floats gains = {1.0F, 1.0F, 0.5F, 0.5F, 0.0F, 1.25F, 1.0F};
    const Shorts low = {1000, 1003, 500, 490, 123, 1250, 997};
    Shorts offsets(gains.size());
    OffsetsOf(gains, low, 1000.0F, offsets);
    EXPECT_THAT(offsets, ElementsAre(0, 3, 0, -10, 0, 0, -3));
    // 999 x 0.5 = 499.5: v = 0.5, -0.5, 1.5, -1.5
    const Floats half(4, 0.5F);
    const Shorts beside = {500, 499, 501, 498};
    offsets.resize(4);
    OffsetsOf(half, beside, 999.0F, offsets);
    EXPECT_THAT(offsets, ElementsAre(1, -1, 2, -2));
}

// With the offset a detector reads the mean at both sources.
TEST(TwoPointOffsets, MakeEveryDetectorReadTheMeans)
{
    const Longs low = {900, 1000, 1100};
    const Longs high = {1800, 2000, 2200};
    ArrayMeans means;
    means.meanLow = 1000;
    means.meanDelta = 1000;
    Floats gains(3);
    ClassifyDetectors(low, high, {}, means, Plain(), gains, {});
    Shorts shorts(3);
    TruncateMeans(low, shorts);
    Shorts offsets(3);
    OffsetsOf(gains, shorts, means.meanLow, offsets);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(static_cast<float>(low[i] - offsets[i]) / gains[i], 1000, 1e-3);
        EXPECT_NEAR(static_cast<float>(high[i] - offsets[i]) / gains[i], 2000, 1e-3);
    }
}

TEST(TwoPointOffsets, BeyondSixteenBitsWrapAndAreFlagged)
{
    const Floats gains = {3.0F, 1.0F};
    const Shorts low = {0, 12000};
    Shorts offsets(2);
    OffsetResult result = OffsetsOf(gains, low, 12000.0F, offsets);
    EXPECT_TRUE(result.outOfRange);
    EXPECT_THAT(offsets, ElementsAre(29536, 0));  // -36000 + 65536
    EXPECT_FLOAT_EQ(result.meanOffset, 14768);    // of what is stored
    const Shorts within = {3233, 12000};          // -32767
    result = OffsetsOf(gains, within, 12000.0F, offsets);
    EXPECT_FALSE(result.outOfRange);
    EXPECT_EQ(offsets[0], -32767);
}

TEST(TwoPointOffsets, OfGainsThatAreNoNumbersAreFlaggedAndZero)
{
    const Floats gains = {std::nanf(""), INFINITY, 1.0e30F};
    const Shorts low(3, 100);
    Shorts offsets(3, 7);
    EXPECT_TRUE(OffsetsOf(gains, low, 1000.0F, offsets).outOfRange);
    EXPECT_THAT(offsets, Each(0));
}

TEST(TwoPointOffsets, MeansAndDeviationsLeaveRejectedDetectorsOut)
{
    const Floats gains = {0.9F, 0.0F, 1.1F};
    const Shorts low = {900, 5000, 1104};
    Shorts offsets(3);
    const OffsetResult result = OffsetsOf(gains, low, 1000.0F, offsets);
    EXPECT_THAT(offsets, ElementsAre(0, 0, 4));
    EXPECT_FLOAT_EQ(result.meanGain, 1.0F);
    EXPECT_FLOAT_EQ(result.meanOffset, 2.0F);
    const CoefficientSpread spread = SpreadOf(gains, offsets, result.meanGain, result.meanOffset);
    EXPECT_NEAR(spread.gainStd, std::sqrt(0.02), 1e-6);
    EXPECT_NEAR(spread.offsetStd, std::sqrt(8.0), 1e-6);
}

TEST(TwoPointOffsets, OfNoGoodDetectorHaveNoMeans)
{
    const Floats gains(3);
    const Shorts low(3, 100);
    Shorts offsets(3, 7);
    const OffsetResult result = OffsetsOf(gains, low, 1000.0F, offsets);
    EXPECT_EQ(result.meanGain, 0.0F);
    EXPECT_THAT(offsets, Each(0));
    EXPECT_EQ(SpreadOf(gains, offsets, 0, 0).gainStd, 0.0F);
}

TEST(TwoPointOffsets, LowMeansKeepTheirLowSixteenBits)
{
    const Longs means = {32767, 32768, -5, 65541};
    Shorts shorts(4);
    TruncateMeans(means, shorts);
    EXPECT_THAT(shorts, ElementsAre(32767, -32768, -5, 5));
}

TEST(TwoPointOffsets, IntensitiesAreRoundedHalfAwayFromZero)
{
    EXPECT_EQ(RoundCounts(7500.5F), 7501);
    EXPECT_EQ(RoundCounts(7500.49F), 7500);
    EXPECT_EQ(RoundCounts(-0.5F), -1);
    EXPECT_EQ(RoundCounts(-0.4F), 0);
}

// --- Texts ----------------------------------------------------------------------------------------------------------

TwoPointResult SomeResult()
{
    TwoPointResult result;
    result.counts.of = {900, 10, 20, 1, 2, 3, 4, 5, 6, 49};
    result.means = {.good = 970,
                    .dead = 30,
                    .meanLow = 7500.25F,
                    .meanHigh = 8750.25F,
                    .meanDelta = 1250,
                    .noiseMean = 5.125F,
                    .noiseStd = 0.5F};
    result.offsets = {.meanGain = 1.0F, .meanOffset = 0, .outOfRange = false};
    result.spread = {.gainStd = 0.0125F, .offsetStd = 81.92F};
    return result;
}

TEST(TwoPointTexts, TheBadPixelCountNamesEveryClass)
{
    EXPECT_EQ(BadPixelCountText(SomeResult().counts, 1000),
              "Total bad pixels =    100 ( 10.0 %)\n\nInoperable opens =    10\nInoperable shorts =    20\n\n"
              "Low response (I>mean) =     1\nLow response (I<mean) =     2\nHigh response (I>mean) =     3\n"
              "High response (I<mean) =     4\n\nHigh offset =     6\nLow offset =     5\n\nNoisy =    49");
}

TEST(TwoPointTexts, TheStatisticsTellAllThatIsKnown)
{
    EXPECT_EQ(TwoPointResultText(SomeResult(), 1000, true, 20.0F, 25.0F),
              "Total bad pixels:    100 ( 10.0 %)\nBad response pixels:     51 (  5.1 %)\n"
              "Bad noise pixels:     49 (  4.9 %)\nMean noise:  5.12 \xB1 0.50 counts"
              "\n\nMean Low Signal:  7500.2 counts @ 20.000\nMean High Signal:  8750.2 counts @ 25.000"
              "\nSensitivity:  0.0040 \xB0"
              "C/count  (250.0 counts/\xB0"
              "C)"
              "\n\nGain Uniformity: \xB1 1.25 %\nOffset Uniformity: \xB1 0.50 %");
}

TEST(TwoPointTexts, WithoutTemperaturesNoneIsShown)
{
    const std::string text = TwoPointResultText(SomeResult(), 1000, true, -999.0F, -999.0F);
    EXPECT_THAT(text, Not(HasSubstr("@")));
    EXPECT_THAT(text, Not(HasSubstr("Sensitivity")));
    EXPECT_THAT(text, HasSubstr("Mean Low Signal:  7500.2 counts\nMean High Signal:  8750.2 counts\n\nGain"));
}

TEST(TwoPointTexts, WithoutAGoodDetectorTheUniformityIsANumber)
{
    TwoPointResult result = SomeResult();
    result.offsets = {};
    result.spread = {};
    EXPECT_THAT(TwoPointResultText(result, 1000, true, 20.0F, 25.0F),
                testing::EndsWith("Gain Uniformity: \xB1 0.00 %\nOffset Uniformity: \xB1 0.00 %"));
}

TEST(TwoPointTexts, WithoutTheNoiseTestNoNoiseIsShown)
{
    EXPECT_THAT(TwoPointResultText(SomeResult(), 1000, false, 20.0F, 25.0F),
                testing::StartsWith("Total bad pixels:    100 ( 10.0 %)\n\nMean Low"));
}

}  // namespace
}  // namespace kelvo
