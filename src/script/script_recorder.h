// What the operator does, as a script that does it again: the calls of docs/scripts.md, one a line.
//
// While live video runs, time is part of what was done: where the program waited for the operator for kShortestWaitMs
// or more, the frames that were shown meanwhile are waited for, frames(n), so that the acts meet the same frames again;
// where none was shown, wait(ms). Without live video nothing changes while the operator thinks, and no pause is
// written. Of texts typed one after the other into the same field, positions of the same bar and places of the pointer
// the last one stands, after all the pauses between them; a left button that goes up where it went down is a click.
#pragma once

#include "platform/operator_acts.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

inline constexpr std::int64_t kShortestWaitMs = 100;

struct RecordedAct {
    OperatorAct act;
    std::int64_t pauseMs = 0;  // of live video before it
    std::int64_t frames = 0;   // shown in that time
};

// The call, without a line's end; texts are quoted so that any byte comes back.
std::string ScriptLineOf(const OperatorAct& act);
// Joins an act to those before it, by the rule above.
void JoinAct(std::vector<RecordedAct>& acts, RecordedAct next);
// The whole script.
std::string ScriptOf(const std::vector<RecordedAct>& acts);

// A live frame was shown.
void NoteRecordedFrame();

// Records into memory from now on. The script is written by EndScriptRecording alone.
void BeginScriptRecording();
bool ScriptIsRecorded();
// The script so far, and the end of it. The command that ends a recording is no part of it: lastCommand is taken off
// its end. nullopt where none is recorded.
std::optional<std::string> EndScriptRecording(int lastCommand);

}  // namespace kelvo
