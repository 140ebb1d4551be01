#include "platform/directory.h"

#include "platform/files.h"
#include "platform/text.h"

#include <fnmatch.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

bool ComesFirst(const std::string& a, const std::string& b)
{
    return std::pair(UpperAscii(a), a) < std::pair(UpperAscii(b), b);
}

// Names of entries for which wanted(entry) holds; what can't be looked at is left out.
template <typename Wanted>
std::vector<std::string> Names(Wanted wanted)
{
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator at(".", error), end; !error && at != end; at.increment(error)) {
        std::string name = at->path().filename().string();
        if (!name.starts_with('.') && wanted(*at, name)) names.push_back(std::move(name));
    }
    std::ranges::sort(names, ComesFirst);
    return names;
}

}  // namespace

std::string CurrentDirectory()
{
    std::error_code error;
    return std::filesystem::current_path(error).string();
}

bool ChangeDirectory(std::string_view path)
{
    return chdir(ResolvePath(path).c_str()) == 0;
}

bool RemoveEmptyDirectory(std::string_view path)
{
    return rmdir(ResolvePath(path).c_str()) == 0;
}

std::vector<std::string> FilesOf(std::string_view pattern)
{
    // Letters only differ by case where they are ASCII, whatever the locale; a backslash is no escape here.
    const std::string wanted = pattern == "*.*" ? "*" : UpperAscii(pattern);
    return Names([&](const std::filesystem::directory_entry& entry, const std::string& name) {
        std::error_code error;
        return fnmatch(wanted.c_str(), UpperAscii(name).c_str(), FNM_NOESCAPE) == 0 && entry.is_regular_file(error);
    });
}

std::vector<std::string> Subdirectories()
{
    std::vector<std::string> names = Names([](const std::filesystem::directory_entry& entry, const std::string&) {
        std::error_code error;
        return entry.is_directory(error);
    });
    if (CurrentDirectory() != "/") names.insert(names.begin(), "..");
    return names;
}

}  // namespace kelvo
