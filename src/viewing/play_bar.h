// The play bar: a strip above the status line, over the picture's lowest edge, while a file of several frames is on
// view. It plays and stops, goes to a frame by its slider, tells which one is on view, and chooses how it is played. Of
// a recorded sequence it tells the gaps, and opens their list.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// At start, hidden. Where it can't be made there is none, and nothing is told: each of its functions has a command.
void OpenPlayBar();

// After a change of the main window's size.
void PlacePlayBar();
// Shows, hides and fills it as what is on view wants it: called after whatever may have changed that, and cheap where
// nothing did.
void FollowPlayBar();

LRESULT fnPLAYBARProc(HWND strip, std::uint32_t message, WPARAM wParam, LPARAM lParam);

void ResetPlayBar();

}  // namespace kelvo
