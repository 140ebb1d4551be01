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

}  // namespace kelvo
