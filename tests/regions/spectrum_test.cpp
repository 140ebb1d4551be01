// Amplitude spectra against sines of known strength and against the sum that defines the transform.
#include "regions/spectrum.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>

namespace kelvo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr double kTurn = 2 * std::numbers::pi;

std::vector<double> Sine(std::size_t n, double amplitude, double periods, double mean)
{
    std::vector<double> values(n);
    for (std::size_t i = 0; i < n; ++i) {
        values[i] =
            mean + amplitude * std::sin(kTurn * periods * static_cast<double>(i) / static_cast<double>(n) + 0.7);
    }
    return values;
}

std::vector<TraceFrame> FramesOf(const std::vector<std::int64_t>& numbers, std::int64_t periodNs)
{
    TraceClock clock;
    std::vector<TraceFrame> frames;
    for (const std::int64_t number : numbers) {
        frames.push_back(clock.Next({.number = number, .monotonicNs = number * periodNs}));
    }
    return frames;
}

TEST(Spectrum, HasTheAmplitudeOfASineOnItsLineAndHalfOfItBeside)
{
    const std::vector<double> amplitudes = AmplitudesOf(Sine(200, 3.5, 20, 8000));
    ASSERT_THAT(amplitudes, SizeIs(101));
    EXPECT_NEAR(amplitudes[20], 3.5, 1e-9);
    EXPECT_NEAR(amplitudes[19], 1.75, 1e-9);
    EXPECT_NEAR(amplitudes[21], 1.75, 1e-9);
    EXPECT_NEAR(amplitudes[0], 0, 1e-9) << "the mean is taken off";
    for (const std::size_t line : {5U, 17U, 23U, 60U, 100U}) EXPECT_NEAR(amplitudes[line], 0, 1e-9) << line;
}

TEST(Spectrum, IsTheTransformByItsDefinition)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<double> counts(-300, 300);
    for (const std::size_t n : {8U, 9U, 30U, 97U, 98U}) {
        std::vector<double> values(n);
        double mean = 0;
        for (double& value : values) mean += value = counts(random);
        mean /= static_cast<double>(n);
        const std::vector<double> amplitudes = AmplitudesOf(values);
        ASSERT_THAT(amplitudes, SizeIs(n / 2 + 1));
        for (std::size_t k = 0; k <= n / 2; ++k) {
            std::complex<double> sum = 0;
            double weights = 0;
            for (std::size_t i = 0; i < n; ++i) {
                const double at = static_cast<double>(i) / static_cast<double>(n);
                const double weight = std::pow(std::sin(kTurn / 2 * at), 2);  // the same as 1/2 - 1/2 cos
                weights += weight;
                sum += (values[i] - mean) * weight * std::polar(1.0, -kTurn * at * static_cast<double>(k));
            }
            const double sides = k == 0 || 2 * k == n ? 1 : 2;
            EXPECT_NEAR(amplitudes[k], sides * std::abs(sum) / weights, 1e-9) << n << ": " << k;
        }
    }
}

TEST(Spectrum, TakesTheLongestRunWithoutAGap)
{
    // Ten frames, a gap, forty, a gap, five, at 50 Hz. In the middle run a swing of 5 Hz, steps everywhere else.
    std::vector<std::int64_t> numbers;
    std::vector<double> values;
    const std::vector<double> swing = Sine(40, 2, 4, 100);
    for (int i = 0; i < 55; ++i) {
        numbers.push_back(i + (i >= 10 ? 3 : 0) + (i >= 50 ? 7 : 0));
        values.push_back(i >= 10 && i < 50 ? swing[static_cast<std::size_t>(i - 10)] : 900.0 * i);
    }
    const std::optional<Spectrum> spectrum = SpectrumOf(FramesOf(numbers, 20'000'000), values);
    ASSERT_TRUE(spectrum);
    EXPECT_EQ(spectrum->run, (TraceRun{10, 40}));
    EXPECT_NEAR(spectrum->intervalSeconds, 0.02, 1e-12);
    EXPECT_NEAR(spectrum->amplitudes[4], 2, 1e-9);
    EXPECT_NEAR(FrequencyOf(*spectrum, 4), 5, 1e-9);
    EXPECT_NEAR(FrequencyOf(*spectrum, 20), 25, 1e-9) << "half the rate";
}

TEST(Spectrum, CountsPerFrameWhereNoTimeIsKnown)
{
    std::vector<TraceFrame> frames(16);
    for (std::size_t i = 0; i < frames.size(); ++i) frames[i].number = static_cast<std::int64_t>(i) + 1;
    const std::optional<Spectrum> spectrum = SpectrumOf(frames, Sine(16, 1, 4, 0));
    ASSERT_TRUE(spectrum);
    EXPECT_EQ(spectrum->intervalSeconds, 0);
    EXPECT_EQ(FrequencyOf(*spectrum, 4), 0.25);
}

TEST(Spectrum, NeedsEightFrames)
{
    EXPECT_THAT(AmplitudesOf(Sine(7, 1, 1, 0)), IsEmpty());
    EXPECT_FALSE(SpectrumOf(FramesOf({1, 2, 3, 4, 5, 6, 7, 20, 21}, 1), Sine(9, 1, 1, 0)));
    EXPECT_FALSE(SpectrumOf({}, {}));
}

TEST(Spectrum, LeavesAFewFramesOutWhereTheirNumberHasALargePrimeFactor)
{
    EXPECT_EQ(SpectrumLengthOf(97), 97U);
    EXPECT_EQ(SpectrumLengthOf(128), 128U);
    EXPECT_EQ(SpectrumLengthOf(251), 250U);          // prime
    EXPECT_EQ(SpectrumLengthOf(1009), 1008U);        // prime; 1008 = 2^4 * 3^2 * 7
    EXPECT_EQ(SpectrumLengthOf(2 * 103), 205U);      // 5 * 41
    EXPECT_EQ(SpectrumLengthOf(100'003), 100'000U);  // prime; 100,002 = 2 * 3 * 7 * 2381, 100,001 = 11 * 9091
}

}  // namespace
}  // namespace kelvo
