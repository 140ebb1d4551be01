#include "export/export_job.h"

#include "platform/files.h"

#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

// "x.png", "x-000000.png to x-000002.png"
std::string NamesOf(const std::vector<std::string>& files)
{
    return files.size() == 1 ? files.front() : files.front() + " to " + files.back();
}

ExportOutcome Failed(const ExportFailure& failure, std::vector<std::string> whole = {})
{
    ExportOutcome outcome{.failure = failure.value_or(""), .files = std::move(whole)};
    if (!outcome.files.empty())
        outcome.failure += "; " + NamesOf(outcome.files) +
                           (outcome.files.size() == 1 ? " before it stands whole" : " before it stand whole");
    return outcome;
}

bool IsTheSource(const std::string& path, const Provenance& provenance)
{
    std::error_code none;
    return std::filesystem::equivalent(ResolvePath(path), provenance.source, none);
}

}  // namespace

ExportOutcome RunExport(ExportSource& source, FrameSink& sink, const ExportProgress& progress)
{
    const ExportDescription& description = source.Description();
    const std::vector<std::string> targets = sink.Targets(description);
    const auto whole = [&sink, &targets] {
        return std::vector(targets.begin(), targets.begin() + static_cast<std::ptrdiff_t>(sink.Kept()));
    };
    for (const std::string& target : targets) {
        if (IsTheSource(target, description.provenance)) return Failed(target + " is the file that is exported");
    }
    const std::int64_t all = description.frames;
    if (ExportFailure failure = sink.Begin(description)) return Failed(failure);
    ExportOutcome outcome;
    for (; outcome.frames < all; ++outcome.frames) {
        if (progress && !progress(outcome.frames, all)) {
            outcome.stopped = true;
            break;
        }
        ExportedFrame frame;
        std::string why;
        if (!source.Read(outcome.frames, frame, why)) return Failed(why, whole());
        if (ExportFailure failure = sink.Add(frame)) return Failed(failure, whole());
    }
    if (outcome.frames == 0) return outcome;
    if (ExportFailure failure = sink.End()) return Failed(failure, whole());
    outcome.files = targets.size() > 1 ? whole() : targets;
    if (progress && !outcome.stopped) progress(all, all);
    return outcome;
}

}  // namespace kelvo
