// The size of the frame on view: of the stored one while a file is on view, otherwise of the camera's.
#pragma once

#include "platform/types.h"

#include <cstddef>

namespace kelvo {

// Columns (x) and rows (y). A hostile header or camera section may give any number.
Point FrameSizeOnView();

// The values of a frame of the camera, Hroi x Vroi; 0 where either is below 1.
std::size_t CameraFrameValues();

}  // namespace kelvo
