#include "platform/menu.h"

#include "platform/faults.h"
#include "platform/front.h"
#include "platform/qt_window.h"
#include "window_fixture.h"

#include <QActionGroup>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QToolTip>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using ::testing::ElementsAre;
using Kind = MenuEntry::Kind;
using Check = MenuEntry::Check;

constexpr MenuEntry kMenu[] = {
    {Kind::kTop, 0, "&File"},
    {Kind::kItem, 106, "&Save image...\tF3", "save"},
    {Kind::kItem, 107, "&Load image...\tF6", "load"},
    {Kind::kSeparator, 0, ""},
    {Kind::kList, 2100, ""},
    {Kind::kItem, 119, "E&xit\tCtrl+Q"},
    {Kind::kTop, 0, "&Image"},
    {Kind::kItem, 151, "&Image cursor\tF8", "", Check::kBox},
    {.kind = Kind::kItem, .id = 160, .text = "&Histogram...", .enabled = false, .tip = "Not there yet"},
    {Kind::kItem, 143, "&Normal gray", "", Check::kRadio},
    {Kind::kItem, 144, "&Inverted gray", "", Check::kRadio},
    {Kind::kSeparator, 0, ""},
    {Kind::kItem, 146, "&Light", "", Check::kRadio},
};
constexpr Accelerator kAccelerators[] = {
    {"F3", 106},         {"Shift+F3", 103},        {"Ctrl+Q", 119}, {"+", 200},
    {"-", 201},          {"Right", 202},           {"PgUp", 208},   {"Ctrl+C", 130},
    {"Shift+PgDn", 217}, {"Shift+PrintScrn", 117}, {"F10", 155}};

HWND WindowWithMenu()
{
    HWND window = ShowRecordingWindow();
    SetMenu(window, kMenu);
    SetAccelerators(window, kAccelerators);
    seenMessages.clear();
    return window;
}

QMenu* TopMenu(HWND window, int position)
{
    return window->frame->menuBar()->actions().at(position)->menu();
}

std::vector<std::string> Shown(QMenu* menu)
{
    std::vector<std::string> texts;
    for (const QAction* action : menu->actions()) {
        if (action->isVisible()) texts.push_back(action->isSeparator() ? "---" : action->text().toStdString());
    }
    return texts;
}

TEST(Menu, ShowsItsTable)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    EXPECT_EQ(TopMenuCount(window), 2);
    EXPECT_EQ(TopMenuText(window, 0), "&File");
    EXPECT_EQ(TopMenuText(window, 1), "&Image");
    EXPECT_EQ(TopMenuText(window, 2), "");
    EXPECT_EQ(TopMenuText(window, -1), "");
    EXPECT_THAT(Shown(TopMenu(window, 0)),
                ElementsAre("&Save image...\tF3", "&Load image...\tF6", "---", "E&xit\tCtrl+Q"));
    EXPECT_EQ(GetMenuItem(window, 106)->text, "&Save image...\tF3");
    EXPECT_TRUE(GetMenuItem(window, 106)->enabled);
    EXPECT_FALSE(GetMenuItem(window, 160)->enabled);
    EXPECT_FALSE(GetMenuItem(window, 105));
}

TEST(Menu, ChangesAreToldToTheTranscript)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    EXPECT_TRUE(SetMenuText(window, 106, "&Turn off"));
    EXPECT_TRUE(CheckMenuItem(window, 151, true));
    EXPECT_TRUE(EnableMenuItem(window, 160, true));
    EXPECT_FALSE(SetMenuText(window, 105, "none"));
    EXPECT_FALSE(CheckMenuItem(window, 105, true));
    EXPECT_FALSE(EnableMenuItem(window, 105, true));
    EXPECT_EQ(GetMenuItem(window, 106)->text, "&Turn off");
    EXPECT_TRUE(GetMenuItem(window, 151)->checked);
    EXPECT_TRUE(GetMenuItem(window, 160)->enabled);
    EXPECT_THAT(op.Texts("menu", "text"), ElementsAre("&Turn off", "&Image cursor\tF8", "&Histogram..."));
}

