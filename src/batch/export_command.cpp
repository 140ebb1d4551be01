#include "batch/export_command.h"

#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "batch/cut_command.h"
#include "batch/export_traces.h"
#include "batch/picture_arguments.h"
#include "batch/stream_file.h"
#include "export/export_formats.h"
#include "export/export_job.h"
#include "platform/json_text.h"
#include "platform/text.h"
#include "regions/regions_file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::string_view kWord = "export";
constexpr int kBatchStopped = 1;
constexpr std::string_view kTwoFiles = "a file of frames and the name of the new file are needed";

constexpr std::string_view kOneFile = "one file goes to the standard output: one region, and as png one frame";
constexpr std::string_view kOneResult = "--json tells of a file: it doesn't go with the standard output";

// What stands in place of streams while the command works.
struct Streams {
    std::optional<StreamFile> input;
    std::optional<StreamFile> output;
};

// False with the reason in why.
bool TakeStreams(std::string& in, std::string& out, std::string_view ending, Streams& streams, std::string& why)
{
    if (out == kStreamName) {
        streams.output = StreamFile::ForOutput(ending, why);
        if (!streams.output) return false;
        out = streams.output->Path();
    }
    return StreamFile::TakeInput(in, streams.input, why);
}

struct Wish {
    ExportRequest request;
    ExportFormat format = ExportFormat::kNpy;
    std::vector<std::string> outs;  // a file for each part
    PictureWish picture;
    bool replace = false;
    bool json = false;
};

// The regions of the command line, and the names of their files.
bool TakeRegions(const std::string& text, Wish& wish, std::string& why)
{
    std::optional<NamedRegions> named = ReadNamedRegions(text, why);
    if (!named) return false;
    if (named->areAll) wish.outs = PathsOfRegions(wish.outs.front(), named->regions);
    wish.request.regions = std::move(named->regions);
    return true;
}

std::optional<Wish> WishOf(const BatchArguments& taken, std::string& why)
{
    why = taken.error;
    if (!why.empty()) return std::nullopt;
    if (taken.files.size() != 2) {
        why = kTwoFiles;
        return std::nullopt;
    }
    Wish wish;
    wish.request.path = taken.files[0];
    wish.outs = {taken.files[1]};
    wish.replace = taken.Has("--force");
    wish.json = taken.Has("--json");
    wish.request.set = taken.Value("--set").value_or("");
    const auto to = taken.Value("--to");
    const auto format = to ? ExportFormatOf(*to) : ExportFormatByExtension(taken.files[1]);
    const auto form = ExportFormOf(taken.Value("--as").value_or("counts"));
    const auto range = FrameRangeOf(taken.Value("--frames").value_or(":"));
    const auto volts = taken.Value("--volts");
    const auto place = taken.Value("--rectangle");
    const auto region = taken.Value("--region");
    if (volts) wish.request.volts = TwoVolts(*volts);
    if (place) wish.request.place = RectangleOf(*place);
    if (!format) {
        why = "--to says which format: tiff, fits, hdf5, npy, csv, png or mp4";
    } else if (!form) {
        why = "--as says in what form: counts, corrected, volts, celsius, kelvin or fahrenheit";
    } else if (!range) {
        why = kFrameRangeForm;
    } else if (volts && !wish.request.volts) {
        why = kTwoVoltsForm;
    } else if (place && !wish.request.place) {
        why = kRectangleForm;
    } else if (place && region) {
        why = "--rectangle and --region don't go together";
    } else if (NamesOf(*format).isPicture && IsFloatForm(*form)) {
        why = "a picture is made of counts: --as counts or corrected";
    } else if (auto picture = PictureWishOf(taken, *format, why);
               picture && (!region || TakeRegions(*region, wish, why))) {
        wish.picture = std::move(*picture);
        wish.format = *format;
        wish.request.form = *form;
        wish.request.first = range->first;
        wish.request.end = range->second;
        if (taken.files[1] != kStreamName) return wish;
        if (!wish.json && wish.outs == std::vector<std::string>{std::string(kStreamName)}) return wish;
        why = wish.json ? kOneResult : kOneFile;
    }
    return std::nullopt;
}

std::string JsonOf(const Wish& wish, const ExportSource& source, const ExportOutcome& outcome)
{
    // Each part has as many: one, or of pictures one a frame.
    const std::size_t each = outcome.files.size() / source.Parts();
    std::string json;
    for (std::size_t part = 0; part < source.Parts(); ++part) {
        const Provenance& provenance = source.Description(part).provenance;
        JsonText line;
        line.Text("file", each == 0 ? wish.outs[part] : outcome.files[part * each]);
        if (each > 1) line.Text("last_file", outcome.files[(part + 1) * each - 1]);
        line.Text("format", NamesOf(wish.format).word)
            .Text("form", WordOf(provenance.form))
            .Text("unit", provenance.unit);
        if (provenance.region) line.Text("region", provenance.region->name);
        json += line.Whole("frames", outcome.frames).Truth("stopped", outcome.stopped).Json() + '\n';
    }
    return json;
}

