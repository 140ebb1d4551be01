#include "batch/new_sequence.h"

#include "imagefile/frames_file.h"

#include <cerrno>
#include <cstring>

namespace kelvo {

namespace {

std::string WhyNot(const std::string& path)
{
    if (DirectoryExists(path)) return path + " is a directory";
    const bool stands = NameIsTaken(path) || NameIsTaken(FramesPathOf(path));
    return stands ? path + " stands already" : std::string();
}

}  // namespace

std::optional<NewSequence> NewSequence::Begin(const std::string& path, std::string& why)
{
    why = WhyNot(path);
    if (!why.empty()) return std::nullopt;
    std::optional<NewFile> file = NewFile::Begin(path);
    if (!file) {
        why = path + " can't be written: " + std::strerror(errno);
        return std::nullopt;
    }
    // One process at a time has the file in the making: what another one made while this one waited stands now.
    why = WhyNot(path);
    if (!why.empty()) return std::nullopt;
    return NewSequence(std::move(*file), path);
}

std::optional<std::string> NewSequence::Write(std::span<const std::byte> bytes)
{
    return file_.Contents().Write(bytes) == bytes.size() ? std::nullopt : std::optional(Refused());
}

std::optional<std::string> NewSequence::End(std::span<const std::byte> journal)
{
    const std::string journalPath = FramesPathOf(path_);
    const bool hasJournal = !journal.empty();
    if (hasJournal && !ReplaceFile(journalPath, {reinterpret_cast<const char*>(journal.data()), journal.size()})) {
        return Refused();
    }
    if (file_.Keep()) return std::nullopt;
    std::string refused = Refused();
    if (hasJournal) DeleteFileNamed(journalPath);
    return refused;
}

std::string NewSequence::Refused() const
{
    return path_ + " can't be written: " + std::strerror(errno);
}

}  // namespace kelvo
