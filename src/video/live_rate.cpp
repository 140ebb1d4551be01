#include "video/live_rate.h"

#include "platform/clock.h"

#include <algorithm>
#include <cstdint>

namespace kelvo {

namespace {

constexpr std::int64_t kRateFrames = 100;  // the rate is told once the counter exceeds it

std::int64_t liveFrameCounter = 0;
std::int64_t liveStartMs = 0;

}  // namespace

std::optional<int> CountLiveFrame()
{
    if (liveFrameCounter == 0) liveStartMs = TickMs();
    ++liveFrameCounter;
    if (liveFrameCounter <= kRateFrames) return std::nullopt;
    const std::int64_t elapsedMs = std::max<std::int64_t>(1, TickMs() - liveStartMs);
    const std::int64_t rateHz = std::int64_t{1000} * liveFrameCounter / elapsedMs;
    liveFrameCounter = 0;
    return static_cast<int>(rateHz);
}

void RestartLiveRate()
{
    liveFrameCounter = 0;
}

}  // namespace kelvo
