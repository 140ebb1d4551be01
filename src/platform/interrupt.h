// Between two steps of a long command: the only moment at which the program looks up from its work.
#pragma once

namespace kelvo {

// Paints what the windows have to show, and looks through the input that has come: true if Escape is among it, and
// where the program is to end (platform/end_request.h). All of that input is dropped, so that no key or click of the
// meantime acts afterwards. Timers, posted messages and scripts wait until the command is over.
bool EscapeCame();

// True while events are handled in the midst of a command, there or to paint (HandlePendingEvents): what may change
// what the command works on has to wait for its end.
bool InTheMidstOfACommand();

}  // namespace kelvo
