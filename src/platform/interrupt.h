// Between two steps of a long command: the only moment at which the program looks up from its work.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Paints what the windows have to show, and looks through the input that has come: true if Escape is among it, and
// where the program is to end (platform/end_request.h). All of that input is dropped, so that no key or click of the
// meantime acts afterwards. Timers, posted messages and scripts wait until the command is over.
bool EscapeCame();

// The same for a command that can be stopped by a dialog of its own (CreateModelessDialog), which may be null: the
// input that has come for the dialog reaches it, all other is dropped.
void LookUpFor(HWND dialog);

// A command that can't go on by itself waits until something has come, with the dialog in front: timers, posted
// messages and scripts have their turn, input is handled as above. False, at once, where the program is to end.
bool WaitFor(HWND dialog);

// True while events are handled in the midst of a command, there or to paint (HandlePendingEvents): what may change
// what the command works on has to wait for its end.
bool InTheMidstOfACommand();

}  // namespace kelvo
