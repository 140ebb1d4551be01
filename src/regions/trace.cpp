#include "regions/trace.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kelvo {

namespace {

constexpr double kNsPerSecond = 1e9;

// Frames from the one before to this one.
std::int64_t StepOf(const TraceFrame& frame)
{
    return frame.missing + 1;
}

// The median of the steps inside the runs, of two the smaller one; 1 where there are none.
std::int64_t UsualStep(std::span<const TraceFrame> frames)
{
    std::vector<std::int64_t> steps;
    for (std::size_t i = 1; i < frames.size(); ++i) {
        if (!frames[i].startsAnew) steps.push_back(StepOf(frames[i]));
    }
    if (steps.empty()) return 1;
    const auto middle = steps.begin() + (std::ssize(steps) - 1) / 2;
    std::ranges::nth_element(steps, middle);
    return *middle;
}

}  // namespace

TracePoint MeasureCounts(std::span<const std::int16_t> counts)
{
    const auto n = static_cast<std::int64_t>(counts.size());
    std::int64_t sum = 0;
    std::int16_t least = counts.front();
    std::int16_t most = counts.front();
    for (const std::int16_t count : counts) {
        sum += count;
        least = std::min(least, count);
        most = std::max(most, count);
    }
    const double mean = static_cast<double>(sum) / static_cast<double>(n);
    TracePoint point{.mean = mean, .minimum = least, .maximum = most};
    if (n < 2) return point;

    // A difference of two counts fits into 16 bits without its sign, its square into 32.
    const auto middle = static_cast<std::int32_t>(std::lround(mean));
    std::int64_t squares = 0;
    for (const std::int16_t count : counts) {
        const auto difference = static_cast<std::uint32_t>(std::abs(count - middle));
        squares += std::int64_t{difference} * difference;
    }
    const std::int64_t rest = sum - n * middle;
    const double about =
        static_cast<double>(squares) - static_cast<double>(rest) * static_cast<double>(rest) / static_cast<double>(n);
    point.deviation = std::sqrt(std::max(about, 0.0) / static_cast<double>(n - 1));
    return point;
}

TraceValue ValueOf(const TracePoint& point, const TraceScale& scale)
{
    const auto single = [&scale](std::int16_t count) { return static_cast<float>(scale.zero + scale.step * count); };
    return {.mean = scale.zero + scale.step * point.mean,
            .deviation = std::abs(scale.step) * point.deviation,
            .minimum = single(point.minimum),
            .maximum = single(point.maximum)};
}

TraceScale ScaleOf(const Trace& trace, std::size_t unit, std::size_t line)
{
    const bool isKnown = unit < trace.units.size() && line < trace.units[unit].scales.size();
    return isKnown ? trace.units[unit].scales[line] : TraceScale{};
}

std::string UnitTextOf(const Trace& trace, std::size_t unit)
{
    return unit < trace.units.size() ? trace.units[unit].text : TraceUnit{}.text;
}

double SecondsOf(const TraceFrame& frame)
{
    return static_cast<double>(frame.clockNs) / kNsPerSecond;
}

TraceFrame TraceClock::Next(const FrameMoment& moment)
{
    const bool counts = moment.number >= 0;
    TraceFrame frame{.number = counts ? moment.number : 1, .utcNs = moment.utcNs};
    if (any_) {
        const std::int64_t byNumber = moment.number - before_.number - 1;
        const bool goesOn = !counts || (before_.number >= 0 && byNumber >= 0);
        const std::int64_t tookNs = moment.monotonicNs - before_.monotonicNs;
        frame.startsAnew = moment.startsAnew || !goesOn || tookNs < 0;
        if (!frame.startsAnew) frame.missing = counts ? byNumber : moment.told;
        if (!counts) frame.number = last_.number + 1;
        const bool knowUtc = moment.utcNs != 0 && before_.utcNs != 0;
        const std::int64_t byUtcNs = knowUtc ? std::max<std::int64_t>(moment.utcNs - before_.utcNs, 0) : 0;
        frame.clockNs = last_.clockNs + (tookNs >= 0 ? tookNs : byUtcNs);
    }
    any_ = true;
    before_ = moment;
    last_ = frame;
    return frame;
}

std::vector<TraceGap> TraceGapsOf(std::span<const TraceFrame> frames)
{
    std::vector<TraceGap> gaps;
    const std::int64_t usual = UsualStep(frames);
    for (std::size_t i = 1; i < frames.size(); ++i) {
        const TraceFrame& frame = frames[i];
        if (frame.startsAnew) {
            gaps.push_back({.before = i});
        } else if (2 * StepOf(frame) > 3 * usual) {
            gaps.push_back({.before = i, .missing = frame.missing});
        }
    }
    return gaps;
}

std::vector<TraceRun> TraceRunsOf(std::span<const TraceFrame> frames)
{
    std::vector<TraceRun> runs;
    std::size_t first = 0;
    const auto end = [&](std::size_t at) {
        if (at > first) runs.push_back({.first = first, .frames = at - first});
        first = at;
    };
    for (const TraceGap& gap : TraceGapsOf(frames)) end(gap.before);
    end(frames.size());
    return runs;
}

TraceRun LongestRunOf(std::span<const TraceFrame> frames)
{
    const std::vector<TraceRun> runs = TraceRunsOf(frames);
    const auto longest = std::ranges::max_element(runs, {}, &TraceRun::frames);
    return longest == runs.end() ? TraceRun{} : *longest;
}

}  // namespace kelvo
