#include "batch/stats_command.h"

#include "analysis/trace_csv.h"
#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "batch/cut_command.h"
#include "batch/info_command.h"
#include "batch/stream_file.h"
#include "calib/set_bad_detectors.h"
#include "display/units.h"
#include "imagefile/stored_frames.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/json_text.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "regions/region_measure.h"
#include "regions/region_value.h"
#include "regions/regions_file.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using Failure = std::optional<std::string>;

constexpr std::string_view kWord = "stats";
constexpr std::int64_t kFramesAtOnce = 64;  // that are measured before they are told

// --- The request ----------------------------------------------------------------------------------------------------

struct UnitChoice {
    std::string_view name;
    std::int32_t unit = kUnitCounts;
};
constexpr UnitChoice kUnits[] = {{"counts", kUnitCounts},
                                 {"volts", kUnitVolts},
                                 {"celsius", kUnitCelsius},
                                 {"kelvin", kUnitKelvin},
                                 {"fahrenheit", kUnitFahrenheit}};

struct Request {
    std::string file;
    std::vector<Region> regions;
    std::pair<std::int64_t, std::int64_t> frames = {0, -1};
    UnitChoice unit = kUnits[0];
    std::optional<std::pair<float, float>> volts;  // at the ends of the file's display range
    std::string badSet;                            // empty: none is left out
    bool asJson = false;
};

Failure ReadRequest(const BatchArguments& taken, Request& request)
{
    if (!taken.error.empty()) return taken.error;
    if (taken.files.size() != 1) return "one file is needed";
    request.file = taken.files.front();
    request.asJson = taken.Has("--json");
    request.badSet = taken.Value("--bad").value_or("");
    if (const auto text = taken.Value("--rectangle")) {
        const auto place = RectangleOf(*text);
        if (!place) return std::string(kRectangleForm);
        request.regions.push_back({.name = "rectangle", .place = *place});
    }
    if (const auto text = taken.Value("--region")) {
        std::string why;
        const std::optional<NamedRegions> named = ReadNamedRegions(*text, why);
        if (!named) return why;
        request.regions.insert(request.regions.end(), named->regions.begin(), named->regions.end());
    }
    const auto range = FrameRangeOf(taken.Value("--frames").value_or(":"));
    if (!range) return std::string(kFrameRangeForm);
    request.frames = *range;
    const std::string unit = taken.Value("--unit").value_or("counts");
    const auto* const found = std::ranges::find(kUnits, unit, &UnitChoice::name);
    if (found == std::end(kUnits)) return "--unit wants counts, volts, celsius, kelvin or fahrenheit, not " + unit;
    request.unit = *found;
    if (const auto volts = taken.Value("--volts")) {
        request.volts = TwoVolts(*volts);
        if (!request.volts) return std::string(kTwoVoltsForm);
    }
    return std::nullopt;
}

// --- The frames -----------------------------------------------------------------------------------------------------

// What doesn't change from frame to frame.
struct Task {
    std::vector<Region> regions;
    std::vector<std::vector<PixelRun>> runs;  // of each region
    BadDetMap bad;
    MeasureOptions options;
    std::int64_t first = 0;
    std::int64_t end = 0;
};

// Temperatures are read off the two sources that the header names, by frames that were corrected with them; volts off
// the display range.
Failure WhyNotInUnit(const StoredFrames& frames, const UnitChoice& unit)
{
    if (unit.unit == kUnitCounts) return std::nullopt;
    if (unit.unit == kUnitVolts) {
        if (VoltsAreKnown()) return std::nullopt;
        return "doesn't say what its counts are in volts: --volts LOW:HIGH does, for a file with a display range";
    }
    if (frames.AreToldRaw()) return "holds raw frames, which don't read in degrees: apply a set first";
    if (!CountsOfSources()) return "names no two sources with temperatures: it doesn't read in degrees";
    return std::nullopt;
}

Failure Prepare(const StoredFrames& frames, const Request& request, Task& task)
{
    const ImageHeaderRecord& header = frames.Header();
    const std::int32_t columns = header.ImageWidth;
    const std::int32_t rows = header.ImageHeight;
    task.first = request.frames.first;
    task.end = request.frames.second < 0 ? frames.Frames() : request.frames.second;
    if (task.first >= task.end || task.end > frames.Frames()) {
        return Format("%s has %lld frames: there are none of that range", frames.Path().c_str(),
                      static_cast<long long>(frames.Frames()));
    }
    if (Failure failure = WhyNotInUnit(frames, request.unit)) return frames.Path() + ' ' + *failure;
    task.regions = request.regions;
    if (task.regions.empty()) task.regions.push_back({.name = "frame", .place = {0, 0, columns - 1, rows - 1}});
    for (const Region& region : task.regions) {
        task.runs.push_back(PixelsOf(region.shape, region.place, columns, rows));
        if (task.runs.back().empty()) return "region " + region.name + " has no pixel in " + frames.Path();
    }
    if (!request.badSet.empty()) {
        std::string why;
        auto bad = BadDetectorsOfSet(request.badSet, columns, rows, why);
        if (!bad) return why;
        task.bad = *std::move(bad);
    }
    task.options = {.bad = task.bad, .countsAreRaw = frames.AreToldRaw(), .sources = CountsOfSources()};
    return std::nullopt;
}

