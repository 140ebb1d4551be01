// The display dialog (command 120): colour map, brightness, contrast and units. What the operator changes shows on the
// screen at once; OK keeps and saves it, Cancel takes it back, and the window's close button ends the dialog and leaves
// the screen as it is.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// Runs the dialog: 1 for OK, 0 otherwise. Where it can't be opened: "Unable to display dialog" under "System Error",
// and -1. Blocks, while other events are handled.
int DisplayDialog(HWND window);

// The dialog's procedure. The bar, temperature scale and histogram boxes stand disabled in the dialog; their handlers
// are kept for a dialog that enables them.
LRESULT fnDISPLAYDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// Turns GrayColorBar about and writes its key at once, so that a Cancel doesn't take it back. TempScale is cleared
// unless both are set then.
void ToggleColorBar();

}  // namespace kelvo
