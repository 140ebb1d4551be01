#include "batch/export_command.h"

#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "batch/cut_command.h"
#include "batch/picture_arguments.h"
#include "export/export_formats.h"
#include "export/export_job.h"
#include "platform/json_text.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

namespace kelvo {

namespace {

constexpr std::string_view kWord = "export";
constexpr int kBatchStopped = 1;

struct Wish {
    ExportRequest request;
    ExportFormat format = ExportFormat::kNpy;
    PictureWish picture;
    std::string out;
    bool replace = false;
    bool json = false;
};

// "-0.5:2"
std::optional<std::pair<float, float>> TwoVolts(std::string_view text)
{
    const auto low = TakeFloat(text);
    if (!low || text.empty() || text.front() != ':') return std::nullopt;
    text.remove_prefix(1);
    const auto high = TakeFloat(text);
    if (!high || !text.empty() || !(*low < *high)) return std::nullopt;
    return std::pair(*low, *high);
}

// "10,20,41,51"
std::optional<RegionPlace> PlaceOf(std::string_view text)
{
    std::array<std::int32_t, 4> sides{};
    for (std::size_t i = 0; i < sides.size(); ++i) {
        const std::size_t comma = i + 1 < sides.size() ? text.find(',') : text.size();
        if (comma == std::string_view::npos) return std::nullopt;
        const std::string_view field = text.substr(0, comma);
        const bool isNumber =
            !field.empty() && field.size() < 6 && field.find_first_not_of("0123456789") == std::string_view::npos;
        if (!isNumber) return std::nullopt;
        sides.at(i) = ScanDecimal(field).value_or(0);
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    const auto& [left, top, right, bottom] = sides;
    if (left > right || top > bottom) return std::nullopt;
    return RegionPlace{left, top, right, bottom};
}

std::optional<Wish> WishOf(const BatchArguments& taken, std::string& why)
{
    why = taken.error;
    if (!why.empty()) return std::nullopt;
    if (taken.files.size() != 2) {
        why = "a file of frames and the name of the new file are needed";
        return std::nullopt;
    }
    Wish wish;
    wish.request.path = taken.files[0];
    wish.out = taken.files[1];
    wish.replace = taken.Has("--force");
    wish.json = taken.Has("--json");
    wish.request.set = taken.Value("--set").value_or("");
    const auto to = taken.Value("--to");
    const auto format = to ? ExportFormatOf(*to) : ExportFormatByExtension(wish.out);
    const auto form = ExportFormOf(taken.Value("--as").value_or("counts"));
    const auto range = FrameRangeOf(taken.Value("--frames").value_or(":"));
    const auto volts = taken.Value("--volts");
    const auto place = taken.Value("--rectangle");
    if (volts) wish.request.volts = TwoVolts(*volts);
    if (place) wish.request.place = PlaceOf(*place);
    if (!format) {
        why = "--to says which format: tiff, fits, hdf5, npy, csv, png or mp4";
    } else if (!form) {
        why = "--as says in what form: counts, corrected, volts, celsius, kelvin or fahrenheit";
    } else if (!range) {
        why = kFrameRangeForm;
    } else if (volts && !wish.request.volts) {
        why = "--volts LOW:HIGH says what the ends of the display range are, the low one first";
    } else if (place && !wish.request.place) {
        why = "--rectangle LEFT,TOP,RIGHT,BOTTOM says which columns and rows, counted from 0";
    } else if (NamesOf(*format).isPicture && IsFloatForm(*form)) {
        why = "a picture is made of counts: --as counts or corrected";
    } else if (auto picture = PictureWishOf(taken, *format, why)) {
        wish.picture = std::move(*picture);
        wish.format = *format;
        wish.request.form = *form;
        wish.request.first = range->first;
        wish.request.end = range->second;
        return wish;
    }
    return std::nullopt;
}

std::string JsonOf(const Wish& wish, const ExportDescription& description, const ExportOutcome& outcome)
{
    JsonText json;
    json.Text("file", outcome.files.empty() ? wish.out : outcome.files.front());
    if (outcome.files.size() > 1) json.Text("last_file", outcome.files.back());
    return json.Text("format", NamesOf(wish.format).word)
               .Text("form", WordOf(description.provenance.form))
               .Text("unit", description.provenance.unit)
               .Whole("frames", outcome.frames)
               .Truth("stopped", outcome.stopped)
               .Json() +
           '\n';
}

}  // namespace

int ExportCommand(std::span<const std::string> arguments)
{
    std::string why;
    const std::optional<Wish> wish = WishOf(TakeApart(arguments, kWord), why);
    if (!wish) return TellBatchFailure(kWord, why);
    std::optional<ExportSource> source = ExportSource::Open(wish->request, why);
    if (!source) return TellBatchFailure(kWord, why);

    std::optional<PictureOptions> options = PictureOptions{};
    if (NamesOf(wish->format).isPicture) {
        options = PictureOptionsOf(wish->picture, source->Description().provenance, why);
    }
    if (!options) return TellBatchFailure(kWord, why);

    BatchProgress shown(kWord);
    const std::unique_ptr<FrameSink> sink = MakeFrameSink(wish->format, wish->out, wish->replace, std::move(*options));
    const ExportOutcome outcome = RunExport(*source, *sink, [&shown](std::int64_t done, std::int64_t all) {
        if (done > 0) shown.Show(done, all);
        return !Interrupted();
    });
    if (!outcome.failure.empty()) return TellBatchFailure(kWord, outcome.failure);
    if (wish->json) std::fputs(JsonOf(*wish, source->Description(), outcome).c_str(), stdout);
    if (!outcome.stopped) return kBatchDone;
    AnswerInterrupt();
    const std::vector<std::string>& files = outcome.files;
    const std::string name = files.size() > 1 ? files.front() + " to " + files.back() : files.empty() ? "" : files[0];
    const std::string has =
        outcome.frames == 0 ? "no file was made"
                            : name + Format(files.size() > 1 ? " have %lld of %lld frames" : " has %lld of %lld frames",
                                            static_cast<long long>(outcome.frames),
                                            static_cast<long long>(source->Description().frames));
    std::fprintf(stderr, "kelvo export: stopped, %s\n", has.c_str());
    return kBatchStopped;
}

}  // namespace kelvo
