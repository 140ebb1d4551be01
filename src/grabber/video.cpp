#include "grabber/video.h"

#include "display/display_pipeline.h"
#include "grabber/frame_size.h"
#include "grabber/frame_state.h"
#include "imagefile/header.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr std::int32_t kCrossReach = 6;  // the arm's first pixel beyond its end

// The stored frame; false where the buffer doesn't hold what the header says.
bool CopyStoredFrame(std::vector<std::int16_t>& frame)
{
    const Point size = FrameSizeOnView();
    if (size.x <= 0 || size.y <= 0) return false;
    const auto count = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
    const std::span<const std::int16_t> pixels = ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
    if (pixels.size() < count) return false;
    if (frame.size() < count) frame.resize(count);
    std::copy_n(pixels.begin(), count, frame.begin());
    return true;
}

}  // namespace

std::uint16_t StampCursorCross(std::span<std::int16_t> frame, std::int32_t width, std::int32_t height, std::int32_t x,
                               std::int32_t y)
{
    if (x < 0 || y < 0 || x >= width || y >= height) return 0;
    const auto at = [&](std::int32_t column, std::int32_t row) -> std::int16_t& {
        return frame[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                     static_cast<std::size_t>(column)];
    };
    for (std::int32_t c = x + 1; c < std::min(x + kCrossReach, width); ++c) at(c, y) = 0;
    for (std::int32_t c = x - 1; c > std::max(x - kCrossReach, 0); --c) at(c, y) = 0;
    for (std::int32_t r = y + 1; r < std::min(y + kCrossReach, height); ++r) at(x, r) = 0;
    for (std::int32_t r = y - 1; r > std::max(y - kCrossReach, 0); --r) at(x, r) = 0;
    return static_cast<std::uint16_t>(at(x, y));
}

int GetVideoData(std::vector<std::int16_t>& frame)
{
    // Without a file on view the picture comes from the board, which a viewer doesn't have.
    if (!ViewingFile || !CopyStoredFrame(frame)) return 0;
    if (ImageCursorOn) {
        const Point size = FrameSizeOnView();
        CursorValue = StampCursorCross(frame, size.x, size.y, CursorX, CursorY);
    }
    if (DisplayEnabled) DrawFrame(frame);
    return 1;
}

// Live video belongs to a camera that is on.
void ToggleFreeze(std::int32_t& flag)
{
    if (!CameraOn) return;
    flag = flag ? 0 : 1;
}

}  // namespace kelvo