// Measures frames of one file: each thread has its own.
class Measurer {
  public:
    Measurer(StoredFrames frames, const Task& task) : frames_(std::move(frames)), task_(task) {}

    bool Allocate() { return AllocateBlock(counts_, frames_.Pixels()); }

    // Frames from first on, a figure for each region and frame. The reason where one can't be read.
    Failure Measure(std::int64_t first, std::span<RegionFigures> figures)
    {
        const std::size_t regions = task_.regions.size();
        for (std::size_t i = 0; i < figures.size() && !Interrupted(); i += regions, ++first) {
            std::string why;
            if (!frames_.ReadCounts(first, counts_, why)) return frames_.Path() + ' ' + why;
            for (std::size_t k = 0; k < regions; ++k) {
                const ImageHeaderRecord& header = frames_.Header();
                figures[i + k] =
                    MeasureRegion(counts_, header.ImageWidth, header.ImageHeight, task_.runs[k], task_.options);
            }
        }
        return std::nullopt;
    }

    const StoredFrames& Frames() const { return frames_; }

  private:
    StoredFrames frames_;
    const Task& task_;
    std::vector<std::int16_t> counts_;
};

// --- What is told ---------------------------------------------------------------------------------------------------

std::string OptionalCount(const std::optional<std::size_t>& count, const char* none)
{
    return count ? std::to_string(*count) : none;
}

// A text as a field of one line.
std::string FieldOf(const std::string& text)
{
    std::string line = ToUtf8(text);
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    return CsvField(line);
}

std::string_view UnitMark(std::int32_t unit)
{
    switch (unit) {
        case kUnitVolts:
            return "volts";
        case kUnitCelsius:
            return "degrees Celsius";
        case kUnitKelvin:
            return "kelvin";
        case kUnitFahrenheit:
            return "degrees Fahrenheit";
        default:
            return "counts";
    }
}

std::string TableHead(const StoredFrames& frames, const Request& request)
{
    std::string head = "# Kelvo " KELVO_VERSION ", kelvo stats\n# file: " + FieldOf(AbsolutePath(frames.Path())) + '\n';
    head += "# unit: " + std::string(UnitMark(request.unit.unit)) + '\n';
    if (!request.badSet.empty()) head += "# left out: bad detectors of " + FieldOf(AbsolutePath(request.badSet)) + '\n';
    if (const FramesFile* const journal = frames.Journal()) {
        const std::string set = journal->head.Text(frames_key::kCalibration);
        if (!set.empty()) head += "# set: " + FieldOf(set) + ' ' + journal->head.Text(frames_key::kChecksum) + '\n';
    }
    return head +
           "frame,seconds,utc,region,pixels,left_out,mean,deviation,min,min_x,min_y,max,max_x,max_y,saturated,"
           "outside_sources\n";
}

struct Line {
    std::int64_t frame = 0;
    std::optional<double> seconds;
    std::string utc;
    const Region& region;
    const RegionFigures& figures;
};

std::string CsvLine(const Line& line, std::int32_t unit)
{
    const RegionFigures& figures = line.figures;
    std::string text = std::to_string(line.frame) + ',' + (line.seconds ? ShortestText(*line.seconds) : "") + ',' +
                       line.utc + ',' + FieldOf(line.region.name) + ',' + std::to_string(figures.pixels) + ',' +
                       std::to_string(figures.leftOut) + ',';
    if (figures.pixels == 0) return text + ",,,,,,,,,\n";
    const RegionValues values = ValuesOf(figures, line.region, unit);
    text += ShortestText(values.mean) + ',' + ShortestText(values.deviation) + ',' +
            ShortestText(static_cast<float>(values.least)) + Format(",%d,%d,", figures.least.x, figures.least.y) +
            ShortestText(static_cast<float>(values.most)) + Format(",%d,%d,", figures.most.x, figures.most.y);
    return text + OptionalCount(figures.saturated, "") + ',' + OptionalCount(figures.outsideSources, "") + '\n';
}

