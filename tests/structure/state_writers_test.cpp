// Who writes a module's state: the truth is the list beside this file, and the includes are held against it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A module's path without extension, and the modules that include its write header beside itself.
using Writers = std::map<std::string, std::set<std::string>>;

constexpr std::string_view kWriteHeader = "_write.h";

std::filesystem::path Root()
{
    return KELVO_SOURCE_ROOT;
}

template <typename Take>
void EachSource(Take&& take)
{
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Root())) {
        const std::filesystem::path& path = entry.path();
        if (path.extension() != ".h" && path.extension() != ".cpp") continue;
        std::ifstream source(path);
        take(path.lexically_relative(Root()), source);
    }
}

void AddWriters(Writers& writers, const std::filesystem::path& path, std::istream& source)
{
    static const std::regex kInclude(R"re(^\s*#\s*include\s*"([^"]+)_write\.h")re");
    const std::string module = std::filesystem::path(path).replace_extension().generic_string();
    std::smatch match;
    for (std::string line; std::getline(source, line);) {
        if (std::regex_search(line, match, kInclude) && match[1] != module) writers[match[1]].insert(module);
    }
}

Writers IncludedWriters()
{
    Writers writers;
    EachSource([&](const std::filesystem::path& path, std::istream& source) {
        const std::string name = path.generic_string();
        if (name.ends_with(kWriteHeader)) writers[name.substr(0, name.size() - kWriteHeader.size())];
        AddWriters(writers, path, source);
    });
    return writers;
}

// "module: writer writer ..." a line.
Writers ListedWriters(std::istream& list)
{
    Writers writers;
    for (std::string line; std::getline(list, line);) {
        const std::size_t colon = line.find(':');
        if (line.starts_with('#') || colon == std::string::npos) continue;
        std::set<std::string>& names = writers[line.substr(0, colon)];
        std::istringstream rest(line.substr(colon + 1));
        for (std::string name; rest >> name;) names.insert(name);
    }
    return writers;
}

std::vector<std::string> Missing(const Writers& from, const Writers& in)
{
    std::vector<std::string> missing;
    for (const auto& [module, names] : from) {
        const auto found = in.find(module);
        if (found == in.end()) missing.push_back(module);
        for (const std::string& name : names) {
            if (found == in.end() || !found->second.contains(name)) missing.push_back(name + " writes " + module);
        }
    }
    return missing;
}

// Variables that a header lets everyone write.
std::vector<std::string> OpenVariables(std::istream& header)
{
    static const std::regex kVariable(R"(^extern (?!const )(?!template ).*\b(\w+);)");
    std::vector<std::string> names;
    std::smatch match;
    for (std::string line; std::getline(header, line);) {
        if (std::regex_search(line, match, kVariable)) names.push_back(match[1]);
    }
    return names;
}

Writers TheList()
{
    std::ifstream list(KELVO_STATE_WRITERS);
    return ListedWriters(list);
}

TEST(StateWriters, NobodyWritesWhoIsNotListed)
{
    EXPECT_THAT(Missing(IncludedWriters(), TheList()), IsEmpty());
}

TEST(StateWriters, NobodyIsListedWhoDoesNotWrite)
{
    EXPECT_THAT(Missing(TheList(), IncludedWriters()), IsEmpty());
}

TEST(StateWriters, PlainHeadersGiveViewsAlone)
{
    EachSource([](const std::filesystem::path& path, std::istream& source) {
        if (path.extension() != ".h" || path.generic_string().ends_with(kWriteHeader)) return;
        EXPECT_THAT(OpenVariables(source), IsEmpty()) << path;
    });
}

// What one header gives to read, the other gives to write: a view without a variable would be a constant.
TEST(StateWriters, EachWriteHeaderStandsBesideItsPlainOne)
{
    for (const auto& [module, names] : IncludedWriters()) {
        EXPECT_TRUE(std::filesystem::exists(Root() / (module + ".h"))) << module;
        EXPECT_TRUE(std::filesystem::exists(Root() / (module + ".cpp"))) << module;
    }
}

TEST(StateWritersSearch, SeesTheTree)
{
    const Writers writers = IncludedWriters();
    ASSERT_TRUE(writers.contains("state/frame_state"));
    EXPECT_TRUE(writers.at("state/frame_state").contains("video/video"));
}

TEST(StateWritersSearch, FindsAWriterAndAVariable)
{
    Writers writers;
    std::istringstream source(
        "#include \"state/a.h\"\n#include \"state/b_write.h\"\n// #include \"state/c_write.h\"\n");
    AddWriters(writers, "shell/thing.cpp", source);
    std::istringstream list("# why\nstate/b:\nstate/d: shell/thing\n");
    const Writers listed = ListedWriters(list);
    EXPECT_THAT(Missing(writers, listed), ElementsAre("shell/thing writes state/b"));
    EXPECT_THAT(Missing(listed, writers), ElementsAre("state/d", "shell/thing writes state/d"));

    std::istringstream header("extern const int& View;\nextern int Open;\nextern std::vector<int> List;  // why\n");
    EXPECT_THAT(OpenVariables(header), ElementsAre("Open", "List"));
}

}  // namespace
