// The program's orderly exit.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// The Exit command: asks "\nDo you wish to exit?" under "QVF Vantir", while the status line tells whether the camera
// stays on. Yes: ShutDown, and the status is left.
CommandEnd AskToExit();

// Saves the state of the display, gives everything back and ends the message loop. The camera head stays on. Runs once:
// the Exit command calls it, and so does the main window's end.
void ShutDown();

// ShutDown would run again: for another start in the same process.
void ResetShutDown();

}  // namespace kelvo
