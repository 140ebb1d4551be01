// Marks in a frame that show the operator what is being measured: a rectangle, a cross, a line.
//
// A frame is row-major, of the size on view: ImageHeader's with a file on view, otherwise Hroi x Vroi. What of a mark
// lies outside it isn't written. Each function gives 1; it gives 0 and draws nothing where frame has fewer values than
// a whole frame, or where memory for the copy below is refused.
//
// Without a file on view ImageBuffer takes a copy of the frame before a rectangle or a line is drawn, so that the mark
// can be taken off again; it is made where there is none.
#pragma once

#include <cstdint>
#include <span>

namespace kelvo {

// How the values of a frame that is marked lie. The image that is shown, and all that is copied from it, is kImage;
// who hands on a frame as the detector gave it says kReadout.
enum class FrameOrder : std::uint8_t {
    kImage,    // a pixel's value stands at row x columns + column
    kReadout,  // DecomList tells where; without a file on view only, since stored frames are images
};

// Writes 0 along the outline one pixel outside a rectangle, inclusive on all four sides. The outline is held to the
// frame, but an edge that would lie at row or column 0 or before isn't drawn.
//
// The right edge goes through DecomList in either order, also with a file on view: that is settled behaviour. A pixel
// beyond the table stands at its own place.
int MarkRectangle(std::span<std::int16_t> frame, std::int32_t left, std::int32_t top, std::int32_t right,
                  std::int32_t bottom, FrameOrder order = FrameOrder::kImage);

// Keeps the value at x, y in CrossCentreValue (0 where that lies outside) and writes 0 on four arms, which leave the
// centre alone: five pixels to the right and down, at most five to the left and up, where column 0 and row 0 are never
// reached. The arm downward ends at the row whose number is the frame's width, not its height: that is settled too.
int MarkCross(std::span<std::int16_t> frame, std::int32_t x, std::int32_t y);

// Darkens both sides of the line that a line plot samples, and leaves the line itself readable.
//
// A line with more columns than rows goes pixel by pixel through the columns from x1 to x2, its row being y1 plus or
// minus (int)(i x slope), slope = (float)|dy| / (float)|dx|, the product at full width; the pixels above and below
// become 0. Any other line goes through the rows likewise, and the pixels left and right become 0. The pixel before
// the start, in the start's row (or column), and the one behind the end, in the end's, are set to DisplayHigh. Where
// the points coincide, the pixels left, right and above become 0.
int MarkLine(std::span<std::int16_t> frame, std::int32_t x1, std::int32_t y1, std::int32_t x2, std::int32_t y2);

// The count under the last cross; 0 at the start.
extern const std::int16_t& CrossCentreValue;

// As at the start of the program.
void ResetRegionMarks();

}  // namespace kelvo
