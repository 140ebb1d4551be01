// The image set-up dialog: orientation, replacement of bad pixels, and the list of bad detectors. It works on copies of
// the four flags, and on BADDET.TMP in the current directory, a scratch copy of the list, until they are committed.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// Runs the dialog GEOMETRY: 1 after Ok, or after its window was closed, which asks as Ok does; 0 after Cancel, which
// puts all back as it was at the opening, also what was set and edited meanwhile; 0 where the operator doesn't go on
// with a list that can't be opened, or after "Unable to display dialog" under "System Error". "Set", or Ok and Yes,
// rebuild the table with SetImageOrientation.
int GeometryDialog(HWND window);

LRESULT fnGEOMETRYDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// As before the dialog was first opened. The scratch file stays.
void ResetGeometryDialog();

}  // namespace kelvo
