// Numbers that have a name: no string of the status line, help context or command stands as a literal where it is used.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Without comments and texts: what remains is code, and no quoted number is taken for one.
std::string CodeOf(const std::string& source)
{
    static const std::regex kNoCode(R"re(//[^\n]*|"(\\.|[^"\\\n])*"|'(\\.|[^'\\\n])')re");
    return std::regex_replace(source, kNoCode, "");
}

// The arguments of each call of a function, with what its own brackets hold.
std::vector<std::string> ArgumentsOf(const std::string& code, std::string_view function)
{
    std::vector<std::string> calls;
    const std::string opening = std::string(function) + "(";
    for (std::size_t at = code.find(opening); at != std::string::npos; at = code.find(opening, at + 1)) {
        if (at > 0 && (std::isalnum(static_cast<unsigned char>(code[at - 1])) || code[at - 1] == '_')) continue;
        const std::size_t start = at + opening.size();
        int depth = 1;
        std::size_t end = start;
        for (; end < code.size() && depth > 0; ++end) depth += code[end] == '(' ? 1 : code[end] == ')' ? -1 : 0;
        calls.push_back(code.substr(start, end - start - 1));
    }
    return calls;
}

// The arguments, parted at the commas that stand in no inner bracket.
std::vector<std::string> Parted(const std::string& arguments)
{
    std::vector<std::string> parts(1);
    int depth = 0;
    for (const char c : arguments) {
        depth += c == '(' || c == '{' ? 1 : c == ')' || c == '}' ? -1 : 0;
        if (c == ',' && depth == 0) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

bool HoldsNumber(const std::string& text)
{
    static const std::regex kNumber(R"((^|[^\w.])\d)");
    return std::regex_search(text, kNumber);
}

// A number that must have a name, as the place of an argument.
struct Rule {
    std::string_view function;
    std::size_t place;  // counted from 0
};
constexpr Rule kRules[] = {{"StatusString", 0},   {"ShowHelpContext", 0}, {"ZoomPanCommand", 0},
                           {"CheckMenuItem", 1},  {"SetMenuText", 1},     {"EnableMenuItem", 1},
                           {"DeleteMenuItem", 1}, {"GetMenuItem", 1},     {"HelpContextOf", 0}};

bool IsCommandMessage(const std::vector<std::string>& arguments)
{
    return arguments.size() > 2 && arguments[1].find("WM_COMMAND") != std::string::npos;
}

std::vector<std::string> LiteralsIn(const std::string& source)
{
    const std::string code = CodeOf(source);
    std::vector<std::string> found;
    const auto note = [&](std::string_view function, const std::string& argument) {
        if (HoldsNumber(argument)) found.push_back(std::string(function) + "(" + argument + ")");
    };
    for (const Rule& rule : kRules) {
        for (const std::string& call : ArgumentsOf(code, rule.function)) {
            const std::vector<std::string> arguments = Parted(call);
            if (rule.place < arguments.size()) note(rule.function, arguments[rule.place]);
        }
    }
    for (const std::string_view function : {"SendMessage", "PostMessage"}) {
        for (const std::string& call : ArgumentsOf(code, function)) {
            const std::vector<std::string> arguments = Parted(call);
            if (!IsCommandMessage(arguments)) continue;
            // MakeLong(id, 0): the notification may be 0.
            const std::vector<std::string> packed = ArgumentsOf(arguments[2], "MakeLong");
            note(function, packed.empty() ? arguments[2] : Parted(packed.front()).front());
        }
    }
    return found;
}

// A constant of a module's own that repeats a number of the lists.
std::vector<std::string> OwnNamesIn(const std::string& source)
{
    static const std::regex kOwn(
        R"(constexpr \w+ (k(?!Id)\w*(Hint|HelpTopic|Help|HelpContext)|kCmd\w+|kHelp\w+) = \d)");
    const std::string code = CodeOf(source);
    std::vector<std::string> found;
    for (std::sregex_iterator match(code.begin(), code.end(), kOwn), end; match != end; ++match) {
        found.push_back((*match)[1]);
    }
    return found;
}

struct SourceFile {
    std::filesystem::path path;  // below src
    std::string text;
};
std::vector<SourceFile> Sources()
{
    const std::filesystem::path root = KELVO_SOURCE_ROOT;
    std::vector<SourceFile> sources;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp") continue;
        std::ifstream file(entry.path());
        sources.push_back({entry.path().lexically_relative(root),
                           std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>())});
    }
    return sources;
}

TEST(Literals, NoNumberStandsForAStatusTextAHelpPageOrACommand)
{
    const std::vector<SourceFile> sources = Sources();
    ASSERT_THAT(sources, SizeIs(testing::Gt(150U)));
    for (const SourceFile& source : sources) EXPECT_THAT(LiteralsIn(source.text), IsEmpty()) << source.path;
}

TEST(Literals, TheListsAloneNameTheNumbers)
{
    for (const SourceFile& source : Sources()) {
        if (source.path == "ui/status_strings.h" || source.path == "resources/ids.h" ||
            source.path == "resources/help_contexts.h" || source.path == "platform/help_pages.h") {
            EXPECT_FALSE(OwnNamesIn(source.text).empty()) << source.path << ": the search has lost it";
        } else {
            EXPECT_THAT(OwnNamesIn(source.text), IsEmpty()) << source.path;
        }
    }
}

// Who changes the picture asks for its read-outs by name (ui/panel_readouts.h): the panel's controls are its own.
TEST(Literals, ThePanelAloneKnowsItsReadOuts)
{
    static const std::regex kReadOut(R"(\bkPanel(Zoom|Pan|Brightness|Contrast)\w*)");
    std::vector<std::string> knowing;
    for (const SourceFile& source : Sources()) {
        if (std::regex_search(source.text, kReadOut)) knowing.push_back(source.path.generic_string());
    }
    EXPECT_THAT(knowing, testing::UnorderedElementsAre("resources/ids.h", "shell/panel.cpp", "ui/panel_readouts.cpp"));
}

// The tests above hold only if the search finds what it is for.

TEST(LiteralSearch, FindsNumbersInTheArgumentsThatMayHoldNone)
{
    EXPECT_THAT(LiteralsIn("StatusString(CameraOn ? 2 : kIdle, 0);\nShowHelpContext(770);"),
                ElementsAre("StatusString(CameraOn ? 2 : kIdle)", "ShowHelpContext(770)"));
    EXPECT_THAT(LiteralsIn("PostMessage(hWndMain, WM_COMMAND, 169, 0);"), ElementsAre("PostMessage( 169)"));
    EXPECT_THAT(LiteralsIn("SendMessage(w, WM_COMMAND, MakeLong(169, 0), 0);"), ElementsAre("SendMessage(169)"));
    EXPECT_THAT(LiteralsIn("StatusString(\n    4,\n    0);"), SizeIs(1));
}

TEST(LiteralSearch, LeavesOtherNumbersAlone)
{
    EXPECT_THAT(LiteralsIn("StatusString(kIdleHint, 0); // StatusString(1, 0)\nPostMessage(w, WM_TIMER, 3, 0);"),
                IsEmpty());
    EXPECT_THAT(LiteralsIn("SendMessage(w, WM_COMMAND, MakeLong(kCmdExit, 0), 0); Tell(\"StatusString(1, 0)\");"),
                IsEmpty());
    EXPECT_THAT(LiteralsIn("ShowStatusString(1); StatusString(kHint2, 0);"), IsEmpty());
}

TEST(LiteralSearch, FindsAConstantThatRepeatsANumber)
{
    EXPECT_THAT(
        OwnNamesIn("constexpr int kDialogHint = 120;\nconstexpr int kHelpTopic = 288;\nconstexpr int kRows = 4;"),
        ElementsAre("kDialogHint", "kHelpTopic"));
}

}  // namespace
