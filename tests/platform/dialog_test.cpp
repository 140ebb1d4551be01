#include "platform/dialog.h"

#include "platform/controls.h"
#include "platform/dialog_fixture.h"
#include "platform/faults.h"
#include "platform/qt_dialog.h"
#include "platform/timers.h"

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QWindow>

#include <memory>

namespace kelvo {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kEvery = "EVERYCONTROL";
enum : int {
    kLabel = 10,
    kPush = 11,
    kTool = 12,
    kCheck = 13,
    kFirst = 20,
    kSecond = 21,
    kThird = 22,
    kEdit = 30,
    kText = 31,
    kSpin = 32,
    kCombo = 40,
    kList = 41,
    kBar = 50,
    kSlider = 51,
    kProgress = 52,
    kFourWay = 60,
    kStepper = 61,
    kDisabled = 70,
    kHidden = 71,
    kPlot = 80
};

SeenMessage Scroll(std::uint32_t message, int id, ScrollCode code, int position)
{
    return {message, MakeLong(static_cast<int>(code), position), id};
}

// The dialog without a wait: made at WM_INITDIALOG, ended there.
class Controls : public DialogFixture {
  protected:
    // Runs the dialog with every control and hands its handle to the work, before it is seen.
    static void InDialog(const std::function<void(HWND)>& work)
    {
        dialogRule = [&work](HWND dialog, const SeenMessage& seen) -> LRESULT {
            if (seen.message != WM_INITDIALOG) return 0;
            ShowDlgItem(dialog, kHidden, false);
            dialogSaw.clear();
            work(dialog);
            EndDialog(dialog, 1);
            return 1;
        };
        EXPECT_EQ(DialogBox(kEvery, nullptr, DialogTestProc), 1);
        dialogRule = nullptr;
    }

    // What a piece of work makes the dialog's procedure see.
    static std::vector<SeenMessage> Seen(const std::function<void()>& work)
    {
        dialogSaw.clear();
        work();
        return dialogSaw;
    }
};

class DialogRun : public DialogFixture {
  protected:
    // Ends the dialog with the number of the command 1, 2 or 9.
    static void EndAtCommands()
    {
        dialogRule = [](HWND dialog, const SeenMessage& seen) -> LRESULT {
            if (seen.message != WM_COMMAND || HighWord(seen.wParam) != kButtonClicked) return 0;
            EndDialog(dialog, LowWord(seen.wParam) + 100);
            return 1;
        };
    }
};

}  // namespace

// --- Opening and ending ---

TEST_F(DialogRun, ReturnsWhatEndDialogGives)
{
    EndAtCommands();
    Then([] { EXPECT_TRUE(OperatePress(DialogInFront(), kIdOk)); });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 101);
    EXPECT_EQ(DialogInFront(), nullptr);
}

TEST_F(DialogRun, InitComesFirstWithTheParameterBeforeItIsSeen)
{
    bool seenAtInit = true;
    dialogRule = [&seenAtInit](HWND dialog, const SeenMessage& seen) -> LRESULT {
        if (seen.message == WM_INITDIALOG) {
            seenAtInit = dialog->widget->isVisible();
            EXPECT_EQ(seen.lParam, 4711);
            EXPECT_THAT(TranscriptOf("dialog"), IsEmpty());
        }
        return 0;
    };
    Then([] {
        EXPECT_TRUE(DialogInFront()->widget->isVisible());
        EndDialog(DialogInFront(), 5);
    });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc, 4711), 5);
    EXPECT_FALSE(seenAtInit);
    ASSERT_FALSE(dialogSaw.empty());
    EXPECT_EQ(dialogSaw.front().message, WM_INITDIALOG);
    EXPECT_EQ(dialogSaw.back().message, WM_DESTROY);
}

TEST_F(DialogRun, TranscriptTellsNameTitleAndResult)
{
    Then([] { EndDialog(DialogInFront(), 7); });
    DialogBox("GOTOFRAME", mainWindow, DialogTestProc);
    ASSERT_EQ(TranscriptOf("dialog").size(), 1U);
    EXPECT_THAT(TranscriptOf("dialog")[0], testing::HasSubstr(R"("name":"GOTOFRAME","text":"Go to frame")"));
    ASSERT_EQ(TranscriptOf("close").size(), 1U);
    EXPECT_THAT(TranscriptOf("close")[0], testing::HasSubstr(R"("name":"GOTOFRAME","result":7)"));
}

