#include "usermodule/user_dialog.h"

#include "laboratory.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/menu.h"
#include "platform/window.h"
#include "resources/menu.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"
#include "ui/status.h"
#include "usermodule/user_menu.h"

#include <QApplication>
#include <QWidget>

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UserDialog : public PictureTest {
  protected:
    UserDialog()
    {
        laboratory = {};
        SetMenu(hWndMain, MainMenu());
        BeginUserMenu();
        SetUserMenuName(900, "&All...");
        SetUserMenuName(901, "&Two...");
        SetUserMenuName(902, "&At once");
        SetUserMenuName(903, "&Undescribed");
        SetUserParmNames(901, "Two of them", "Name:", "", "Number:", "");
        SetUserParmNames(902, "At once", "", "", "", "");
        SetUserParmNames(900, "All of them", "First", "Second", "Third", "Fourth");
    }
    ~UserDialog() override { laboratory = {}; }

    void ExpectOneBox(const std::string& text, const std::string& caption)
    {
        ASSERT_EQ(op->Boxes().size(), 1U);
        EXPECT_EQ(op->Boxes().at(0).text, text);
        EXPECT_EQ(op->Boxes().at(0).caption, caption);
        EXPECT_THAT(laboratory.dispatched, IsEmpty());
        EXPECT_EQ(DialogInFront(), nullptr);
    }
};

