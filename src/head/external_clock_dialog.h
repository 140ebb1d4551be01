// The frame rate of a camera that runs on an external clock.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string_view>

namespace kelvo {

// Asks for the frame rate of a camera that runs on an external clock, which no register of the head tells; clockName is
// shown. 1: FrameRate (Hz, 0.0 to 250.0) is what the operator gave, an estimate for integration times and file headers.
// 0: No, Cancel, or the dialog couldn't be opened, and FrameRate stays. Blocks.
int ExternalClockDialog(HWND parent, std::string_view clockName);
LRESULT fnFrRateDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
