// The recorder as operator scripts have it: a table of settings, a status by names.
#pragma once

#include "script/script.h"

#include <string>
#include <string_view>

namespace kelvo {

// record{...}: directory (the data directory where none is given), name, sample, comment; pixels ("raw", "corrected",
// "both"); frames or seconds (neither: until stopped); interval, start, split_gb, split_minutes, sync; trigger
// ("button", "input", "mean", "signal") with before (seconds) or before_frames, events, and for "mean" rectangle {left,
// top, right, bottom} and window {low, high}. What isn't given is as RecorderSettings begins, whatever the operator
// chose in the window. Empty, or why it can't begin: a name or a value that makes no sense, or what StartRecorder says.
std::string BeginScriptRecording(const ScriptFields& table);

// "stop", "trigger" or "mark"; empty, or why it can't be.
std::string RecorderWord(std::string_view word);

// state ("idle", "waiting", "armed", "recording"), ended ("", "stopped", "complete", "disk full", "write failed", "file
// deleted", "no file"), files (whole paths), event, frames, frames_of_event, seconds, marks, lost, lost_by_board,
// lost_by_ring (nil where it isn't known), lost_by_transport, delivered, passed_over, bytes, mean, before, ring_frames,
// ring_seconds, seconds_left (nil before it is known), verdict, message, exit_code.
ScriptFields RecorderStatusFields();

}  // namespace kelvo
