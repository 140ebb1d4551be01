#include "output/caption.h"

#include "dibapi32/dibapi32.h"
#include "platform/memory.h"
#include "platform/paint.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace kelvo {

namespace {

constexpr ColorRef kBlack = 0x000000;
constexpr ColorRef kWhite = 0xFFFFFF;

bool GrowByWhiteRows(DeviceBitmap& picture, int rows)
{
    DeviceBitmap grown{.width = picture.width, .height = picture.height + rows, .pixels = {}};
    const std::size_t pixels = static_cast<std::size_t>(grown.width) * static_cast<std::size_t>(grown.height);
    if (!AllocateBlock(grown.pixels, pixels)) return false;
    std::ranges::fill(std::ranges::copy(picture.pixels, grown.pixels.begin()).out, grown.pixels.end(), kWhite);
    picture = std::move(grown);
    return true;
}

}  // namespace

Dib AddCaption(Dib dib, std::string_view text, int x, int y)
{
    std::optional<DeviceBitmap> picture = BitmapFromDib(dib);
    FreeDib(dib);
    if (!picture) return nullptr;
    const int top = picture->height + y;
    if (y >= 1 && !GrowByWhiteRows(*picture, 1 + PictureTextHeight() + y)) return nullptr;
    if (!DrawPictureText(*picture, x, top, text, kBlack, kWhite)) return nullptr;
    return DibFromBitmap(*picture);
}

}  // namespace kelvo