std::string JsonRow(const Line& line, std::int32_t unit)
{
    const RegionFigures& figures = line.figures;
    JsonText json;
    json.Whole("frame", line.frame);
    json.Member("seconds", line.seconds ? ShortestText(*line.seconds) : "null");
    json.Member("utc", line.utc.empty() ? "null" : '"' + line.utc + '"');
    json.Text("region", line.region.name)
        .Whole("pixels", static_cast<std::int64_t>(figures.pixels))
        .Whole("left_out", static_cast<std::int64_t>(figures.leftOut));
    if (figures.pixels > 0) {
        const RegionValues values = ValuesOf(figures, line.region, unit);
        json.Number("mean", values.mean)
            .Number("deviation", values.deviation)
            .Single("min", static_cast<float>(values.least))
            .Whole("min_x", figures.least.x)
            .Whole("min_y", figures.least.y)
            .Single("max", static_cast<float>(values.most))
            .Whole("max_x", figures.most.x)
            .Whole("max_y", figures.most.y);
        json.Member("saturated", OptionalCount(figures.saturated, "null"));
        json.Member("outside_sources", OptionalCount(figures.outsideSources, "null"));
    }
    return json.Json() + '\n';
}

void Tell(const StoredFrames& frames, const Task& task, const Request& request, std::int64_t first,
          std::span<const RegionFigures> figures)
{
    std::string told;
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const std::int64_t frame = first + static_cast<std::int64_t>(i / task.regions.size());
        const FrameRecord* const record = frames.RecordOf(frame);
        const Line line{.frame = frame,
                        .seconds = frames.SecondsOf(frame),
                        .utc = record ? UtcText(record->utcNs) : std::string(),
                        .region = task.regions[i % task.regions.size()],
                        .figures = figures[i]};
        told += request.asJson ? JsonRow(line, request.unit.unit) : CsvLine(line, request.unit.unit);
    }
    std::fputs(told.c_str(), stdout);
}

// Both halves of some frames at once; the first of the failures in the order of the frames.
Failure MeasureTogether(Measurer& here, std::optional<Measurer>& there, std::size_t regions, std::int64_t first,
                        std::span<RegionFigures> figures)
{
    const std::size_t frames = figures.size() / regions;
    const std::size_t half = there ? frames - frames / 2 : frames;
    Failure second;
    std::optional<std::jthread> thread;
    const auto rest = figures.subspan(half * regions);
    const auto measureRest = [&](Measurer& measurer) {
        second = measurer.Measure(first + static_cast<std::int64_t>(half), rest);
    };
    try {
        if (there && !rest.empty()) thread.emplace([&] { measureRest(*there); });
    } catch (const std::system_error&) {
        thread.reset();  // there is no thread to be had: one does it all
    }
    const Failure failure = here.Measure(first, figures.first(half * regions));
    if (!thread && !rest.empty() && !failure) measureRest(here);
    thread.reset();
    return failure ? failure : second;
}

Failure Stats(const Request& request)
{
    std::string why;
    std::optional<StoredFrames> frames = StoredFrames::Open(request.file, why);
    if (!frames) return request.file + ' ' + why;
    const ImageHeaderRecord header = frames->Header();
    std::optional<UnitScope> scope;
    request.volts ? scope.emplace(header, request.file, *request.volts) : scope.emplace(header, request.file);
    Task task;
    if (Failure failure = Prepare(*frames, request, task)) return failure;

    std::optional<Measurer> there;
    if (auto again = StoredFrames::Open(request.file, why)) there.emplace(*std::move(again), task);
    Measurer here(*std::move(frames), task);
    if (there && !there->Allocate()) there.reset();
    std::vector<RegionFigures> figures;
    const std::size_t regions = task.regions.size();
    const std::size_t atOnce = static_cast<std::size_t>(std::min(kFramesAtOnce, task.end - task.first)) * regions;
    if (!here.Allocate() || !AllocateBlock(figures, atOnce)) return "no memory is left";

    if (!request.asJson) std::fputs(TableHead(here.Frames(), request).c_str(), stdout);
    BatchProgress progress(kWord);
    for (std::int64_t first = task.first; first < task.end; first += kFramesAtOnce) {
        const std::int64_t count = std::min(kFramesAtOnce, task.end - first);
        const auto part = std::span(figures).first(static_cast<std::size_t>(count) * regions);
        if (Failure failure = MeasureTogether(here, there, regions, first, part)) return failure;
        if (Interrupted()) return std::string(kInterrupted);
        Tell(here.Frames(), task, request, first, part);
        progress.Show(first + count - task.first, task.end - task.first);
    }
    return std::nullopt;
}

}  // namespace

int StatsCommand(std::span<const std::string> arguments)
{
    Request request;
    Failure failure = ReadRequest(TakeApart(arguments, kWord), request);
    std::string why;
    std::optional<StreamFile> input;
    if (!failure && !StreamFile::TakeInput(request.file, input, why)) failure = why;
    if (!failure) failure = Stats(request);
    return failure ? TellBatchFailure(kWord, *failure) : kBatchDone;
}

}  // namespace kelvo
