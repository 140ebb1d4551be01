#include "usermodule/user_menu.h"

#include "platform/faults.h"
#include "platform/menu.h"
#include "platform/qt_window.h"
#include "platform/window.h"
#include "resources/menu.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"

#include <QMenu>
#include <QMenuBar>

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kPlaceholder = 180;
constexpr const char* kModuleError = "User Software Module Error";

class UserMenu : public PictureTest {
  protected:
    UserMenu()
    {
        SetMenu(hWndMain, MainMenu());
        BeginUserMenu();
    }

    static QMenu* Menu()
    {
        for (const QAction* action : hWndMain->frame->menuBar()->actions()) {
            if (action->text().contains(QLatin1String("USER"))) return action->menu();
        }
        return nullptr;
    }
    // What the operator sees below it.
    static std::vector<std::string> Items()
    {
        std::vector<std::string> items;
        for (const QAction* action : Menu()->actions()) {
            if (action->isVisible()) items.push_back(action->text().toStdString());
        }
        return items;
    }
    static std::vector<std::string> Tops()
    {
        std::vector<std::string> tops;
        for (int i = 0; i < TopMenuCount(hWndMain); ++i) tops.push_back(TopMenuText(hWndMain, i));
        return tops;
    }
    // The one box since the last call.
    void ExpectBox(const std::string& text, const std::string& caption = kModuleError)
    {
        ASSERT_EQ(op->Boxes().size(), boxes_ + 1) << text;
        EXPECT_EQ(op->Boxes().back().text, text);
        EXPECT_EQ(op->Boxes().back().caption, caption);
        ++boxes_;
    }
    void ExpectNoBox() { EXPECT_EQ(op->Boxes().size(), boxes_); }
    static int Name(std::int32_t id) { return SetUserMenuName(id, ("&Item " + std::to_string(id)).c_str()); }

  private:
    std::size_t boxes_ = 0;
};

TEST_F(UserMenu, IsTakenAwayWhereThereAreNoFunctions)
{
    const std::vector<std::string> before = Tops();
    EXPECT_THAT(before, testing::Contains("&USER"));
    RemoveUserMenu();
    std::vector<std::string> expected = before;
    std::erase(expected, "&USER");
    EXPECT_EQ(Tops(), expected);
    EXPECT_FALSE(GetMenuItem(hWndMain, kPlaceholder));
    RemoveUserMenu();  // at the next declaration
    EXPECT_EQ(Tops(), expected);
    ExpectNoBox();
}

TEST_F(UserMenu, WithoutItNothingIsDeclaredAndNothingSaid)
{
    EXPECT_EQ(SetUserMenuName(0, nullptr), 1);
    EXPECT_EQ(SetUserMenuName(0, nullptr), 0);
    EXPECT_EQ(Name(900), 0);
    EXPECT_EQ(UserMenuCount, 0);
    ExpectNoBox();
}

TEST_F(UserMenu, TheFirstFunctionTakesThePlaceholdersPlace)
{
    EXPECT_THAT(Items(), ElementsAre("(&none)"));
    EXPECT_EQ(SetUserMenuName(917, "&Mean"), 1);
    EXPECT_THAT(Items(), ElementsAre("&Mean"));
    EXPECT_EQ(SetUserMenuName(903, "&Save...\tF99"), 1);
    EXPECT_THAT(Items(), ElementsAre("&Mean", "&Save...\tF99"));
    EXPECT_EQ(UserMenuCount, 2);
    EXPECT_EQ(UserTable[0].MenuId, 917);
    EXPECT_EQ(UserTable[1].MenuId, 903);
    EXPECT_EQ(GetMenuItem(hWndMain, 917)->text, "&Mean");
    ExpectNoBox();
}

TEST_F(UserMenu, ItsItemsSendTheirCommands)
{
    Name(900);
    Name(999);
    for (QAction* action : Menu()->actions()) {
        if (action->isVisible()) action->trigger();
    }
    EXPECT_THAT(Commands(), ElementsAre(900, 999));
}

TEST_F(UserMenu, NumbersAreFrom900To999)
{
    for (const std::int32_t id : {899, 1000, -1, 180, 107}) {
        EXPECT_EQ(Name(id), 0) << id;
        ExpectBox("User Menu ID's must be in the range 900 -> 999.");
    }
    EXPECT_EQ(UserMenuCount, 0);
    EXPECT_EQ(Name(900), 1);
    EXPECT_EQ(Name(999), 1);
    EXPECT_THAT(Items(), ElementsAre("&Item 900", "&Item 999"));
    ExpectNoBox();
}

