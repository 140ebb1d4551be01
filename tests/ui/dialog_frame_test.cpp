// The frame of the dialogs, with the number dialogs of the program in front and tables of the test's own.
#include "ui/dialog_frame.h"

#include "platform/dialog_fixture.h"
#include "platform/faults.h"
#include "platform/help.h"
#include "platform/timers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kFrame = 1001;  // the number in GOTOFRAME, and the brightness in DISPLAY, whose list is 1256
constexpr int kBrightness = 1242;
constexpr int kUnits = 1256;
constexpr std::uint32_t kTimer = 7;

const DialogFrame* frameInUse = nullptr;
std::vector<std::string> called;

LRESULT FrameProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(*frameInUse, dialog, message, wParam, lParam);
}

void Note(const std::string& what)
{
    called.push_back(what);
}

class DialogFrameTest : public DialogFixture {
  protected:
    void SetUp() override
    {
        DialogFixture::SetUp();
        called.clear();
    }
    void TearDown() override
    {
        QuitHelp();
        DialogFixture::TearDown();
    }
    int Run(const DialogFrame& frame)
    {
        frameInUse = &frame;
        return RunDialog(frame, mainWindow);
    }
};

void Ok(HWND dialog)
{
    Note("ok");
    EndDialog(dialog, 5);
}
void Changed(HWND /*dialog*/, int id)
{
    Note("changed " + std::to_string(id));
}
void Left(HWND /*dialog*/)
{
    Note("left");
}

constexpr DialogEntry kGoEntries[] = {{kFrame, Changed, kEditChanged}, {kFrame, Left, kEditFocusLost}, {kIdOk, Ok}};
constexpr DialogFrame kGo{.name = "GOTOFRAME", .procedure = FrameProc, .entries = kGoEntries, .helpContext = 2004};

TEST_F(DialogFrameTest, EachNotificationReachesItsOwnEntry)
{
    Then([] { SetDlgItemInt(DialogInFront(), kFrame, 12); });
    Then([] { FocusDlgItem(DialogInFront(), kIdOk); });
    Then([] { OperatePress(DialogInFront(), kIdOk); });
    EXPECT_EQ(Run(kGo), 5);
    EXPECT_THAT(called, ElementsAre("changed 1001", "left", "ok"));
}

TEST_F(DialogFrameTest, CancelWithoutAnEntryEndsWith0)
{
    Then([] { SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kIdCancel, 0), 0); });
    EXPECT_EQ(Run(kGo), 0);
    EXPECT_THAT(called, IsEmpty());
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(DialogFrameTest, CancelWithAnEntryIsTheDialogsOwn)
{
    static constexpr DialogEntry kEntries[] = {{kIdCancel, Ok}};
    static constexpr DialogFrame kOwn{.name = "GOTOFRAME", .procedure = FrameProc, .entries = kEntries};
    Then([] { SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kIdCancel, 0), 0); });
    EXPECT_EQ(Run(kOwn), 5);
}

TEST_F(DialogFrameTest, HelpShowsThePageAndLeavesTheDialog)
{
    Then([] { SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kIdHelp, 0), 0); });
    Then([] {
        EXPECT_EQ(CurrentHelpContext(), 2004);
        EXPECT_EQ(DialogName(DialogInFront()), "GOTOFRAME");
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(Run(kGo), 5);
}

TEST_F(DialogFrameTest, WithoutAPageHelpIsNotTaken)
{
    static constexpr DialogFrame kPlain{.name = "GOTOFRAME", .procedure = FrameProc};
    Then([] {
        EXPECT_EQ(SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kIdHelp, 0), 0), 0);
        EXPECT_EQ(CurrentHelpContext(), 0);
        EXPECT_EQ(SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kIdOk, 0), 0), 0);
        EXPECT_EQ(SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kIdCancel, 0), 0), 1);
    });
    EXPECT_EQ(Run(kPlain), 0);
}

TEST_F(DialogFrameTest, OpenIsCalledFirstAndMayEndTheDialog)
{
    static constexpr DialogFrame kEnds{
        .name = "GOTOFRAME", .procedure = FrameProc, .open = Ok, .destroyed = [](HWND) { Note("destroyed"); }};
    EXPECT_EQ(Run(kEnds), 5);
    EXPECT_THAT(called, ElementsAre("ok", "destroyed"));
    EXPECT_THAT(TranscriptOf("dialog"), IsEmpty());
}

// The bar stood at 1 of 1 to 1000: a line is 1 more, a page a sixteenth of the range.
TEST_F(DialogFrameTest, ABarsEntryGetsItsPlace)
{
    static constexpr DialogEntry kEntries[] = {OnScroll(kBrightness, [](HWND, int bar, int position) {
        Note(std::to_string(bar) + " at " + std::to_string(position));
    })};
    static constexpr DialogFrame kBars{.name = "DISPLAY", .procedure = FrameProc, .entries = kEntries};
    Then([] {
        const HWND dialog = DialogInFront();
        const auto line = MakeLong(static_cast<int>(ScrollCode::kLineDown), 0);
        const auto page = MakeLong(static_cast<int>(ScrollCode::kPageDown), 0);
        EXPECT_EQ(SendMessage(dialog, WM_HSCROLL, line, kBrightness), 1);
        EXPECT_EQ(SendMessage(dialog, WM_HSCROLL, page, kBrightness), 1);
        EXPECT_EQ(SendMessage(dialog, WM_HSCROLL, line, kBrightness + 4), 0);  // no entry: it stays
        EXPECT_EQ(GetScrollPos(dialog, kBrightness + 4), 1);
        EndDialog(dialog, 1);
    });
    EXPECT_EQ(Run(kBars), 1);
    EXPECT_THAT(called, ElementsAre("1242 at 2", "1242 at 64"));
}

