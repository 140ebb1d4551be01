#include "platform/clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <set>
#include <thread>

namespace kelvo {
namespace {

using SteadyClock = std::chrono::steady_clock;

TEST(Clock, RealDelayIsNeverShorterThanAsked)
{
    const auto start = SteadyClock::now();
    const std::int64_t startUs = TickUs();
    DelayMs(20);
    EXPECT_GE(SteadyClock::now() - start, std::chrono::milliseconds(20));
    EXPECT_GE(TickUs() - startUs, 20000);
}

TEST(Clock, ADelayUpToAMomentEndsWhenItHasCome)
{
    const std::int64_t endUs = TickUs() + 7'300;
    DelayUntilUs(endUs);
    EXPECT_GE(TickUs(), endUs);
    const std::int64_t nowUs = TickUs();
    DelayUntilUs(nowUs - 1'000'000);  // long past
    EXPECT_LT(TickUs() - nowUs, 1'000'000);

    UseVirtualClock(1000000000);
    DelayUntilUs(1'234);
    EXPECT_EQ(TickUs(), 1'234);
    DelayUntilUs(1'000);
    EXPECT_EQ(TickUs(), 1'234);
}

TEST(Clock, RealWallClockIsTheMachines)
{
    // std::time reads a coarser clock, which is up to a tick behind.
    const auto machineMs = [] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::system_clock::now().time_since_epoch())
            .count();
    };
    std::set<int> millisecondsSeen;
    for (int reading = 0; reading < 20; ++reading) {
        const std::int64_t before = machineMs();
        const std::time_t now = WallClockSeconds();
        const int milliseconds = WallClockMilliseconds();
        const std::int64_t after = machineMs();
        EXPECT_GE(now, before / 1000);
        EXPECT_LE(now, after / 1000);
        // The part of a second, counted from `before`: never later than what has passed since.
        EXPECT_LE((milliseconds - before % 1000 + 1000) % 1000, after - before) << before;
        millisecondsSeen.insert(milliseconds);
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    EXPECT_GT(millisecondsSeen.size(), 10U);  // it moves
}

TEST(Clock, RealClockCannotBeMoved)
{
    const std::int64_t before = TickMs();
    AdvanceVirtualClock(3600LL * 1000000);
    EXPECT_LT(TickMs() - before, 600000);
    EXPECT_FALSE(ClockIsVirtual());
}

TEST(Clock, VirtualClockStandsStillWhileTheProgramWorks)
{
    UseVirtualClock(1000000000);
    EXPECT_TRUE(ClockIsVirtual());
    const auto start = SteadyClock::now();
    while (SteadyClock::now() - start < std::chrono::milliseconds(5)) {
    }
    EXPECT_EQ(TickUs(), 0);
    EXPECT_EQ(WallClockSeconds(), 1000000000);
}

TEST(Clock, VirtualDelayMovesTheClockAtOnce)
{
    UseVirtualClock(1000000000);
    const auto start = SteadyClock::now();
    DelayMs(30250);
    EXPECT_LT(SteadyClock::now() - start, std::chrono::seconds(20));
    EXPECT_EQ(TickMs(), 30250);
    EXPECT_EQ(WallClockSeconds(), 1000000030);
    EXPECT_EQ(WallClockMilliseconds(), 250);
}

TEST(Clock, VirtualClockNeverRunsBackward)
{
    UseVirtualClock(0);
    AdvanceVirtualClock(500);
    AdvanceVirtualClock(-400);
    DelayMs(-1);
    EXPECT_EQ(TickUs(), 500);
    DelayMs(std::numeric_limits<std::int64_t>::max());
    const std::int64_t far = TickUs();
    EXPECT_GT(far, 500);
    DelayMs(std::numeric_limits<std::int64_t>::max());
    EXPECT_GE(TickUs(), far);
}

TEST(UtcTextTest, TellsToTheNanosecond)
{
    EXPECT_EQ(UtcText(1'000'000'000'000'000'001), "2001-09-09T01:46:40.000000001Z");
    EXPECT_EQ(UtcText(951'782'400'500'000'000), "2000-02-29T00:00:00.500000000Z");
    EXPECT_EQ(UtcText(-1), "1969-12-31T23:59:59.999999999Z");
    EXPECT_EQ(UtcText(0), "");
}

}  // namespace
}  // namespace kelvo
