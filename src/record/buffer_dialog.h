// The dialog BUFFER, "Host RAM Capture": the library of bursts, a burst, replay of what is stored, and its way to and
// from buffer files.
#pragma once

#include "platform/types.h"
#include "ui/command_end.h"

namespace kelvo {

// Runs the dialog. 1: ended with OK, and the library stands in buffbrd.ini. 0: cancelled, which keeps changes of the
// library for this run alone; also at once without a grabber (GrabberPresent), or after "Unable to display dialog"
// under "System Error". What it captured or loaded stays in the host frames, and a replay that runs goes on.
int HostRamCaptureDialog(HWND parent);

// The menu's command.
CommandEnd HostRamCapture();

// Frames of the sequence on view. Where they are more than the store has frames, its composition is cut before the
// letter that goes beyond, in the dialog too, after "Unable to store # of frames requested into buffer." under
// "Kelvo message".
int CheckSequenceSize(HWND dialog);

}  // namespace kelvo
