// Saving what is seen as bitmap files: the camera's frame, live or frozen, or a range of frames of the file on view
// under numbered names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// Command 116. With a file of several frames on view a dialog asks which of them, and which part. From the camera it is
// one frame, Hactive x Vactive of it: a new one with live video, the frozen one without, or the one that replay shows,
// as the screen shows it but without the image cursor. 1 if every file was written; 0 if cancelled or after a message:
// "Video Data Acquisition Failed, Hardware error" (there is no picture), "Failure to allocate video memory!", or
// DibError's. The dialog proposes the frame on view. Names that end in .png become portable network graphics. Where
// files of a range exist the operator is asked once about all of them, and No goes back to the choice of a name.
int SaveBitmapCommand();

// What the last SaveBitmapCommand wrote, in order, and how many it was to write.
struct WrittenBitmaps {
    std::vector<std::string> paths;
    std::uint32_t wanted = 0;
};
const WrittenBitmaps& LastBitmaps();
void ResetBitmapCommand();

// The name of one file of a range: path with the frame's number, counted from the first of the range, behind its name,
// and .png behind that where the path has it, otherwise .bmp. last - first gives the digits (1 to 4); a single frame
// takes the path as given.
std::string BitmapFileName(std::string_view path, std::uint32_t first, std::uint32_t last, std::uint32_t frame);

}  // namespace kelvo
