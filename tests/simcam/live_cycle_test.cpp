// The main window's live cycle with the simulated camera behind it.
#include "grabber/frame_account.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/menu.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "resources/menu.h"
#include "shell/main_window.h"
#include "simcam/sim_board_fixture.h"
#include "state/buffer_state_write.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "video/video.h"

#include <gmock/gmock.h>

#include <functional>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::SizeIs;

class LiveCycle : public SimBoardTest {
  protected:
    void SetUp() override
    {
        RegisterWindowClass({"LIVE", MainWndProc, {}});
        write::windows.hWndMain = CreateMainWindow("LIVE", "live");
        SetMenu(hWndMain, MainMenu());
        ShowWindowMaximised(hWndMain);
        OpenAt100Hz();
        write::frames.CameraOn = 1;
        ClearFrameAccount();
        ToggleFreeze(write::frames.LiveVideo);
    }
    // Lets the program run until that moment of its clock.
    void RunFor(std::int64_t milliseconds)
    {
        const std::int64_t end = TickMs() + milliseconds;
        std::function<void()> look = [&look, end, this] {
            if (TickMs() >= end) {
                PostQuitMessage(0);
            } else {
                AdvanceVirtualClock(1'000);  // time passes without live video too
                op.Do(look);
            }
        };
        op.Do(look);
        RunMessageLoop(hWndMain);
    }
    static FrameAccount Account() { return CurrentFrameAccount(); }
};

TEST_F(LiveCycle, ShowsEachFrame)
{
    RunFor(1'000);
    EXPECT_GE(Account().shown, 100);
    EXPECT_EQ(Account().shown, Account().delivered);
    EXPECT_EQ(Account().lost, 0);
    EXPECT_EQ(Account().missed, 0);
}

TEST_F(LiveCycle, ShowsItsRateAfterAHundredAndOneFrames)
{
    RunFor(1'005);
    EXPECT_THAT(op.Texts("status", "text"), Contains("  Displaying at 101 Hz"));
}

// The rates that were shown, in order.
std::vector<std::string> RatesShown(const TestOperator& op)
{
    std::vector<std::string> rates = op.Texts("status", "text");
    std::erase_if(rates, [](const std::string& text) { return !text.starts_with("  Displaying at "); });
    return rates;
}

TEST_F(LiveCycle, TheRateLeavesOutWhatAFreezeTook)
{
    RunFor(500);
    SendMessage(hWndMain, WM_COMMAND, kCmdFreeze, 0);
    RunFor(9'000);
    SendMessage(hWndMain, WM_COMMAND, kCmdFreeze, 0);
    RunFor(1'005);
    EXPECT_THAT(RatesShown(op), ElementsAre("  Displaying at 101 Hz"));
}

TEST_F(LiveCycle, TheRateLeavesOutWhileNothingIsDisplayed)
{
    RunFor(500);
    write::frames.DisplayEnabled = 0;  // as the panel's box
    RunFor(9'000);
    write::frames.DisplayEnabled = 1;
    SetTimer(hWndMain, kLiveTimer, 0);
    RunFor(1'005);
    EXPECT_THAT(RatesShown(op), ElementsAre("  Displaying at 101 Hz"));
}

TEST_F(LiveCycle, TheRateLeavesOutWhatAnAcquisitionTook)
{
    RunFor(500);
    write::buffer.PeriodicUpdates = 0;
    RunFor(9'000);
    write::buffer.PeriodicUpdates = 1;
    RunFor(1'015);
    EXPECT_THAT(RatesShown(op), ElementsAre("  Displaying at 101 Hz"));
}

TEST_F(LiveCycle, TheRateGoesOnOverAStepOfZoom)
{
    RunFor(500);
    SendMessage(hWndMain, WM_COMMAND, kCmdZoomIn, 0);
    RunFor(525);
    EXPECT_THAT(RatesShown(op), SizeIs(1));
}

TEST_F(LiveCycle, ACommandGetsItsTurnWithinAFrame)
{
    RunFor(100);
    const std::int64_t postedUs = TickUs();
    PostMessage(hWndMain, WM_COMMAND, kCmdFreeze, 0);
    std::int64_t frozenUs = -1;
    op.Do([&] {
        if (!LiveVideo) frozenUs = TickUs();
        PostQuitMessage(0);
    });
    RunMessageLoop(hWndMain);
    ASSERT_EQ(LiveVideo, 0);
    ASSERT_GE(frozenUs, postedUs);
    EXPECT_LE(frozenUs - postedUs, 10'000);
    EXPECT_FALSE(TimerIsSet(hWndMain, kLiveTimer));
}

TEST_F(LiveCycle, WhatALongCommandHeldUpIsMissedNotLost)
{
    RunFor(100);
    // The mouse buttons' commands end in the dispatcher too; this one is long because its box stands half a second.
    op.AtNextBox([](const FrontBox&) { DelayMs(500); });
    write::frames.CameraOn = 0;
    SendMessage(hWndMain, WM_COMMAND, kCmdLoadCalibration, 0);
    write::frames.CameraOn = 1;
    EXPECT_EQ(op.Boxes().size(), 1U);
    RunFor(100);
    EXPECT_EQ(Account().lost, 0);
    EXPECT_GE(Account().missed, 49);
}

TEST_F(LiveCycle, WhatTheProgramItselfIsLateForIsLost)
{
    RunFor(100);
    DelayMs(25);
    RunFor(100);
    EXPECT_EQ(Account().lost, 2);
    EXPECT_EQ(Account().missed, 0);
}

TEST_F(LiveCycle, AStallBeforeAFreezeOrAStepOfZoomIsLost)
{
    RunFor(100);
    DelayMs(500);
    SendMessage(hWndMain, WM_COMMAND, kCmdFreeze, 0);
    EXPECT_EQ(Account().lost, 50);
    SendMessage(hWndMain, WM_COMMAND, kCmdFreeze, 0);
    RunFor(100);
    DelayMs(500);
    SendMessage(hWndMain, WM_COMMAND, kCmdZoomIn, 0);
    EXPECT_EQ(Account().lost, 100);
    RunFor(100);
    EXPECT_EQ(Account().lost, 100);
    EXPECT_EQ(Account().delivered, Account().shown + Account().lost + Account().missed);
}

TEST_F(LiveCycle, ATurnOfTheWheelIsOneChangeOfGeometry)
{
    RunFor(100);
    const std::int64_t shown = Account().shown;
    for (int notch = 0; notch < 5; ++notch) SendMessage(hWndMain, WM_MOUSEWHEEL, MakeLong(0, 1), 0);
    EXPECT_EQ(Xzoom, 6);
    RunFor(100);
    EXPECT_GE(Account().shown, shown + 9);
    EXPECT_EQ(Account().delivered, Account().shown) << "one restart, and a frame is read from its first blank on";
}

TEST_F(LiveCycle, GoesOnBehindADialogAndWhatPassesThereIsMissed)
{
    RunFor(50);
    FrameAccount before;
    FrameAccount inside;
    std::int64_t openedMs = -1;
    std::function<void()> look = [&] {
        if (openedMs < 0) {  // the dialog's picture takes its time before
            openedMs = TickMs();
            before = Account();
        }
        AdvanceVirtualClock(1'000);
        if (TickMs() < openedMs + 300) {
            op.Do(look);
            return;
        }
        DelayMs(45);  // a slow answer of the dialog's own
        inside = Account();
        OperatePress(DialogInFront(), kIdOk);
    };
    op.Do(look);
    SendMessage(hWndMain, WM_COMMAND, kCmdAbout, 0);
    EXPECT_EQ(DialogInFront(), nullptr);
    RunFor(50);
    EXPECT_GE(inside.shown - before.shown, 28) << "300 ms at 100 Hz";
    EXPECT_EQ(Account().lost, 0);
    EXPECT_GE(Account().missed, 4);
    EXPECT_EQ(Account().delivered, Account().shown + Account().missed);
}

TEST_F(LiveCycle, IsHeldOffWhileAnAcquisitionOwnsTheBoardAndGoesOnAfterIt)
{
    RunFor(100);
    write::buffer.PeriodicUpdates = 0;
    const std::int64_t before = Account().shown;
    RunFor(300);
    EXPECT_EQ(Account().shown, before);
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_TRUE(TimerIsSet(hWndMain, kLiveTimer));
    write::buffer.PeriodicUpdates = 1;
    RunFor(100);
    EXPECT_GT(Account().shown, before + 5);
    EXPECT_EQ(Account().lost, 0);
    EXPECT_GE(Account().missed, 28) << "what passed meanwhile is known";
}

TEST_F(LiveCycle, AFailedReadShowsItsBoxOnceAndFreezes)
{
    RunFor(100);
    Send(*camera, {{0x90, 0x10, 0, 0}});  // the clocks stop
    RunFor(5'000);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Timeout waiting for vertical blank!");
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_EQ(GetWindowText(hWndMain), "Kelvo - frozen");
    EXPECT_EQ(GetMenuItem(hWndMain, kCmdFreeze)->text, "&Continue\tF2");

    Send(*camera, {{0x90, 0x30, 0, 0}});
    SendMessage(hWndMain, WM_COMMAND, kCmdFreeze, 0);
    const std::int64_t before = Account().shown;
    RunFor(200);
    EXPECT_GT(Account().shown, before + 10);
    EXPECT_EQ(op.Boxes().size(), 1U);
}

}  // namespace
}  // namespace kelvo
