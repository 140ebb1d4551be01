// The logic's timers: a queue of our own on the platform clock. A timer belongs to a window and has a number; setting
// it again moves it. It repeats until it is killed: on its own beat, after a late expiry by its period from then. Timer
// messages come when nothing else is queued, in the order of their due times, equal ones in the order of setting. A
// period of 0 is due at once and repeats by itself each millisecond.
#pragma once

#include "platform/types.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace kelvo {

void SetTimer(HWND window, std::uint32_t id, std::int64_t periodMs);  // WM_TIMER with wParam = id
void KillTimer(HWND window, std::uint32_t id);
bool TimerIsSet(HWND window, std::uint32_t id);

// For the platform's own loop and its tests.
struct DueTimer {
    HWND window;
    std::uint32_t id;
};
std::optional<std::int64_t> NextTimerDueUs();  // on the TickUs scale; nullopt if no timer is set
std::size_t DueTimerCount();                   // timers due by now
std::optional<DueTimer> TakeDueTimer();        // the earliest due by now, re-armed by its period; nullopt if none
void KillTimersOf(HWND window);

// Of all windows.
void KillAllTimers();

}  // namespace kelvo
