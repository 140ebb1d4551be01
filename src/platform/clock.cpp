#include "platform/clock.h"

#include "platform/text.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>

namespace kelvo {

namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using std::chrono::system_clock;

constexpr std::int64_t kUsPerMs = 1000;
constexpr std::int64_t kUsPerSecond = 1000000;
constexpr std::int64_t kNsPerUs = 1000;
constexpr std::int64_t kNsPerSecond = 1000000000;

const steady_clock::time_point processStart = steady_clock::now();

bool isVirtual = false;
std::time_t virtualStart = 0;
std::int64_t virtualUs = 0;
void (*follower)(std::int64_t untilUs) = nullptr;
bool isFollowing = false;

std::int64_t WallClockUs()
{
    if (isVirtual) return static_cast<std::int64_t>(virtualStart) * kUsPerSecond + virtualUs;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

}  // namespace

void UseVirtualClock(std::time_t startOfTime)
{
    isVirtual = true;
    virtualStart = startOfTime;
    virtualUs = 0;
}

bool ClockIsVirtual()
{
    return isVirtual;
}

std::int64_t TickMs()
{
    return TickUs() / kUsPerMs;
}

std::int64_t TickUs()
{
    if (isVirtual) return virtualUs;
    return duration_cast<microseconds>(steady_clock::now() - processStart).count();
}

std::time_t WallClockSeconds()
{
    return static_cast<std::time_t>(WallClockUs() / kUsPerSecond);
}

int WallClockMilliseconds()
{
    return static_cast<int>(WallClockUs() / kUsPerMs % 1000);
}

std::int64_t UtcNsAtTick(std::int64_t tickUs)
{
    return (WallClockUs() - (TickUs() - tickUs)) * kNsPerUs;
}

std::string UtcText(std::int64_t utcNs)
{
    if (utcNs == 0) return {};
    const std::int64_t rest = (utcNs % kNsPerSecond + kNsPerSecond) % kNsPerSecond;
    const auto seconds = static_cast<std::time_t>((utcNs - rest) / kNsPerSecond);
    std::tm utc{};
    if (!gmtime_r(&seconds, &utc)) return {};
    return Format("%04d-%02d-%02dT%02d:%02d:%02d.%09lldZ", utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, utc.tm_hour,
                  utc.tm_min, utc.tm_sec, static_cast<long long>(rest));
}

void DelayMs(std::int64_t ms)
{
    if (ms <= 0) return;
    if (isVirtual) {
        AdvanceVirtualClock(ms > std::numeric_limits<std::int64_t>::max() / kUsPerMs
                                ? std::numeric_limits<std::int64_t>::max()
                                : ms * kUsPerMs);
        return;
    }
    // The thread may not be woken early by a coarse timer: what is missing is waited for again.
    const auto end = steady_clock::now() + milliseconds(ms);
    while (steady_clock::now() < end) std::this_thread::sleep_until(end);
}

void DelayUntilUs(std::int64_t tickUs)
{
    if (isVirtual) {
        AdvanceVirtualClock(tickUs - virtualUs);
        return;
    }
    const auto end = processStart + microseconds(tickUs);
    while (steady_clock::now() < end) std::this_thread::sleep_until(end);
}

void AdvanceVirtualClock(std::int64_t us)
{
    if (!isVirtual || us <= 0) return;
    const std::int64_t untilUs = virtualUs + std::min(us, std::numeric_limits<std::int64_t>::max() / 2 - virtualUs);
    if (follower && !isFollowing) {
        isFollowing = true;
        follower(untilUs);
        isFollowing = false;
    }
    virtualUs = std::max(virtualUs, untilUs);
}

void FollowVirtualClock(void (*follow)(std::int64_t untilUs))
{
    follower = follow;
}

void ResetClock()
{
    isVirtual = false;
    virtualStart = 0;
    virtualUs = 0;
    follower = nullptr;
}

}  // namespace kelvo
