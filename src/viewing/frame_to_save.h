// The frame that a save takes: with a file on view its frame as ImageBuffer holds it, while replay shows a stored burst
// the frame that is shown, else the camera's as AverageFrames gives it; without the image cursor.
#pragma once

#include "platform/types.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

// The values of a whole frame on view, stored or the camera's; 0 where its sizes make none.
std::size_t ValuesOnView();

// A gather in this mode (acquire/averaging.h) would give a picture: a file is on view, live video runs, or a frozen
// frame of the camera's size has come. AverageFrames hands back its block as it stands where there is none.
bool FrameCanBeGathered(std::uint32_t mode);

// Gathers the whole frame into counts, of ValuesOnView; of a stored one frames and mode count for nothing. False
// where there is no picture, the buffer holds less than its header says, or the gather fails (WhyNothingWasGathered).
bool GatherFrameToSave(std::span<std::int16_t> counts, std::uint32_t frames, std::uint32_t mode);

// Columns (x) and rows (y) of it that exports take: all of a stored frame; of the camera's what the detector reads,
// Hactive x Vactive, at most the frame. {0, 0} where ValuesOnView is 0.
Point ActivePartOnView();
// Cuts a whole frame on view to its active part, row by row.
void CutToActivePart(std::vector<std::int16_t>& frame);

}  // namespace kelvo
