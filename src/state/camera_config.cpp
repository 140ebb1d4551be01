#include "state/camera_config.h"

#include "platform/text.h"
#include "state/camera_config_write.h"
#include "state/state_registry.h"

#include <algorithm>

namespace kelvo {

namespace write {
CameraStateVariables camera;
}

constinit const CameraConfig& ActiveConfig = write::camera.ActiveConfig;
constinit const std::int32_t& ActiveCamera = write::camera.ActiveCamera;
constinit const std::int32_t& nCommPort = write::camera.nCommPort;
constinit const std::int32_t& numBufFrames = write::camera.numBufFrames;
constinit const float& VoltsOffset = write::camera.VoltsOffset;
constinit const float& ADoffset = write::camera.ADoffset;
constinit const std::array<float, 16>& VoltsPerCountVsGain = write::camera.VoltsPerCountVsGain;

void ResetCameraState()
{
    write::camera = {};
}

namespace {

const StateNames kStateNames{
    Named("ActiveCamera", ActiveCamera),
    Named("nCommPort", nCommPort),
    Named("numBufFrames", numBufFrames),
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
    Named("VoltsOffset", VoltsOffset),
    Named("ADoffset", ADoffset),
    Named("VoltsPerCountVsGain", VoltsPerCountVsGain),
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
