// Calibration: the set's files and its dialog.
#pragma once

#include "platform/types.h"

#include <string>

namespace kelvo {

// Asks the operator for a set's .cal file of the active camera, beside kelvo.ini at first. 1 and the whole path in
// FilePathBuf; 0 where the operator cancels. A file for another camera is refused in a box, and the selection comes
// again.
int ChooseCalibrationToOpen(HWND window);

// 1 if the set's .cal file opens; otherwise 0 after a box.
int LoadCalibration(HWND window, const std::string& calPath);
// 1 when a run should start. Without a camera that is on: a box, and 0.
int RunCalibrationDialog(HWND window);

}  // namespace kelvo
