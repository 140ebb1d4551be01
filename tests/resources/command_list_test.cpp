// The list of commands, and what is made from it.
#include "resources/command_list.h"

#include "platform/help_pages.h"
#include "resources/keys_page.h"
#include "resources/menu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAreArray;

// Names and numbers of a header's constants that begin with prefix. One that stands for another isn't read.
std::map<std::string, int> Constants(const std::string& header, const std::string& prefix)
{
    std::ifstream source(std::string(KELVO_SOURCE_ROOT "/resources/") + header);
    const std::regex constant("^constexpr int (" + prefix + R"([A-Z]\w+) = (\d+);)");
    std::map<std::string, int> found;
    std::smatch match;
    for (std::string line; std::getline(source, line);) {
        if (std::regex_search(line, match, constant)) found[match[1]] = std::stoi(match[2]);
    }
    return found;
}

std::string KeyInMenuText(const std::string& text)
{
    const std::size_t tab = text.find('\t');
    return tab == std::string::npos ? "" : text.substr(tab + 1);
}

TEST(CommandList, HasARowForEveryNumber)
{
    const std::map<std::string, int> numbers = Constants("ids.h", "kCmd");
    ASSERT_GT(numbers.size(), 70U);
    const std::set<std::string> ranges = {"kCmdUserFirst", "kCmdUserLast"};
    for (const auto& [name, number] : numbers) {
        const bool listed = CommandRowOf(number) != std::end(kCommandList);
        EXPECT_EQ(listed, !ranges.contains(name)) << name;
    }
}

TEST(CommandList, HasNoRowForNoNumber)
{
    EXPECT_EQ(CommandRowOf(0), std::end(kCommandList));
    EXPECT_EQ(CommandRowOf(99), std::end(kCommandList));
}

TEST(CommandList, EveryNumberOfAMovementIsListed)
{
    for (int id = kCmdZoomPanFirst; id <= kCmdZoomPanLast; ++id) {
        EXPECT_NE(CommandRowOf(id), std::end(kCommandList)) << id;
    }
}

// Help shows the contents for a context without a page, so that a missing one isn't seen.
TEST(HelpContextList, EveryContextHasItsPageOrIsKnownToHaveNone)
{
    const std::map<std::string, int> contexts = Constants("help_contexts.h", "kHelp");
    ASSERT_GT(contexts.size(), 50U);
    for (const auto& [name, context] : contexts) {
        const bool known = std::ranges::count(kHelpWithoutPage, context) == 1;
        EXPECT_NE(HasHelpPage(context), known) << name;
    }
}

TEST(HelpContextList, EveryPageIsAContext)
{
    const std::map<std::string, int> contexts = Constants("help_contexts.h", "kHelp");
    for (const HelpTopic& topic : HelpTopics()) {
        EXPECT_TRUE(std::ranges::any_of(contexts, [&](const auto& named) { return named.second == topic.context; }))
            << topic.context;
    }
}

TEST(HelpContextList, AgreesWithTheHelpWindow)
{
    EXPECT_EQ(kHelpSearch, kHelpSearchPage);
    EXPECT_EQ(kHelpContents, kHelpContentsPage);
    EXPECT_EQ(kHelpOnHelp, kHelpOnHelpPage);
}

TEST(MainMenuTable, HasTheMenusInTheirOrder)
{
    std::vector<std::string> tops;
    for (const MenuEntry& entry : MainMenu()) {
        if (entry.kind == MenuEntry::Kind::kTop) tops.emplace_back(entry.text);
    }
    const std::vector<std::string> expected = {"&File",     "&Setup", "&Calibration", "&Image",
                                               "&Analysis", "&View",  "&USER",        "&Help"};
    EXPECT_THAT(tops, ElementsAreArray(expected));
}

std::vector<int> ItemsWith(MenuEntry::Check check)
{
    std::vector<int> items;
    for (const MenuEntry& entry : MainMenu()) {
        if (entry.kind == MenuEntry::Kind::kItem && entry.check == check) items.push_back(entry.id);
    }
    return items;
}

TEST(MainMenuTable, ChecksWhatIsOnOrOff)
{
    EXPECT_THAT(ItemsWith(MenuEntry::Check::kBox),
                testing::ElementsAre(141, 151, 2253, 2053, 2054, 2043, 2006, 2007, 2008));
}

