#include "analysis/noise_figures.h"

#include "platform/memory.h"
#include "support/camera_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

NoiseSums SumsOf(const std::vector<Counts>& frames)
{
    NoiseSums sums = NoiseSums::Make(frames.front().size()).value();
    for (const Counts& frame : frames) sums.Add(frame);
    return sums;
}

TEST(NoiseFigures, TakeTheSampleDeviationOfEachPixel)
{
    // 2, 4, 9: mean 5, squares about it 9 + 1 + 16 = 26, over 2. The second pixel stands still.
    const NoiseSums sums = SumsOf({{2, -7}, {4, -7}, {9, -7}});
    EXPECT_EQ(sums.Frames(), 3U);
    EXPECT_DOUBLE_EQ(sums.MeanOf(0), 5);
    EXPECT_DOUBLE_EQ(sums.DeviationOf(0), std::sqrt(13.0));
    EXPECT_DOUBLE_EQ(sums.MeanOf(1), -7);
    EXPECT_EQ(sums.DeviationOf(1), 0);
}

TEST(NoiseFigures, KeepExactSumsOfTheMostFramesAtTheEndsOfTheCounts)
{
    NoiseSums sums = NoiseSums::Make(3).value();
    const Counts even = {32767, -32768, 32767};
    const Counts odd = {32767, -32768, 32766};
    for (std::uint32_t frame = 0; frame < kMostNoiseFrames; ++frame) sums.Add(frame % 2 == 0 ? even : odd);
    sums.Add({});  // none of these is taken
    sums.Add(odd);
    EXPECT_EQ(sums.Frames(), kMostNoiseFrames);
    EXPECT_EQ(sums.MeanOf(0), 32767);
    EXPECT_EQ(sums.DeviationOf(0), 0);
    EXPECT_EQ(sums.MeanOf(1), -32768);
    EXPECT_EQ(sums.DeviationOf(1), 0);
    // Of n = 2m + 1 frames m are lower by 1: m (m + 1) / n over n - 1 = 2m.
    const double m = 32767;
    EXPECT_DOUBLE_EQ(sums.DeviationOf(2), std::sqrt((m + 1) / (2 * (2 * m + 1))));
}

// The converter has 14 bits: 0 and 16383 are its ends.
TEST(NoiseFigures, TellThePixelsWhoseCountsReachedAnEndOfTheConverter)
{
    const NoiseSums sums = SumsOf({{1, 0, 16382, 9, 16383}, {1, 5, 16383, 9, 5}, {1, 5, 16382, 9, 16383}});
    const std::vector<std::uint8_t> bad = {0, 0, 0, 0, 1};
    for (const auto& [pixel, was] : {std::pair(0U, false), {1U, true}, {2U, true}, {3U, false}, {4U, true}}) {
        EXPECT_EQ(sums.WasSaturated(pixel), was) << pixel;
    }
    EXPECT_EQ(NoiseOf(sums, {.order = {}, .gains = {}, .bad = bad}, std::nullopt)->saturatedPixels, 2U);
}

TEST(NoiseFigures, HaveNoDeviationOfASingleFrame)
{
    EXPECT_EQ(SumsOf({{5}}).DeviationOf(0), 0);
}

TEST(NoiseFigures, TakeCountsADegreeFromATwoPointCalibrationAlone)
{
    EXPECT_DOUBLE_EQ(CountsPerDegree({7500, 7900, 20, 25}).value(), 80);
    EXPECT_DOUBLE_EQ(CountsPerDegree({7900, 7500, 20, 25}).value(), 80);  // counts that fall with flux
    EXPECT_FALSE(CountsPerDegree({-10000, 7900, 20, 25}));
    EXPECT_FALSE(CountsPerDegree({7500, -10000, 20, 25}));
    EXPECT_FALSE(CountsPerDegree({7500, 7900, 20, -999}));
    EXPECT_FALSE(CountsPerDegree({7500, 7900, -999, 25}));
    EXPECT_FALSE(CountsPerDegree({7500, 7500, 20, 25}));
    EXPECT_FALSE(CountsPerDegree({7500, 7900, 20, 20}));
    EXPECT_FALSE(CountsPerDegree({7500, 7900, 20, kNaN}));
}

