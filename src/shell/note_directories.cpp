#include "shell/note_directories.h"

#include "platform/application.h"
#include "platform/directory.h"
#include "platform/files.h"
#include "shell/start_options.h"
#include "state/windows_write.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace kelvo {

namespace {

constexpr std::array<std::string_view, 4> kNotes = {"window.ini", "recent.ini", "CommLog.txt", "PreviousCommLog.txt"};
constexpr std::string_view kCopies = "opened";
constexpr std::string_view kSourceEnding = ".source";  // NAME.seq.source tells what the copy NAME.seq was made of

std::string In(std::string_view directory, std::string_view name)
{
    return std::string(directory) + '/' + std::string(name);
}

// "kelvo" in one of the user's directories; empty where that is unknown or takes no file.
std::string OwnDirectory(const std::string& users)
{
    if (users.empty()) return {};
    std::string own = In(users, "kelvo");
    if (MakeDirectories(own) && access(own.c_str(), W_OK | X_OK) == 0) return own;
    std::fprintf(stderr, "kelvo: %s can't be written; the data directory serves in its place\n", own.c_str());
    return {};
}

// All or none: the former files go when the new ones stand.
bool TakeNotes(const std::string& from, const std::string& to)
{
    std::vector<std::string_view> taken;
    for (const std::string_view note : kNotes) {
        if (!FileExists(In(from, note)) || NameIsTaken(In(to, note))) continue;
        if (!CopyFileTo(In(from, note), In(to, note), true)) {
            for (const std::string_view copied : taken) DeleteFileNamed(In(to, copied));
            return false;
        }
        taken.push_back(note);
    }
    for (const std::string_view note : taken) DeleteFileNamed(In(from, note));
    return true;
}

// The names first: what moves meanwhile doesn't belong to the walk.
std::vector<std::string> SourcesIn(const std::string& directory)
{
    std::vector<std::string> names;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(directory, none)) {
        std::string name = entry.path().filename().string();
        if (name.ends_with(kSourceEnding)) names.push_back(std::move(name));
    }
    return names;
}

// A copy and its tale go together. They are renamed, never copied: on another disk they stay, and are made again there
// when their file is opened. What has no tale is somebody's own file.
void MoveCopies(const std::string& from, const std::string& to)
{
    const std::vector<std::string> sources = SourcesIn(from);
    if (sources.empty() || !MakeDirectories(to)) return;
    for (const std::string& source : sources) {
        const std::string copy = source.substr(0, source.size() - kSourceEnding.size());
        if (NameIsTaken(In(to, source)) || NameIsTaken(In(to, copy))) continue;
        if (!MoveFileTo(In(from, source), In(to, source))) return;
        if (!FileExists(In(from, copy)) || MoveFileTo(In(from, copy), In(to, copy))) continue;
        MoveFileTo(In(to, source), In(from, source));
        return;
    }
    RemoveEmptyDirectory(from);
}

}  // namespace

void PartNotesFromSettings()
{
    if (startOptions.keepsOneDirectory) return;
    const std::string state = OwnDirectory(UserStateDirectory());
    if (!state.empty() && state != DefaultDir) {
        if (TakeNotes(DefaultDir, state)) {
            SetStateDir(state);
        } else {
            std::fprintf(stderr, "kelvo: %s takes no files; the data directory serves in its place\n", state.c_str());
        }
    }
    const std::string cache = OwnDirectory(UserCacheDirectory());
    if (!cache.empty() && cache != DefaultDir) {
        SetCacheDir(cache);
        MoveCopies(In(DefaultDir, kCopies), In(cache, kCopies));
    }
}

}  // namespace kelvo
