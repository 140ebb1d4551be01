// Where things stand in the main window: the panel on top, the status line at the bottom, the picture between them, a
// dialog beside it.
#pragma once

#include "platform/types.h"

namespace kelvo {

// The panel's height in logical pixels, 0 before it exists: the picture's top edge.
int PanelHeight();

// The picture's area in screen coordinates: the main window's client area below the panel and above the status line.
// Empty without a main window.
void ViewClipRect(Rect& rectangle);
Rect ViewArea();  // the same

// Moves a dialog, keeping its size, to the top right of the picture's area, with its right edge on the area's: the
// picture stays in sight beside it.
void DockDialog(HWND dialog);

enum class LowerCorner { kLeft, kRight };

// Moves a dialog, keeping its size, into a lower corner of the picture's area, a little from its side and above the
// play bar: beside a dialog that stands in the area's middle.
void DockInCorner(HWND dialog, LowerCorner corner);

}  // namespace kelvo