TEST_F(DialogRun, EndedAtInitIsNeverSeen)
{
    dialogRule = [](HWND dialog, const SeenMessage& seen) -> LRESULT {
        if (seen.message == WM_INITDIALOG) EndDialog(dialog, 3);
        return 0;
    };
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 3);
    EXPECT_THAT(TranscriptOf("dialog"), IsEmpty());
    EXPECT_THAT(TranscriptOf("close"), IsEmpty());
}

TEST_F(DialogRun, CannotBeMadeGivesMinusOne)
{
    EXPECT_EQ(DialogBox("NOSUCHDIALOG", mainWindow, DialogTestProc), -1);
    SetFault("load dialog DISPLAY", true);
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), -1);
    EXPECT_THAT(dialogSaw, IsEmpty());
    EXPECT_THAT(TranscriptOf("dialog"), IsEmpty());
}

TEST_F(DialogRun, OpensFromWithinADialog)
{
    dialogRule = [](HWND dialog, const SeenMessage& seen) -> LRESULT {
        if (seen == Command(kIdHelp)) return DialogBox("GOTOFRAME", dialog, DialogTestProc);
        if (seen == Command(kIdOk)) EndDialog(dialog, 1);
        return 0;
    };
    Then([] { OperatePress(DialogInFront(), kIdHelp); });
    Then([] {
        EXPECT_EQ(DialogName(DialogInFront()), "GOTOFRAME");
        OperatePress(DialogInFront(), kIdOk);
    });
    Then([] {
        EXPECT_EQ(DialogName(DialogInFront()), "FRAMES");
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(DialogBox("FRAMES", mainWindow, DialogTestProc), 1);
}

TEST_F(DialogRun, EndingTheOuterOneWaitsForTheInner)
{
    HWND outer = nullptr;
    dialogRule = [&outer](HWND dialog, const SeenMessage& seen) -> LRESULT {
        if (seen.message == WM_INITDIALOG && DialogName(dialog) == "FRAMES") outer = dialog;
        if (seen == Command(kIdHelp)) return DialogBox("GOTOFRAME", dialog, DialogTestProc);
        if (seen == Command(kIdOk)) EndDialog(dialog, 8);
        return 0;
    };
    Then([] { OperatePress(DialogInFront(), kIdHelp); });
    Then([&outer] {
        EndDialog(outer, 6);
        EXPECT_EQ(DialogName(DialogInFront()), "GOTOFRAME");
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(DialogBox("FRAMES", mainWindow, DialogTestProc), 6);
}

TEST_F(DialogRun, MayEndOnTheFocusThatShowingGives)
{
    dialogRule = [](HWND dialog, const SeenMessage& seen) -> LRESULT {
        if (seen == Command(1001, kEditFocus)) EndDialog(dialog, 4);
        return 0;
    };
    EXPECT_EQ(DialogBox("GOTOFRAME", mainWindow, DialogTestProc), 4);
}

TEST_F(DialogRun, TheFirstResultStands)
{
    Then([] {
        EndDialog(DialogInFront(), 1);
        EndDialog(DialogInFront(), 2);
    });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 1);
}

TEST_F(DialogRun, QuitEndsItWithoutAResult)
{
    Then([] { PostQuitMessage(0); });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 0);
    EXPECT_EQ(dialogSaw.back().message, WM_DESTROY);
}

TEST_F(DialogRun, EndsWithTheWindowItBelongsTo)
{
    Then([this] { DestroyWindow(mainWindow); });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 0);
    EXPECT_EQ(std::count(dialogSaw.begin(), dialogSaw.end(), SeenMessage{WM_DESTROY, 0, 0}), 1);
}

TEST_F(DialogRun, TimersReachTheProcedure)
{
    dialogRule = [](HWND dialog, const SeenMessage& seen) -> LRESULT {
        if (seen.message == WM_INITDIALOG) SetTimer(dialog, 17, 1000);
        if (seen.message == WM_TIMER) EndDialog(dialog, static_cast<int>(seen.wParam));
        return 0;
    };
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 17);
}

