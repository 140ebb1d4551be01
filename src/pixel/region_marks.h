// Marks in a frame that show the operator what is being measured.
#pragma once

#include <cstdint>
#include <span>

namespace kelvo {

// Writes 0 along the outline one pixel outside a rectangle (inclusive on all four sides, image coordinates), held to
// the frame; an edge that would lie at row or column 0 isn't drawn. 1; 0, and nothing is drawn, where frame has fewer
// values than a whole frame or, live, memory is refused.
//
// Live, frame is in readout order: each pixel is found through DecomList, and ImageBuffer takes a copy of the frame
// first, so that the marks can be taken off again. With a stored frame on view the places are direct, but for the right
// edge, which goes through DecomList there too; an entry beyond the frame is passed over.
int MarkRectangle(std::span<std::int16_t> frame, std::int32_t left, std::int32_t top, std::int32_t right,
                  std::int32_t bottom);

}  // namespace kelvo
