#include "export/export_job.h"

#include "platform/files.h"

#include <filesystem>
#include <system_error>

namespace kelvo {

namespace {

ExportOutcome Failed(const ExportFailure& failure)
{
    return {.frames = 0, .stopped = false, .failure = failure.value_or("")};
}

bool IsTheSource(const std::string& path, const Provenance& provenance)
{
    std::error_code none;
    return std::filesystem::equivalent(ResolvePath(path), provenance.source, none);
}

}  // namespace

ExportOutcome RunExport(ExportSource& source, FrameSink& sink, const ExportProgress& progress)
{
    if (IsTheSource(sink.Path(), source.Description().provenance)) {
        return Failed(sink.Path() + " is the file that is exported");
    }
    const std::int64_t all = source.Description().frames;
    if (ExportFailure failure = sink.Begin(source.Description())) return Failed(failure);
    ExportOutcome outcome;
    for (; outcome.frames < all; ++outcome.frames) {
        if (progress && !progress(outcome.frames, all)) {
            outcome.stopped = true;
            break;
        }
        ExportedFrame frame;
        std::string why;
        if (!source.Read(outcome.frames, frame, why)) return Failed(why);
        if (ExportFailure failure = sink.Add(frame)) return Failed(failure);
    }
    if (outcome.frames == 0) return outcome;
    if (ExportFailure failure = sink.End()) return Failed(failure);
    if (progress && !outcome.stopped) progress(all, all);
    return outcome;
}

}  // namespace kelvo