TEST_F(DialogRun, OwnerHearsThatTheDialogWaits)
{
    HWND dialog = nullptr;
    Then([&dialog] { dialog = DialogInFront(); });
    Then([&dialog] {
        EXPECT_THAT(mainSaw, Contains(SeenMessage{WM_ENTERIDLE, 0, reinterpret_cast<LPARAM>(dialog)}));
        EndDialog(dialog, 1);
    });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 1);
}

// --- Keys and the close button ---

TEST_F(DialogRun, ReturnPressesTheDefaultButton)
{
    EndAtCommands();
    Then([] { StrikeKey(DialogInFront()->widget->focusWidget(), *ParseKey("Return")); });
    EXPECT_EQ(DialogBox("GOTOFRAME", mainWindow, DialogTestProc), 101);
}

TEST_F(DialogRun, EscapeSendsCancel)
{
    EndAtCommands();
    Then([] { StrikeKey(DialogInFront()->widget, *ParseKey("Escape")); });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 102);
}

TEST_F(DialogRun, EscapeIsRefusedWhereCancelIsDisabled)
{
    EndAtCommands();
    Then([] {
        EnableDlgItem(DialogInFront(), kIdCancel, false);
        StrikeKey(DialogInFront()->widget, *ParseKey("Escape"));
        EXPECT_NE(DialogInFront(), nullptr);
        EndDialog(DialogInFront(), 55);
    });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 55);
}

TEST_F(DialogRun, F1SendsHelpOnce)
{
    Then([] { StrikeKey(DialogInFront()->widget, *ParseKey("F1")); });
    Then([] { EndDialog(DialogInFront(), 1); });
    DialogBox("DISPLAY", mainWindow, DialogTestProc);
    EXPECT_EQ(std::count(dialogSaw.begin(), dialogSaw.end(), Command(kIdHelp)), 1);
}

TEST_F(DialogRun, ClosingAsksTheProcedureThenCancels)
{
    EndAtCommands();
    Then([] { DialogInFront()->widget->close(); });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 102);
    EXPECT_THAT(dialogSaw, Contains(SeenMessage{WM_CLOSE, 0, 0}));
}

TEST_F(DialogRun, AProcedureMayTellClosingFromCancelling)
{
    dialogRule = [](HWND dialog, const SeenMessage& seen) -> LRESULT {
        if (seen.message != WM_CLOSE) return 0;
        EndDialog(dialog, 0);
        return 1;
    };
    Then([] { DialogInFront()->widget->close(); });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 0);
    EXPECT_THAT(dialogSaw, Not(Contains(Command(kIdCancel))));
}

// --- Place ---

TEST_F(DialogRun, CentresOverTheMainWindow)
{
    dialogRule = [](HWND dialog, const SeenMessage& seen) -> LRESULT {
        if (seen.message == WM_INITDIALOG) CentreDialog(dialog);
        return 0;
    };
    Then([this] {
        const Rect dialog = GetWindowRect(DialogInFront());
        const Rect whole = GetWindowRect(mainWindow);
        EXPECT_NEAR(dialog.left + dialog.right, whole.left + whole.right, 2);
        EXPECT_NEAR(dialog.top + dialog.bottom, whole.top + whole.bottom, 2);
        EndDialog(DialogInFront(), 1);
    });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 1);
}

TEST_F(DialogRun, ModelessDoesNotBlock)
{
    const HWND dialog = CreateModelessDialog("GOTOFRAME", mainWindow, DialogTestProc, 12);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialogSaw.front(), (SeenMessage{WM_INITDIALOG, 0, 12}));
    EXPECT_EQ(DialogInFront(), nullptr);
    EXPECT_TRUE(dialog->widget->isVisible());
    EXPECT_FALSE(dialog->widget->isModal());
    EXPECT_EQ(dialog->widget->windowType(), Qt::Tool) << "above the main window, without a button in the task bar";
    EndDialog(dialog, 1);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(dialogSaw.back().message, WM_DESTROY);
}