TEST(MainMenuTable, OneColourMapAndOneThemeAreChosen)
{
    EXPECT_THAT(ItemsWith(MenuEntry::Check::kRadio), testing::ElementsAre(143, 144, 145, 2044, 2045, 2046));
}

// The letter that an item underlines, in lower case; 0 without one.
char MnemonicOf(std::string_view text)
{
    const std::size_t mark = text.find('&');
    return mark == std::string_view::npos ? '\0' : static_cast<char>(std::tolower(text.at(mark + 1)));
}

// The classic items keep their letters though some of them share one; numbers from 2000 on are those that came later.
void FindClashes(std::vector<const MenuEntry*>& menu, std::vector<std::string>& clashes)
{
    constexpr int kFirstLater = 2000;
    std::map<char, int> uses;
    for (const MenuEntry* entry : menu) ++uses[MnemonicOf(entry->text)];
    for (const MenuEntry* entry : menu) {
        const char letter = MnemonicOf(entry->text);
        const bool isLater = entry->id >= kFirstLater || entry->kind == MenuEntry::Kind::kSubmenu;
        if (isLater && letter != 0 && uses[letter] > 1) clashes.emplace_back(entry->text);
    }
    menu.clear();
}

TEST(MainMenuTable, NoLaterItemTakesALetterInUseInItsMenu)
{
    std::vector<std::string> clashes;
    std::vector<const MenuEntry*> top;
    std::vector<const MenuEntry*> submenu;
    bool inSubmenu = false;
    for (const MenuEntry& entry : MainMenu()) {
        if (entry.kind == MenuEntry::Kind::kTop) {
            FindClashes(top, clashes);
            continue;
        }
        if (entry.kind == MenuEntry::Kind::kSubmenuEnd) FindClashes(submenu, clashes);
        if (entry.kind == MenuEntry::Kind::kSubmenuEnd) inSubmenu = false;
        (inSubmenu ? submenu : top).push_back(&entry);
        if (entry.kind == MenuEntry::Kind::kSubmenu) inSubmenu = true;
    }
    FindClashes(top, clashes);
    EXPECT_THAT(clashes, testing::IsEmpty());
}

// The words of a text as the page shows them.
std::string Shown(std::string text)
{
    text = text.substr(0, text.find('\t'));
    std::erase(text, '&');
    while (text.ends_with('.') || text.ends_with(' ')) text.pop_back();
    return text;
}

TEST(KeysPage, TellsEveryKeyOnceWithWhatItDoes)
{
    const std::string page = KeysPageTables();
    int keys = 0;
    for (const CommandRow& row : kCommandList) {
        const std::string key(row.kind == CommandRow::Kind::kKeyAlone ? row.key : KeyOf(row));
        if (key.empty()) continue;
        ++keys;
        const std::string cell = "<td><b>" + key + "</b></td><td>";
        const std::size_t place = page.find(cell);
        ASSERT_NE(place, std::string::npos) << key;
        EXPECT_EQ(page.find(cell, place + 1), std::string::npos) << key;
        const std::string told = page.substr(place, page.find("</tr>", place) - place);
        EXPECT_NE(told.find(Shown(std::string(row.text))), std::string::npos) << told;
    }
    EXPECT_GT(keys, 44);
}

TEST(KeysPage, StandsInTheOrderOfTheMenu)
{
    const std::string page = KeysPageTables();
    std::size_t next = 0;
    for (const char* const heading :
         {"File", "Setup", "Calibration", "Image", "Analysis", "View", "Help", "The picture", "Zoom and pan",
          "Place of the picture in the window", "Regions, while their window is open", "The control panel",
          "The mouse, over the picture"}) {
        const std::size_t place = page.find("<h2>" + std::string(heading) + "</h2>");
        ASSERT_NE(place, std::string::npos) << heading;
        EXPECT_EQ(page.find("<h2>", next), place) << heading;
        next = place + 1;
    }
    EXPECT_EQ(page.find("<h2>", next), std::string::npos) << page;
}