TEST(Menu, DeletedItemIsGone)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    EXPECT_TRUE(DeleteMenuItem(window, 106));
    EXPECT_FALSE(DeleteMenuItem(window, 106));
    EXPECT_FALSE(GetMenuItem(window, 106));
    EXPECT_THAT(Shown(TopMenu(window, 0)), ElementsAre("&Load image...\tF6", "---", "E&xit\tCtrl+Q"));
}

TEST(Menu, ADeletedItemComesBackToItsPlace)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    const std::vector<std::string> before = Shown(TopMenu(window, 0));
    SetMenuText(window, 107, "&Load...");
    EXPECT_FALSE(RestoreMenuItem(window, 107)) << "it stands";
    ASSERT_TRUE(DeleteMenuItem(window, 107));
    EXPECT_FALSE(DeleteMenuItem(window, 107));
    EXPECT_FALSE(GetMenuItem(window, 107));
    ASSERT_TRUE(RestoreMenuItem(window, 107));
    EXPECT_FALSE(RestoreMenuItem(window, 107));
    EXPECT_FALSE(RestoreMenuItem(window, 999));
    EXPECT_EQ(GetMenuItem(window, 107)->text, "&Load...");
    EXPECT_TRUE(GetMenuItem(window, 107)->enabled);
    EnableMenuItem(window, 107, false);
    ASSERT_TRUE(DeleteMenuItem(window, 107) && RestoreMenuItem(window, 107));
    EXPECT_FALSE(GetMenuItem(window, 107)->enabled);
    EnableMenuItem(window, 107, true);
    std::vector<std::string> wanted = before;
    wanted.at(1) = "&Load...";
    EXPECT_EQ(Shown(TopMenu(window, 0)), wanted);
    TopMenu(window, 0)->actions().at(1)->trigger();
    EXPECT_THAT(SeenCommands(), ElementsAre(107));
}

TEST(Menu, ChosenItemSendsItsCommand)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    TopMenu(window, 0)->actions().at(1)->trigger();
    ASSERT_EQ(Seen(WM_COMMAND).size(), 1U);
    EXPECT_EQ(Seen(WM_COMMAND)[0].wParam, 107U);
    EXPECT_EQ(Seen(WM_COMMAND)[0].lParam, 0);
}

TEST(Menu, CheckMarkIsTheLogicsAlone)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    TopMenu(window, 1)->actions().at(0)->trigger();
    EXPECT_THAT(SeenCommands(), ElementsAre(151));
    EXPECT_FALSE(GetMenuItem(window, 151)->checked);
    EXPECT_FALSE(TopMenu(window, 1)->actions().at(0)->isChecked());
}

TEST(Menu, RadioItemsThatStandTogetherAreOneChoice)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    const QList<QAction*> image = TopMenu(window, 1)->actions();
    const QActionGroup* const maps = image.at(2)->actionGroup();
    ASSERT_NE(maps, nullptr);
    EXPECT_TRUE(maps->isExclusive());
    EXPECT_EQ(image.at(3)->actionGroup(), maps);
    EXPECT_NE(image.at(5)->actionGroup(), maps) << "a line parts them";
    EXPECT_EQ(image.at(0)->actionGroup(), nullptr);
}

TEST(Menu, TheMarkOfARadioItemIsTheLogicsToo)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    CheckMenuItem(window, 143, true);
    const QList<QAction*> image = TopMenu(window, 1)->actions();
    image.at(3)->trigger();
    EXPECT_THAT(SeenCommands(), ElementsAre(144));
    EXPECT_TRUE(image.at(2)->isChecked()) << "the command changed nothing";
    EXPECT_FALSE(image.at(3)->isChecked());

    CheckMenuItem(window, 143, false);
    CheckMenuItem(window, 144, true);
    EXPECT_FALSE(image.at(2)->isChecked());
    EXPECT_TRUE(image.at(3)->isChecked());
}

TEST(Menu, AGreyItemTellsWhy)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    OperateKey("Alt+i");
    QMenu* const menu = TopMenu(window, 1);
    ASSERT_EQ(QApplication::activePopupWidget(), menu);
    QAction* const grey = menu->actions().at(1);
    const QPoint place = menu->actionGeometry(grey).center();
    QHelpEvent rest(QEvent::ToolTip, place, menu->mapToGlobal(place));
    QApplication::sendEvent(menu, &rest);
    EXPECT_EQ(QToolTip::text(), "Not there yet");
    QToolTip::hideText();
    menu->close();
    grey->trigger();
    EXPECT_THAT(SeenCommands(), testing::IsEmpty());
}

