// A directory of a test's own, gone with it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace kelvo {

class TempDirectory {
  public:
    TempDirectory()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelvo-test-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;
    ~TempDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string& Path() const { return path_; }
    std::string operator/(std::string_view name) const { return path_ + '/' + std::string(name); }

  private:
    std::string path_;
};

// Plain file access beside the code under test.
inline void PutFile(const std::string& path, std::string_view contents)
{
    std::ofstream stream(path, std::ios::binary);
    stream.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    ASSERT_TRUE(stream.flush()) << path;
}

inline std::string FileContents(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace kelvo
