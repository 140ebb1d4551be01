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

std::size_t CameraFrameValues()
{
    if (ActiveConfig.Hroi < 1 || ActiveConfig.Vroi < 1) return 0;
    return static_cast<std::size_t>(ActiveConfig.Hroi) * static_cast<std::size_t>(ActiveConfig.Vroi);
}

}  // namespace kelvo
