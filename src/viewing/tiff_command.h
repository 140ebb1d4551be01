// Saving the frame on view for programs that don't read Kelvo's files: a TIFF file of 8 or 16 bits.
#pragma once

#include "ui/command_end.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo {

// Asks for a name (a bare one gets .tif) and writes the frame on view: of a stored file the frame as it stands in
// memory, of the camera a new frame with live video and the frozen one without, from (0, 0) on as many columns and rows
// as the detector reads. Without a calibration in force a camera's counts stay in readout order, as saving an image
// leaves them. Range, calibration points, frame rate and integration time are those of the file on view, else those in
// force.
//
// 16 bits: the counts. 8 bits: the counts divided by TiffScale of the range, toward zero, and so are the range and the
// intensities of the calibration; samples that don't fit are held at 0 and 255, and the status line says how many.
//
// kLeaveStatus where the file is written (the line says so) or the operator cancels. In a box under "Kelvo message":
// "Video Data Acquisition Failed, Hardware error" (there is no picture: before a name is asked for), "Failure to
// allocate video memory!", "Failed to save file: %s". A file that plays stops. A file that stands under the name stays
// until the new one is whole.
CommandEnd SaveTiff8();
CommandEnd SaveTiff16();

// Counts a gray value of 8 bits: (high + 1 - low) / 256, toward zero, at least 1.
std::int32_t TiffScale(std::int32_t low, std::int32_t high);

// Each count divided by scale (1 or more), toward zero, as a byte; the bytes follow each other from the block's first
// on. What lies outside is held at 0 and 255. Returns how many those were.
std::size_t PackToBytes(std::span<std::int16_t> counts, std::int32_t scale);

}  // namespace kelvo
