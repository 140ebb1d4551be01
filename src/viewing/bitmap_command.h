// Saving what is seen as bitmap files: one frame, or a range of frames of the file on view under numbered names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

// Command 116. 1 if every file was written; 0 if cancelled or after a message.
int SaveBitmapCommand();

// The name of one file of a range: path with the frame's number, counted from the first of the range, behind its name.
// last - first gives the digits (1 to 4); a single frame takes the path as given.
std::string BitmapFileName(std::string_view path, std::uint32_t first, std::uint32_t last, std::uint32_t frame);

}  // namespace kelvo