// A window that the toolkit took for a child of the main one would be blocked.
TEST_F(DialogRun, ModelessIsUsableBesideAModalDialog)
{
    const HWND beside = CreateModelessDialog("GOTOFRAME", mainWindow, DialogTestProc, 12);
    Then([&] {
        EXPECT_FALSE(beside->widget->windowHandle()->transientParent());
        QKeyEvent press(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier);
        dialogSaw.clear();
        EXPECT_TRUE(QApplication::sendEvent(beside->widget, &press));
        EXPECT_THAT(dialogSaw, Contains(Command(kIdHelp)));
        EndDialog(DialogInFront(), 1);
    });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 1);
    EndDialog(beside, 1);
}

// --- The panel ---

TEST_F(DialogFixture, PanelDocksAlongTheTopAtFullWidth)
{
    const HWND panel = CreateDockedPanel("PANEL", mainWindow, DialogTestProc);
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(dialogSaw.front().message, WM_INITDIALOG);
    const Rect client = GetClientRect(mainWindow);
    EXPECT_EQ(panel->widget->x(), 0);
    EXPECT_EQ(panel->widget->y(), 0);
    EXPECT_EQ(panel->widget->width(), client.Width());
    EXPECT_THAT(mainSaw, Contains(SeenMessage{WM_SIZE, 0, static_cast<LPARAM>(MakeLong(client.right, client.bottom))}));

    // Zoom: plus asks for "line up", minus for "line down", and the position stays.
    SetScrollRange(panel, 310, 1, 16);
    SetScrollPos(panel, 310, 3);
    dialogSaw.clear();
    EXPECT_FALSE(OperateScroll(panel, 310, 4));  // nobody moves it
    EXPECT_FALSE(OperateScroll(panel, 310, 2));
    EXPECT_THAT(dialogSaw, ElementsAre(Scroll(WM_VSCROLL, 310, ScrollCode::kLineUp, 3),
                                       Scroll(WM_VSCROLL, 310, ScrollCode::kLineDown, 3)));

    dialogSaw.clear();
    EXPECT_TRUE(OperatePress(panel, 312, kDirectionUp));
    EXPECT_TRUE(OperatePress(panel, 315, kDirectionLeft));
    EXPECT_TRUE(OperatePress(panel, 107));
    EXPECT_THAT(dialogSaw, ElementsAre(Command(312, 100), Command(315, 103), Command(107)));
}

TEST_F(DialogFixture, PanelThatCannotBeMadeIsNull)
{
    SetFault("load dialog PANEL", true);
    EXPECT_EQ(CreateDockedPanel("PANEL", mainWindow, DialogTestProc), nullptr);
}

// --- Controls by number ---

TEST_F(Controls, UnknownNumberReadsAsNothing)
{
    InDialog([](HWND dialog) {
        SetDlgItemText(dialog, 999, "x");
        SetScrollPos(dialog, 999, 3);
        EXPECT_EQ(ListAdd(dialog, 999, "x"), -1);
        EXPECT_EQ(GetDlgItemText(dialog, 999), "");
        EXPECT_EQ(GetScrollPos(dialog, 999), 0);
        EXPECT_EQ(ListCount(dialog, 999), 0);
        EXPECT_EQ(ListSelection(dialog, 999), -1);
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 999));
        EXPECT_FALSE(DlgItemEnabled(dialog, 999));
        EXPECT_FALSE(HasDlgItem(dialog, 999));
        EXPECT_FALSE(OperatePress(dialog, 999));
        EXPECT_FALSE(OperateText(dialog, 999, "x"));
        EXPECT_FALSE(OperateCheck(dialog, 999, true));
        EXPECT_FALSE(OperatePick(dialog, 999, 0));
        EXPECT_FALSE(OperateScroll(dialog, 999, 0));
        EXPECT_EQ(DlgItemWindow(dialog, 999), nullptr);
    });
}

