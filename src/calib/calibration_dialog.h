// The CALIB dialog: what a calibration run works with.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// The CALIB dialog. 1 when a run should start: of the type CalSettings.ChosenType. Without a camera that is on: a box,
// and 0. Loading a set from inside it ends it with 0. Ok stores the choices before it looks at the fields; Cancel after
// one that was refused puts them back.
int RunCalibrationDialog(HWND window);
LRESULT fnCALIBDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
