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
constinit const std::int32_t& BufferStale = write::buffer.BufferStale;
constinit const std::int32_t& BufferLoadAt = write::buffer.BufferLoadAt;
constinit const std::int32_t& ReplayActive = write::buffer.ReplayActive;
constinit const std::int32_t& ReplayPaused = write::buffer.ReplayPaused;
constinit const std::int32_t& ReplayCurrent = write::buffer.ReplayCurrent;
constinit const std::int32_t& ReplayOnView = write::buffer.ReplayOnView;
constinit const std::int32_t& ReplayRateIndex = write::buffer.ReplayRateIndex;
constinit const std::int32_t& ReplayPeriodMs = write::buffer.ReplayPeriodMs;
constinit const HWND& BufferDialog = write::buffer.BufferDialog;
constinit const std::int32_t& PeriodicUpdates = write::buffer.PeriodicUpdates;

void ResetBufferState()
{
    write::buffer = {};
}

namespace {

const StateNames kStateNames{
    Named("PeriodicUpdates", PeriodicUpdates),
    Named("HostFrameBytes", HostFrameBytes),
    Named("AveragingCapacity", AveragingCapacity),
    Named("FramesInBuffer", FramesInBuffer),
    Named("BufferFirstFrame", BufferFirstFrame),
    Named("BufferLastFrame", BufferLastFrame),
    Named("BufferRectTop", BufferRectTop),
    Named("BufferRectLeft", BufferRectLeft),
    Named("BufferRectBottom", BufferRectBottom),
    Named("BufferRectRight", BufferRectRight),
    Named("BufferStale", BufferStale),
    Named("BufferLoadAt", BufferLoadAt),
    Named("ReplayActive", ReplayActive),
    Named("ReplayPaused", ReplayPaused),
    Named("ReplayCurrent", ReplayCurrent),
    Named("ReplayOnView", ReplayOnView),
    Named("ReplayRateIndex", ReplayRateIndex),
    Named("ReplayPeriodMs", ReplayPeriodMs),
};

}  // namespace

}  // namespace kelvo
