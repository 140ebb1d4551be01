// The place of the main window on the desktop, as it is kept from one run to the next.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Logical pixels of the desktop. While the window is maximised: what it goes back to.
struct WindowPlace {
    int x = 0;  // its corner, frame included, where the desktop tells it
    int y = 0;
    int width = 0;  // without the frame; 0: there is no window
    int height = 0;
    bool maximised = false;
};
WindowPlace GetWindowPlace(HWND mainWindow);

// Shows the main window there, no larger than its screen, and waits as ShowWindowMaximised does. Where no screen shows
// enough of its upper edge to take hold of, it comes into the middle of the first one.
void ShowWindowAt(HWND mainWindow, const WindowPlace& place);

}  // namespace kelvo