TEST_F(Controls, TextsComeBackAsTheyWereSet)
{
    InDialog([](HWND dialog) {
        for (const int id : {kLabel, kPush, kTool, kCheck, kEdit, kText}) {
            SetDlgItemText(dialog, id, "12 counts");
            EXPECT_EQ(GetDlgItemText(dialog, id), "12 counts") << id;
        }
        SetDlgItemText(dialog, kLabel,
                       "20 \xB0"
                       "C");  // Latin-1 in, UTF-8 out
        EXPECT_EQ(GetDlgItemText(dialog, kLabel),
                  "20 \xC2\xB0"
                  "C");
        SetDlgItemInt(dialog, kSpin, 123);
        EXPECT_EQ(GetDlgItemText(dialog, kSpin), "123");
        SetDlgItemInt(dialog, kLabel, -4);
        EXPECT_EQ(GetDlgItemText(dialog, kLabel), "-4");
    });
}

TEST_F(Controls, CheckingByTheProcedureSendsNothing)
{
    InDialog([](HWND dialog) {
        EXPECT_THAT(Seen([&] {
                        CheckDlgButton(dialog, kCheck, true);
                        CheckRadioButton(dialog, kFirst, kThird, kThird);
                    }),
                    IsEmpty());
        EXPECT_TRUE(IsDlgButtonChecked(dialog, kCheck));
        EXPECT_FALSE(IsDlgButtonChecked(dialog, kFirst));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, kThird));
        CheckDlgButton(dialog, kThird, false);
        EXPECT_FALSE(IsDlgButtonChecked(dialog, kThird));
    });
}

TEST_F(Controls, ButtonsSendTheirNumber)
{
    InDialog([](HWND dialog) {
        EXPECT_THAT(Seen([&] {
                        EXPECT_TRUE(OperatePress(dialog, kPush));
                        EXPECT_TRUE(OperatePress(dialog, kTool));
                        EXPECT_TRUE(OperateCheck(dialog, kCheck, true));
                        EXPECT_TRUE(OperateCheck(dialog, kCheck, true));  // stands already
                        EXPECT_TRUE(OperateCheck(dialog, kSecond, true));
                    }),
                    ElementsAre(Command(kPush), Command(kTool), Command(kCheck), Command(kSecond)));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, kSecond));
        EXPECT_FALSE(IsDlgButtonChecked(dialog, kFirst));
        EXPECT_FALSE(OperateCheck(dialog, kSecond, false));  // only another one clears it
        EXPECT_FALSE(OperateCheck(dialog, kPush, true));
    });
}

TEST_F(Controls, WhatCannotBeReachedIsRefused)
{
    InDialog([](HWND dialog) {
        EXPECT_THAT(Seen([&] {
                        EXPECT_FALSE(OperatePress(dialog, kDisabled));
                        EXPECT_FALSE(OperatePress(dialog, kHidden));
                        EnableDlgItem(dialog, kEdit, false);
                        EXPECT_FALSE(OperateText(dialog, kEdit, "x"));
                        EnableDlgItem(dialog, kCombo, false);
                        ListAdd(dialog, kCombo, "one");
                        EXPECT_FALSE(OperatePick(dialog, kCombo, 0));
                        EnableDlgItem(dialog, kBar, false);
                        EXPECT_FALSE(OperateScroll(dialog, kBar, 5));
                        EnableDlgItem(dialog, kFourWay, false);
                        EXPECT_FALSE(OperatePress(dialog, kFourWay, kDirectionUp));
                    }),
                    IsEmpty());
        EXPECT_FALSE(DlgItemEnabled(dialog, kDisabled));
        EnableDlgItem(dialog, kDisabled, true);
        EXPECT_TRUE(DlgItemEnabled(dialog, kDisabled));
        EXPECT_TRUE(OperatePress(dialog, kDisabled));
        ShowDlgItem(dialog, kHidden, true);
        EXPECT_TRUE(OperatePress(dialog, kHidden));
    });
}

