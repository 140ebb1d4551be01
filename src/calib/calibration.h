// Calibration: the set's files and its dialog.
#pragma once

#include "platform/types.h"

#include <string>

namespace kelvo {

// 1 if the set's .cal file opens; otherwise 0 after a box.
int LoadCalibration(HWND window, const std::string& calPath);
// 1 when a run should start.
int RunCalibrationDialog(HWND window);

}  // namespace kelvo
