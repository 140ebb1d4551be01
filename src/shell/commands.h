// What each command does. The main window's procedure hands every WM_COMMAND here.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Runs a command. Most end with the status line reset to string 1, left-aligned. The window's result: 0, or 1 where a
// command ends early; an unknown number goes to the default procedure.
LRESULT RunCommand(HWND window, int id);

// Help mode is on: shows the command's page, or "Help not available for this Menu item."
LRESULT ShowCommandHelp(HWND window, int id);

}  // namespace kelvo
