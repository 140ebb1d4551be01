// The one dispatcher of the program: menu items, accelerators and panel buttons end here as commands, all periodic work
// as timers.
#pragma once

#include "platform/types.h"
#include "platform/window.h"

#include <cstdint>
#include <string>

namespace kelvo {

LRESULT MainWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam);

constexpr std::uint32_t kOpenStartFile = 0x0400;  // posted by the start: opens the file of the command line

// Timers of the main window.
constexpr std::uint32_t kCursorTimer = 1;  // the image cursor's read-out, 1000 ms
constexpr std::uint32_t kLiveTimer = 3;    // the live refresh, 0 ms: it only yields to the operator between frames

extern Point ImagePosition;           // the image cursor's last position, image pixels
extern std::int32_t DialogHelpArmed;  // 1: Shift+F10 may ask for a dialog's help again

// Switches the image cursor on or off, with the menu's check and the status line.
void ToggleImageCursor();

}  // namespace kelvo
