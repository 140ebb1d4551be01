// "kelvo calibrate": a calibration set made of stored raw frames, as the window makes it of live ones.
#pragma once

#include <span>
#include <string>

namespace kelvo {

// calibrate --low F [--high F] ... --out X.cal: 0, or 2 with the reason on the error stream, and no file of the set
// stands. The result of the run goes to the standard output, as text or with --json as an object.
//
// The settings are those of a data directory: the camera's section of camera.ini, and of kelvo.ini the limits of
// section Calibration and how the picture is turned. The .cal is that kelvo.ini with the keys of the run.
int CalibrateCommand(std::span<const std::string> arguments);

}  // namespace kelvo
