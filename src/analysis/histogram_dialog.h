// The dialog HISTGRAM.
#pragma once

#include "platform/types.h"
#include "ui/command_end.h"

namespace kelvo {

// Shows the histogram of a rectangle of the frame on view, live, frozen or stored, until the operator leaves it. 1 by
// Exit (the window's button and Escape are Exit too), which keeps the rectangle in kelvo.ini; 0 where it ended by
// itself after a box. With neither a file on view nor a camera that is on nothing opens, which the status line
// explains: 0. The live timer is held meanwhile, and live video that was frozen while "Live data" is checked runs again
// afterwards. Blocks.
int HistogramDialog(HWND window);

// The command to it.
CommandEnd ShowHistogram();

}  // namespace kelvo
