// The cross that marks a pixel, drawn over the picture in two tones, so that it is seen on black and on white: the
// image cursor's, and that of who works on one pixel. It stands in a layer of the picture: no frame, and nothing that
// is saved, averaged or copied, holds any of it.
#pragma once

#include "platform/types.h"

#include <array>

namespace kelvo {

// Its arms right, left, below and above a pixel of a frame of size (columns, rows), in the frame's pixels: 5 pixels
// long, cut at the frame's end, and short of column and row 0. The pixel itself is left alone. All are empty where it
// lies outside the frame.
std::array<Rect, 4> CrossArms(Point size, Point pixel);

// For a layer: the cross at a pixel of the frame on view (column, row); nothing outside it.
void DrawCross(Point pixel);

// The layer: the cross at (CursorX, CursorY), while ImageCursorOn.
void DrawCursorCross(bool newFrame);

}  // namespace kelvo
