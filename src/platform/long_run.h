// Runs from which an operator may walk away: while one goes on the machine doesn't fall asleep, and when a long one has
// ended the desktop tells him. Both by platform/desktop_services.h: without a service that answers nothing happens.
#pragma once

#include "platform/desktop_services.h"

#include <cstdint>
#include <optional>

namespace kelvo {

enum class LongRun {
    kRecording,      // a burst, a continuous save, the recorder, a measurement over many frames
    kTrace,          // of regions over live video
    kTriggeredSave,  // an averaged frame for each trigger
};
inline constexpr int kLongRuns = 3;

// From here on a run is long: whoever began it has turned to something else.
inline constexpr std::int64_t kLongRunMs = 60'000;

// On the main thread. One that goes on already is left as it is; the end of one that doesn't is nothing. Its length is
// that of the platform's clock.
void BeginLongRun(LongRun run);
void EndLongRun(LongRun run);

// What the desktop shows at the end of a run that took so long: "Kelvo: a recording has ended", "It took 2 h 5 min.",
// in whole minutes. nullopt below kLongRunMs.
std::optional<DesktopNote> NoteOfRun(LongRun run, std::int64_t ms);

// None goes on; nothing is told.
void ResetLongRuns();

}  // namespace kelvo
