// The variables behind state/buffer_state.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "state/buffer_state.h"

namespace kelvo {

struct BufferStateVariables {
    std::int64_t HostFrameBytes = 0;
    std::uint32_t AveragingCapacity = 0;
    std::int32_t FramesInBuffer = 0;
    std::int32_t BufferFirstFrame = 0;
    std::int32_t BufferLastFrame = 0;
    std::int32_t BufferRectTop = 0;
    std::int32_t BufferRectLeft = 0;
    std::int32_t BufferRectBottom = 0;
    std::int32_t BufferRectRight = 0;
    std::int32_t BufferStale = 0;
    std::int32_t BufferLoadAt = 0;
    std::int32_t ReplayActive = 0;
    std::int32_t ReplayPaused = 0;
    std::int32_t ReplayCurrent = 0;
    std::int32_t ReplayOnView = -1;
    std::int32_t ReplayRateIndex = 1;
    std::int32_t ReplayPeriodMs = 41;  // of row 1, 24 Hz
    HWND BufferDialog = nullptr;
    std::int32_t PeriodicUpdates = 1;
};

namespace write {
extern BufferStateVariables buffer;
}

// As at the start of the program.
void ResetBufferState();

}  // namespace kelvo
