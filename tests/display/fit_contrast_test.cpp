#include "display/fit_contrast.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace kelvo {
namespace {

using testing::HasSubstr;

constexpr CountRange kFullScale{0, 16383};

std::vector<std::int16_t> RandomFrame(int low, int high, std::size_t size)
{
    std::mt19937 random(11);
    std::uniform_int_distribution<int> counts(low, high);
    std::vector<std::int16_t> frame(size);
    for (std::int16_t& pixel : frame) pixel = static_cast<std::int16_t>(counts(random));
    return frame;
}

TEST(FitContrast, CentralCountsAreThoseOfTheSortedPixels)
{
    for (const std::size_t size : {1U, 2U, 99U, 100U, 101U, 201U, 5000U}) {
        std::vector<std::int16_t> frame = RandomFrame(-3000, 15000, size);
        const CountRange central = CentralCounts(frame);
        std::ranges::sort(frame);
        const std::size_t outside = (size - 1) / 200;
        EXPECT_EQ(central.low, frame[outside]) << size;
        EXPECT_EQ(central.high, frame[size - 1 - outside]) << size;
    }
}

TEST(FitContrast, AFewWildPixelsDontCount)
{
    std::vector<std::int16_t> frame(1000, 5000);
    for (std::size_t i = 0; i < 500; ++i) frame[i] = 4000;
    for (std::size_t i = 0; i < 4; ++i) {
        frame[i] = -32768;
        frame[999 - i] = 32767;
    }
    EXPECT_EQ(CentralCounts(frame), (CountRange{4000, 5000}));
}

TEST(FitContrast, BadPixelsDontCount)
{
    std::vector<std::int16_t> frame(1000, 5000);
    std::vector<std::uint8_t> bad(1000, 0);
    for (std::size_t i = 0; i < 500; ++i) frame[i] = 4000;
    for (std::size_t i = 0; i < 1000; i += 5) {
        frame[i] = 16383;
        bad[i] = 1;
    }
    EXPECT_EQ(CentralCounts(frame, bad), (CountRange{4000, 5000}));
    EXPECT_EQ(CentralCounts(frame), (CountRange{4000, 16383}));
    EXPECT_EQ(CentralCounts(frame, std::vector<std::uint8_t>(999, 1)), (CountRange{4000, 16383})) << "another size";
    EXPECT_EQ(CentralCounts(frame, std::vector<std::uint8_t>(1000, 1)), (CountRange{4000, 16383})) << "nothing left";
}

// The width of contrast c is 16383 x (16 / 16383) ^ ((c - 1) / 99), so that neighbours differ by 7 %, and brightness
// moves the start by (16383 - width) / 999, at most 17 counts.
TEST(FitContrast, TheWindowLiesOnTheCentralCounts)
{
    for (const CountRange counts : {CountRange{7000, 7300}, {200, 15000}, {8000, 8100}, {12000, 16000}}) {
        const ContrastFit fit = FitContrast(RandomFrame(counts.low, counts.high, 20000), kFullScale, kFullScale);
        ASSERT_EQ(fit.reason, "");
        const double width = 16383 * std::pow(16.0 / 16383, (fit.contrast - 1) / 99.0);
        const double start = (16383 - width) * (1000 - fit.brightness) / 999;
        const double span = counts.high - counts.low;
        EXPECT_NEAR(start, counts.low, 0.06 * span + 18);
        EXPECT_NEAR(start + width, counts.high, 0.06 * span + 18);
    }
}

TEST(FitContrast, NoOtherPairComesNearer)
{
    const std::vector<std::int16_t> frame = RandomFrame(3000, 3700, 4000);
    const CountRange central = CentralCounts(frame);
    const auto misfit = [&](int contrast, int brightness) {
        const auto width = std::max(16, static_cast<int>(17571.151923916 * std::pow(0.93238053321369, contrast)));
        const auto start = static_cast<int>((16383 - width) * (1000 - brightness) / 999.0);
        return std::abs(start - central.low) + std::abs(start + width - central.high);
    };
    const ContrastFit fit = FitContrast(frame, kFullScale, kFullScale);
    const int found = misfit(fit.contrast, fit.brightness);
    for (int contrast = 1; contrast <= 100; ++contrast) {
        for (int brightness = 1; brightness <= 1000; ++brightness) {
            ASSERT_LE(found, misfit(contrast, brightness)) << contrast << ' ' << brightness;
        }
    }
}

TEST(FitContrast, ALiveLowMovesTheWindowAlong)
{
    const std::vector<std::int16_t> frame = RandomFrame(3000, 3700, 4000);
    const ContrastFit plain = FitContrast(frame, kFullScale, {0, 16383});
    const ContrastFit shifted = FitContrast(frame, kFullScale, {2000, 16383});
    EXPECT_EQ(plain.contrast, shifted.contrast);
    EXPECT_NEAR((plain.brightness - shifted.brightness) * (16383.0 - 700) / 999, 2000, 40);
}

TEST(FitContrast, AnotherSpanIsRefusedWithItsReason)
{
    const ContrastFit fit = FitContrast(RandomFrame(0, 100, 10), {10, 4105}, {0, 4095});
    EXPECT_THAT(fit.reason, HasSubstr("10 to 4105"));
    EXPECT_THAT(fit.reason, HasSubstr("16383"));
}

TEST(FitContrast, AnEmptyPictureIsRefused)
{
    EXPECT_EQ(FitContrast({}, kFullScale, kFullScale).reason, "There is no picture to fit the contrast to.");
}

}  // namespace
}  // namespace kelvo