TEST_F(DialogFrameTest, ATimersEntryIsCalledForItsOwnTimer)
{
    static constexpr DialogEntry kEntries[] = {OnTimer(kTimer, [](HWND dialog) {
        Note("timer");
        EndDialog(dialog, 8);
    })};
    static constexpr DialogFrame kTimers{.name = "GOTOFRAME",
                                         .procedure = FrameProc,
                                         .open = [](HWND dialog) { SetTimer(dialog, kTimer, 50); },
                                         .entries = kEntries};
    Then([] { EXPECT_EQ(SendMessage(DialogInFront(), WM_TIMER, kTimer + 1, 0), 0); });
    EXPECT_EQ(Run(kTimers), 8);
    EXPECT_THAT(called, ElementsAre("timer"));
}

TEST_F(DialogFrameTest, OfSeveralEntriesTheFirstThatFitsAnswers)
{
    static constexpr DialogEntry kEntries[] = {
        {kUnits, [](HWND) { Note("selection"); }, kSelectionChanged},
        {kUnits, [](HWND) { Note("anything"); }},
        {kUnits, [](HWND) { Note("never"); }},
    };
    static constexpr DialogFrame kLists{.name = "DISPLAY", .procedure = FrameProc, .entries = kEntries};
    Then([] {
        SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kUnits, kSelectionChanged), 0);
        SendMessage(DialogInFront(), WM_COMMAND, MakeLong(kUnits, kDoubleClicked), 0);
        EndDialog(DialogInFront(), 1);
    });
    EXPECT_EQ(Run(kLists), 1);
    EXPECT_THAT(called, ElementsAre("selection", "anything"));
}

TEST_F(DialogFrameTest, TheCloseButtonIsCancelUnlessTheDialogTellsThemApart)
{
    static constexpr DialogFrame kApart{
        .name = "GOTOFRAME", .procedure = FrameProc, .closed = [](HWND dialog) { EndDialog(dialog, 9); }};
    Then([] { EXPECT_EQ(SendMessage(DialogInFront(), WM_CLOSE, 0, 0), 1); });
    EXPECT_EQ(Run(kApart), 9);
    Then([] {
        EXPECT_EQ(SendMessage(DialogInFront(), WM_CLOSE, 0, 0), 0);  // the platform then sends Cancel
        EndDialog(DialogInFront(), 1);
    });
    EXPECT_EQ(Run(kGo), 1);
}

TEST_F(DialogFrameTest, TellsThatADialogCannotBeMade)
{
    static constexpr DialogFrame kOwnWords{.name = "GOTOFRAME",
                                           .procedure = FrameProc,
                                           .cantOpen = "No dialog today",
                                           .cantOpenIcon = BoxIcon::kStop,
                                           .cantOpenResult = -1};
    SetFault("load dialog GOTOFRAME", true);
    EXPECT_EQ(Run(kGo), 0);
    EXPECT_EQ(Run(kOwnWords), -1);
    EXPECT_EQ(OpenModelessDialog(kGo, mainWindow), nullptr);
    SetFault("load dialog GOTOFRAME", false);
    EXPECT_THAT(called, IsEmpty());

    const auto boxes = op->Boxes();
    ASSERT_EQ(boxes.size(), 3U);
    for (const auto& box : boxes) EXPECT_EQ(box.caption, "System Error");
    EXPECT_EQ(boxes[0].text + boxes[0].icon, "Unable to display dialogexclamation");
    EXPECT_EQ(boxes[1].text + boxes[1].icon, "No dialog todaystop");
    EXPECT_EQ(boxes[2].text + boxes[2].icon, "Unable to display dialogexclamation");
}

TEST_F(DialogFrameTest, AModelessDialogStaysOpen)
{
    frameInUse = &kGo;
    const HWND dialog = OpenModelessDialog(kGo, mainWindow);
    ASSERT_NE(dialog, nullptr);
    SetDlgItemInt(dialog, kFrame, 3);
    SendMessage(dialog, WM_COMMAND, MakeLong(kIdCancel, 0), 0);
    EXPECT_EQ(DialogName(dialog), "");
    EXPECT_THAT(called, ElementsAre("changed 1001"));
}

TEST_F(DialogFrameTest, ARefusedFieldIsToldAndHasTheFocus)
{
    Then([] { FocusDlgItem(DialogInFront(), kIdOk); });
    Then([] { RefuseField(DialogInFront(), kFrame, "Not that one"); });
    Then([] {
        EXPECT_EQ(FocusedDlgItem(DialogInFront()), kFrame);
        EndDialog(DialogInFront(), 1);
    });
    EXPECT_EQ(Run(kGo), 1);
    ASSERT_EQ(op->Boxes().size(), 1U);
    EXPECT_EQ(op->Boxes()[0].text, "Not that one");
    EXPECT_EQ(op->Boxes()[0].caption, kMessageCaption);
}

}  // namespace
}  // namespace kelvo
