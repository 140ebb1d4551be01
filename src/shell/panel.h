// The control panel: the bar along the top of the main window with file and tool buttons, zoom, pan, brightness and
// contrast, and the list of units.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// The panel's procedure, for CreateDockedPanel("PANEL", ...). At its start it stores hDlgPanel and makes the lookup
// table. Buttons send their command to the main window.
LRESULT PanelProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
