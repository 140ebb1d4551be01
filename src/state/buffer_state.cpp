#include "state/buffer_state.h"

#include "state/state_registry.h"

namespace kelvo {

std::int64_t HostFrameBytes = 0;
std::uint32_t AveragingCapacity = 0;
std::int32_t FramesInBuffer = 0;
std::int32_t BufferFirstFrame = 0;
std::int32_t BufferLastFrame = 0;
std::int32_t BufferRectTop = 0;
std::int32_t BufferRectLeft = 0;
std::int32_t BufferRectBottom = 0;
std::int32_t BufferRectRight = 0;
std::int32_t PeriodicUpdates = 1;

namespace {

const StateNames kStateNames{
    Named("PeriodicUpdates", PeriodicUpdates),
    Named("HostFrameBytes", HostFrameBytes),
    Named("AveragingCapacity", AveragingCapacity),
};

}  // namespace

}  // namespace kelvo
