// The shape of the tree: who may include whom. A module is a file pair, known by its path without extension.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
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

using Module = std::string;
using IncludeGraph = std::map<Module, std::set<Module>>;

// The table of floors as src/CMakeLists.txt has it: each folder with those that it may use.
struct Floor {
    std::string_view folder;
    std::string_view mayUse;  // names parted by blanks
};
constexpr Floor kFloors[] = {
#include "floors.inc"
};

std::string_view FolderOf(std::string_view module)
{
    return module.substr(0, module.find('/'));
}

const Floor* FloorOf(std::string_view module)
{
    const auto* const floor = std::ranges::find(kFloors, FolderOf(module), &Floor::folder);
    return floor == std::end(kFloors) ? nullptr : floor;
}

bool MayUse(const Floor& floor, std::string_view folder)
{
    std::istringstream names{std::string(floor.mayUse)};
    return floor.folder == folder || std::count(std::istream_iterator<std::string>(names), {}, folder) > 0;
}

bool RunsUpward(const Module& from, const Module& to)
{
    const Floor* floor = FloorOf(from);
    return !floor || !MayUse(*floor, FolderOf(to));
}

std::string Arrow(const Module& from, const Module& to)
{
    std::string text = from;
    return text.append(" -> ").append(to);
}

std::vector<std::string> UpwardIncludes(const IncludeGraph& graph)
{
    std::vector<std::string> upward;
    for (const auto& [from, targets] : graph) {
        for (const Module& to : targets) {
            if (RunsUpward(from, to)) upward.push_back(Arrow(from, to));
        }
    }
    return upward;
}

enum class Mark { kOpen, kDone };

// Follows the includes; a module met again on the way to itself closes a circle.
void FindCircles(const IncludeGraph& graph, const Module& module, std::map<Module, Mark>& marks,
                 std::vector<Module>& way, std::vector<std::string>& circles)
{
    if (const auto mark = marks.find(module); mark != marks.end()) {
        if (mark->second == Mark::kDone) return;
        std::string circle;
        for (auto step = std::find(way.begin(), way.end(), module); step != way.end(); ++step) {
            circle.append(*step).append(" -> ");
        }
        circles.push_back(circle.append(module));
        return;
    }
    marks[module] = Mark::kOpen;
    way.push_back(module);
    if (const auto found = graph.find(module); found != graph.end()) {
        for (const Module& target : found->second) FindCircles(graph, target, marks, way, circles);
    }
    way.pop_back();
    marks[module] = Mark::kDone;
}

std::vector<std::string> Circles(const IncludeGraph& graph)
{
    std::map<Module, Mark> marks;
    std::vector<Module> way;
    std::vector<std::string> circles;
    for (const auto& [module, targets] : graph) FindCircles(graph, module, marks, way, circles);
    return circles;
}

bool IsSource(const std::filesystem::path& path)
{
    return path.extension() == ".h" || path.extension() == ".cpp";
}

// A module that keeps state has two headers, one to read it and one to write it.
constexpr std::string_view kWriteHeader = "_write";

Module ModuleOf(const std::filesystem::path& path)
{
    Module module = std::filesystem::path(path).replace_extension().generic_string();
    if (module.ends_with(kWriteHeader)) module.erase(module.size() - kWriteHeader.size());
    return module;
}

std::vector<std::filesystem::path> Sources()
{
    const std::filesystem::path root = KELVO_SOURCE_ROOT;
    std::vector<std::filesystem::path> sources;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file() && IsSource(entry.path())) sources.push_back(entry.path().lexically_relative(root));
    }
    return sources;
}

