// What is missing in a sequence, as commands tell it.
#pragma once

#include "imagefile/frames_file.h"

#include <span>
#include <string>

namespace kelvo {

// "before frame 2: 3 missing from number 6, 3 lost by the board"; without the number where the board doesn't count.
std::string GapText(const FrameGap& gap);

// A list of objects: before (frame of the file), first (number by the board, or -1), missing, and board, ring,
// passed_over, unexplained, transport (frames each).
std::string GapsJson(std::span<const FrameGap> gaps);

}  // namespace kelvo
