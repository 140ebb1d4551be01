// The variables behind state/frame_state.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "state/frame_state.h"

namespace kelvo {

struct FrameStateVariables {
    std::int32_t CameraOn = 0;
    std::int32_t LiveVideo = 0;
    std::int32_t ViewingFile = 0;
    std::int32_t DisplayEnabled = 1;
    std::int32_t GrabberPresent = 0;
    std::vector<std::int16_t> RawFrame;
    std::vector<std::int16_t> LiveFrame;
    std::vector<std::uint8_t> ImageBuffer;
    std::int32_t SteppingFrames = 0;
    std::string LoadName;
    std::uint32_t CurrentFrame = 0;
    std::uint32_t LastFrame = 0;
    std::int32_t CursorX = 0;
    std::int32_t CursorY = 0;
    std::uint16_t CursorValue = 0;
    std::int32_t ImageCursorOn = 0;
};

namespace write {
extern FrameStateVariables frames;
std::span<std::int16_t> ImageBufferPixels(std::int32_t dataOffset);
}  // namespace write

// As at the start of the program.
void ResetFrameState();

}  // namespace kelvo
