// The dialogs that wait until a source stands before the camera, CAL_COLD and CAL_HOT.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>

namespace kelvo {

// The source dialogs; title of the run. 1 on Ok, with TemperatureCold or TemperatureHot (state/cal_state.h; -999.0 for
// an empty field) and the emissivity of CalSettings taken over, once both fields are right. 0 on Cancel, whatever was
// tried before: both are as they were.
int ColdSourceDialog(HWND window, const std::string& title);
int HotSourceDialog(HWND window);
LRESULT fnCALCOLDDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
LRESULT fnCALHOTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
