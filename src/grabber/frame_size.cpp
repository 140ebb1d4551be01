#include "grabber/frame_size.h"

#include "config/camera_config.h"
#include "grabber/frame_state.h"
#include "imagefile/header.h"

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

}  // namespace kelvo
