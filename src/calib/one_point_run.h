// One-point calibration: offsets from frames of one source, for no calibration (all gains 1) or for the one in force.
#pragma once

#include "calib/calibration_run.h"
#include "platform/types.h"

#include <cstdint>
#include <span>

namespace kelvo {

// Offsets from one source. With CalType 0 all gains are 1 and the result is the set "last" in DefaultDir, CalType 1. A
// set that has no table of this frame gets the run's own, the readout order before bad pixels are replaced. Otherwise
// an update: the gains come from the .gai of the set in force, whose offsets are overwritten; CalType stays, and noise
// isn't measured. One whose files couldn't be written takes the gains from memory and writes all of them. 1; 0 after a
// box, a cancel, or, where an update's .gai can't be read, a beep. A cancel changes nothing, and where frames didn't
// come the calibration that was in force is back. Where bad pixels can't be replaced CalType has its new value, and
// CalSettings.CalFile its former one. Sets the display's range.
int OnePointCalibrate(HWND window);

// The same for who took what was in force before he asked the operator for the run's settings, or set CalType to 0 to
// have a new calibration.
RunEnd RunOnePoint(HWND window, FormerCalibration& former);

// The average of frames over the whole array in readout order, in counts, and each detector's standard deviation where
// noise isn't empty. Starts live video if the image is frozen; CalType is 0 from here on. Blocks. 1, or 0 after a box:
// "Invalid data array size" (frame holds less than Vroi x Hroi), "Video Data Acquisition Failed, Hardware error".
int GetCalibData(std::span<std::int16_t> frame, std::span<float> noise, std::uint32_t frameCount);

}  // namespace kelvo
