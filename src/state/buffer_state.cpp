#include "state/buffer_state.h"

#include "state/buffer_state_write.h"
#include "state/state_registry.h"

namespace kelvo {

namespace write {
BufferStateVariables buffer;
}

constinit const std::int64_t& HostFrameBytes = write::buffer.HostFrameBytes;
constinit const std::uint32_t& AveragingCapacity = write::buffer.AveragingCapacity;
constinit const std::int32_t& FramesInBuffer = write::buffer.FramesInBuffer;
constinit const std::int32_t& BufferFirstFrame = write::buffer.BufferFirstFrame;
constinit const std::int32_t& BufferLastFrame = write::buffer.BufferLastFrame;
constinit const std::int32_t& BufferRectTop = write::buffer.BufferRectTop;
constinit const std::int32_t& BufferRectLeft = write::buffer.BufferRectLeft;
constinit const std::int32_t& BufferRectBottom = write::buffer.BufferRectBottom;
constinit const std::int32_t& BufferRectRight = write::buffer.BufferRectRight;
constinit const std::int32_t& PeriodicUpdates = write::buffer.PeriodicUpdates;

void ResetBufferState()
{
    write::buffer = {};
}

namespace {

const StateNames kStateNames{
    Named("PeriodicUpdates", PeriodicUpdates),     Named("HostFrameBytes", HostFrameBytes),
    Named("AveragingCapacity", AveragingCapacity), Named("FramesInBuffer", FramesInBuffer),
    Named("BufferFirstFrame", BufferFirstFrame),   Named("BufferLastFrame", BufferLastFrame),
    Named("BufferRectTop", BufferRectTop),         Named("BufferRectLeft", BufferRectLeft),
    Named("BufferRectBottom", BufferRectBottom),   Named("BufferRectRight", BufferRectRight),
};

}  // namespace

}  // namespace kelvo
