#include "batch/new_set.h"

#include "calib/last_set.h"

#include <cerrno>
#include <cstring>
#include <span>

namespace kelvo {

namespace {

// By what errno says.
std::string Refused(const std::string& path)
{
    return path + " can't be written: " + std::strerror(errno);
}

// Empty: nothing is in the way.
std::string WhyNot(const std::string& calPath)
{
    if (!IsCalFile(calPath)) return calPath + " doesn't end in .cal";
    for (const std::string_view extension : kSetExtensions) {
        const std::string path = SetFile(calPath, extension);
        if (NameIsTaken(path)) return path + " stands already";
    }
    const std::string report = SetFile(calPath, kReportExtension);
    return NameIsTaken(report) ? report + " stands already" : std::string();
}

}  // namespace

std::optional<NewSet> NewSet::Begin(const std::string& calPath, std::string& why)
{
    why = WhyNot(calPath);
    if (!why.empty()) return std::nullopt;
    NewSet set(calPath);
    // The .cal in the making holds the set for this process, until the end.
    std::optional<NewFile> file = NewFile::Begin(calPath);
    if (!file) {
        why = Refused(calPath);
        return std::nullopt;
    }
    // What another process made while this one waited stands now.
    why = WhyNot(calPath);
    if (!why.empty()) return std::nullopt;
    set.files_.emplace_back(calPath, std::move(*file));
    return set;
}

std::optional<std::string> NewSet::Add(std::string_view extension, std::string_view contents)
{
    const std::string path = SetFile(calPath_, extension);
    const bool isCal = extension == kSetExtensions.back();
    if (!isCal) {
        std::optional<NewFile> file = NewFile::Begin(path);
        if (!file) return Refused(path);
        files_.emplace(files_.end() - 1, path, std::move(*file));
    }
    NewFile& file = isCal ? files_.back().second : files_[files_.size() - 2].second;
    const bool written = file.Contents().Write(std::as_bytes(std::span(contents))) == contents.size();
    return written ? std::nullopt : std::optional(Refused(path));
}

std::optional<std::string> NewSet::End()
{
    for (std::size_t i = 0; i < files_.size(); ++i) {
        if (files_[i].second.Keep()) continue;
        std::string refused = Refused(files_[i].first);
        for (std::size_t k = 0; k < i; ++k) DeleteFileNamed(files_[k].first);
        return refused;
    }
    return std::nullopt;
}

}  // namespace kelvo
