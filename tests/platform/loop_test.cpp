#include "platform/clock.h"
#include "platform/front.h"
#include "platform/profile.h"
#include "platform/timers.h"
#include "support/temp_directory.h"
#include "window_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

std::vector<std::int64_t> timerTimes;

// Writes down when timers come; ends the loop with the last.
void EndAfterTimers(std::size_t count)
{
    timerTimes.clear();
    onMessage = [count](const SeenMessage& seen) {
        if (seen.message != WM_TIMER) return;
        timerTimes.push_back(TickMs());
        if (timerTimes.size() == count) PostQuitMessage(0);
    };
}

CommandLine OffscreenInRealTime()
{
    CommandLine commandLine = OffscreenAt(1);
    commandLine.virtualTime = false;
    return commandLine;
}

TEST(VirtualTime, JumpsToTheNextTimer)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    EndAfterTimers(4);
    const std::int64_t start = TickMs();
    const auto realStart = std::chrono::steady_clock::now();
    SetTimer(window, 1, 10'000);
    SetTimer(window, 2, 25'000);
    RunMessageLoop(window);
    EXPECT_THAT(timerTimes, ElementsAre(start + 10'000, start + 20'000, start + 25'000, start + 30'000));
    EXPECT_LT(std::chrono::steady_clock::now() - realStart, std::chrono::seconds(10));
}

TEST(VirtualTime, StandsStillWhileMessagesAreQueued)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    std::vector<std::int64_t> times;
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message == WM_TIMER) PostQuitMessage(0);
        if (seen.message != WM_COMMAND) return;
        times.push_back(TickMs());
        if (seen.wParam < 20) PostMessage(window, WM_COMMAND, seen.wParam + 1, 0);
    };
    const std::int64_t start = TickMs();
    SetTimer(window, 1, 100);
    PostMessage(window, WM_COMMAND, 1, 0);
    RunMessageLoop(window);
    ASSERT_EQ(times.size(), 20U);
    EXPECT_THAT(times, ::testing::Each(start));
    EXPECT_EQ(TickMs(), start + 100);
}

TEST(VirtualTime, GoesOnForOthersBesideATimerThatIsAlwaysDue)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    std::size_t fast = 0;
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message != WM_TIMER) return;
        if (seen.wParam == 2) return PostQuitMessage(0);
        ++fast;
        KillTimer(window, 1);
        SetTimer(window, 1, 0);
    };
    SetTimer(window, 1, 0);
    SetTimer(window, 2, 50);
    RunMessageLoop(window);
    EXPECT_GE(fast, 10U);
    EXPECT_LE(fast, 100U);
}

TEST(LoopTimers, FireInsideTheLoopOfABoxThatATimerOpened)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    std::vector<WPARAM> order;
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message != WM_TIMER) return;
        order.push_back(seen.wParam);
        if (seen.wParam == 1) {
            KillTimer(window, 1);
            MessageBox(window, "from a timer", "caption");
            order.push_back(99);
            PostQuitMessage(0);
        } else if (seen.wParam == 2 && order.size() == 4) {
            PressBoxButton(Button::kOk);
        }
    };
    SetIdleHook(nullptr);  // the box is answered by the timer alone
    SetTimer(window, 1, 10);
    SetTimer(window, 2, 100);
    RunMessageLoop(window);
    EXPECT_THAT(order, ElementsAre(1, 2, 2, 2, 99));
}

TEST(LoopTimers, OfSeveralThatAreDueEachFiresOnceBeforeTheHook)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    std::vector<WPARAM> order;
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message == WM_TIMER) order.push_back(seen.wParam);
    };
    std::size_t asked = 0;
    SetIdleHook([&] {
        order.push_back(0);
        if (++asked == 3) PostQuitMessage(0);
    });
    for (const std::uint32_t id : {1U, 2U, 3U}) SetTimer(window, id, 0);
    RunMessageLoop(window);
    ASSERT_GE(order.size(), 8U);
    EXPECT_THAT(std::vector<WPARAM>(order.begin(), order.begin() + 8), ElementsAre(1, 2, 3, 0, 1, 2, 3, 0));
}

TEST(IdleHook, GetsItsTurnBesideATimerThatIsAlwaysDue)
{
    TestOperator op(OffscreenInRealTime());
    HWND window = ShowRecordingWindow();
    std::size_t fast = 0;
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message != WM_TIMER) return;
        ++fast;
        KillTimer(window, 1);
        SetTimer(window, 1, 0);
    };
    std::size_t asked = 0;
    SetIdleHook([&] {
        if (++asked == 5) PostQuitMessage(0);
    });
    SetTimer(window, 1, 0);
    RunMessageLoop(window);
    EXPECT_EQ(asked, 5U);
    EXPECT_GE(fast, 3U);
    EXPECT_LE(fast, 12U);
}

