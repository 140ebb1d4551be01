#include "state/camera_config.h"

#include "platform/text.h"

#include <algorithm>

namespace kelvo {

CameraConfig ActiveConfig;

std::int32_t ActiveCamera = 0;
std::int32_t nCommPort = 0;
std::int32_t numBufFrames = 0;
float VoltsOffset = 0;
float ADoffset = 0;
std::array<float, 16> VoltsPerCountVsGain{};
std::int32_t IndexFrameRate = 0;

std::size_t PixelsOf(const CameraConfig& config)
{
    return static_cast<std::size_t>(std::max(config.Vroi, 0)) * static_cast<std::size_t>(std::max(config.Hroi, 0));
}

std::string ActiveCameraSection()
{
    return Format("Camera.%d", ActiveCamera);
}

}  // namespace kelvo