TEST(Menu, LinesThatComeAndGoStandAtTheirPlace)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    const std::vector<std::string> files = {"&1 a.img", "&2 b && c.seq"};
    SetMenuList(window, 2100, files);
    EXPECT_THAT(Shown(TopMenu(window, 0)), ElementsAre("&Save image...\tF3", "&Load image...\tF6", "---", "&1 a.img",
                                                       "&2 b && c.seq", "---", "E&xit\tCtrl+Q"));
    TopMenu(window, 0)->actions().at(4)->trigger();
    EXPECT_THAT(SeenCommands(), ElementsAre(2101));
    SetMenuList(window, 2100, {});
    EXPECT_THAT(Shown(TopMenu(window, 0)),
                ElementsAre("&Save image...\tF3", "&Load image...\tF6", "---", "E&xit\tCtrl+Q"));
    EXPECT_FALSE(GetMenuItem(window, 2100));
}

TEST(Menu, SubmenuHoldsWhatStandsInItAndTellsThatItOpens)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    constexpr MenuEntry kNested[] = {
        {.kind = Kind::kTop, .text = "&Analysis"},
        {.kind = Kind::kSubmenu, .text = "&Scripts"},
        {.kind = Kind::kItem, .id = 2251, .text = "&Window"},
        {.kind = Kind::kList, .id = 2300, .text = {}},
        {.kind = Kind::kSubmenuEnd, .text = {}},
        {.kind = Kind::kItem, .id = 160, .text = "&Last"},
    };
    SetMenu(window, kNested);
    seenMessages.clear();
    EXPECT_THAT(Shown(TopMenu(window, 0)), ElementsAre("&Scripts", "&Last"));
    QMenu* const scripts = TopMenu(window, 0)->actions().at(0)->menu();
    ASSERT_NE(scripts, nullptr);
    SetMenuList(window, 2300, std::vector<std::string>{"&1 a", "&2 b"});
    SetMenuList(window, 2400, std::vector<std::string>{"there is no such list"});
    scripts->actions().at(2)->trigger();
    EXPECT_THAT(SeenCommands(), ElementsAre(2301));
    Q_EMIT scripts->aboutToShow();
    EXPECT_EQ(seenMessages.back().message, WM_INITMENUPOPUP);
    EXPECT_EQ(seenMessages.back().wParam, 2300U);
    EXPECT_EQ(TopMenuCount(window), 1);
}

TEST(Menu, TopMenuCanBeTakenAway)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    EXPECT_FALSE(DeleteTopMenu(window, 2));
    EXPECT_TRUE(DeleteTopMenu(window, 1));
    EXPECT_EQ(TopMenuCount(window), 1);
    EXPECT_FALSE(GetMenuItem(window, 151));
    EXPECT_TRUE(GetMenuItem(window, 106));
}

TEST(Menu, TopMenuCanBeEmptiedButForOneItemAndFilled)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    ClearTopMenu(window, 0, 107);
    EXPECT_THAT(Shown(TopMenu(window, 0)), ElementsAre("&Load image...\tF6"));
    EXPECT_FALSE(GetMenuItem(window, 106));
    EXPECT_FALSE(GetMenuItem(window, 119));
    EXPECT_TRUE(GetMenuItem(window, 107));
    EXPECT_TRUE(AppendMenuItem(window, 0, 900, "&Mean"));
    EXPECT_TRUE(AppendMenuItem(window, 0, 107, "&Another of that number"));
    EXPECT_EQ(GetMenuItem(window, 900)->text, "&Mean");
    TopMenu(window, 0)->actions().back()->trigger();
    TopMenu(window, 0)->actions().at(1)->trigger();
    EXPECT_THAT(SeenCommands(), ElementsAre(107, 900));
    ClearTopMenu(window, 0, 0);
    EXPECT_TRUE(TopMenu(window, 0)->actions().isEmpty());
    EXPECT_FALSE(GetMenuItem(window, 900));
    EXPECT_TRUE(GetMenuItem(window, 151)) << "of another menu";
}

