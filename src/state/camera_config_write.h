// The variables behind state/camera_config.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "state/camera_config.h"

namespace kelvo {

struct CameraStateVariables {
    CameraConfig ActiveConfig;
    std::int32_t ActiveCamera = 0;
    std::int32_t nCommPort = 0;
    std::int32_t numBufFrames = 0;
    float VoltsOffset = 0;
    float ADoffset = 0;
    std::array<float, 16> VoltsPerCountVsGain{};
};

namespace write {
extern CameraStateVariables camera;
}

// As at the start of the program.
void ResetCameraState();

}  // namespace kelvo
