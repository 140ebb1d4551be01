// The window RECORDER, which stays open beside the main window and blocks nothing: the settings of a recording, whether
// it will do, what it does, and its verdict. Closing it leaves a recording running: the panel's button and the status
// line go on showing it, and opening it again finds it.
//
// How fast the disk writes is measured (half a second, in which nothing is painted) when the window opens, after the
// directory was changed, and by the button; never while something records.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

HWND RecorderWindow();  // null while it isn't open
// The command: opens it, or brings it to the front. "Unable to display dialog" where it can't be made.
void OpenRecorderWindow();
// At the program's end. Fields that make sense are kept in recorder.ini, as at the window's Close.
void CloseRecorderWindow();
LRESULT fnRECORDERDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// The window is gone, nothing was measured.
void ResetRecorderWindow();

}  // namespace kelvo
