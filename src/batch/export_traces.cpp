#include "batch/export_traces.h"

#include "analysis/trace_csv.h"
#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "imagefile/stored_frames.h"
#include "platform/files.h"
#include "platform/text.h"
#include "regions/trace_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <span>
#include <system_error>

namespace kelvo {

namespace {

using Failure = std::optional<std::string>;

std::vector<Region> RegionsToTrace(const TracesWish& wish, const StoredFrames& frames)
{
    if (!wish.regions.empty()) return wish.regions;
    return {WholePicture(static_cast<std::int32_t>(frames.Columns()), static_cast<std::int32_t>(frames.Rows()))};
}

Failure WhyRefused(const TracesWish& wish)
{
    std::error_code none;
    if (std::filesystem::equivalent(ResolvePath(wish.out), ResolvePath(wish.in), none)) {
        return wish.out + " is the file that is exported";
    }
    return WhyNoNewFile(wish.out, wish.replace);
}

}  // namespace

std::optional<std::string> ExportTraces(const TracesWish& wish, std::int64_t& frames)
{
    std::string why;
    std::optional<StoredFrames> file = StoredFrames::Open(wish.in, why);
    if (!file) return wish.in + ' ' + why;
    const std::int64_t end = wish.frames.second < 0 ? file->Frames() : wish.frames.second;
    if (wish.frames.first >= end || end > file->Frames()) {
        return wish.in +
               Format(" has %lld frames: there are none of that range", static_cast<long long>(file->Frames()));
    }
    if (Failure refused = WhyRefused(wish)) return refused;
    std::optional<NewFile> made = NewFile::Begin(wish.out);
    if (!made) return wish.out + " can't be written: " + std::strerror(errno);

    BatchProgress shown("export");
    const auto show = [&shown](std::int64_t read, std::int64_t of) {
        if (read > 0) shown.Show(read, of);
        return !Interrupted();
    };
    const std::optional<Trace> trace = TraceOfFile(*file, RegionsToTrace(wish, *file),
                                                   {.range = {.first = wish.frames.first, .last = end - 1}}, show, why);
    if (!trace) return why.empty() ? std::string(kInterrupted) : wish.in + ": " + why;
    frames = std::ssize(trace->frames);
    shown.Show(frames, frames);
    const std::string text = ToUtf8(TraceCsv(*trace));
    const bool isWritten = made->Contents().Write(std::as_bytes(std::span(text))) == text.size() && made->Keep();
    return isWritten ? std::nullopt : Failure(wish.out + " can't be written: the disk refuses");
}

}  // namespace kelvo
