#include "platform/timers.h"

#include "platform/clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

// Windows are known by their handles alone: any two addresses serve.
char mainWindow;
char dialogWindow;
const HWND kMain = reinterpret_cast<HWND>(&mainWindow);
const HWND kDialog = reinterpret_cast<HWND>(&dialogWindow);

class Timers : public ::testing::Test {
  protected:
    void SetUp() override { UseVirtualClock(0); }

    // The numbers of all timers that fire until a time, as a loop that always waits for the next one sees them.
    static std::vector<std::uint32_t> FiredUntilMs(std::int64_t endMs)
    {
        std::vector<std::uint32_t> fired;
        for (auto dueUs = NextTimerDueUs(); dueUs && *dueUs <= endMs * 1000; dueUs = NextTimerDueUs()) {
            AdvanceVirtualClock(*dueUs - TickUs());
            for (auto due = TakeDueTimer(); due; due = TakeDueTimer()) fired.push_back(due->id);
        }
        AdvanceVirtualClock(endMs * 1000 - TickUs());
        return fired;
    }
};

TEST_F(Timers, FireInTheOrderOfTheirDueTimes)
{
    SetTimer(kMain, 1, 1000);
    SetTimer(kMain, 5, 300);
    EXPECT_EQ(NextTimerDueUs(), 300000);
    EXPECT_THAT(FiredUntilMs(1000), ElementsAre(5, 5, 5, 1));
}

TEST_F(Timers, EqualDueTimesFireInTheOrderOfSetting)
{
    SetTimer(kMain, 3, 100);
    SetTimer(kDialog, 1, 100);
    SetTimer(kMain, 2, 100);
    EXPECT_THAT(FiredUntilMs(200), ElementsAre(3, 1, 2, 3, 1, 2));
}

TEST_F(Timers, SettingAgainMovesTheTimer)
{
    SetTimer(kMain, 1, 100);
    AdvanceVirtualClock(60000);
    SetTimer(kMain, 1, 100);
    EXPECT_EQ(NextTimerDueUs(), 160000);
    EXPECT_THAT(FiredUntilMs(160), ElementsAre(1));
}

TEST_F(Timers, TheSameNumberOfAnotherWindowIsAnotherTimer)
{
    SetTimer(kMain, 1, 100);
    SetTimer(kDialog, 1, 100);
    KillTimer(kMain, 1);
    EXPECT_FALSE(TimerIsSet(kMain, 1));
    EXPECT_TRUE(TimerIsSet(kDialog, 1));
    KillTimersOf(kDialog);
    EXPECT_FALSE(TimerIsSet(kDialog, 1));
    EXPECT_EQ(NextTimerDueUs(), std::nullopt);
    EXPECT_FALSE(TakeDueTimer());
}

TEST_F(Timers, NothingIsDueTooEarly)
{
    SetTimer(kMain, 1, 10);
    AdvanceVirtualClock(9999);
    EXPECT_FALSE(TakeDueTimer());
    AdvanceVirtualClock(1);
    EXPECT_TRUE(TakeDueTimer());
    EXPECT_FALSE(TakeDueTimer());
}

TEST_F(Timers, ALateTimerFiresOnceAndStartsAnew)
{
    SetTimer(kMain, 1, 100);
    AdvanceVirtualClock(1050000);
    EXPECT_TRUE(TakeDueTimer());
    EXPECT_FALSE(TakeDueTimer());
    EXPECT_EQ(NextTimerDueUs(), 1150000);
}

TEST_F(Timers, APeriodOfZeroIsDueAtOnceAndLetsTimePass)
{
    SetTimer(kMain, 3, 0);
    SetTimer(kMain, 1, 2);
    EXPECT_TRUE(TakeDueTimer());
    EXPECT_FALSE(TakeDueTimer());
    EXPECT_THAT(FiredUntilMs(2), ElementsAre(3, 1, 3));
}

TEST_F(Timers, NegativePeriodsCountAsZero)
{
    SetTimer(kMain, 1, -5);
    EXPECT_EQ(NextTimerDueUs(), 0);
}

}  // namespace
}  // namespace kelvo
