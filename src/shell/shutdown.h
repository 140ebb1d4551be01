// The program's orderly exit.
#pragma once

namespace kelvo {

// Saves the state of the display, gives everything back and ends the message loop. The camera head stays on. Runs once:
// the Exit command calls it, and so does the main window's end.
void ShutDown();

// ShutDown would run again: for another start in the same process.
void ResetShutDown();

}  // namespace kelvo
