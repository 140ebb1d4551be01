// The video set-up: frame rate, integration time, gain and offset of the head.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Sends the integration time, offset and gain in force to the head. 1.
int VideoSetupDialog(HWND parent);

}  // namespace kelvo
