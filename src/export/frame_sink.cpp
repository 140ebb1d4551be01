#include "export/frame_sink.h"

#include "platform/json_text.h"
#include "platform/text.h"

#include <cerrno>
#include <cstring>

namespace kelvo {

std::string BadPlacesJson(const ExportDescription& description)
{
    if (description.badDetectors.empty()) return "null";
    std::vector<std::string> places;
    for (std::size_t i = 0; i < description.badDetectors.size(); ++i) {
        if (description.badDetectors[i] == 0) continue;
        places.push_back(Format("[%zu, %zu]", i / description.columns, i % description.columns));
    }
    return JsonList(places);
}

std::string OutsideRunsJson(const ExportDescription& description)
{
    if (description.outside.empty()) return "null";
    std::vector<std::string> runs;
    for (std::size_t row = 0; row < description.rows; ++row) {
        const auto line = std::span(description.outside).subspan(row * description.columns, description.columns);
        for (std::size_t column = 0; column < line.size(); ++column) {
            if (line[column] == 0) continue;
            const std::size_t first = column;
            while (column + 1 < line.size() && line[column + 1] != 0) ++column;
            runs.push_back(Format("[%zu, %zu, %zu]", row, first, column));
        }
    }
    return JsonList(runs);
}

ExportFailure FrameSink::WhyRefused(const std::string& path) const
{
    return WhyNoNewFile(path, replace_);
}

ExportFailure FrameSink::BeginFile(std::optional<NewFile>& file, const std::string& path) const
{
    if (ExportFailure refused = WhyRefused(path)) return refused;
    file = NewFile::Begin(path);
    if (!file) return path + " can't be written: " + std::strerror(errno);
    // One process at a time has the file in the making: what another one made while this one waited stands now.
    return WhyRefused(path);
}

File& FrameSink::Contents()
{
    return file_->Contents();  // NOLINT(bugprone-unchecked-optional-access): BeginFile has made it
}

ExportFailure FrameSink::Keep(std::optional<NewFile>& file, const std::string& path)
{
    if (!file || !file->Keep()) return DoneOr(false, path);
    ++kept_;
    return std::nullopt;
}

ExportFailure FrameSink::DoneOr(bool isDone, const std::string& path)
{
    return isDone ? std::nullopt : ExportFailure(path + " can't be written: the disk refuses");
}

}  // namespace kelvo