TEST_F(UserDialog, ShowsTitleAndPrompts)
{
    op->Do([] {
        HWND dialog = DialogInFront();
        EXPECT_EQ(DialogName(dialog), "USERDLG");
        EXPECT_EQ(GetDlgItemText(dialog, 1790), "First");
        EXPECT_EQ(GetDlgItemText(dialog, 1792), "Second");
        EXPECT_EQ(GetDlgItemText(dialog, 1794), "Third");
        EXPECT_EQ(GetDlgItemText(dialog, 1796), "Fourth");
        for (const int id : {1798, 1800, 1810, 1820}) {
            EXPECT_TRUE(DlgItemEnabled(dialog, id)) << id;
            EXPECT_EQ(GetDlgItemText(dialog, id), "") << id;
        }
        OperatePress(dialog, kIdCancel);
    });
    EXPECT_EQ(RunUserModule(900), 0);
    EXPECT_THAT(op->Texts("dialog", "text"), ElementsAre("All of them"));
    EXPECT_THAT(laboratory.dispatched, IsEmpty());
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(UserDialog, GrowsWithItsPrompts)
{
    const std::string widest(40, 'W');
    BeginUserMenu();
    SetUserMenuName(900, "&All...");
    SetUserParmNames(900, "Wide", widest.c_str(), widest.c_str(), widest.c_str(), widest.c_str());
    op->Do([] {
        const QWidget* const dialog = QApplication::activeModalWidget();
        ASSERT_NE(dialog, nullptr);
        for (const char* name : {"prompt1", "parm1", "prompt4", "parm4", "cancelButton"}) {
            const auto* const control = dialog->findChild<QWidget*>(QLatin1String(name));
            ASSERT_NE(control, nullptr) << name;
            EXPECT_TRUE(dialog->rect().contains(control->geometry())) << name;
            EXPECT_GE(control->width(), control->sizeHint().width()) << name;
        }
        OperatePress(DialogInFront(), kIdCancel);
    });
    EXPECT_EQ(RunUserModule(900), 0);
}

TEST_F(UserDialog, TheFourthFieldIsReadForAll)
{
    op->Do([] {
        HWND dialog = DialogInFront();
        OperateText(dialog, 1798, "a");
        OperateText(dialog, 1800, "b");
        OperateText(dialog, 1810, "c");
        OperateText(dialog, 1820, "d");
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(RunUserModule(900), 1);
    EXPECT_THAT(laboratory.dispatched, ElementsAre(ElementsAre("900", "d", "d", "d", "d")));
}

TEST_F(UserDialog, WithTwoPromptsTheFunctionGetsTheTextOfTheDisabledFourth)
{
    op->Do([] {
        HWND dialog = DialogInFront();
        EXPECT_TRUE(DlgItemEnabled(dialog, 1798));
        EXPECT_FALSE(DlgItemEnabled(dialog, 1800));
        EXPECT_TRUE(DlgItemEnabled(dialog, 1810));
        EXPECT_FALSE(DlgItemEnabled(dialog, 1820));
        EXPECT_EQ(GetDlgItemText(dialog, 1792), "") << "no prompt";
        EXPECT_FALSE(OperateText(dialog, 1820, "d"));
        OperateText(dialog, 1798, "a");
        OperateText(dialog, 1810, "c");
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(RunUserModule(901), 1);
    EXPECT_THAT(laboratory.dispatched, ElementsAre(ElementsAre("901", "", "", "", "")));
}

TEST_F(UserDialog, AFieldTakesFortyCharacters)
{
    const std::string forty(40, 'd');
    op->Do([&] {
        OperateText(DialogInFront(), 1820, forty + "x");
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(RunUserModule(900), 1);
    EXPECT_THAT(laboratory.dispatched, ElementsAre(ElementsAre("900", forty, forty, forty, forty)));
}

TEST_F(UserDialog, AFunctionWithoutPromptsRunsAtOnce)
{
    EXPECT_EQ(RunUserModule(902), 1);
    EXPECT_THAT(laboratory.dispatched, ElementsAre(ElementsAre("902", "", "", "", "")));
    EXPECT_THAT(op->Texts("dialog", "name"), IsEmpty()) << "no dialog is seen";
}

TEST_F(UserDialog, WhatWasTypedBeforeReachesNoOtherFunction)
{
    op->Do([] {
        OperateText(DialogInFront(), 1820, "d");
        OperatePress(DialogInFront(), kIdOk);
    });
    RunUserModule(900);
    RunUserModule(902);
    EXPECT_THAT(laboratory.dispatched.back(), ElementsAre("902", "", "", "", ""));
}

TEST_F(UserDialog, StandsWhileTheFunctionRuns)
{
    laboratory.work = [] { EXPECT_EQ(DialogName(DialogInFront()), "USERDLG"); };
    op->Do([] { OperatePress(DialogInFront(), kIdOk); });
    EXPECT_EQ(RunUserModule(900), 1);
    EXPECT_EQ(DialogInFront(), nullptr);
    ASSERT_EQ(laboratory.dispatched.size(), 1U);
}

TEST_F(UserDialog, HelpAndOtherCommandsDoNothing)
{
    op->Do([] {
        HWND dialog = DialogInFront();
        for (const int id : {kIdHelp, 1798, 3000}) SendMessage(dialog, WM_COMMAND, static_cast<WPARAM>(id), 1);
        EXPECT_EQ(DialogInFront(), dialog);
        OperatePress(dialog, kIdCancel);
    });
    EXPECT_EQ(RunUserModule(900), 0);
    EXPECT_THAT(op->Texts("help", "context"), IsEmpty());
}

TEST_F(UserDialog, ANumberThatNoItemHasIsTold)
{
    EXPECT_EQ(RunUserModule(940), 0);
    ExpectOneBox("Error in User Menu ID number(s).", "User Software Module Error");
}

TEST_F(UserDialog, APromptsNumberThatNoItemHasIsNotReached)
{
    SetUserParmNames(940, "Nobody's", "a", "b", "c", "d");
    EXPECT_EQ(RunUserModule(940), 0);
    ExpectOneBox("Error in User Menu ID number(s).", "User Software Module Error");
}

TEST_F(UserDialog, AnItemWithoutPromptsDeclaredIsTold)
{
    EXPECT_EQ(RunUserModule(903), 0);
    ExpectOneBox("User Menu ID's in SetUserMenuName() & SetUserParmNames() don't match.", "User Software Module Error");
}

TEST_F(UserDialog, AMenuThatIsNotDefinedIsTold)
{
    PutFile(IniFilePath, "[Setup]\nUserMenuDefined=0\n");
    BeginUserMenu();
    SetUserMenuName(900, "&All...");
    SetUserParmNames(900, "All of them", "First", "", "", "");
    EXPECT_EQ(RunUserModule(900), 0);
    ExpectOneBox("User dropdown menu not defined.", "QVF Vantir");
}

TEST_F(UserDialog, ThatCannotBeMadeIsTold)
{
    SetFault("load dialog USERDLG", true);
    EXPECT_EQ(RunUserModule(900), 0);
    SetFault("load dialog USERDLG", false);
    ExpectOneBox("Unable to display dialog", "System Error");
}

TEST_F(UserDialog, AsACommandItLeavesWhatTheFunctionTold)
{
    StatusNote(" Saved before");
    EXPECT_EQ(UserCommand(902), CommandEnd::kResetStatus);
    EXPECT_FALSE(StatusNoteStands()) << "what an earlier command told is over";
    laboratory.work = [] { StatusNote(" Saved now"); };
    EXPECT_EQ(UserCommand(902), CommandEnd::kLeaveStatus);
    EXPECT_EQ(StatusText, " Saved now");
}

}  // namespace
}  // namespace kelvo
