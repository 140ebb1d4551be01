// Calibrations applied to what was stored without one: frames of a sequence or of host memory with the lists of any
// set, and recordings with the lists in force. The calibration in force stays as it is.
//
// A frame f of a file starts at 512 + f x S, S being width x height x 2 and the bytes of the FrameHeader before it.
// Positions are 64 bits. Frames of a file are in readout order, frames of host memory (grabber/host_frames.h, a burst)
// in image order; both have DataOffset in their counts.
#pragma once

#include "imagefile/header.h"
#include "platform/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

// The fields of APPLYCAL that ApplyCalibration sends the focus to.
constexpr int kApplyImageName = 808;
constexpr int kApplyCalName = 809;
constexpr int kApplyResultName = 707;
constexpr int kApplyStartFrame = 1371;
constexpr int kApplyEndFrame = 1372;
constexpr int kApplyResultStart = 1373;

// Why no calibration can be applied to the frames of a file with such a header, whose size in bytes is headerBytes;
// empty: they are native 16-bit counts.
std::string WhyNotCounts(const ImageHeaderRecord& header, std::int32_t headerBytes);
// Marks a header with the sources of a set. What isn't given is marked as none, and so is a cold temperature at
// absolute zero or a hot one that isn't above the cold one.
void MarkCalibrated(ImageHeaderRecord& header, const std::string& calPath);

// The whole frames of an image file by its length; 0 where there is no such file or its header can't be read, which is
// told (ReadImageHeader). With an empty path: FramesInBuffer.
std::int32_t CountImageFrames(std::string_view path);

// Corrects frames startFrame to endFrame (from 0, inclusive) of imageName with the set of calName, and puts them to
// resultName from frame resultStart on; the result's header gets the set's sources, and as FrameCount the count of the
// range. The same name: in place. An empty image name reads host frames, an empty result name writes them, frame f to
// slot f; FramesInBuffer is then at least endFrame + 1.
//
// From a file to a file the order stays the readout's, so that who reads the result applies the table as to any raw
// frame; what the table doesn't reach is 0. Into host memory frames are gathered to image order by the set's table;
// frames of host memory are corrected pixel by pixel in image order. A set with two sources gives
// truncate((count - offset) / gain), with one count - offset, low 16 bits; a quotient by 0 or beyond 32 bits is 0. A
// set without IntensityCold gives a header and no frames.
//
// 1 when the run came to its end, and ImageHeader is the result's (as before where host frames were written). A frame
// that can't be read or written is told with its number ("Error reading uncalibrated frame #%d.", "Error writing
// calibrated frame #%d.") and ends the run with 1 too. An existing result isn't cut; a new one takes its name at the
// end.
//
// 0 after a beep and a box, with the focus on the field at fault: a name that can't be opened, a range that is none, a
// question answered with No (the result exists; the image is calibrated already), a list that can't be read, an input
// that isn't of native 16-bit counts, host memory of another frame size or without that slot, or no memory. Nothing
// was corrected then, ImageHeader is as it was, and live video, frozen for the run, goes on. Also 0, with a box, where
// the result's header can't be written or the whole of it doesn't arrive on the disk; a new one is gone then. Blocks.
std::int32_t ApplyCalibration(HWND window, const std::string& imageName, const std::string& calName,
                              const std::string& resultName, std::int32_t startFrame, std::int32_t endFrame,
                              std::int32_t resultStart);

// Corrects a whole recording in place with the lists in force, and leaves it in image order: pixel i takes the count at
// DecomList[i], counted from the start of the frame's block, its FrameHeader included. With FrameHeaders before the
// pixels that isn't the pixel's own count: CorrectRecordedFrames is for those. The header isn't marked: a second run
// corrects a second time. 1; at once where CalType is 0. 0 after a box: "Unable to open file!" under "Filename Error!",
// "Unable to read uncalibrated data from file!" under "File Read Error!", "Unable to write calibrated data to file!"
// under "File Write Error!", no memory, or a file that isn't of native 16-bit counts. Frames done before stay
// corrected. ImageHeader is as it was. Blocks.
std::int32_t ApplyCalToFile(std::string_view path);
// The same for count frames from firstFrame on; fewer where the file ends.
std::int32_t ApplyCalToFrames(std::string_view path, std::uint32_t firstFrame, std::uint32_t count);

// The same in place for recordings with or without FrameHeaders, counted from the pixels: each frame becomes what the
// live picture would have shown, and its FrameHeader stays.
std::int32_t CorrectRecordedFrames(std::string_view path, std::uint32_t firstFrame, std::uint32_t count);

}  // namespace kelvo