TEST_F(Controls, TypingSendsEditChanged)
{
    InDialog([](HWND dialog) {
        EXPECT_THAT(Seen([&] { EXPECT_TRUE(OperateText(dialog, kEdit, "abc")); }),
                    Contains(Command(kEdit, kEditChanged)));
        EXPECT_EQ(GetDlgItemText(dialog, kEdit), "abc");
        EXPECT_THAT(Seen([&] { EXPECT_TRUE(OperateText(dialog, kText, "two\nlines")); }),
                    Contains(Command(kText, kEditChanged)));
        EXPECT_EQ(GetDlgItemText(dialog, kText), "two\nlines");
        EXPECT_THAT(Seen([&] { EXPECT_TRUE(OperateText(dialog, kSpin, "250")); }),
                    Contains(Command(kSpin, kEditChanged)));
        EXPECT_EQ(GetDlgItemText(dialog, kSpin), "250");
        EXPECT_FALSE(OperateText(dialog, kSpin, "501"));  // beyond its range
        EXPECT_FALSE(OperateText(dialog, kSpin, "abc"));
        EXPECT_EQ(GetDlgItemText(dialog, kSpin), "250");
    });
}

TEST_F(Controls, ListsKeepOrderAndData)
{
    InDialog([](HWND dialog) {
        for (const int id : {kCombo, kList}) {
            EXPECT_THAT(Seen([&] {
                            EXPECT_EQ(ListAdd(dialog, id, "Signal (Counts)", 0), 0);
                            EXPECT_EQ(ListAdd(dialog, id, "Noise (V)", 10), 1);
                            EXPECT_EQ(ListInsert(dialog, id, 1, "between"), 1);
                            EXPECT_EQ(ListSelection(dialog, id), -1);
                            ListSelect(dialog, id, 2);
                        }),
                        IsEmpty());
            EXPECT_EQ(ListCount(dialog, id), 3);
            EXPECT_EQ(ListSelection(dialog, id), 2);
            EXPECT_EQ(ListItemData(dialog, id, 2), 10);
            EXPECT_EQ(ListItemText(dialog, id, 1), "between");
            ListDelete(dialog, id, 1);
            EXPECT_EQ(ListSelection(dialog, id), 1);
            EXPECT_EQ(ListItemText(dialog, id, 1), "Noise (V)");
            EXPECT_EQ(ListItemText(dialog, id, 7), "");

            ListSelect(dialog, id, 0);
            EXPECT_THAT(Seen([&] { EXPECT_TRUE(OperatePick(dialog, id, 1)); }),
                        ElementsAre(Command(id, kSelectionChanged)));
            EXPECT_EQ(ListSelection(dialog, id), 1);
            EXPECT_FALSE(OperatePick(dialog, id, 2));
            EXPECT_FALSE(OperatePick(dialog, id, -1));
            ListDelete(dialog, id, 1);
            EXPECT_EQ(ListSelection(dialog, id), -1);
            ListClear(dialog, id);
            EXPECT_EQ(ListCount(dialog, id), 0);
        }
    });
}

TEST_F(Controls, ScrollBarsTellTrackThenPosition)
{
    InDialog([](HWND dialog) {
        EXPECT_THAT(Seen([&] { EXPECT_TRUE(OperateScroll(dialog, kBar, 42)); }),
                    ElementsAre(Scroll(WM_HSCROLL, kBar, ScrollCode::kThumbTrack, 42),
                                Scroll(WM_HSCROLL, kBar, ScrollCode::kThumbPosition, 42)));
        EXPECT_EQ(GetScrollPos(dialog, kBar), 42);
        EXPECT_THAT(Seen([&] { EXPECT_TRUE(OperateScroll(dialog, kSlider, 7)); }),
                    ElementsAre(Scroll(WM_VSCROLL, kSlider, ScrollCode::kThumbTrack, 7),
                                Scroll(WM_VSCROLL, kSlider, ScrollCode::kThumbPosition, 7)));
        EXPECT_FALSE(OperateScroll(dialog, kBar, 101));
        EXPECT_FALSE(OperateScroll(dialog, kBar, -1));
        EXPECT_THAT(Seen([&] { SetScrollPos(dialog, kBar, 500); }), IsEmpty());
        EXPECT_EQ(GetScrollPos(dialog, kBar), 100);
        SetScrollRange(dialog, kProgress, 0, 8);
        SetScrollPos(dialog, kProgress, 3);
        EXPECT_EQ(GetScrollPos(dialog, kProgress), 3);
        EXPECT_EQ(GetScrollMax(dialog, kProgress), 8);
    });
}

