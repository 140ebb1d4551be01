#include "grabber/frame_size.h"

#include "imagefile/header.h"
#include "state/camera_config.h"
#include "state/frame_state.h"

#include <algorithm>
#include <limits>

namespace kelvo {

Point FrameSizeOnView()
{
    if (ViewingFile) return {ImageHeader.ImageWidth, ImageHeader.ImageHeight};
    return {ActiveConfig.Hroi, ActiveConfig.Vroi};
}

namespace {

bool IsFrameSide(std::int32_t size)
{
    return size >= 1 && size <= kLargestFrameSide;
}

}  // namespace

std::size_t CameraFrameValues()
{
    if (!IsFrameSide(ActiveConfig.Hroi) || !IsFrameSide(ActiveConfig.Vroi)) return 0;
    return static_cast<std::size_t>(ActiveConfig.Hroi) * static_cast<std::size_t>(ActiveConfig.Vroi);
}

std::int64_t RectangleValues(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom)
{
    // No frame has sides beyond this, and the product of two stays a number.
    constexpr std::int64_t kLongestSide = std::numeric_limits<std::int32_t>::max();
    const std::int64_t columns = std::clamp<std::int64_t>(std::int64_t{right} + 1 - left, 0, kLongestSide);
    const std::int64_t rows = std::clamp<std::int64_t>(std::int64_t{bottom} + 1 - top, 0, kLongestSide);
    return columns * rows;
}

}  // namespace kelvo
