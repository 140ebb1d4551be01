// The play bar: a strip above the status line, over the picture's lowest edge, while a file of several frames is on
// view. It plays and stops, goes to a frame by its slider, tells which one is on view, and chooses how it is played. Of
// a recorded sequence it tells the gaps, shows below the slider where they are, and opens their list.
#pragma once

#include "platform/types.h"
#include "viewing/recorded_view.h"

#include <cstdint>
#include <vector>

namespace kelvo {

// At start, hidden. Where it can't be made there is none, and nothing is told: each of its functions has a command.
void OpenPlayBar();

// After a change of the main window's size.
void PlacePlayBar();
// Shows, hides and fills it as what is on view wants it: called after whatever may have changed that, and cheap where
// nothing did.
void FollowPlayBar();

// A line below the slider, where a gap or a mark is; logical pixels from the slider's left end.
struct BarTick {
    int x = 0;
    bool isGap = false;
    friend bool operator==(const BarTick&, const BarTick&) = default;
};
// Those of a file below a slider of that width, from left to right, one a place; a gap hides a mark. Empty for a file
// of less than two frames.
std::vector<BarTick> TicksOf(const RecordedFile& recorded, int width);

LRESULT fnPLAYBARProc(HWND strip, std::uint32_t message, WPARAM wParam, LPARAM lParam);

void ResetPlayBar();

}  // namespace kelvo
