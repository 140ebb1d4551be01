// The recorder as the operator has it, with or without its window: begun, followed by a lamp in the panel and on the
// status line, and told of at its end.
#pragma once

#include "record/recorder.h"

#include <cstdint>
#include <string>

namespace kelvo {

inline constexpr std::uint32_t kRecorderLampTimer = 25;  // of the main window

// Who asked for it. A script reads how it ended; the operator is told in a box where that wasn't wished.
enum class RecorderCaller { kOperator, kScript };

// StartRecorder, and what belongs around it: the lamp, and with kSignal the wait for the external signal. False, with
// why, as there, and while a dialog, a box or a gather of frames is open, which may need the board.
bool BeginRecorderRun(const RecorderSettings& settings, RecorderCaller caller, std::string& why);
void StopRecorderRun();

// The main window's timer kRecorderLampTimer: the lamp follows; at the end the verdict stands on the status line, and
// an end that wasn't wished is told in a box under "Kelvo Warning".
void FollowRecorderRun();
// The main window got ExternalSignalMessage: a trigger, and the next signal is waited for.
void OnRecorderSignal();

// The commands: a trigger or a mark by hand. Where nothing waits for one a beep and the status line say so.
void TriggerByHand();
void MarkByHand();

// "○ Idle", "○ Waiting for 14:30:00", "◎ Armed", "● Recording".
std::string RecorderStateText(const RecorderStatus& status, const RecorderSettings& settings);
// "none", "1 by the board, 2 by the ring", "3 by the transport, 0 by the board, 0 by the ring", "0 by the ring, unknown
// by the board".
std::string LostFramesText(const RecorderStatus& status);
// The settings of the run that is on, or was last.
const RecorderSettings& SettingsOfRun();

// Nothing is followed.
void ResetRecorderRun();

}  // namespace kelvo
