// Stored data on the display in place of live video: image files frame by frame, and the stepping through the frames of
// a file and on through numbered files. While a stored frame is on view, ViewingFile is 1 and everything else works
// from ImageBuffer and ImageHeader.
#pragma once

#include "imagefile/header.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// Shows one frame (from 0) of a file. 1 when it is on view. 0 after a message: the header's (ReadImageHeader); "Invalid
// data sample size: %d bytes per sample" under "Use different function to read this image file."; "Failed to open
// file\n%s" under "Read File Error" (while stepping only a sound); "Failure to allocate or lock memory!" under
// "ViewImage Memory Error!"; "Failed to read entire file\n%s", which leaves no buffer. ImageHeader then describes what
// it described before. A file with the extension of a coefficient file is shown as such first, and then tried as an
// image file all the same, which ends in a message over the picture.
// A file that wasn't on view before, and of which next to nothing would be seen, is fitted (FitUnseenPicture).
int ViewImage(std::string_view path, std::uint32_t frame);

// The samples of an inclusive rectangle of a stored 16-bit frame, row by row; empty after a message under
// "GetImageRectFromFile() Error!". The position does not skip the frame's own FrameHeader, and a frame beyond the count
// is read one past the last. Files of 4-byte samples and rectangles outside the image are refused. Leaves the file's
// header in ImageHeader.
std::vector<std::int16_t> GetImageRectFromFile(std::string_view path, std::uint32_t frame, std::int32_t left,
                                               std::int32_t top, std::int32_t right, std::int32_t bottom);

// The steps. Each returns 1 if a frame came on view. With an empty LoadName there is none to take: the command then
// asks for a name.
int LoadNext();  // next frame, or the first of the next numbered file
int LoadLast();  // previous frame, or the last of the previous numbered file

// Names the sequence and shows its first frame; LoadName is as before if its header can't be read.
int ViewSequence(std::string_view path);
// Shows that frame of LoadName: 0 to LastFrame.
int GoToFrame(std::uint32_t frame);

}  // namespace kelvo
