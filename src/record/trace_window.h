// The window TRACES, which stays open beside the main window and blocks nothing: traces of the view's regions, of live
// video or of the file on view, as a plot over time or as a spectrum, and as a file. Without a region the whole picture
// is traced.
//
// A live trace runs until somebody stops it, through recordings, with the picture live, frozen or another one. It goes
// on with the regions and the calibration that it began with; where the view's are others meanwhile the window says so.
// Closing the window ends it; what was traced stands until the next one.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// What is plotted of the chosen region, in the order of the list.
enum class TraceFigure { kMean, kDeviation, kMinimum, kMaximum, kSpectrum };

HWND TraceWindow();  // null while it isn't open
// The command: opens it, or brings it to the front. "Unable to display dialog" where it can't be made.
void OpenTraceWindow();
// At the program's end.
void CloseTraceWindow();
LRESULT fnTRACESDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// The window is gone, nothing was traced from a file.
void ResetTraceWindow();

}  // namespace kelvo
