// The variables behind grabber/host_frames.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "grabber/host_frames.h"

namespace kelvo {

struct HostFrameVariables {
    std::vector<std::vector<std::int16_t>> HostFrames;
    std::int32_t HostFramesAllocated = 0;
    std::int32_t HostFrameNext = 0;
    std::int32_t HostFramesWithoutBlank = 0;
};

namespace write {
extern HostFrameVariables hostFrames;
}

}  // namespace kelvo
