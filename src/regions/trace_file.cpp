#include "regions/trace_file.h"

#include "display/units.h"
#include "imagefile/frames_file.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "regions/region_counts.h"
#include "regions/trace_unit.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <exception>
#include <vector>

namespace kelvo {

namespace {

using std::chrono::steady_clock;

constexpr double kNsPerSecond = 1e9;
constexpr std::chrono::milliseconds kBetweenLooks(100);
constexpr const char* kNoMemory = "There is not enough memory for the traces.";

bool TellsOfAll(const StoredFrames& file, const StoredRange& range)
{
    for (std::int64_t frame = range.first; frame <= range.last; ++frame) {
        const FrameRecord* const record = file.RecordOf(frame);
        if (record == nullptr || record->monotonicNs == 0) return false;
    }
    return true;
}

FrameMoment MomentOf(const FrameRecord& record)
{
    return {.number = record.number,
            .monotonicNs = record.monotonicNs,
            .utcNs = record.utcNs,
            .told = std::int64_t{record.lostByTransport} + record.lostByBoard + record.lostByRing + record.passedOver,
            .startsAnew = (record.flags & kFirstOfRun) != 0};
}

// The frames of a file of which nothing but the rate is known, or not even that: 0.
FrameMoment MomentByRate(std::int64_t frame, double rate)
{
    const double ns = rate > 0 ? static_cast<double>(frame) / rate * kNsPerSecond : 0;
    return {.number = frame + 1, .monotonicNs = std::llround(ns)};
}

std::vector<std::pair<std::string, std::string>> OriginOf(const StoredFrames& file, const StoredRange& range)
{
    std::vector<std::pair<std::string, std::string>> origin = {
        {"source", file.Path()},
        {"frames", std::to_string(range.first) + " to " + std::to_string(range.last) + ", counted from 0, of " +
                       std::to_string(file.Frames())},
    };
    const FramesFile* const journal = file.Journal();
    if (journal == nullptr) return origin;
    constexpr std::pair<const char*, std::string_view> kTold[] = {
        {"recorded by", frames_key::kProgram},
        {"camera", frames_key::kCamera},
        {"calibration set", frames_key::kCalibration},
        {"calibration checksum", frames_key::kChecksum},
        {"pixels", frames_key::kPixels},
        {"sample", frames_key::kSampleName},
        {"comment", frames_key::kComment},
        {"clock", frames_key::kClock},
    };
    for (const auto& [name, key] : kTold) {
        const std::string text = journal->head.Text(key);
        if (!text.empty()) origin.emplace_back(name, text);
    }
    return origin;
}

template <typename T>
bool Reserve(std::vector<T>& block, std::size_t count)
{
    if (!MemoryAvailable(count * sizeof(T))) return false;
    try {
        block.reserve(count);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

bool HasRoom(Trace& trace, std::size_t frames)
{
    return Reserve(trace.frames, frames) &&
           std::ranges::all_of(trace.lines, [frames](TraceLine& line) { return Reserve(line.points, frames); });
}

// A look up ten times a second: a disk may take its time for each frame.
class Glances {
  public:
    explicit Glances(const TraceProgress& progress) : progress_(progress) {}
    bool GoesOn(std::int64_t read, std::int64_t of)
    {
        const auto now = steady_clock::now();
        if (!progress_ || now - last_ < kBetweenLooks) return true;
        last_ = now;
        return progress_(read, of);
    }

  private:
    const TraceProgress& progress_;
    steady_clock::time_point last_ = steady_clock::now();
};

}  // namespace

std::optional<Trace> TraceOfFile(StoredFrames& file, std::span<const Region> regions, const FileTraceOptions& options,
                                 const TraceProgress& progress, std::string& why)
{
    const StoredRange& asked = options.range;
    const StoredRange range{.first = asked.first, .last = asked.last < 0 ? file.Frames() - 1 : asked.last};
    if (range.first < 0 || range.last < range.first || range.last >= file.Frames()) {
        why = Format("The file has the frames 0 to %lld.", static_cast<long long>(file.Frames() - 1));
        return std::nullopt;
    }
    const auto columns = static_cast<std::int32_t>(file.Columns());
    const auto rows = static_cast<std::int32_t>(file.Rows());
    std::optional<RegionCounts> counts = RegionCounts::Make(regions, columns, rows, why, options.bad);
    if (!counts) return std::nullopt;

    const bool isTold = TellsOfAll(file, range);
    const double rate = file.Header().FrameRate;
    const std::int64_t frames = range.last - range.first + 1;
    Trace trace{.hasTimes = isTold || rate > 0, .origin = OriginOf(file, range)};
    if (!options.bad.empty()) trace.origin.emplace_back("bad pixels", "left out: " + options.badBy);
    {
        const UnitScope ofFile(file.Header(), file.Path());
        AddLines(trace, regions, *counts, file.AreToldRaw() ? TracedCounts::kRaw : TracedCounts::kAsShown);
    }
    std::vector<std::int16_t> pixels;
    if (!AllocateBlock(pixels, file.Pixels()) || !HasRoom(trace, static_cast<std::size_t>(frames))) {
        why = kNoMemory;
        return std::nullopt;
    }
    Glances glances(progress);
    TraceClock clock;
    for (std::int64_t i = 0; i < frames; ++i) {
        const std::int64_t frame = range.first + i;
        std::string reason;
        if (!glances.GoesOn(i, frames)) return std::nullopt;
        if (!file.ReadCounts(frame, pixels, reason)) {
            why = "Frame " + std::to_string(frame) + " of the file " + reason + ".";
            return std::nullopt;
        }
        counts->FromFrame(pixels);
        trace.frames.push_back(clock.Next(isTold ? MomentOf(*file.RecordOf(frame)) : MomentByRate(frame, rate)));
        for (std::size_t k = 0; k < trace.lines.size(); ++k) trace.lines[k].points.push_back(counts->Measure(k));
    }
    return trace;
}

}  // namespace kelvo
