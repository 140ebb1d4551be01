#include "state/frame_state.h"

#include "state/frame_state_write.h"
#include "state/state_registry.h"

namespace kelvo {

namespace write {
FrameStateVariables frames;
}

constinit const std::int32_t& CameraOn = write::frames.CameraOn;
constinit const std::int32_t& LiveVideo = write::frames.LiveVideo;
constinit const std::int32_t& ViewingFile = write::frames.ViewingFile;
constinit const std::int32_t& DisplayEnabled = write::frames.DisplayEnabled;
constinit const std::int32_t& GrabberPresent = write::frames.GrabberPresent;
constinit const std::vector<std::int16_t>& RawFrame = write::frames.RawFrame;
constinit const std::vector<std::int16_t>& LiveFrame = write::frames.LiveFrame;
constinit const std::vector<std::uint8_t>& ImageBuffer = write::frames.ImageBuffer;
constinit const std::int32_t& SteppingFrames = write::frames.SteppingFrames;
constinit const std::string& LoadName = write::frames.LoadName;
constinit const std::uint32_t& CurrentFrame = write::frames.CurrentFrame;
constinit const std::uint32_t& LastFrame = write::frames.LastFrame;
constinit const std::int32_t& CursorX = write::frames.CursorX;
constinit const std::int32_t& CursorY = write::frames.CursorY;
constinit const std::uint16_t& CursorValue = write::frames.CursorValue;
constinit const std::int32_t& ImageCursorOn = write::frames.ImageCursorOn;
constinit const std::int32_t& ViewingSequence = write::frames.SteppingFrames;
constinit const std::string& SequencePath = write::frames.LoadName;
constinit const std::uint32_t& SequenceFrameIndex = write::frames.CurrentFrame;
constinit const std::uint32_t& SequenceLastFrame = write::frames.LastFrame;

void ResetFrameState()
{
    write::frames = {};
}

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
    Digest("ImageBuffer.Contents", ImageBuffer),
    Digest("LiveFrame", LiveFrame),
    Digest("RawFrame", RawFrame),
    {"ImageBuffer", [] { return StateValue{static_cast<std::int64_t>(ImageBuffer.size())}; }},
};

}  // namespace

std::span<std::int16_t> write::ImageBufferPixels(std::int32_t dataOffset)
{
    const std::size_t start = static_cast<std::size_t>(dataOffset < 0 ? 0 : dataOffset) & ~std::size_t{1};
    std::vector<std::uint8_t>& buffer = write::frames.ImageBuffer;
    if (start >= buffer.size()) return {};
    // The block comes from the allocator and start is even, so that the samples are aligned.
    return {reinterpret_cast<std::int16_t*>(buffer.data() + start), (buffer.size() - start) / 2};
}

std::span<const std::int16_t> ImageBufferPixels(std::int32_t dataOffset)
{
    return write::ImageBufferPixels(dataOffset);
}

}  // namespace kelvo