int TellStopped(const ExportSource& source, const ExportOutcome& outcome)
{
    std::string has = "no file was made";
    const std::size_t files = outcome.files.size();
    if (files > 0) {
        const bool isAFileAFrame = files > source.Parts();
        has = outcome.files.front();
        if (files > 1) has = isAFileAFrame ? has + " to " + outcome.files.back() : Format("each of %zu files", files);
        has += Format(isAFileAFrame ? " have %lld of %lld frames" : " has %lld of %lld frames",
                      static_cast<long long>(outcome.frames), static_cast<long long>(source.Description().frames));
    }
    std::fprintf(stderr, "kelvo export: stopped, %s\n", has.c_str());
    return kBatchStopped;
}

// The traces' own wish. They are counts as they are stored, in one format.
std::optional<TracesWish> TracesWishOf(const BatchArguments& taken, std::string& why)
{
    constexpr std::array kOthers = {"--as",   "--set",  "--volts", "--rectangle", "--range",       "--colors",
                                    "--data", "--unit", "--scale", "--time",      "--draw-regions"};
    const auto* const other = std::ranges::find_if(
        kOthers, [&taken](const char* option) { return taken.Has(option) || taken.Value(option).has_value(); });
    const auto range = FrameRangeOf(taken.Value("--frames").value_or(":"));
    why = taken.error;
    if (!why.empty()) return std::nullopt;
    if (taken.files.size() != 2) {
        why = kTwoFiles;
    } else if (other != kOthers.end()) {
        why = std::string("--traces and ") + *other + " don't go together";
    } else if (taken.Value("--to").value_or("csv") != "csv") {
        why = "--traces are written as csv alone";
    } else if (!range) {
        why = kFrameRangeForm;
    } else {
        TracesWish wish{.in = taken.files[0], .out = taken.files[1], .frames = *range, .replace = taken.Has("--force")};
        const auto text = taken.Value("--region");
        std::optional<NamedRegions> named = text ? ReadNamedRegions(*text, why) : NamedRegions{};
        if (!named) return std::nullopt;
        wish.regions = std::move(named->regions);
        if (taken.files[1] != kStreamName || !taken.Has("--json")) return wish;
        why = kOneResult;
    }
    return std::nullopt;
}

int TracesCommand(const BatchArguments& taken)
{
    std::string why;
    std::optional<TracesWish> wish = TracesWishOf(taken, why);
    Streams streams;
    if (!wish || !TakeStreams(wish->in, wish->out, ".csv", streams, why)) return TellBatchFailure(kWord, why);
    std::int64_t frames = 0;
    if (const auto failure = ExportTraces(*wish, frames)) return TellBatchFailure(kWord, *failure);
    if (streams.output) return streams.output->Deliver(why) ? kBatchDone : TellBatchFailure(kWord, why);
    JsonText told;
    told.Text("file", wish->out).Text("format", "csv").Text("form", "traces").Text("unit", "Counts");
    told.Whole("frames", frames).Truth("stopped", false);
    if (taken.Has("--json")) std::fputs((told.Json() + '\n').c_str(), stdout);
    return kBatchDone;
}

}  // namespace

int ExportCommand(std::span<const std::string> arguments)
{
    std::string why;
    const BatchArguments taken = TakeApart(arguments, kWord);
    if (taken.Has("--traces")) return TracesCommand(taken);
    std::optional<Wish> wish = WishOf(taken, why);
    Streams streams;
    const bool isReady =
        wish && TakeStreams(wish->request.path, wish->outs.front(), NamesOf(wish->format).extension, streams, why);
    if (!isReady) return TellBatchFailure(kWord, why);
    std::optional<ExportSource> source = ExportSource::Open(wish->request, why);
    if (!source) return TellBatchFailure(kWord, why);

    std::optional<PictureOptions> options = PictureOptions{};
    if (NamesOf(wish->format).isPicture) {
        options = PictureOptionsOf(wish->picture, source->Description().provenance, why);
    }
    if (!options) return TellBatchFailure(kWord, why);

    if (streams.output && NamesOf(wish->format).format == ExportFormat::kPng && source->Description().frames > 1) {
        return TellBatchFailure(kWord, kOneFile);
    }

    BatchProgress shown(kWord);
    const auto sinks = MakeFrameSinks(wish->format, wish->outs, wish->replace, *options);
    const ExportOutcome outcome = RunExport(*source, sinks, [&shown](std::int64_t done, std::int64_t all) {
        if (done > 0) shown.Show(done, all);
        return !Interrupted();
    });
    if (!outcome.failure.empty()) return TellBatchFailure(kWord, outcome.failure);
    if (wish->json) std::fputs(JsonOf(*wish, *source, outcome).c_str(), stdout);
    if (streams.output && outcome.frames > 0 && !streams.output->Deliver(why)) return TellBatchFailure(kWord, why);
    if (!outcome.stopped) return kBatchDone;
    AnswerInterrupt();
    return TellStopped(*source, outcome);
}

}  // namespace kelvo
