// A frame of counts as an 8-bit bitmap: gray values through DisplayLut, colours through ColorMap.
#pragma once

#include "dibapi32/dibutil.h"
#include "display/gray_lookup.h"
#include "platform/types.h"

#include <array>
#include <cstdint>
#include <span>

namespace kelvo {

// Pixels of a frame, inclusive on all four sides.
struct FrameRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
    std::int64_t Width() const { return std::int64_t{right} + 1 - left; }
    std::int64_t Height() const { return std::int64_t{bottom} + 1 - top; }
    friend bool operator==(const FrameRect&, const FrameRect&) = default;
};

// What is shown of a frame: with a file on view the whole of it by its header; live from the pan origin to the last
// pixel of the region of interest. A pan that is more negative than the region is large counts as minus its size.
FrameRect DefaultFrameRect();

// The pixel of the frame that a pixel of the rectangle's bitmap shows, and the place in that bitmap of a pixel of the
// frame. What shows none, black beside the frame or beyond the bitmap, counts as the nearest that does.
Point FramePixelOf(Point bitmapPixel, const FrameRect& rectangle);
Point BitmapPixelOf(Point framePixel, const FrameRect& rectangle);

// A bitmap of a rectangle of the frame (null: DefaultFrameRect), whose rows are as long as the rectangle's right side
// says: source row r starts at element r x (right + 1) + left. The top isn't part of it, so that a vertical pan
// shortens the picture at the bottom and doesn't move it, and rows follow the frame's own only where the rectangle
// reaches the frame's last column. Elements outside the frame are byte 0. An empty rectangle gives a bitmap without
// pixels.
//
// Null, with nothing shown: memory is refused, a side is negative, or a file is on view whose header says more pixels
// than frame holds. DisplayLut and ColorMap must stand (EnsureDisplayLut); without a table every pixel is 0.
Dib MakeFrameBitmap(std::span<const std::int16_t> frame, const FrameRect* rectangle);
inline constexpr auto& FrameToDib = MakeFrameBitmap;

// The same into a bitmap that may stand already (ReadyDIB). False where MakeFrameBitmap gives null; then dib stays.
bool FillFrameBitmap(Dib& dib, std::span<const std::int16_t> frame, const FrameRect* rectangle);

// The bitmap of the camera's next frame, whose gray values are to be made together with its counts: dib is as
// FillFrameBitmap leaves it but for the pixels, and they go where the result says. Without a table, with a file on
// view, with a pan outside the frame and where memory is refused there is no such place, and dib stays.
GrayRows ReadyCameraBitmap(Dib& dib);

// A colour table entry: blue, green, red, 0.
using RgbQuadTable = std::array<std::uint8_t, 1024>;
// The colour map in force as a bitmap's colour table. All black where there is no map.
void BuildDibPalette(RgbQuadTable& table);

// The same, kept so that a new frame doesn't make it anew: whoever makes bitmaps again and again keeps one.
class DibPaletteCache {
  public:
    const RgbQuadTable& InForce();

  private:
    static constexpr std::uint16_t kNoMap = 0xFFFF;
    RgbQuadTable table_{};
    std::uint16_t color_ = kNoMap;
    std::uint32_t generation_ = 0;
};

}  // namespace kelvo
