// The oscilloscope dialog, in which the operator sets the video up.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// Runs the oscilloscope dialog until the operator closes it: 1 by OK, which keeps what was chosen, 0 otherwise. Live
// video is held off meanwhile and starts again afterwards if the camera is on and no file is on view. Opens the link if
// it is closed, and closes it again unless CommPortAlwaysOpen keeps it; where it can't be opened there is no dialog,
// and 0, after the link's boxes. A head that missed some of what was sent meanwhile is told in one box at the end.
// Blocks.
int VideoSetupDialog(HWND parent);
// QVF1058, the set-up of heads with one channel. The working copies of gain and offset are its own until OK.
LRESULT fnVIDEOSETDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// As before the dialog was first opened.
void ResetVideoSetupDialog();

}  // namespace kelvo