TEST_F(UserMenu, HoldsTwentyFunctions)
{
    for (std::int32_t id = 900; id < 920; ++id) EXPECT_EQ(Name(id), 1) << id;
    EXPECT_EQ(Name(920), 0);
    ExpectBox("No more than 20 User functions allowed.");
    EXPECT_EQ(UserMenuCount, 20);
    EXPECT_EQ(Items().size(), 20U);
    EXPECT_EQ(Items().back(), "&Item 919");
}

TEST_F(UserMenu, ANewDeclarationBeginsAnew)
{
    Name(900);
    Name(901);
    BeginUserMenu();
    EXPECT_THAT(Items(), ElementsAre("&Item 900", "&Item 901")) << "until something is declared";
    EXPECT_EQ(Name(950), 1) << "the placeholder has gone long since";
    EXPECT_THAT(Items(), ElementsAre("&Item 950"));
    EXPECT_FALSE(GetMenuItem(hWndMain, 900));
    EXPECT_EQ(UserMenuCount, 1);
    EXPECT_EQ(UserTable[1].MenuId, 0);
    ExpectNoBox();
}

TEST_F(UserMenu, ARefusalLeavesTheBeginningToTheNext)
{
    Name(900);
    BeginUserMenu();
    EXPECT_EQ(Name(899), 0);
    ExpectBox("User Menu ID's must be in the range 900 -> 999.");
    EXPECT_THAT(Items(), IsEmpty()) << "emptied all the same";
    EXPECT_EQ(UserMenuCount, 0);
    EXPECT_EQ(Name(901), 1);
    EXPECT_EQ(Name(902), 1);
    EXPECT_THAT(Items(), ElementsAre("&Item 901", "&Item 902"));
}

TEST_F(UserMenu, TheSameNumberTwiceIsTwoItems)
{
    SetUserMenuName(900, "&A");
    SetUserMenuName(900, "&B");
    EXPECT_THAT(Items(), ElementsAre("&A", "&B"));
    BeginUserMenu();
    Name(901);
    EXPECT_THAT(Items(), ElementsAre("&Item 901"));
}

TEST_F(UserMenu, NothingBelowItIsTold)
{
    constexpr MenuEntry kFile[] = {{MenuEntry::Kind::kTop, 0, "&File"}, {MenuEntry::Kind::kItem, 107, "&Load"}};
    SetMenu(hWndMain, kFile);
    hWndMain->frame->menuBar()->addAction(QStringLiteral("USER"));
    EXPECT_EQ(Name(900), 0);
    ExpectBox("User popup menu item doesn't exist");
    EXPECT_EQ(UserMenuCount, 0);
    EXPECT_EQ(SetUserMenuName(0, nullptr), 1);
    EXPECT_THAT(Tops(), ElementsAre("&File"));
}

TEST_F(UserMenu, IsLookedForAmongTwenty)
{
    std::vector<MenuEntry> entries;
    for (int i = 0; i < 20; ++i) entries.push_back({MenuEntry::Kind::kTop, 0, i % 2 == 0 ? "User" : "user"});
    entries.push_back({MenuEntry::Kind::kTop, 0, "USER"});
    SetMenu(hWndMain, entries);
    EXPECT_EQ(Name(900), 0) << "the 21st; others aren't in upper case";
    entries.erase(entries.begin());
    SetMenu(hWndMain, entries);
    EXPECT_EQ(Name(900), 1);
    ExpectNoBox();
}

TEST_F(UserMenu, AnItemThatCannotBeMadeIsTold)
{
    SetFault("append menu item", true);
    EXPECT_EQ(SetUserMenuName(912, "Mean"), 0);
    SetFault("append menu item", false);
    ExpectBox("Unable to load User Menu: Name=Mean ID=912");
    EXPECT_EQ(UserMenuCount, 0);
}

