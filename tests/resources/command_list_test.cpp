// The list of commands, and what is made from it.
#include "resources/command_list.h"

#include "platform/help_pages.h"
#include "resources/menu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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
    const std::set<std::string> ranges = {"kCmdUserFirst", "kCmdUserLast", "kCmdRecentFirst"};
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
                                               "&Analysis", "&View",  "&Help"};
    EXPECT_THAT(tops, ElementsAreArray(expected));
}

TEST(MainMenuTable, ChecksWhatIsOnOrOff)
{
    std::vector<int> checkable;
    for (const MenuEntry& entry : MainMenu()) {
        if (entry.checkable) checkable.push_back(entry.id);
    }
    EXPECT_THAT(checkable, testing::ElementsAre(141, 143, 144, 145, 151, 2053, 2054, 2006, 2007, 2008));
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
                                                 {"Ctrl+5", 2042}};
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
