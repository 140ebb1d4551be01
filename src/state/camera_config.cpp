#include "state/camera_config.h"

#include "platform/text.h"
#include "state/state_registry.h"

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

namespace {

const StateNames kStateNames{
    Named("ActiveCamera", ActiveCamera),
    Named("nCommPort", nCommPort),
    Named("numBufFrames", numBufFrames),
    Named("IndexFrameRate", IndexFrameRate),
    Named("Description", ActiveConfig.Description),
    Named("Hroi", ActiveConfig.Hroi),
    Named("Vroi", ActiveConfig.Vroi),
    Named("Hactive", ActiveConfig.Hactive),
    Named("Vactive", ActiveConfig.Vactive),
    Named("NumOutputs", ActiveConfig.NumOutputs),
    Named("NumChannels", ActiveConfig.NumChannels),
    Named("DualCamera", ActiveConfig.DualCamera),
    Named("BufferCapture", ActiveConfig.BufferCapture),
    Named("UnityGain", ActiveConfig.UnityGain),
    Named("UnityOffset", ActiveConfig.UnityOffset),
};

}  // namespace

std::size_t PixelsOf(const CameraConfig& config)
{
    return static_cast<std::size_t>(std::max(config.Vroi, 0)) * static_cast<std::size_t>(std::max(config.Hroi, 0));
}

std::string ActiveCameraSection()
{
    return Format("Camera.%d", ActiveCamera);
}

}  // namespace kelvo
