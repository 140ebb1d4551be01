// The external clock's dialog, worked as an operator works it.
#include "head/external_clock_dialog.h"
#include "head/video_setup_fixture.h"
#include "platform/faults.h"
#include "platform/window.h"
#include "state/head_state_write.h"
#include "state/windows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace kelvo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class ExternalClock : public VideoSetUpTest {
  protected:
    // Types a rate, then presses; a dialog that stays is closed by No.
    int Answer(const std::string& rate, int button)
    {
        const auto ended = std::make_shared<bool>(false);
        op->Do([=] {
            OperateText(DialogInFront(), 624, rate);
            OperatePress(DialogInFront(), button);
        });
        op->Do([ended] {
            if (!*ended && DialogInFront()) OperatePress(DialogInFront(), 7);
        });
        const int result = ExternalClockDialog(hWndMain, "Generator 1");
        *ended = true;
        return result;
    }
};

TEST_F(ExternalClock, ShowsTheClockAndTheRateInForce)
{
    write::head.FrameRate = 48.828125F;
    op->Do([] {
        const HWND dialog = DialogInFront();
        EXPECT_EQ(DialogName(dialog), "FRAMERATE");
        EXPECT_EQ(GetWindowText(dialog), "External Clock Frame Rate");
        EXPECT_EQ(GetDlgItemText(dialog, 1644), "Generator 1");
        EXPECT_EQ(GetDlgItemText(dialog, 624), "48.828");
        OperatePress(dialog, 7);
    });
    EXPECT_EQ(ExternalClockDialog(hWndMain, "Generator 1"), 0);
    EXPECT_EQ(FrameRate, 48.828125F) << "unchanged by No";
}

TEST_F(ExternalClock, YesTakesARateOfTheRange)
{
    for (const auto& [text, rate] : {std::pair{"59.94", 59.94F}, {"0", 0.0F}, {"250.0", 250.0F}, {" 12.5 ", 12.5F}}) {
        EXPECT_EQ(Answer(text, 6), 1) << text;
        EXPECT_EQ(FrameRate, rate);
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ExternalClock, ReturnAndEscapeAreOkAndCancel)
{
    op->Do([] {
        OperateText(DialogInFront(), 624, "20");
        SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kIdOk, 0), 1);
    });
    EXPECT_EQ(ExternalClockDialog(hWndMain, "x"), 1);
    EXPECT_EQ(FrameRate, 20.0F);
    op->Do([] { SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kIdCancel, 0), 1); });
    EXPECT_EQ(ExternalClockDialog(hWndMain, "x"), 0);
}

TEST_F(ExternalClock, AnythingElseIsExplainedAndTheDialogStays)
{
    write::head.FrameRate = 30;
    std::size_t boxes = 0;
    for (const char* text : {"", "fast", "12abc", "250.1", "-1", "nan", "inf", "1e9"}) {
        EXPECT_EQ(Answer(text, 6), 0) << text;
        EXPECT_THAT(op->Boxes(), SizeIs(++boxes)) << text;
        EXPECT_EQ(FrameRate, 30.0F) << text;
    }
    EXPECT_EQ(op->Boxes().front().text, "The frame rate must be a number, in Hz.");
    EXPECT_EQ(op->Boxes().back().text, "The frame rate must be between 0.0 & 250.0 Hz.");
}

TEST_F(ExternalClock, ADialogThatCantBeMadeIsTold)
{
    SetFault("load dialog FRAMERATE", true);
    EXPECT_EQ(ExternalClockDialog(hWndMain, "x"), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
}

}  // namespace
}  // namespace kelvo
