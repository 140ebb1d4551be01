// What the journals of all recordings tell of the moment in which they begin.
#pragma once

#include "imagefile/frames_file.h"

namespace kelvo {

// Size of the camera's frames, program, camera, clock, the calibration set in force and its checksum.
FramesHead HeadOfRecording();

}  // namespace kelvo
