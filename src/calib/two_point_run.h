// Two-point calibration: from frames of a cold and a warm source to gains and offsets in force, and their files.
#pragma once

#include "calib/calibration_run.h"
#include "platform/types.h"
#include "state/camera_config.h"

#include <cstdint>

namespace kelvo {

// Gains and offsets from two sources, as the set "Last" in the directory of kelvo.ini. 1: CalType is 2 and doneFlag 1.
// 0: a box has told why; a cancel tells nothing. doneFlag is 0 then, unless the calibration that was in force still is:
// after a cancel at the low source, which changes nothing, and where frames didn't come ("Video Data Acquisition
// Failed, Hardware error!"), which puts it back. Where bad pixels can't be replaced the new gains and offsets stay
// installed, under CalType 0.
//
// Refused: where frames didn't come, where one detector in twenty or fewer responds by more than NoiseFloor, where the
// array's mean response is below it. An offset beyond 16 bits is asked about. Where the former set can't be copied
// aside
// ("Failed to save file: ...") there is no room for a new one either, and the run fails. A set that can't be written
// after that is told, and the calibration is in force from memory (pixel/unsaved_set.h).
int TwoPointCalibrate(HWND window, const CameraConfig& config, std::int32_t& doneFlag);

// The same for who took what was in force before he asked the operator for the run's settings.
RunEnd RunTwoPoint(HWND window, const CameraConfig& config, std::int32_t& doneFlag, FormerCalibration& former);

}  // namespace kelvo
