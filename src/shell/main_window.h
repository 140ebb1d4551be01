// The one dispatcher of the program: menu items, accelerators and panel buttons end here as commands, all periodic work
// as timers.
#pragma once

#include "platform/types.h"
#include "platform/window.h"

#include <cstdint>

namespace kelvo {

LRESULT MainWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam);

constexpr std::uint32_t kOpenStartFile = 0x0400;  // posted by the start: opens the file of the command line

// As before the window was made.
void ResetMainWindow();

}  // namespace kelvo
