// Between two steps of a long command: the only moment at which the program looks up from its work.
#pragma once

namespace kelvo {

// Paints what the windows have to show, and looks through the input that has come: true if Escape is among it. All of
// that input is dropped, so that no key or click of the meantime acts afterwards. Timers, posted messages and scripts
// wait until the command is over.
bool EscapeCame();

}  // namespace kelvo
