// From temperature to counts, by pure functions.
#include "simcam/sim_physics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace kelvo {
namespace {

// Planck's photon radiance integrated over the wavelength by Simpson's rule with 20000 steps, in Python.
TEST(SimPhysics, RadianceIsPlancksIntegralOverTheBand)
{
    struct Row {
        double fromUm, toUm, kelvin, radiance;
    };
    for (const Row& row : {Row{3, 5, 233.15, 1.991872256902e18},
                           {3, 5, 273.15, 1.459428796873e19},
                           {3, 5, 293.15, 3.253493027885e19},
                           {3, 5, 313.15, 6.582572108386e19},
                           {3, 5, 423.15, 1.022881043138e21},
                           {8, 10.5, 233.15, 2.580799406306e20},
                           {8, 10.5, 293.15, 1.006534972410e21},
                           {8, 10.5, 313.15, 1.414948961298e21},
                           {8, 10.5, 423.15, 5.269276084617e21}}) {
        EXPECT_NEAR(PhotonRadiance(row.kelvin, row.fromUm, row.toUm) / row.radiance, 1.0, 1e-11)
            << row.kelvin << " K, from " << row.fromUm << " um";
    }
}

TEST(SimPhysics, TheTableFollowsTheIntegralBetweenItsSteps)
{
    const RadianceTable table(3, 5);
    for (const double celsius : {-40.0, 0.005, 19.9973, 20.0, 37.1234, 150.0}) {
        EXPECT_NEAR(table.At(celsius) / PhotonRadiance(celsius + 273.15, 3, 5), 1.0, 1e-7) << celsius;
    }
    EXPECT_EQ(table.At(-500), table.At(-60));
    EXPECT_EQ(table.At(500), table.At(200));
}

TEST(SimPhysics, ASourceEmitsAPartAndMirrorsTheRest)
{
    EXPECT_DOUBLE_EQ(SourceRadiance(10, 4, 1), 10);
    EXPECT_DOUBLE_EQ(SourceRadiance(10, 4, 0.75), 8.5);
    EXPECT_DOUBLE_EQ(SourceRadiance(10, 4, 0), 4);
}

// 30 um squared x pi / (4 x 2.5^2 + 1) x 0.2 x 0.85 = 9e-10 x pi / 26 x 0.17
TEST(SimPhysics, ResponseIsAreaTimesSolidAngleTimesLosses)
{
    SimSettings settings;
    settings.transmission = 0.2;
    EXPECT_NEAR(MeanResponse(settings) / 1.8487064e-11, 1.0, 1e-6);
}

// Volts at 0.2 uV an electron, 0.0004 V a count: 0.0005 counts an electron.
struct Exposed {
    float mean = 0;
    float sigma = 0;
};
Exposed Expose(const VideoPath& path, float response, float dark, float offset, float noise, float radiance,
               double fullWell = 1e9)
{
    const std::vector<float> r{response};
    const std::vector<float> d{dark};
    const std::vector<float> o{offset};
    const std::vector<float> n{noise};
    const std::vector<float> l{radiance};
    std::vector<float> mean(1);
    std::vector<float> sigma(1);
    ExposeDetectors(path, fullWell, {r, d, o, n}, l, mean, sigma);
    return {mean[0], sigma[0]};
}

SimSettings PlainSettings()
{
    SimSettings settings;
    settings.microvoltsPerElectron = 0.2;
    settings.pedestalVolts = 3.2;  // 8000 counts below the 8200 of 0 V
    return settings;
}

TEST(SimPhysics, VoltsFallWithFluxAndCountsRise)
{
    const VideoPath path = MakeVideoPath(PlainSettings(), {.biased = true, .integrationSeconds = 0.01});
    EXPECT_NEAR(path.zeroCounts, 200, 1e-6);
    EXPECT_NEAR(path.countsPerElectron, 0.0005, 1e-12);
    // (2 x 4e8 + 2e8) electrons a second for 0.01 s: 1e7 electrons, 5000 counts; shot noise 0.0005 x sqrt(1e7) = 1.5811
    const Exposed exposed = Expose(path, 2, 2e8F, 30, 4, 4e8F);
    EXPECT_NEAR(exposed.mean, 5230, 0.01);
    EXPECT_NEAR(exposed.sigma, std::sqrt(2.5 + 16.0), 1e-4);
}

TEST(SimPhysics, ElectronsStopAtTheFullWell)
{
    const VideoPath path = MakeVideoPath(PlainSettings(), {.biased = true, .integrationSeconds = 1});
    const Exposed exposed = Expose(path, 1, 0, 0, 0, 1e9F, 2e7);
    EXPECT_NEAR(exposed.mean, 200 + 10000, 0.01);
    EXPECT_NEAR(exposed.sigma, 0.0005 * std::sqrt(2e7), 1e-4);
}

TEST(SimPhysics, WithoutBiasesADetectorReadsTheConvertersZero)
{
    const VideoPath path = MakeVideoPath(PlainSettings(), {.integrationSeconds = 1, .offsetDac = 200});
    const Exposed exposed = Expose(path, 1, 1e9F, 500, 4, 1e9F);
    EXPECT_FLOAT_EQ(exposed.mean, 8200);
    EXPECT_FLOAT_EQ(exposed.sigma, 4);
}

// At gain index 7 a count is 0.000179 V; the offset DAC moves 0.01 V a step.
TEST(SimPhysics, GainAndOffsetActOnTheVolts)
{
    const VideoPath path =
        MakeVideoPath(PlainSettings(), {.biased = true, .integrationSeconds = 0.01, .gainIndex = 7, .offsetDac = 138});
    const double volts = 3.2 + 0.1 - 0.2e-6 * 1e7;
    EXPECT_NEAR(Expose(path, 2, 2e8F, 0, 0, 4e8F).mean, 8200 + volts / -0.000179, 0.01);
    EXPECT_NEAR(Expose(path, 0, 0, 10, 4, 0).sigma, 4 * 0.0004 / 0.000179, 1e-4);
}

TEST(SimPhysics, AVoltageAtTheInputsMeetsGainAndOffsetAlone)
{
    SimSettings settings = PlainSettings();
    settings.readNoiseMicrovolts = 1790;
    const InputCounts counts =
        CountsOfInput(settings, {.biased = true, .gainIndex = 7, .offsetDac = 138, .pedBias = 0, .colGain = 7}, 0.3);
    EXPECT_NEAR(counts.mean, 8200 + (0.3 + 0.1) / -0.000179, 0.01);
    EXPECT_NEAR(counts.sigma, 10, 1e-4);
    EXPECT_NEAR(CountsOfInput(settings, {.gainIndex = 7, .offsetDac = 138}, 0.3).mean, 8200 + 0.3 / -0.000179, 0.01)
        << "with the biases off the offset DAC is off";
}

TEST(SimPhysics, BiasesAndColumnGainAreNeutralAsShippedAndActElsewhere)
{
    const SimSettings settings = PlainSettings();
    const VideoPath shipped = MakeVideoPath(settings, {.biased = true});
    EXPECT_DOUBLE_EQ(shipped.responseFactor, 1);
    EXPECT_DOUBLE_EQ(shipped.darkFactor, 1);
    const VideoPath low = MakeVideoPath(settings, {.biased = true, .detBias = 5, .pedBias = 1, .colGain = 6});
    EXPECT_NEAR(low.responseFactor, 0.9, 1e-12);
    EXPECT_NEAR(low.darkFactor, 0.8, 1e-12);
    EXPECT_NEAR(low.zeroCounts - shipped.zeroCounts, 0.04 / 0.0004, 1e-9);
    EXPECT_NEAR(low.countsPerElectron / shipped.countsPerElectron, 1.1, 1e-12);
}

TEST(SimPhysics, CountsAreRoundedWithinFourteenBits)
{
    EXPECT_EQ(CountOf(-3.0F), 0);
    EXPECT_EQ(CountOf(0.49F), 0);
    EXPECT_EQ(CountOf(0.5F), 1);
    EXPECT_EQ(CountOf(7500.4F), 7500);
    EXPECT_EQ(CountOf(16382.6F), 16383);
    EXPECT_EQ(CountOf(1e30F), 16383);
    EXPECT_EQ(CountOf(std::nanf("")), 0);
}

// Over all entries: mean 0 and variance 1 exactly, kurtosis within 1 % of a normal distribution's 3. Quartile, 97.5 %
// and 99.9 % points from a table of the normal distribution.
TEST(SimPhysics, TheNormalTableIsNormal)
{
    double sum = 0;
    double squares = 0;
    double fourth = 0;
    for (const float z : NormalTable()) {
        sum += z;
        squares += double{z} * z;
        fourth += std::pow(double{z}, 4);
    }
    const auto count = static_cast<double>(NormalTable().size());
    EXPECT_NEAR(sum / count, 0, 1e-9);
    EXPECT_NEAR(squares / count, 1, 1e-6);
    EXPECT_NEAR(fourth / count, 3, 0.03);
    EXPECT_TRUE(std::ranges::is_sorted(NormalTable()));
    const auto at = [&](double part) { return NormalTable()[static_cast<std::size_t>(part * count)]; };
    EXPECT_NEAR(at(0.75), 0.67449, 0.001);
    EXPECT_NEAR(at(0.975), 1.95996, 0.002);
    EXPECT_NEAR(at(0.999), 3.0902, 0.02);
    EXPECT_GT(NormalTable().back(), 3.9F);
}

// Drawn as frames draw them: detectors by frames. Limits are five times the standard error of each moment.
TEST(SimPhysics, DrawnNormalsHaveTheMomentsOfTheTable)
{
    constexpr int kFrames = 64;
    constexpr std::uint32_t kDetectors = 65536;
    double sum = 0;
    double squares = 0;
    double cubes = 0;
    double neighbours = 0;
    for (int frame = 0; frame < kFrames; ++frame) {
        const std::uint64_t key = NoiseKey(7, frame);
        double before = 0;
        for (std::uint32_t detector = 0; detector < kDetectors; ++detector) {
            const auto z = static_cast<double>(DetectorNormal(key, detector));
            sum += z;
            squares += z * z;
            cubes += z * z * z;
            neighbours += z * before;
            before = z;
        }
    }
    constexpr double kCount = double{kFrames} * kDetectors;
    const double error = 1.0 / std::sqrt(kCount);
    EXPECT_NEAR(sum / kCount, 0, 5 * error);
    EXPECT_NEAR(squares / kCount, 1, 5 * std::sqrt(2.0) * error);
    EXPECT_NEAR(cubes / kCount, 0, 5 * std::sqrt(15.0) * error);
    EXPECT_NEAR(neighbours / kCount, 0, 5 * error);
}

TEST(SimPhysics, ARunOfDetectorsDrawsWhatEachDrawsAlone)
{
    const std::vector<float> mean{100, 200, 300, 400, 500, 600, 700, 800};
    const std::vector<float> sigma{1, 10, 100, 1, 10, 100, 1, 10};
    std::vector<std::int16_t> counts(8);
    const std::uint64_t key = NoiseKey(3, 12345678901);
    DrawCounts(key, 4096, mean, sigma, counts);
    for (std::uint32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(counts[i], CountOf(mean[i] + sigma[i] * DetectorNormal(key, 4096 + i))) << i;
    }
}

}  // namespace
}  // namespace kelvo
