#include "fileboard/play_times.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kelvo {

namespace {

constexpr double kUsPerSecond = 1e6;
constexpr std::int64_t kNsPerUs = 1000;
// What a damaged journal tells can't make a time that leaves 64 bits.
constexpr std::int64_t kLongestStepUs = 86'400'000'000;
constexpr double kLatestUs = 4e15;

// Numbers, and microseconds, of a whole round.
std::int64_t NumbersOfRound(const PlayTimes& times)
{
    return times.frames.back().number + 1;
}

std::int64_t UsOfRound(const PlayTimes& times)
{
    return times.frames.back().us + times.periodUs;
}

PlayMoment MomentOf(const PlayTimes& times, std::int64_t round, std::size_t frame)
{
    const PlayedFrame& played = times.frames[frame];
    return {.which = static_cast<std::int64_t>(frame),
            .number = round * NumbersOfRound(times) + played.number + 1,
            .us = round * UsOfRound(times) + played.us + times.periodUs};
}

bool TimeIsKnown(const RecordedTime& frame, const RecordedTime& before)
{
    if (frame.beginsAnew) return true;
    return before.monotonicNs > 0 && frame.monotonicNs > before.monotonicNs &&
           frame.monotonicNs - before.monotonicNs >= kNsPerUs;
}

// Each frame's time follows from the recording's clock.
bool TimesAreKnown(const std::vector<RecordedTime>& recorded)
{
    for (std::size_t i = 1; i < recorded.size(); ++i) {
        if (!TimeIsKnown(recorded[i], recorded[i - 1])) return false;
    }
    return recorded.size() > 1 && recorded.front().monotonicNs > 0;
}

// The middle one of the times from frame to frame where none is missing; 0: there are none.
std::int64_t MiddleStepUs(const std::vector<RecordedTime>& recorded)
{
    std::vector<std::int64_t> steps;
    for (std::size_t i = 1; i < recorded.size(); ++i) {
        const RecordedTime& frame = recorded[i];
        if (frame.missing > 0 || frame.beginsAnew || !TimeIsKnown(frame, recorded[i - 1])) continue;
        steps.push_back((frame.monotonicNs - recorded[i - 1].monotonicNs) / kNsPerUs);
    }
    if (steps.empty()) return 0;
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::ranges::nth_element(steps, middle);
    return *middle;
}

// 0: nothing tells it.
double RateOf(const std::vector<RecordedTime>& recorded, double rateHz, double recordedHz)
{
    if (rateHz > 0) return rateHz;
    const std::int64_t stepUs = MiddleStepUs(recorded);
    return stepUs > 0 ? kUsPerSecond / static_cast<double>(stepUs) : std::max(recordedHz, 0.0);
}

std::int64_t UsAtRate(std::int64_t frames, double rateHz)
{
    return std::llround(std::min(static_cast<double>(frames) * kUsPerSecond / rateHz, kLatestUs));
}

}  // namespace

std::optional<PlayMoment> LastPlayed(const PlayTimes& times, std::int64_t us)
{
    if (times.frames.empty() || us < times.periodUs) return std::nullopt;
    const std::int64_t since = us - times.periodUs;
    const std::int64_t round = times.loops ? since / UsOfRound(times) : 0;
    const std::int64_t within = since - round * UsOfRound(times);
    const auto behind = std::ranges::upper_bound(times.frames, within, {}, &PlayedFrame::us);
    return MomentOf(times, round, static_cast<std::size_t>(behind - times.frames.begin()) - 1);
}

std::optional<PlayMoment> NextPlayed(const PlayTimes& times, std::int64_t after)
{
    if (times.frames.empty()) return std::nullopt;
    const std::int64_t from = std::max<std::int64_t>(after, 0);
    std::int64_t round = times.loops ? from / NumbersOfRound(times) : 0;
    auto next = std::ranges::lower_bound(times.frames, from - round * NumbersOfRound(times), {}, &PlayedFrame::number);
    if (next == times.frames.end()) {
        if (!times.loops) return std::nullopt;
        ++round;
        next = times.frames.begin();
    }
    return MomentOf(times, round, static_cast<std::size_t>(next - times.frames.begin()));
}

PlayTimes TimesOf(const std::vector<RecordedTime>& recorded, double rateHz, double recordedHz, bool loops)
{
    const double toldHz = RateOf(recorded, rateHz, recordedHz);
    const double rate = toldHz > 0 ? toldHz : kRateOfUnknownHz;
    const bool atRecordedTimes = rateHz <= 0 && TimesAreKnown(recorded);
    PlayTimes times{.frames = {},
                    .periodUs = std::max<std::int64_t>(UsAtRate(1, rate), 1),
                    .loops = loops,
                    .rateHz = rate,
                    .rateIsKnown = toldHz > 0};
    times.frames.reserve(recorded.size());
    PlayedFrame at;
    for (std::size_t i = 0; i < recorded.size(); ++i) {
        if (i > 0) {
            at.number += 1 + std::max<std::int64_t>(recorded[i].missing, 0);
            if (!atRecordedTimes) {
                at.us = std::max(UsAtRate(at.number, rate), at.us + 1);
            } else if (recorded[i].beginsAnew) {
                at.us += times.periodUs;
            } else {
                at.us += std::min((recorded[i].monotonicNs - recorded[i - 1].monotonicNs) / kNsPerUs, kLongestStepUs);
            }
        }
        times.frames.push_back(at);
    }
    return times;
}

}  // namespace kelvo
