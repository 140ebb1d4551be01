// The dialogs that set the triggers of the triggered save: TRIGSOFT and TRIGVALU. No command opens them yet.
#pragma once

#include "platform/types.h"

namespace kelvo {

// TRIGSOFT: whether each step waits for the Enter key. 1: Ok, and SoftwareAll is stored; 0.
int TriggerSoftwareDialog(HWND parent);

// TRIGVALU: the rectangle, held to Hactive x Vactive, and the window of its mean, held to the display range. While it
// is open the rectangle stands in the picture, and each 200 ms of live video the present mean and range of its counts
// are shown. 1: Ok, and all six are stored and in force; 0. Of a field that won't do a box tells why, and it gets the
// focus.
int TriggerValueDialog(HWND parent);

// Neither is open.
void ResetTriggerDialogs();

}  // namespace kelvo
