// The configuration dialog: the active camera, and what of its section concerns the screen.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// Command 123. Shows status string 1 on return.
void ConfigurationDialog(HWND window);
LRESULT fnINITIALDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
