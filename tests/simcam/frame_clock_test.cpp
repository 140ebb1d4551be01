#include "simcam/frame_clock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kelvo {
namespace {

TEST(FrameClock, BlanksComeAtMultiplesOfThePeriod)
{
    const FrameClock clock = StartFrameClock(7'000, 10'000);
    EXPECT_EQ(BlanksBy(clock, 7'000), 0);
    EXPECT_EQ(BlanksBy(clock, 16'999), 0);
    EXPECT_EQ(BlanksBy(clock, 17'000), 1);
    EXPECT_EQ(BlanksBy(clock, 27'000), 2);
    EXPECT_EQ(BlankUs(clock, 1), 17'000);
    EXPECT_EQ(BlankUs(clock, 360'000), 7'000 + 3'600'000'000);
}

TEST(FrameClock, AFractionOfAMicrosecondDoesntAddUp)
{
    const FrameClock clock = StartFrameClock(0, 10'000.0 / 3);
    EXPECT_EQ(BlankUs(clock, 1), 3'334);
    EXPECT_EQ(BlankUs(clock, 2), 6'667);
    EXPECT_EQ(BlankUs(clock, 3), 10'000);
    EXPECT_EQ(BlanksBy(clock, 3'333), 0);
    EXPECT_EQ(BlanksBy(clock, 3'334), 1);
    EXPECT_EQ(BlankUs(clock, 3'000'000), 10'000'000'000);
}

TEST(FrameClock, WithoutAPeriodThereAreNoBlanks)
{
    FrameClock clock = StartFrameClock(0, 0);
    EXPECT_EQ(BlanksBy(clock, 1'000'000), 0);
    SetFramePeriod(clock, 1'000'000, 10'000);
    EXPECT_EQ(BlanksBy(clock, 1'009'999), 0);
    EXPECT_EQ(BlanksBy(clock, 1'010'000), 1);
    SetFramePeriod(clock, 1'035'000, 0);
    EXPECT_EQ(BlanksBy(clock, 9'000'000), 3);
}

TEST(FrameClock, AChangeOfPeriodGoesOnWithThePhaseReached)
{
    FrameClock clock = StartFrameClock(0, 10'000);
    SetFramePeriod(clock, 25'000, 40'000);  // two and a half frames
    EXPECT_EQ(BlanksBy(clock, 44'999), 2);
    EXPECT_EQ(BlankUs(clock, 3), 45'000);  // half a period of 40 ms is left
    EXPECT_EQ(BlankUs(clock, 4), 85'000);
    EXPECT_EQ(BlanksBy(clock, 85'000), 4);
}

TEST(FrameClock, TheSamePeriodAgainChangesNothing)
{
    FrameClock clock = StartFrameClock(0, 10'000.0 / 3);
    SetFramePeriod(clock, 5'000, 10'000.0 / 3);
    EXPECT_EQ(clock.anchorUs, 0);
}

TEST(FrameClock, TheCountNeverFallsBackAndAgreesWithTheBlanks)
{
    std::mt19937 random(20261121);
    std::uniform_real_distribution<double> periods(900, 50'000);
    std::uniform_int_distribution<int> steps(0, 20'000);
    FrameClock clock = StartFrameClock(0, periods(random));
    std::int64_t nowUs = 0;
    std::int64_t last = 0;
    for (int i = 0; i < 20'000; ++i) {
        nowUs += steps(random);
        const std::int64_t blanks = BlanksBy(clock, nowUs);
        ASSERT_GE(blanks, last);
        ASSERT_GT(BlankUs(clock, blanks + 1), nowUs);
        ASSERT_EQ(BlanksBy(clock, BlankUs(clock, blanks + 1)), blanks + 1);
        last = blanks;
        if (i % 5 == 0) {
            SetFramePeriod(clock, nowUs, i % 35 == 0 ? 0 : periods(random));
            ASSERT_EQ(BlanksBy(clock, nowUs), blanks);
            if (clock.periodUs <= 0) SetFramePeriod(clock, nowUs, periods(random));
        }
    }
}

}  // namespace
}  // namespace kelvo
