#include "viewing/written_note.h"

#include "platform/files.h"
#include "platform/text.h"
#include "ui/select_file.h"
#include "ui/status.h"

#include <filesystem>
#include <system_error>

namespace kelvo {

namespace {

std::string InDirectoryOf(const std::string& path)
{
    const std::filesystem::path directory(DirectoryOf(path));
    return " in " + (directory.has_filename() ? directory : directory.parent_path()).string();
}

std::uint64_t SizeOf(const std::string& path)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(ResolvePath(path), error);
    return error ? 0 : size;
}

std::string SizeText(std::uint64_t bytes)
{
    constexpr std::uint64_t kKilo = 1000;
    constexpr std::uint64_t kMega = kKilo * kKilo;
    if (bytes < kKilo) return Format("%d bytes", static_cast<int>(bytes));
    const bool large = bytes >= kMega;
    return Format("%.1f %s", static_cast<double>(bytes) / static_cast<double>(large ? kMega : kKilo),
                  large ? "MB" : "kB");
}

CommandEnd Note(const std::string& text)
{
    StatusNote(" " + text);
    return CommandEnd::kLeaveStatus;
}

}  // namespace

CommandEnd NoteSavedFile(const std::string& path, std::uint32_t frames)
{
    return Note("Saved " + FileNameOf(path) + Format(": %u frame%s, ", frames, frames == 1 ? "" : "s") +
                SizeText(SizeOf(path)) + InDirectoryOf(path));
}

CommandEnd NoteSavedFiles(const std::vector<std::string>& paths, std::uint32_t frames)
{
    if (paths.size() == 1) return NoteSavedFile(paths.front(), frames);
    std::uint64_t bytes = 0;
    for (const std::string& path : paths) bytes += SizeOf(path);
    return Note(Format("Saved %zu files, ", paths.size()) + FileNameOf(paths.front()) + " to " +
                FileNameOf(paths.back()) + Format(": %u frame%s each, ", frames, frames == 1 ? "" : "s") +
                SizeText(bytes) + InDirectoryOf(paths.front()));
}

CommandEnd NoteSavedBitmaps(const std::vector<std::string>& paths, std::uint32_t wanted)
{
    std::uint64_t bytes = 0;
    for (const std::string& path : paths) bytes += SizeOf(path);
    const std::string& first = paths.front();
    std::string what = FileNameOf(first);
    if (wanted > 1) {
        const std::string count = Format("%zu", paths.size()) + (paths.size() < wanted ? Format(" of %u", wanted) : "");
        what = count + " bitmaps, " + FileNameOf(first) + (paths.size() > 1 ? " to " + FileNameOf(paths.back()) : "");
    }
    return Note("Saved " + what + ": " + SizeText(bytes) + InDirectoryOf(first));
}

CommandEnd NoteSavedPicture(const std::string& path, const std::string& more)
{
    return Note("Saved " + FileNameOf(path) + more + ": " + SizeText(SizeOf(path)) + InDirectoryOf(path));
}

CommandEnd NoteSavedArchive(const std::string& path)
{
    return NoteSavedPicture(path, {});
}

CommandEnd NoteSavedSet(const std::string& calPath)
{
    return Note("Saved calibration " + FileNameOf(calPath) + InDirectoryOf(calPath));
}

}  // namespace kelvo
