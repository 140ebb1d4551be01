// Asks the operator for the rate of an external frame clock, which no register of the head tells.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string_view>

namespace kelvo {

// 1: FrameRate (Hz, 0.0 to 250.0) is what the operator gave; an estimate, for integration times and file headers.
// 0: No, Cancel, or the dialog couldn't be opened, and FrameRate stays. clockName is shown. Blocks.
int ExternalClockDialog(HWND parent, std::string_view clockName);
LRESULT fnFrRateDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
