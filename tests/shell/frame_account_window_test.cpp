// The frame account's window: what it shows, and how it opens and closes.
#include "shell/frame_account_window.h"

#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/help.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "resources/ids.h"
#include "resources/menu.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "ui/window_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class FrameAccountWindow : public PictureTest {
  protected:
    void SetUp() override
    {
        DockPanel();
        SetMenu(hWndMain, MainMenu());
    }
    void TearDown() override
    {
        if (ItemChecked()) ToggleFrameAccount();
    }
    static bool ItemChecked() { return GetMenuItem(hWndMain, kCmdViewFrameAccount)->checked; }

    // The account's own dialog procedure behind a dialog that can be read.
    static inline HWND opened = nullptr;
    static LRESULT Watch(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
    {
        opened = message == WM_DESTROY ? nullptr : dialog;
        return fnACCOUNTDlgProc(dialog, message, wParam, lParam);
    }
    static HWND OpenWatched()
    {
        opened = nullptr;
        return CreateModelessDialog("ACCOUNT", hWndMain, Watch);
    }
    // Lets time pass while a box is open.
    void Pass(std::int64_t ms)
    {
        op->AtNextBox([](const FrontBox&) {});
        DelayMs(ms);
        MessageBox(hWndMain, "turn of the loop", "test");
    }
};

TEST_F(FrameAccountWindow, ShowsCountsAndRates)
{
    HWND dialog = OpenWatched();
    ASSERT_TRUE(dialog);
    ShowFrameAccount(dialog, {.delivered = 1234567890123,
                              .shown = 800,
                              .used = 16,
                              .lost = 2,
                              .missed = 31,
                              .deliveredHz = 99.96,
                              .shownHz = 49.94});
    EXPECT_EQ(GetDlgItemText(dialog, 1001), "1234567890123");
    EXPECT_EQ(GetDlgItemText(dialog, 1002), "800");
    EXPECT_EQ(GetDlgItemText(dialog, 1003), "2");
    EXPECT_EQ(GetDlgItemText(dialog, 1004), "31");
    EXPECT_EQ(GetDlgItemText(dialog, 1005), "100.0 Hz");
    EXPECT_EQ(GetDlgItemText(dialog, 1006), "49.9 Hz");
    EXPECT_EQ(GetDlgItemText(dialog, 1008), "16");
    EndDialog(dialog, 0);
}

TEST_F(FrameAccountWindow, LostFramesWarnAndNoneDont)
{
    HWND dialog = OpenWatched();
    ShowFrameAccount(dialog, {.lost = 0, .missed = 5});
    EXPECT_FALSE(DlgItemWarns(dialog, kAccountLost));
    ShowFrameAccount(dialog, {.lost = 1});
    EXPECT_TRUE(DlgItemWarns(dialog, kAccountLost));
    EXPECT_FALSE(DlgItemWarns(dialog, kAccountMissed));
    ShowFrameAccount(dialog, {});
    EXPECT_FALSE(DlgItemWarns(dialog, kAccountLost));
    EndDialog(dialog, 0);
}

TEST_F(FrameAccountWindow, RefreshesTwiceASecond)
{
    HWND dialog = OpenWatched();
    const std::string now = GetDlgItemText(dialog, kAccountDelivered);
    SetDlgItemText(dialog, kAccountDelivered, "stale");
    Pass(450);
    EXPECT_EQ(GetDlgItemText(dialog, kAccountDelivered), "stale");
    Pass(100);
    EXPECT_EQ(GetDlgItemText(dialog, kAccountDelivered), now);
    SetDlgItemText(dialog, kAccountDelivered, "stale");
    Pass(500);
    EXPECT_EQ(GetDlgItemText(dialog, kAccountDelivered), now);
    EndDialog(dialog, 0);
}

TEST_F(FrameAccountWindow, ResetShowsAClearedAccountAtOnce)
{
    HWND dialog = OpenWatched();
    ShowFrameAccount(dialog, {.delivered = 10, .shown = 7, .lost = 3});
    ASSERT_TRUE(OperatePress(dialog, kAccountReset));
    EXPECT_EQ(GetDlgItemText(dialog, kAccountDelivered), "0");
    EXPECT_EQ(GetDlgItemText(dialog, kAccountLost), "0");
    EXPECT_FALSE(DlgItemWarns(dialog, kAccountLost));
    EndDialog(dialog, 0);
}

TEST_F(FrameAccountWindow, OpensAndClosesFromTheMenuAndIsKept)
{
    ToggleFrameAccount();
    EXPECT_TRUE(ItemChecked());
    EXPECT_EQ(WindowFileText("View", "FrameAccount"), "1");
    EXPECT_THAT(op->Texts("dialog", "name"), ElementsAre("ACCOUNT"));
    ToggleFrameAccount();
    EXPECT_FALSE(ItemChecked());
    EXPECT_EQ(WindowFileText("View", "FrameAccount"), "0");
    EXPECT_THAT(op->Texts("close", "name"), ElementsAre("ACCOUNT"));
}

TEST_F(FrameAccountWindow, StartsOpenOnlyWhereItWasOpen)
{
    OpenFrameAccount();
    EXPECT_THAT(op->Texts("dialog", "name"), SizeIs(0));
    EXPECT_FALSE(ItemChecked());
    WriteWindowFile("View", "FrameAccount", "1");
    OpenFrameAccount();
    EXPECT_THAT(op->Texts("dialog", "name"), ElementsAre("ACCOUNT"));
    EXPECT_TRUE(ItemChecked());
}

TEST_F(FrameAccountWindow, ADialogThatCantBeMadeIsTold)
{
    SetFault("load dialog ACCOUNT", true);
    ToggleFrameAccount();
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
    EXPECT_FALSE(ItemChecked());
    EXPECT_EQ(WindowFileText("View", "FrameAccount"), "0");
}

TEST_F(FrameAccountWindow, HelpShowsItsPage)
{
    HWND dialog = OpenWatched();
    OperatePress(dialog, kIdHelp);
    EXPECT_EQ(CurrentHelpContext(), kHelpFrameAccount);
    EndDialog(dialog, 0);
}

}  // namespace
}  // namespace kelvo
