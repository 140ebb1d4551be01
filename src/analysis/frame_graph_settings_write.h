// The variables behind analysis/frame_graph_settings.h, for those who write them: tests/structure/state_writers.txt
// lists them.
#pragma once

#include "analysis/frame_graph_settings.h"

namespace kelvo {

struct FrameGraphVariables {
    std::int32_t PixelRow = 0;
    std::int32_t PixelCol = 0;
    std::int32_t yClipMin = 0;
    std::int32_t yClipMax = 0;
    std::int32_t SqrtTime = 0;
    std::int32_t Autoscale = 1;
    std::int32_t GraphFirstFrame = 0;
    std::int32_t GraphLastFrame = -1;
    std::int32_t GraphFrames = 0;
    std::int32_t GraphSource = 0;
    std::optional<TraceFile> GraphedFile;
};

namespace write {
extern FrameGraphVariables graph;
}

// As at the start of the program.
void ResetGraphSettings();

}  // namespace kelvo
