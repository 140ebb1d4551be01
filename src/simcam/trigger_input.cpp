#include "simcam/trigger_input.h"

#include <algorithm>
#include <iterator>

namespace kelvo {

namespace {

constexpr std::int64_t kTimesKept = 256;

void Note(TriggerInput& input, std::int64_t timeUs)
{
    ++input.taken;
    input.lastUs.push_back(timeUs);
    if (std::ssize(input.lastUs) > kTimesKept) input.lastUs.pop_front();
}

}  // namespace

void HearPulses(TriggerInput& input, std::int64_t untilUs)
{
    if (input.periodUs <= 0 || input.nextUs > untilUs) return;
    const std::int64_t pulses = (untilUs - input.nextUs) / input.periodUs + 1;
    if (input.on) {
        const std::int64_t uncounted = std::max<std::int64_t>(pulses - kTimesKept, 0);
        input.taken += uncounted;
        for (std::int64_t k = uncounted; k < pulses; ++k) Note(input, input.nextUs + k * input.periodUs);
    }
    input.nextUs += pulses * input.periodUs;
}

void TakePulse(TriggerInput& input, std::int64_t nowUs)
{
    if (input.on) Note(input, nowUs);
}

void SetPulsePeriod(TriggerInput& input, std::int64_t nowUs, std::int64_t periodUs)
{
    input.periodUs = std::max<std::int64_t>(periodUs, 0);
    input.nextUs = nowUs + input.periodUs;
}

std::int64_t PulsesBy(const TriggerInput& input, std::int64_t timeUs)
{
    const auto later = std::ranges::upper_bound(input.lastUs, timeUs);
    return input.taken - std::distance(later, input.lastUs.end());
}

std::optional<std::int64_t> PulseUs(const TriggerInput& input, std::int64_t n)
{
    const std::int64_t index = n - 1 - (input.taken - std::ssize(input.lastUs));
    if (index < 0 || index >= std::ssize(input.lastUs)) return std::nullopt;
    return input.lastUs[static_cast<std::size_t>(index)];
}

std::optional<std::int64_t> NextPulseUs(const TriggerInput& input)
{
    if (!input.on || input.periodUs <= 0) return std::nullopt;
    return input.nextUs;
}

}  // namespace kelvo
