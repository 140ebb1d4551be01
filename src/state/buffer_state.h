// The host frame store as capture, replay, averaging and buffer files share it.
#pragma once

#include <cstdint>

namespace kelvo {

extern const std::int64_t&
    HostFrameBytes;  // the store's capacity in bytes, as its set-up returned it; 0 without a store
extern const std::uint32_t& AveragingCapacity;  // frames a batch of averaging can hold; 0: not worked out yet
extern const std::int32_t& FramesInBuffer;      // frames stored
// Range (from 0) and rectangle (image pixels, inclusive) of stored frames that averaging, save and load work on. Valid
// while FramesInBuffer is above 0.
extern const std::int32_t& BufferFirstFrame;
extern const std::int32_t& BufferLastFrame;
extern const std::int32_t& BufferRectTop;
extern const std::int32_t& BufferRectLeft;
extern const std::int32_t& BufferRectBottom;
extern const std::int32_t& BufferRectRight;
// 0: the live display is held off while a long acquisition owns the board; otherwise 1.
extern const std::int32_t& PeriodicUpdates;

}  // namespace kelvo