// The quoted names of a source; what stands in angle brackets isn't ours.
std::vector<std::string> QuotedIncludes(std::istream& source)
{
    static const std::regex kInclude(R"(^\s*#\s*include\s*"([^"]+)\")");
    std::vector<std::string> includes;
    std::smatch match;
    for (std::string line; std::getline(source, line);) {
        if (std::regex_search(line, match, kInclude)) includes.push_back(match[1]);
    }
    return includes;
}

using Naming = Module (*)(const std::filesystem::path&);

// Includes name files from src/; one that doesn't exist there is generated (a .moc, a .ui header) and not ours to
// judge.
IncludeGraph ReadGraph(Naming nameOf = ModuleOf)
{
    const std::filesystem::path root = KELVO_SOURCE_ROOT;
    IncludeGraph graph;
    for (const auto& path : Sources()) {
        std::ifstream source(root / path);
        std::set<Module>& targets = graph[nameOf(path)];
        for (const std::string& include : QuotedIncludes(source)) {
            const Module target = nameOf(include);
            if (target != nameOf(path) && std::filesystem::exists(root / include)) targets.insert(target);
        }
    }
    return graph;
}

Module FileName(const std::filesystem::path& path)
{
    return path.generic_string();
}

// The platform is one piece behind its headers: what stands behind a handle is known to several of its sources.
IncludeGraph WithoutPlatform(IncludeGraph graph)
{
    std::erase_if(graph, [](const auto& node) { return node.first.starts_with("platform/"); });
    return graph;
}

TEST(Structure, EveryModuleStandsOnAFloor)
{
    for (const auto& [module, targets] : ReadGraph()) {
        EXPECT_TRUE(FloorOf(module)) << module << " stands in a folder that src/CMakeLists.txt doesn't name";
    }
}

// A floor uses what lies below it: its row names nobody from above, and the linker and the includes hold the rows.
TEST(Structure, RowsNameOnlyFloorsBelow)
{
    std::set<std::string_view> below;
    for (const Floor& floor : kFloors) {
        std::istringstream names{std::string(floor.mayUse)};
        for (std::string name; names >> name;) EXPECT_TRUE(below.contains(name)) << floor.folder << " uses " << name;
        below.insert(floor.folder);
    }
}

TEST(Structure, NoTwoFoldersIncludeEachOther)
{
    const IncludeGraph folders = ReadGraph([](const std::filesystem::path& path) { return path.begin()->string(); });
    EXPECT_THAT(Circles(folders), IsEmpty());
}

TEST(Structure, IncludesRunOnlyDownward)
{
    EXPECT_THAT(UpwardIncludes(ReadGraph()), IsEmpty());
}

TEST(Structure, NoHeaderLeadsBackToItself)
{
    EXPECT_THAT(Circles(ReadGraph(FileName)), IsEmpty());
}

// Two modules that truly call each other: the call that points upward belongs into a leaf.
TEST(Structure, NoModuleCircleStandsAboveThePlatform)
{
    EXPECT_THAT(Circles(WithoutPlatform(ReadGraph())), IsEmpty());
}

TEST(Structure, IncludesNameFilesFromTheSourceRoot)
{
    const std::filesystem::path root = KELVO_SOURCE_ROOT;
    for (const auto& path : Sources()) {
        std::ifstream source(root / path);
        for (const std::string& include : QuotedIncludes(source)) {
            const bool beside = std::filesystem::exists((root / path).parent_path() / include);
            EXPECT_FALSE(beside && !std::filesystem::exists(root / include))
                << path << ": write \"" << include << "\" with its folder";
        }
    }
}

// The tests above hold only if the walk sees the tree and the two searches find what they are for.

TEST(StructureSearch, ReadsTheTree)
{
    const IncludeGraph graph = ReadGraph();
    ASSERT_TRUE(graph.contains("display/color_map"));
    EXPECT_TRUE(graph.at("display/color_map").contains("state/display_state"));
    EXPECT_GT(graph.size(), 30U);
}

TEST(StructureSearch, FindsAnIncludeThatRunsUpward)
{
    const IncludeGraph graph = {{"display/color_map", {"shell/main_window", "display/units", "state/windows"}},
                                {"elsewhere/module", {"state/windows"}}};
    EXPECT_THAT(UpwardIncludes(graph),
                ElementsAre("display/color_map -> shell/main_window", "elsewhere/module -> state/windows"));
}

TEST(StructureSearch, FindsACircleOverSeveralModules)
{
    const IncludeGraph graph = {{"a", {"b"}}, {"b", {"c"}}, {"c", {"b", "d"}}, {"d", {}}};
    EXPECT_THAT(Circles(graph), ElementsAre("b -> c -> b"));
}

TEST(StructureSearch, TakesNoTwoWaysToOneModuleForACircle)
{
    const IncludeGraph graph = {{"a", {"b", "c"}}, {"b", {"d"}}, {"c", {"d"}}, {"d", {}}};
    EXPECT_THAT(Circles(graph), IsEmpty());
}

TEST(StructureSearch, ReadsQuotedIncludesOnly)
{
    std::istringstream source(
        "#include <vector>\n  # include \"a/b.h\"\n// #include \"c/d.h\"\n#include \"e/f.h\"  // why\n");
    EXPECT_THAT(QuotedIncludes(source), ElementsAre("a/b.h", "e/f.h"));
}

}  // namespace
