#include "video/cursor_cross.h"

#include "display/display_pipeline.h"
#include "grabber/frame_size.h"
#include "state/frame_state.h"

#include <algorithm>
#include <cstdint>

namespace kelvo {

namespace {

constexpr int kArm = 5;
constexpr std::uint32_t kTone = 0xFFFFFF;
constexpr std::uint32_t kRim = 0x000000;

}  // namespace

std::array<Rect, 4> CrossArms(Point size, Point pixel)
{
    const auto [x, y] = pixel;
    if (x < 0 || y < 0 || x >= size.x || y >= size.y) return {};
    return {{{x + 1, y, std::min(x + 1 + kArm, size.x), y + 1},
             {std::max(x - kArm, 1), y, x, y + 1},
             {x, y + 1, x + 1, std::min(y + 1 + kArm, size.y)},
             {x, std::max(y - kArm, 1), x + 1, y}}};
}

// The rims first, and none of them toward the pixel that is read: its colour stays in sight.
void DrawCross(Point pixel)
{
    const std::array<Rect, 4> arms = CrossArms(FrameSizeOnView(), pixel);
    FillPicturePixels(arms[0], {0, 1, 1, 1}, kRim);
    FillPicturePixels(arms[1], {1, 1, 0, 1}, kRim);
    FillPicturePixels(arms[2], {1, 0, 1, 1}, kRim);
    FillPicturePixels(arms[3], {1, 1, 1, 0}, kRim);
    for (const Rect& arm : arms) FillPicturePixels(arm, {}, kTone);
}

void DrawCursorCross(bool /*newFrame*/)
{
    if (ImageCursorOn) DrawCross({CursorX, CursorY});
}

}  // namespace kelvo
