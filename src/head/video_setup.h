// The video set-up: frame rate, integration time, gain and offset of the head, and the keys that keep them.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Reads from the active camera's section: IndexFrameRate (10); IndexIntegrationTime (10), four numbers by slot, of
// which the first counts for all where they aren't four; gain and offset of the first channel from QVF1058_Gain0 (0)
// and QVF1058_DAC0 (128). Clears FrameRate and works out VoltsLow and VoltsHigh.
void LoadVideoSettings();

// Sends the integration time, offset and gain in force to the head, and starts the grab again where live video is what
// the operator sees. Opens the link if it is closed, and closes it again unless CommPortAlwaysOpen keeps it; where it
// can't be opened nothing is sent, after the link's boxes. 1.
int VideoSetupDialog(HWND parent);

}  // namespace kelvo
