// The commands of the Calibration menu: each asks for what it needs, runs, and says how it ends.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// The CALIB dialog, and the run that it ends with.
CommandEnd NewCalibration();

// A one-point run with the settings in force.
CommandEnd UpdateCalibration();

// Asks for a name and saves the calibration in force under it; a failure is told under "Kelvo File Error!".
CommandEnd SaveCalibration();

// Asks for a set and loads it. Without a camera that is on: "Camera must be on in order\nto load a calibration".
// kLeaveStatus once it is loaded.
CommandEnd LoadPreviousCalibration();

// The APPLYCAL dialog: stored frames corrected with a set.
CommandEnd ApplyCalibrationToData();

// The voltage calibration. Without a camera that is on: "Camera must be turned on before calibrating".
CommandEnd CalibrateVoltage();

// The CALIB dialog and, where agrees then says so, the run of the type chosen in it. What the dialog stored of the
// calibration in force comes back where the operator gives up at a source, or doesn't agree; a one-point run that fails
// brings the calibration back that it was to replace. False where agrees said no. Blocks while frames are gathered.
bool CalibrateByDialog(bool (*agrees)());

}  // namespace kelvo