TEST(KeysPage, LeadsToThePagesThatThereAre)
{
    const std::string page = KeysPageTables();
    EXPECT_NE(page.find("<td><b>F3</b></td><td><a href=\"257.html\">Save image</a></td>"), std::string::npos);
    EXPECT_NE(page.find("<td><b>Shift+F8</b></td><td><a href=\"369.html\">Histogram</a></td>"), std::string::npos);
    EXPECT_NE(page.find("<td><b>+</b></td><td>Zoom in by one step, up to 16</td>"), std::string::npos);
}

TEST(MainMenuTable, LeavesOutWhatHasNoItem)
{
    std::set<int> items;
    for (const MenuEntry& entry : MainMenu()) items.insert(entry.id);
    for (const int id : {124, 155, 156, 200, 217, 146, 21}) EXPECT_FALSE(items.contains(id)) << id;
}

// The keys, written down by hand.
TEST(AcceleratorTable, HasEveryKeyOnce)
{
    const std::map<std::string, int> expected = {{"Shift+F3", 103},
                                                 {"F3", 106},
                                                 {"F6", 107},
                                                 {"F4", 108},
                                                 {"F5", 109},
                                                 {"Shift+F4", 113},
                                                 {"F7", 114},
                                                 {"Shift+F7", 115},
                                                 {"Shift+PrintScrn", 117},
                                                 {"Ctrl+Q", 119},
                                                 {"Ctrl+D", 120},
                                                 {"Ctrl+V", 121},
                                                 {"Ctrl+I", 122},
                                                 {"Ctrl+C", 130},
                                                 {"F2", 140},
                                                 {"F9", 141},
                                                 {"F8", 151},
                                                 {"F10", 155},
                                                 {"F11", 156},
                                                 {"Shift+F8", 160},
                                                 {"F1", 191},
                                                 {"+", 200},
                                                 {"-", 201},
                                                 {"Right", 202},
                                                 {"Left", 203},
                                                 {"Up", 204},
                                                 {"Down", 205},
                                                 {"Home", 206},
                                                 {"End", 207},
                                                 {"PgUp", 208},
                                                 {"PgDn", 209},
                                                 {"Shift+Right", 210},
                                                 {"Shift+Left", 211},
                                                 {"Shift+Up", 212},
                                                 {"Shift+Down", 213},
                                                 {"Shift+End", 214},
                                                 {"Shift+Home", 215},
                                                 {"Shift+PgUp", 216},
                                                 {"Shift+PgDn", 217},
                                                 {"Ctrl+G", 2000},
                                                 {"Ctrl+P", 2001},
                                                 {"Ctrl+.", 2002},
                                                 {"Ctrl+Shift+C", 2003},
                                                 {"Ctrl+F", 2004},
                                                 {"Ctrl+0", 2040},
                                                 {"Ctrl+1", 2041},
                                                 {"Ctrl+5", 2042},
                                                 {"Ctrl+Z", 2050},
                                                 {"Ctrl+Shift+Z", 2051},
                                                 {"Space", 2052},
                                                 {"Ctrl+B", 2053},
                                                 {"Ctrl+L", 2054},
                                                 {"Ctrl+Up", 2055},
                                                 {"Ctrl+Down", 2056},
                                                 {"Ctrl+Shift+G", 2057},
                                                 {"Ctrl+R", 2060},
                                                 {"Ctrl+T", 2061},
                                                 {"Ctrl+M", 2062},
                                                 {"Ctrl+E", 2200},
                                                 {"Ctrl+Shift+R", 2210},
                                                 {"Del", 2211},
                                                 {"Ctrl+Right", 2212},
                                                 {"Ctrl+Left", 2213}};
    std::map<std::string, int> keys;
    for (const Accelerator& accelerator : MainAccelerators()) {
        EXPECT_TRUE(keys.emplace(accelerator.key, accelerator.id).second) << accelerator.key;
    }
    EXPECT_EQ(keys, expected);
}

TEST(AcceleratorTable, AgreesWithTheTextsOfTheMenu)
{
    for (const MenuEntry& entry : MainMenu()) {
        const auto key = std::ranges::find(MainAccelerators(), entry.id, &Accelerator::id);
        const bool has = entry.id != 0 && key != MainAccelerators().end();
        EXPECT_EQ(KeyInMenuText(std::string(entry.text)), has ? std::string(key->key) : "") << entry.text;
    }
}

}  // namespace
}  // namespace kelvo
