#include "platform/timers.h"

#include "platform/clock.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace kelvo {

namespace {

struct Timer {
    HWND window;
    std::uint32_t id;
    std::int64_t periodUs;
    std::int64_t dueUs;
    std::uint64_t order;  // counts settings, so that equal due times keep their order
};

// A handful at any time: a plain list serves better than a heap.
std::vector<Timer> timers;
std::uint64_t nextOrder = 0;

// A timer of 0 ms is due at once, but repeats by itself no sooner than this: otherwise virtual time would stand still.
constexpr std::int64_t kShortestRepeatUs = 1000;
constexpr std::int64_t kLongestPeriodMs = std::numeric_limits<std::int32_t>::max();

auto Find(HWND window, std::uint32_t id)
{
    return std::find_if(timers.begin(), timers.end(),
                        [=](const Timer& timer) { return timer.window == window && timer.id == id; });
}

auto Earliest()
{
    return std::min_element(timers.begin(), timers.end(), [](const Timer& a, const Timer& b) {
        return a.dueUs != b.dueUs ? a.dueUs < b.dueUs : a.order < b.order;
    });
}

// The next due time on the timer's own beat; after a late one the beat starts anew, so that none is made up for.
void Rearm(Timer& timer, std::int64_t nowUs)
{
    const std::int64_t period = std::max(timer.periodUs, kShortestRepeatUs);
    timer.dueUs += period;
    if (timer.dueUs <= nowUs) timer.dueUs = nowUs + period;
    timer.order = nextOrder++;
}

}  // namespace

void SetTimer(HWND window, std::uint32_t id, std::int64_t periodMs)
{
    KillTimer(window, id);
    const std::int64_t periodUs = std::clamp<std::int64_t>(periodMs, 0, kLongestPeriodMs) * 1000;
    timers.push_back({window, id, periodUs, TickUs() + periodUs, nextOrder++});
}

void KillTimer(HWND window, std::uint32_t id)
{
    if (const auto timer = Find(window, id); timer != timers.end()) timers.erase(timer);
}

bool TimerIsSet(HWND window, std::uint32_t id)
{
    return Find(window, id) != timers.end();
}

std::optional<std::int64_t> NextTimerDueUs()
{
    if (timers.empty()) return std::nullopt;
    return Earliest()->dueUs;
}

std::size_t DueTimerCount()
{
    const std::int64_t nowUs = TickUs();
    return static_cast<std::size_t>(
        std::count_if(timers.begin(), timers.end(), [=](const Timer& timer) { return timer.dueUs <= nowUs; }));
}

std::optional<DueTimer> TakeDueTimer()
{
    const std::int64_t nowUs = TickUs();
    const auto earliest = Earliest();
    if (earliest == timers.end() || earliest->dueUs > nowUs) return std::nullopt;
    const DueTimer due{earliest->window, earliest->id};
    Rearm(*earliest, nowUs);
    return due;
}

void KillTimersOf(HWND window)
{
    std::erase_if(timers, [=](const Timer& timer) { return timer.window == window; });
}

void KillAllTimers()
{
    timers.clear();
    nextOrder = 0;
}

}  // namespace kelvo
