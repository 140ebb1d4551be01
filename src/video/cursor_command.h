// The image cursor as a command: on and off, following the pointer, read out each second while the video is live.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

constexpr std::uint32_t kCursorTimer = 1;  // of the main window: the read-out, 1000 ms

// Switches the image cursor on or off, with the menu's check, the pointer's shape and the status line, which shows its
// earlier text again afterwards.
void ToggleImageCursor();

void FollowPointer();  // at each motion while the cursor is on
void OnCursorTimer();

// No cursor was shown so far.
void ResetCursorCommand();

}  // namespace kelvo