TEST_F(UserMenu, APlaceholderThatStaysIsTold)
{
    SetFault("delete menu item", true);
    EXPECT_EQ(SetUserMenuName(912, "Mean"), 0);
    ExpectBox("Unable to delete dummy UserMenuID", "Vantir Software Error");
    EXPECT_EQ(UserMenuCount, 0);
    SetFault("delete menu item", false);
    EXPECT_EQ(SetUserMenuName(912, "Mean"), 1);
    EXPECT_THAT(Items(), ElementsAre("Mean"));
}

TEST_F(UserMenu, PromptsAreKeptByTheirNumber)
{
    EXPECT_EQ(SetUserParmNames(940, "Title", "one", "", nullptr, "four"), 1);
    EXPECT_EQ(UserParmCount, 1);
    EXPECT_EQ(UserMenuCount, 0) << "no item reaches it";
    const UserRecord& record = UserTable[0];
    EXPECT_EQ(record.ParmId, 940);
    EXPECT_EQ(record.Title, "Title");
    EXPECT_THAT((std::vector{record.Parm1, record.Parm2, record.Parm3, record.Parm4}),
                ElementsAre("one", "", "", "four"));
    ExpectNoBox();
}

TEST_F(UserMenu, PromptsOfTwentyFunctions)
{
    for (const std::int32_t id : {899, 1000}) {
        EXPECT_EQ(SetUserParmNames(id, "", "", "", "", ""), 0);
        ExpectBox("User Menu ID's must be in the range 900 -> 999.");
    }
    for (int i = 0; i < 20; ++i) EXPECT_EQ(SetUserParmNames(980 + i % 20, "t", "a", "b", "c", "d"), 1) << i;
    EXPECT_EQ(SetUserParmNames(900, "t", "a", "b", "c", "d"), 0);
    ExpectBox("No more than 20 User functions allowed");
    EXPECT_EQ(UserParmCount, 20);
    BeginUserMenu();
    EXPECT_EQ(SetUserParmNames(900, "t", "a", "b", "c", "d"), 1);
    EXPECT_EQ(UserParmCount, 1);
    EXPECT_EQ(UserTable[1].ParmId, 0);
}

TEST_F(UserMenu, ANewDeclarationOfPromptsLeavesTheMenu)
{
    Name(900);
    BeginUserMenu();
    SetUserParmNames(900, "t", "a", "", "", "");
    EXPECT_EQ(UserTable[0].MenuId, 900);
    EXPECT_EQ(UserMenuCount, 1);
}

TEST_F(UserMenu, TextsLongerThanTheirFieldsAreCut)
{
    const std::string thirty(30, 'T');
    const std::string forty(40, 'p');
    SetUserParmNames(900, (thirty + "x").c_str(), (forty + "x").c_str(), forty.c_str(), (forty + forty).c_str(), "");
    EXPECT_EQ(UserTable[0].Title, thirty);
    EXPECT_EQ(UserTable[0].Parm1, forty);
    EXPECT_EQ(UserTable[0].Parm2, forty);
    EXPECT_EQ(UserTable[0].Parm3, forty);
}

TEST_F(UserMenu, ACutLeavesNoPartOfACharacter)
{
    const std::string omega = "\xCE\xA9";         // two bytes
    const std::string fraction = "\xE2\x85\x94";  // three
    const std::string degree = "\xB0";            // one, as the system holds it
    SetUserParmNames(900, (std::string(29, 'T') + omega).c_str(), (std::string(39, 'p') + fraction).c_str(),
                     (std::string(38, 'p') + fraction).c_str(), (std::string(40, 'p') + degree).c_str(),
                     (std::string(39, 'p') + degree + degree).c_str());
    EXPECT_EQ(UserTable[0].Title, std::string(29, 'T'));
    EXPECT_EQ(UserTable[0].Parm1, std::string(39, 'p'));
    EXPECT_EQ(UserTable[0].Parm2, std::string(38, 'p'));
    EXPECT_EQ(UserTable[0].Parm3, std::string(40, 'p'));
    EXPECT_EQ(UserTable[0].Parm4, std::string(39, 'p') + degree);
}

TEST_F(UserMenu, WhetherItIsDefinedStandsInTheSettings)
{
    EXPECT_EQ(UserMenuDefined, 1);
    PutFile(IniFilePath, "[Setup]\nUserMenuDefined=0\n");
    BeginUserMenu();
    EXPECT_EQ(UserMenuDefined, 0);
}

}  // namespace
}  // namespace kelvo
