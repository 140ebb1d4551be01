// The one rule by which all scroll bars of the dialogs move.
#pragma once

#include "platform/dialog.h"
#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// A bar as the rule sees it.
struct ScrollBarState {
    int minimum = 0;
    int maximum = 0;
    int position = 0;
};

// The keys that turn a horizontal bar's steps about: up is more there for who watches the picture.
struct ScrollKeys {
    bool up = false;
    bool down = false;
    bool pageUp = false;
    bool pageDown = false;
};

// The new position, within the bar's range. A line is 1, a page a sixteenth of the range, at least 2. On a horizontal
// bar a held Up arrow or Page Up moves the position up, a held Down arrow or Page Down moves it down. thumb: the place
// of a dragged thumb.
int ScrolledPosition(const ScrollBarState& bar, bool horizontal, ScrollCode code, int thumb, const ScrollKeys& keys);

// Moves the bar of a WM_HSCROLL or WM_VSCROLL as its parameters say and returns its new position.
int ScrollTo(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
