#include "state/frame_state.h"

#include "state/state_registry.h"

namespace kelvo {

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

namespace {

const StateNames kStateNames{
    Named("CameraOn", CameraOn),
    Named("LiveVideo", LiveVideo),
    Named("ViewingFile", ViewingFile),
    Named("DisplayEnabled", DisplayEnabled),
    Named("GrabberPresent", GrabberPresent),
    Named("SteppingFrames", SteppingFrames),
    Named("ViewingSequence", ViewingSequence),
    Named("LoadName", LoadName),
    Named("SequencePath", SequencePath),
    Named("CurrentFrame", CurrentFrame),
    Named("SequenceFrameIndex", SequenceFrameIndex),
    Named("LastFrame", LastFrame),
    Named("SequenceLastFrame", SequenceLastFrame),
    Named("CursorX", CursorX),
    Named("CursorY", CursorY),
    Named("CursorValue", CursorValue),
    Named("ImageCursorOn", ImageCursorOn),
    {"ImageBuffer", [] { return StateValue{static_cast<std::int64_t>(ImageBuffer.size())}; }},
};

}  // namespace

std::span<std::int16_t> ImageBufferPixels(std::int32_t dataOffset)
{
    const std::size_t start = static_cast<std::size_t>(dataOffset < 0 ? 0 : dataOffset) & ~std::size_t{1};
    if (start >= ImageBuffer.size()) return {};
    // The block comes from the allocator and start is even, so that the samples are aligned.
    return {reinterpret_cast<std::int16_t*>(ImageBuffer.data() + start), (ImageBuffer.size() - start) / 2};
}

}  // namespace kelvo
