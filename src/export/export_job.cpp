#include "export/export_job.h"

#include "platform/files.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

// The reason, and which files stand all the same.
ExportOutcome Failed(std::string why, std::vector<std::string> files = {})
{
    if (files.size() == 1) why += "; " + files.front() + " before it stands whole";
    if (files.size() > 1) why += "; " + files.front() + " to " + files.back() + " before it stand whole";
    return {.failure = std::move(why), .files = std::move(files)};
}

bool IsTheSource(const std::string& path, const Provenance& provenance)
{
    std::error_code none;
    return std::filesystem::equivalent(ResolvePath(path), provenance.source, none);
}

// Frames go to all of them.
ExportOutcome Run(ExportSource& source, std::span<FrameSink* const> sinks, const ExportProgress& progress)
{
    const auto standing = [&source, sinks] {
        std::vector<std::string> files;
        for (std::size_t part = 0; part < sinks.size(); ++part) {
            const std::vector<std::string> targets = sinks[part]->Targets(source.Description(part));
            files.insert(files.end(), targets.begin(),
                         targets.begin() + static_cast<std::ptrdiff_t>(sinks[part]->Kept()));
        }
        return files;
    };
    for (std::size_t part = 0; part < sinks.size(); ++part) {
        const ExportDescription& description = source.Description(part);
        for (const std::string& target : sinks[part]->Targets(description)) {
            if (IsTheSource(target, description.provenance)) return Failed(target + " is the file that is exported");
        }
        if (ExportFailure failure = sinks[part]->Begin(description)) return Failed(*failure);
    }
    const std::int64_t all = source.Description().frames;
    ExportOutcome outcome;
    for (; outcome.frames < all; ++outcome.frames) {
        if (progress && !progress(outcome.frames, all)) {
            outcome.stopped = true;
            break;
        }
        std::string why;
        if (!source.Read(outcome.frames, why)) return Failed(why, standing());
        for (std::size_t part = 0; part < sinks.size(); ++part) {
            if (ExportFailure failure = sinks[part]->Add(source.Frame(part))) return Failed(*failure, standing());
        }
    }
    if (outcome.frames == 0) return outcome;
    for (FrameSink* const sink : sinks) {
        if (ExportFailure failure = sink->End()) return Failed(*failure, standing());
    }
    outcome.files = standing();
    if (progress && !outcome.stopped) progress(all, all);
    return outcome;
}

// Which of a name's characters no file of any system may have; ASCII.
bool IsRefusedInNames(char c)
{
    return static_cast<unsigned char>(c) < ' ' || std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos;
}

}  // namespace

ExportOutcome RunExport(ExportSource& source, FrameSink& sink, const ExportProgress& progress)
{
    const std::array<FrameSink*, 1> sinks = {&sink};
    return Run(source, sinks, progress);
}

ExportOutcome RunExport(ExportSource& source, std::span<const std::unique_ptr<FrameSink>> sinks,
                        const ExportProgress& progress)
{
    std::vector<FrameSink*> each;
    for (const std::unique_ptr<FrameSink>& sink : sinks) each.push_back(sink.get());
    return Run(source, each, progress);
}

std::vector<std::string> PathsOfRegions(const std::string& path, std::span<const Region> regions)
{
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    const std::string stem = path.substr(0, path.size() - extension.size());
    std::vector<std::string> paths;
    const auto isTaken = [&paths](const std::string& wanted) {
        return std::ranges::any_of(paths,
                                   [&wanted](const std::string& taken) { return EqualIgnoringCase(taken, wanted); });
    };
    for (const Region& region : regions) {
        std::string name = stem + '-' + region.name;
        std::replace_if(name.begin() + static_cast<std::ptrdiff_t>(stem.size()), name.end(), IsRefusedInNames, '_');
        std::string wanted = name + extension;
        for (int number = 2; isTaken(wanted); ++number)
            wanted = Format("%s-%d%s", name.c_str(), number, extension.c_str());
        paths.push_back(wanted);
    }
    return paths;
}

}  // namespace kelvo