TEST(NoiseFigures, ReferTheNoiseOfRawCountsToThePixelsOwnResponse)
{
    // 0 and 4 deviate by sqrt(8). At 80 counts a degree a pixel of twice the mean response sees half the temperature.
    const NoiseSums sums = SumsOf({{0, 0, 0, 0, 0}, {4, 4, 4, 4, 4}});
    const std::vector<float> gains = {1.0F, 2.0F, -0.5F, 0.001F, 1.0F};
    const std::vector<std::uint8_t> bad = {0, 0, 0, 0, 1};
    const PixelNoise noise = NoiseOf(sums, {.order = {}, .gains = gains, .bad = bad}, 80.0).value();
    const double mean = std::sqrt(8.0) / 80 * 1000;
    EXPECT_FLOAT_EQ(noise.netd[0], static_cast<float>(mean));
    EXPECT_FLOAT_EQ(noise.netd[1], static_cast<float>(mean / 2));
    EXPECT_FLOAT_EQ(noise.netd[2], static_cast<float>(mean * 2));
    EXPECT_TRUE(std::isnan(noise.netd[3]));
    EXPECT_TRUE(std::isnan(noise.netd[4]));
    EXPECT_FLOAT_EQ(noise.deviation[1], std::sqrt(8.0F));
    EXPECT_TRUE(std::isnan(noise.deviation[3]));
    EXPECT_TRUE(std::isnan(noise.deviation[4]));
    EXPECT_EQ(noise.badPixels, 2U);
    EXPECT_THAT(noise.mean, testing::Each(2.0F));
}

TEST(NoiseFigures, TakeCorrectedCountsAsTheyAre)
{
    const NoiseSums sums = SumsOf({{0, 0}, {4, 8}});
    const PixelNoise noise = NoiseOf(sums, {}, 80.0).value();
    EXPECT_FLOAT_EQ(noise.netd[0], std::sqrt(8.0F) / 80 * 1000);
    EXPECT_FLOAT_EQ(noise.netd[1], std::sqrt(32.0F) / 80 * 1000);
    EXPECT_EQ(noise.badPixels, 0U);
    EXPECT_THAT(NoiseOf(sums, {}, std::nullopt)->netd, IsEmpty());
}

// Raw frames lie in readout order, and so do their gains.
TEST(NoiseFigures, FindThePixelsOfAnImageInTheOrderOfTheReadout)
{
    const NoiseSums sums = SumsOf({{0, 0, 0, 0}, {2, 4, 6, 8}});
    const std::vector<std::uint32_t> order = {3, 1, 1, 4};  // the last reaches no detector
    const std::vector<float> gains = {1, 2, 1, 4};
    const std::vector<std::uint8_t> bad = {0, 0, 1, 0};
    const PixelNoise noise = NoiseOf(sums, {.order = order, .gains = gains, .bad = bad}, 1.0).value();
    EXPECT_THAT(noise.mean, ElementsAre(4, 2, 2, 0));
    EXPECT_FLOAT_EQ(noise.deviation[0], std::sqrt(32.0F));
    EXPECT_FLOAT_EQ(noise.netd[0], std::sqrt(32.0F) / 4 * 1000);
    EXPECT_FLOAT_EQ(noise.netd[1], std::sqrt(8.0F) / 2 * 1000);
    EXPECT_TRUE(std::isnan(noise.deviation[2]));
    EXPECT_TRUE(std::isnan(noise.deviation[3]));
    EXPECT_EQ(noise.badPixels, 2U);
}

TEST(NoiseFigures, LeaveOutWhatTheListsDontReach)
{
    const NoiseSums sums = SumsOf({{0, 0}, {4, 4}});
    const std::vector<float> gains = {1.0F};
    EXPECT_TRUE(std::isnan(NoiseOf(sums, {.order = {}, .gains = gains, .bad = {}}, 80.0)->netd[1]));
    const std::vector<std::uint32_t> order = {1};
    const PixelNoise noise = NoiseOf(sums, {.order = order, .gains = {}, .bad = {}}, std::nullopt).value();
    EXPECT_FALSE(std::isnan(noise.deviation[0]));
    EXPECT_TRUE(std::isnan(noise.deviation[1]));
}

