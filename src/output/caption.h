// A line of text under or in a picture that is printed.
#pragma once

#include "dibapi32/dibutil.h"

#include <string_view>

namespace kelvo {

// A new bitmap with the text in black on white, at column x; dib is given up. y below 1: written over the picture, y
// rows above its end. Otherwise the bitmap grows by 1 + the text's height + y white rows, with the text y rows below
// the picture. What is wider than the picture is cut at its edge. The pixels keep their colours, in rows of 24 bits.
// Null where memory is refused, the text can't be drawn, or for a bitmap that can't be read (BitmapFromDib).
Dib AddCaption(Dib dib, std::string_view text, int x, int y);

}  // namespace kelvo