TEST_F(Controls, StepsLeaveThePositionToTheProcedure)
{
    InDialog([](HWND dialog) {
        auto* bar = ControlAs<QScrollBar>(dialog, kBar);
        SetScrollPos(dialog, kBar, 50);
        EXPECT_THAT(
            Seen([&] {
                bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
                bar->triggerAction(QAbstractSlider::SliderSingleStepSub);
                bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
                bar->triggerAction(QAbstractSlider::SliderPageStepSub);
                bar->triggerAction(QAbstractSlider::SliderToMinimum);
                bar->triggerAction(QAbstractSlider::SliderToMaximum);
            }),
            ElementsAre(
                Scroll(WM_HSCROLL, kBar, ScrollCode::kLineDown, 50), Scroll(WM_HSCROLL, kBar, ScrollCode::kLineUp, 50),
                Scroll(WM_HSCROLL, kBar, ScrollCode::kPageDown, 50), Scroll(WM_HSCROLL, kBar, ScrollCode::kPageUp, 50),
                Scroll(WM_HSCROLL, kBar, ScrollCode::kTop, 50), Scroll(WM_HSCROLL, kBar, ScrollCode::kBottom, 50)));
        EXPECT_EQ(GetScrollPos(dialog, kBar), 50);

        // The procedure's own setting in the midst of it stands.
        dialogRule = [](HWND window, const SeenMessage& seen) -> LRESULT {
            if (seen.message == WM_HSCROLL) SetScrollPos(window, kBar, 73);
            return 1;
        };
        bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        EXPECT_EQ(GetScrollPos(dialog, kBar), 73);
    });
}

TEST_F(Controls, ArrowKeysOfABarAreStepsTowardItsMinimumAndMaximum)
{
    InDialog([](HWND dialog) {
        const auto codeOf = [dialog](const char* key) {
            dialogSaw.clear();
            StrikeKey(ControlOf(dialog, kSlider), *ParseKey(key));
            return dialogSaw.empty() ? -1 : LowWord(dialogSaw.front().wParam);
        };
        EXPECT_EQ(codeOf("Up"), 0);
        EXPECT_EQ(codeOf("Left"), 0);
        EXPECT_EQ(codeOf("Down"), 1);
        EXPECT_EQ(codeOf("Right"), 1);
        EXPECT_EQ(codeOf("PgUp"), 2);
        EXPECT_EQ(codeOf("PgDn"), 3);
        EXPECT_EQ(codeOf("Home"), 6);
        EXPECT_EQ(codeOf("End"), 7);
    });
}

TEST_F(Controls, FocusIsSetAndReadByNumber)
{
    InDialog([](HWND dialog) {
        SetDlgItemText(dialog, kEdit, "abc");
        dialogSaw.clear();
        FocusDlgItem(dialog, kEdit);
        EXPECT_EQ(FocusedDlgItem(dialog), kEdit);
        FocusDlgItem(dialog, kSpin);
        EXPECT_EQ(FocusedDlgItem(dialog), kSpin);
    });
}

TEST_F(DialogRun, FocusOfAnEditIsTold)
{
    Then([] { FocusDlgItem(DialogInFront(), kEdit); });
    Then([] { FocusDlgItem(DialogInFront(), kPush); });
    Then([] { EndDialog(DialogInFront(), 1); });
    DialogBox(kEvery, mainWindow, DialogTestProc);
    EXPECT_THAT(dialogSaw, Contains(Command(kEdit, kEditFocus)));
    EXPECT_THAT(dialogSaw, Contains(Command(kEdit, kEditFocusLost)));
}

TEST_F(Controls, AControlMayBeASurface)
{
    InDialog([](HWND dialog) {
        const HWND plot = DlgItemWindow(dialog, kPlot);
        ASSERT_NE(plot, nullptr);
        EXPECT_EQ(DlgItemWindow(dialog, kPlot), plot);
        EXPECT_TRUE(IsWindow(plot));
    });
    EXPECT_THAT(WindowsOfKind(WindowKind::kControl), IsEmpty());
}

}  // namespace kelvo