TEST(IdleHook, RunsOnlyWhenNothingIsQueued)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    std::vector<int> order;
    SetIdleHook([&] {
        order.push_back(0);
        PostQuitMessage(0);
    });
    for (int i = 1; i <= 3; ++i) PostAction([&order, i] { order.push_back(i); });
    RunMessageLoop(window);
    EXPECT_THAT(order, ElementsAre(1, 2, 3, 0));
}

TEST(Actions, RunOnceEachAsEventsOfTheirOwn)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    int innerRuns = 0;
    op.Do([&] {
        PostAction([&] { ++innerRuns; });
        EXPECT_EQ(innerRuns, 0);
    });
    RunSteps(op, window);
    EXPECT_EQ(innerRuns, 1);
}

TEST(RealTime, TimersComeNotBeforeTheirTime)
{
    TestOperator op(OffscreenInRealTime());
    HWND window = ShowRecordingWindow();
    EndAfterTimers(3);
    const std::int64_t start = TickMs();
    SetTimer(window, 1, 20);
    RunMessageLoop(window);
    ASSERT_EQ(timerTimes.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_GE(timerTimes[i], start + 20 * static_cast<std::int64_t>(i + 1));
}

std::int64_t ProcessorMs()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
}

TEST(RealTime, WaitsWithoutWorking)
{
    TestOperator op(OffscreenInRealTime());
    HWND window = ShowRecordingWindow();
    EndAfterTimers(1);
    SetTimer(window, 1, 1000);
    const std::int64_t before = ProcessorMs();
    RunMessageLoop(window);
    EXPECT_LT(ProcessorMs() - before, 200);  // a busy wait takes 1000
}

TEST(Quit, EndsALoopThatRanBefore)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    Button answer = Button::kOk;
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message == WM_COMMAND) answer = MessageBox(window, "?", "c", BoxIcon::kNone, BoxButtons::kOkCancel);
    };
    PostMessage(window, WM_COMMAND, 1, 0);
    op.AtNextBox([](const FrontBox&) { PostQuitMessage(5); });
    op.Answer({});
    SetIdleHook([&, asked = false]() mutable {
        if (BoxInFront() && !std::exchange(asked, true)) PostQuitMessage(5);
    });
    EXPECT_EQ(RunMessageLoop(window), 5);
    EXPECT_EQ(answer, Button::kCancel);
}

TEST(Quit, LeavesABoxOfTheWayOutToTheOperator)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    Button answer = Button::kOk;
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message != WM_COMMAND) return;
        PostQuitMessage(3);
        answer = MessageBox(window, "still?", "c", BoxIcon::kNone, BoxButtons::kYesNo);
    };
    op.Answer({Button::kNo});
    PostMessage(window, WM_COMMAND, 119, 0);
    EXPECT_EQ(RunMessageLoop(window), 3);
    EXPECT_EQ(answer, Button::kNo);
    EXPECT_EQ(op.Boxes().at(0).answer, "no");
}

TEST(LoopProfiles, ReachTheDiskASecondAfterTheWrite)
{
    timerTimes.clear();
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const TempDirectory directory;
    const std::string file = directory / "kelvo.ini";
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message != WM_TIMER) return;
        timerTimes.push_back(static_cast<std::int64_t>(FileContents(file).size()));
        if (timerTimes.size() == 3) PostQuitMessage(0);
    };
    WritePrivateProfileString("Setup", "Key", "1", file);
    SetTimer(window, 1, 600);
    RunMessageLoop(window);
    ASSERT_EQ(timerTimes.size(), 3U);
    EXPECT_EQ(timerTimes[0], 0);  // after 0.6 s
    EXPECT_GT(timerTimes[1], 0);  // after 1.2 s
}

TEST(LoopProfiles, ReachTheDiskAtTheEndOfTheLoop)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const TempDirectory directory;
    const std::string file = directory / "kelvo.ini";
    WritePrivateProfileString("Setup", "Key", "1", file);
    PostQuitMessage(0);
    RunMessageLoop(window);
    EXPECT_NE(FileContents(file).find("Key=1"), std::string::npos);
}

}  // namespace
}  // namespace kelvo