TEST(Menu, NothingIsAppendedWhereNothingOpensOrTheMachineRefuses)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    window->frame->menuBar()->addAction(QStringLiteral("Alone"));
    EXPECT_TRUE(TopMenuOpens(window, 1));
    for (const int position : {2, 3, -1}) {
        EXPECT_FALSE(TopMenuOpens(window, position)) << position;
        EXPECT_FALSE(AppendMenuItem(window, position, 900, "&Mean")) << position;
        ClearTopMenu(window, position, 0);
    }
    SetFault("append menu item", true);
    EXPECT_FALSE(AppendMenuItem(window, 0, 900, "&Mean"));
    SetFault("append menu item", false);
    EXPECT_FALSE(GetMenuItem(window, 900));
    SetFault("delete menu item", true);
    EXPECT_FALSE(DeleteMenuItem(window, 106));
    SetFault("delete menu item", false);
    EXPECT_TRUE(GetMenuItem(window, 106));
    EXPECT_FALSE(AppendMenuItem(nullptr, 0, 900, "&Mean"));
}

TEST(Menu, OpensByKeyAndTellsWhatIsHighlighted)
{
    TestOperator op;
    WindowWithMenu();
    EXPECT_TRUE(OperateKey("Alt+f"));
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    ASSERT_FALSE(Seen(WM_MENUSELECT).empty());
    EXPECT_EQ(Seen(WM_MENUSELECT).back().wParam, 106U);
    OperateKey("Down");
    EXPECT_EQ(Seen(WM_MENUSELECT).back().wParam, 107U);
    OperateKey("Return");
    EXPECT_THAT(SeenCommands(), ElementsAre(107));
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST(Menu, KeyF1ArmsHelpThenChoosesTheItem)
{
    TestOperator op;
    WindowWithMenu();
    OperateKey("Alt+f");
    OperateKey("Down");
    seenMessages.clear();
    bool down = false;
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message == WM_ENTERIDLE) down = KeyIsDown(Key::kF1);
    };
    OperateKey("F1");
    EXPECT_TRUE(down);
    EXPECT_FALSE(KeyIsDown(Key::kF1));
    ASSERT_EQ(Seen(WM_ENTERIDLE).size(), 1U);
    EXPECT_EQ(Seen(WM_ENTERIDLE)[0].wParam, 2U);
    EXPECT_THAT(SeenCommands(), ElementsAre(107));
    // In that order.
    const auto place = [](std::uint32_t message) {
        return std::ranges::find(seenMessages, message, &SeenMessage::message) - seenMessages.begin();
    };
    EXPECT_LT(place(WM_ENTERIDLE), place(WM_COMMAND));
}

TEST(Accelerators, SendTheirCommand)
{
    TestOperator op;
    WindowWithMenu();
    for (const char* key : {"F3", "Shift+F3", "Ctrl+Q", "Right", "PgUp", "Shift+PgDn", "Shift+PrintScrn", "F10"}) {
        EXPECT_TRUE(OperateKey(key)) << key;
    }
    EXPECT_THAT(SeenCommands(), ElementsAre(106, 103, 119, 202, 208, 217, 117, 155));
    for (const SeenMessage& seen : Seen(WM_COMMAND)) EXPECT_EQ(seen.lParam, 0);
}

TEST(Accelerators, OtherKeysReachTheWindow)
{
    TestOperator op;
    WindowWithMenu();
    EXPECT_TRUE(OperateKey("F5"));
    EXPECT_TRUE(OperateKey("Ctrl+F3"));
    EXPECT_TRUE(OperateKey("Return"));
    EXPECT_FALSE(OperateKey("NoSuchKey"));
    EXPECT_TRUE(SeenCommands().empty());
    ASSERT_EQ(Seen(WM_KEYDOWN).size(), 1U);
    EXPECT_EQ(Seen(WM_KEYDOWN)[0].wParam, static_cast<WPARAM>(Key::kReturn));
}

void Press(QWidget* widget, int key, Qt::KeyboardModifiers modifiers, const QString& text, bool repeats)
{
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text, repeats);
    QCoreApplication::sendEvent(widget, &press);
}

