// The frame on view as a bitmap that leaves the program, gathered as any other frame: without the image cursor, and as
// the lookup table and the colours in force show it.
#pragma once

#include "dibapi32/dibutil.h"
#include "display/frame_bitmap.h"

#include <cstdint>

namespace kelvo {

// A new 8-bit bitmap of a rectangle of the frame (inclusive on all four sides). With a file on view the pixels are
// ImageBuffer's. Otherwise they are one frame of the camera, a new one with live video and the frozen one without
// (AverageFrames), in image order also where no calibration is in force; a frame that replay shows stands for the
// frozen one. The whole frame is taken and the rectangle cut out of it; what lies outside the frame is byte 0. Without
// a rectangle: the whole image of the file; from the camera the columns from Xpan to the last, and all rows. An empty
// rectangle gives a bitmap without pixels.
//
// Contrast and brightness are those of the lookup table, whatever is passed.
//
// Null after a box under "Kelvo message": "Failure to allocate video memory!" where memory is refused or ImageBuffer
// holds less than its header says, "Video Data Acquisition Failed, Hardware error" where no frame came (a board that
// failed has been told before).
Dib CaptureToDib(std::int32_t contrast, std::int32_t brightness, const FrameRect* rectangle);

}  // namespace kelvo
