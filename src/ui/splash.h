// The start picture, kelvo220.bmp in the program's directory.
#pragma once

#include "dibapi32/dibapi32.h"
#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// Paints the start picture over a window; null after a sound if there is none.
Dib ShowSplash(HWND window);
// Nothing for a null bitmap. Otherwise waits, during which no messages are handled, and gives the picture's place back.
void HideSplash(const Dib& bitmap, std::int64_t milliseconds);

}  // namespace kelvo
