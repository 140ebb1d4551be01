#include "record/live_trace.h"

#include "grabber/recording.h"
#include "pixel/bad_marks.h"
#include "platform/text.h"
#include "record/live_video.h"
#include "record/recording_head.h"
#include "regions/region_counts.h"
#include "regions/trace_unit.h"
#include "state/camera_config.h"
#include "state/head_state.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr const char* kFull = "The trace was ended: there is no more memory for it. What was traced stands.";
constexpr const char* kNotAgain =
    "The trace was ended: there was no memory to go on with it after a recording. What was traced stands.";

// Frames that were measured and not yet fetched.
struct Measured {
    std::vector<TraceFrame> frames{};
    std::vector<TracePoint> points{};  // region by region of each frame
    bool isFull = false;
};

// What the observer works with. It is the observer's but for `fresh`.
struct Measuring {
    RegionCounts counts;
    TraceClock clock;
    std::size_t framesLeft = 0;

    std::mutex mutex;
    Measured fresh;
};
std::optional<Measuring> measuring;  // while one runs
Trace trace;
std::string message;

// Memory gone in the middle of a frame leaves it out whole.
bool Note(Measured& fresh, const TraceFrame& frame, const RegionCounts& counts)
{
    const std::size_t before = fresh.points.size();
    try {
        fresh.frames.push_back(frame);
        for (std::size_t i = 0; i < counts.Regions(); ++i) fresh.points.push_back(counts.Measure(i));
    } catch (const std::exception&) {
        fresh.points.resize(before);
        if (fresh.points.size() < fresh.frames.size() * counts.Regions()) fresh.frames.pop_back();
        return false;
    }
    return true;
}

void Observe(Measuring& m, const ObservedFrame& frame)
{
    m.counts.FromRaw(frame.values);
    const TraceFrame next = m.clock.Next({.number = frame.stamp.number,
                                          .monotonicNs = frame.stamp.monotonicNs,
                                          .utcNs = frame.stamp.utcNs,
                                          .told = frame.missed});
    const std::scoped_lock lock(m.mutex);
    if (m.fresh.isFull) return;
    m.fresh.isFull = m.framesLeft == 0 || !Note(m.fresh, next, m.counts);
    if (!m.fresh.isFull) --m.framesLeft;
}

// False where memory is refused: what is fetched stays whole frames.
bool Append(const Measured& fresh)
{
    const std::size_t frames = trace.frames.size();
    try {
        trace.frames.insert(trace.frames.end(), fresh.frames.begin(), fresh.frames.end());
        for (std::size_t i = 0; i < fresh.points.size(); ++i) {
            trace.lines[i % trace.lines.size()].points.push_back(fresh.points[i]);
        }
    } catch (const std::exception&) {
        trace.frames.resize(frames);
        for (TraceLine& line : trace.lines) line.points.resize(frames);
        return false;
    }
    return true;
}

// What was measured by now joins the trace. False where there is no memory for more.
bool TakeFresh(Measuring& m)
{
    Measured fresh;
    {
        const std::scoped_lock lock(m.mutex);
        fresh = std::exchange(m.fresh, {.isFull = m.fresh.isFull});
    }
    return Append(fresh) && !fresh.isFull;
}

void Fetch()
{
    if (!measuring) return;
    const bool hasRoom = TakeFresh(*measuring);
    if (hasRoom && ObservingRuns()) return;
    message = hasRoom ? kNotAgain : kFull;
    EndObserving();
    measuring.reset();
}

std::vector<std::pair<std::string, std::string>> OriginOfLive()
{
    const FramesHead head = HeadOfRecording();
    std::vector<std::pair<std::string, std::string>> origin = {
        {"source", "live video"},
        {"camera", head.Text(frames_key::kCamera)},
        {"head settings", Format("%g Hz, %g ms", double{FrameRate}, IntegrationMsecInForce)},
    };
    for (const auto& [name, key] :
         {std::pair("calibration set", frames_key::kCalibration),
          std::pair("calibration checksum", frames_key::kChecksum), std::pair("clock", frames_key::kClock)}) {
        const std::string text = head.Text(key);
        if (!text.empty()) origin.emplace_back(name, text);
    }
    return origin;
}

std::size_t MostFrames(std::size_t regions)
{
    return kMostTraceBytes / (sizeof(TraceFrame) + regions * sizeof(TracePoint));
}

}  // namespace

bool StartLiveTrace(std::span<const Region> regions, std::string& why, BadPixels bad)
{
    if (LiveTraceRuns()) {
        why = "Live video is traced already.";
        return false;
    }
    if (!BeginLiveVideo()) {
        why = "No camera is on.";
        return false;
    }
    std::optional<BadDetMap> marks = BadDetMap();
    if (bad == BadPixels::kLeftOut) marks = BadDetectorsInForce(why);
    if (!marks) {
        if (why.empty()) why = kNoListInForce;
        return false;
    }
    std::optional<RegionCounts> counts = RegionCounts::Make(regions, ActiveConfig.Hroi, ActiveConfig.Vroi, why, *marks);
    if (!counts) return false;
    Trace fresh{.origin = OriginOfLive()};
    if (bad == BadPixels::kLeftOut) fresh.origin.emplace_back("bad pixels", "left out: those that the camera knows");
    AddLines(fresh, regions, *counts, TracedCounts::kAsShown);
    const bool isReady = counts->PrepareCorrection();
    if (isReady) {
        measuring.emplace();
        measuring->counts = std::move(*counts);
        measuring->framesLeft = MostFrames(regions.size());
    }
    if (!isReady || !BeginObserving([](const ObservedFrame& frame) { Observe(*measuring, frame); })) {
        measuring.reset();
        why = "There is not enough memory to trace the regions.";
        return false;
    }
    trace = std::move(fresh);
    message.clear();
    return true;
}

void StopLiveTrace()
{
    Fetch();
    if (!measuring) return;
    EndObserving();
    if (!TakeFresh(*measuring)) message = kFull;
    measuring.reset();
}

bool LiveTraceRuns()
{
    return measuring.has_value();
}

const Trace& LiveTrace()
{
    Fetch();
    return trace;
}

const std::string& LiveTraceMessage()
{
    return message;
}

void ResetLiveTrace()
{
    StopLiveTrace();
    trace = {};
    message.clear();
}

}  // namespace kelvo