TEST(NoiseFigures, NameMedianRmsAndTheWorstOneInAHundred)
{
    std::vector<float> values(200);  // 200 down to 1
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<float>(200 - i);
    values.push_back(kNaN);
    const NoiseFigures figures = FiguresOfNoise(values).value();
    EXPECT_EQ(figures.pixels, 200U);
    EXPECT_EQ(figures.median, 100.5);
    EXPECT_DOUBLE_EQ(figures.rms, std::sqrt(201.0 * 401 / 6));  // n (n + 1) (2n + 1) / 6 over n
    EXPECT_EQ(figures.smallest, 1);
    EXPECT_EQ(figures.largest, 200);
    EXPECT_EQ(figures.worst, 198);
    EXPECT_THAT(figures.above, ElementsAre(0U, 1U));
}

TEST(NoiseFigures, OfFewOrNoPixels)
{
    const NoiseFigures one = FiguresOfNoise(std::vector<float>{kNaN, 3.0F}).value();
    EXPECT_EQ(one.median, 3);
    EXPECT_EQ(one.worst, 3);
    EXPECT_THAT(one.above, IsEmpty());
    const NoiseFigures none = FiguresOfNoise(std::vector<float>{kNaN, kNaN}).value();
    EXPECT_EQ(none.pixels, 0U);
    EXPECT_EQ(none.rms, 0);
}

TEST(NoiseFigures, CountEachValueOnceInTheHistogram)
{
    const NoiseHistogram histogram =
        CountNoise(std::vector<float>{0.5F, 1.0F, 1.4F, 1.5F, 2.9F, 3.0F, 7.0F, kNaN}, 1, 3, 4);
    EXPECT_THAT(histogram.bins, ElementsAre(2U, 1U, 0U, 1U));
    EXPECT_EQ(histogram.below, 1U);
    EXPECT_EQ(histogram.above, 2U);
}

TEST(NoiseFigures, AreGivenUpWhereMemoryIsRefused)
{
    for (const int refused : {1, 2}) {
        FailAllocation(refused);
        EXPECT_FALSE(NoiseSums::Make(4)) << refused;
    }
    const NoiseSums sums = SumsOf({{1}, {2}});
    for (const int refused : {1, 2, 3}) {
        FailAllocation(refused);
        EXPECT_FALSE(NoiseOf(sums, {}, 80.0)) << refused;
    }
    FailAllocation(1);
    EXPECT_FALSE(FiguresOfNoise(std::vector<float>{1.0F}));
    FailAllocation(0);
}

// The measured noise of a camera that is known, against what its detectors are told to deviate by.
class NoiseOfTheSimulatedCamera : public SimCameraTest {};

TEST_F(NoiseOfTheSimulatedCamera, IsThatOfItsDetectors)
{
    constexpr int kFrames = 64;
    for (const int seed : {11, 29, 4711}) {
        const std::string file = "seed" + std::to_string(seed) + ".cnf";
        PutCopyWith("insb320.cnf", file, "Seed=" + std::to_string(seed));
        Open(file);
        Program320x256();
        PutSimSource(*camera, SimSource::kLow);
        NoiseSums sums = NoiseSums::Make(std::size_t{320} * 256).value();
        for (int n = 0; n < kFrames; ++n) sums.Add(Frame(1000 + n));

        const std::vector<std::string> kinds = Kinds();
        double measuredSquares = 0;
        double trueSquares = 0;
        std::size_t good = 0;
        std::size_t near = 0;
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            if (kinds[i] != "good") continue;
            const auto truth = SimTruth(*camera, static_cast<int>(i % 320), static_cast<int>(i / 320));
            ASSERT_EQ(truth[4].first, "deviation");
            const double measured = sums.DeviationOf(i);
            measuredSquares += measured * measured;
            trueSquares += truth[4].second * truth[4].second;
            ++good;
            if (std::fabs(measured / truth[4].second - 1) <= 2.58 / std::sqrt(2.0 * (kFrames - 1))) ++near;
        }
        EXPECT_GT(good, 79000U) << seed;
        EXPECT_NEAR(std::sqrt(measuredSquares / trueSquares), 1, 0.005) << seed;
        EXPECT_GE(static_cast<double>(near), 0.985 * static_cast<double>(good)) << seed;
    }
}

}  // namespace
}  // namespace kelvo
