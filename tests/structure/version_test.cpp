// The version stands once in the tree, in CMake's project line. All that tells it is told it from there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

using testing::ElementsAre;

bool IsSkipped(const std::filesystem::path& path)
{
    constexpr std::array<std::string_view, 4> kNoSources = {".git", "build", ".cache", "out"};
    return std::ranges::find(kNoSources, path.filename().string()) != kNoSources.end();
}

std::vector<std::string> FilesThatHold(const std::filesystem::path& root, std::string_view text)
{
    std::vector<std::string> holders;
    for (auto entry = std::filesystem::recursive_directory_iterator(root);
         entry != std::filesystem::recursive_directory_iterator(); ++entry) {
        if (entry->is_directory() && IsSkipped(entry->path())) entry.disable_recursion_pending();
        if (!entry->is_regular_file() || entry->path().filename() == ".git") continue;
        std::ifstream file(entry->path(), std::ios::binary);
        const std::string contents{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        const bool isText = contents.find('\0') == std::string::npos;
        if (isText && contents.find(text) != std::string::npos)
            holders.push_back(entry->path().lexically_relative(root).string());
    }
    return holders;
}

TEST(Version, StandsOnceInTheTree)
{
    EXPECT_THAT(FilesThatHold(KELVO_TREE, KELVO_VERSION), ElementsAre("CMakeLists.txt"));
}

}  // namespace
