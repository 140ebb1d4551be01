// Which set to load, and under which name to save one: CAL_OPEN and CAL_SAVE.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Asks for a set's .cal file: of the active camera, to open; to save the calibration in force as. 1 and the whole path
// in FilePathBuf; 0 where the operator cancels, and, after "A calibration must be loaded\nin order to save it.", where
// there is none to save.
int ChooseCalibrationToOpen(HWND window);
int ChooseCalibrationToSave(HWND window);

}  // namespace kelvo
