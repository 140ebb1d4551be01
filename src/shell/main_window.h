// The one dispatcher of the program: menu items, accelerators and panel buttons end here as commands, all periodic work
// as timers.
#pragma once

#include "platform/types.h"
#include "platform/window.h"

#include <cstdint>

namespace kelvo {

LRESULT MainWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam);

constexpr std::uint32_t kOpenStartFile = 0x0400;  // posted by the start: opens the file of the command line

constexpr std::uint32_t kLiveTimer = 3;  // the live refresh, 0 ms: it only yields to the operator between frames

extern std::int32_t DialogHelpArmed;  // 1: Shift+F10 may ask for a dialog's help again

// As before the window was made.
void ResetMainWindow();

}  // namespace kelvo
