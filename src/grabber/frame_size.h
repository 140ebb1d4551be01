// The size of the frame on view: of the stored one while a file is on view, otherwise of the camera's.
#pragma once

#include "platform/types.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

// Columns (x) and rows (y). A hostile header or camera section may give any number.
Point FrameSizeOnView();

// The most columns or rows of a camera.
constexpr std::int32_t kLargestFrameSide = 1024;

// The values of a frame of the camera, Hroi x Vroi; 0 where either is below 1 or above kLargestFrameSide, so that no
// memory is asked for frames that no camera gives.
std::size_t CameraFrameValues();

// The values of a rectangle, inclusive on all four sides; 0 where right lies before left or bottom above top.
std::int64_t RectangleValues(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom);

}  // namespace kelvo