TEST(Accelerators, PlusAndMinusWorkOnTheKeypadAndWithShift)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    Press(window->widget, Qt::Key_Plus, Qt::NoModifier, "+", false);
    Press(window->widget, Qt::Key_Plus, Qt::ShiftModifier, "+", false);
    Press(window->widget, Qt::Key_Plus, Qt::KeypadModifier, "+", false);
    Press(window->widget, Qt::Key_Minus, Qt::KeypadModifier, "-", false);
    Press(window->widget, Qt::Key_Plus, Qt::ControlModifier, "", false);
    EXPECT_THAT(SeenCommands(), ElementsAre(200, 200, 200, 201));
}

TEST(Accelerators, HeldKeySendsAgain)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    Press(window->widget, Qt::Key_Right, Qt::NoModifier, {}, false);
    Press(window->widget, Qt::Key_Right, Qt::NoModifier, {}, true);
    Press(window->widget, Qt::Key_Right, Qt::NoModifier, {}, true);
    EXPECT_THAT(SeenCommands(), ElementsAre(202, 202, 202));
}

TEST(Accelerators, ComeBeforeAControlButNotBeforeTyping)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    QCheckBox box(window->widget);
    box.show();
    Press(&box, Qt::Key_PageUp, Qt::NoModifier, {}, false);
    Press(&box, Qt::Key_Right, Qt::NoModifier, {}, false);
    EXPECT_THAT(SeenCommands(), ElementsAre(208, 202));

    seenMessages.clear();
    QLineEdit edit(window->widget);
    edit.show();
    Press(&edit, Qt::Key_Plus, Qt::NoModifier, "+", false);
    Press(&edit, Qt::Key_Right, Qt::NoModifier, {}, false);
    Press(&edit, Qt::Key_C, Qt::ControlModifier, {}, false);
    EXPECT_EQ(edit.text(), "+");
    EXPECT_TRUE(SeenCommands().empty());
    Press(&edit, Qt::Key_F3, Qt::NoModifier, {}, false);
    EXPECT_THAT(SeenCommands(), ElementsAre(106));
}

TEST(Accelerators, LeaveSpaceToTheControlThatHasTheKeyboard)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    constexpr Accelerator kSpace[] = {{"Space", 300}};
    SetAccelerators(window, kSpace);
    QCheckBox box(window->widget);
    box.show();
    Press(&box, Qt::Key_Space, Qt::NoModifier, " ", false);
    EXPECT_TRUE(box.isDown());
    EXPECT_TRUE(SeenCommands().empty());
    Press(window->widget, Qt::Key_Space, Qt::NoModifier, " ", false);
    EXPECT_THAT(SeenCommands(), ElementsAre(300));
}

TEST(Accelerators, LeaveItsKeysToTheListThatHasTheKeyboard)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    constexpr Accelerator kKeys[] = {{"Up", 204},   {"Down", 205}, {"Left", 203},
                                     {"PgDn", 209}, {"End", 209},  {"Shift+Down", 213}};
    SetAccelerators(window, kKeys);
    QComboBox list(window->widget);
    list.addItems({"counts", "volts", "degrees"});
    list.show();
    Press(&list, Qt::Key_Down, Qt::NoModifier, "", false);
    EXPECT_EQ(list.currentIndex(), 1);
    Press(&list, Qt::Key_Up, Qt::NoModifier, "", false);
    EXPECT_EQ(list.currentIndex(), 0);
    for (const int key : {Qt::Key_Left, Qt::Key_PageDown, Qt::Key_End}) Press(&list, key, Qt::NoModifier, "", false);
    EXPECT_TRUE(SeenCommands().empty());
    Press(&list, Qt::Key_Down, Qt::ShiftModifier, "", false);
    Press(window->widget, Qt::Key_Down, Qt::NoModifier, "", false);
    EXPECT_THAT(SeenCommands(), ElementsAre(213, 205));
}

TEST(Accelerators, AreSilentWhileABoxIsInFront)
{
    TestOperator op;
    HWND window = WindowWithMenu();
    op.AtNextBox([](const FrontBox&) { OperateKey("F3"); });
    MessageBox(window, "text", "caption");
    EXPECT_TRUE(SeenCommands().empty());
}

}  // namespace
}  // namespace kelvo
