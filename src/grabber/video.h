// The way of a frame to the screen. GetVideoData, ToggleFreeze and RefreshLiveFrame are declared in
// grabber/frame_state.h, since the display calls them too; this header has the pieces of GetVideoData that can be
// tested alone.
#pragma once

#include <cstdint>
#include <span>

namespace kelvo {

// Stamps the cursor's cross into a frame of height x width counts: arms of 5 pixels of 0 around (x, y), the centre left
// alone; the arms toward the upper and left border stop short of row and column 0. Returns the centre's count, unsigned
// 16 bits; 0 and no cross where (x, y) lies outside the frame. Pixels outside are left out.
std::uint16_t StampCursorCross(std::span<std::int16_t> frame, std::int32_t width, std::int32_t height, std::int32_t x,
                               std::int32_t y);

}  // namespace kelvo
