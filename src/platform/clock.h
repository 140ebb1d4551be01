// Time. The platform clock is real, or virtual: then it stands still while the program works and jumps ahead while it
// waits, so that a procedure of 30 seconds takes a test milliseconds.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace kelvo {

void UseVirtualClock(std::time_t startOfTime);  // before the first timer; TickMs starts at 0
bool ClockIsVirtual();

std::int64_t TickMs();           // ms since the start of the process; never runs backward
std::int64_t TickUs();           // the same in microseconds
std::time_t WallClockSeconds();  // seconds since 1 January 1970; follows the virtual clock
int WallClockMilliseconds();     // 0 to 999
// The wall clock, in nanoseconds since 1 January 1970, at a moment on the TickUs scale, by how the two stand now.
std::int64_t UtcNsAtTick(std::int64_t tickUs);

// Nanoseconds since 1 January 1970 as ISO 8601 has them, "2026-11-21T12:04:01.123456789Z"; empty for 0, which no clock
// has told.
std::string UtcText(std::int64_t utcNs);

// A wait of at least that long during which no messages are handled. With the virtual clock it only moves the clock.
void DelayMs(std::int64_t milliseconds);

// The same up to a moment on the TickUs scale, which has come when it returns.
void DelayUntilUs(std::int64_t tickUs);

// Moves the virtual clock; no effect on the real one. Never backward.
void AdvanceVirtualClock(std::int64_t microseconds);

// What has to follow the virtual clock as closely as a thread follows the real one: called, not from within itself,
// when the clock is about to move, with the moment to which it goes. It may move the clock itself, by its own waits, up
// to there and, where it takes time, beyond. Null: nothing does.
void FollowVirtualClock(void (*follow)(std::int64_t untilUs));

// The real clock, as before UseVirtualClock, and nothing follows it.
void ResetClock();

}  // namespace kelvo
