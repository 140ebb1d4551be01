// The host frame store as capture, replay, averaging and buffer files share it.
#pragma once

#include <cstdint>

namespace kelvo {

extern std::int64_t HostFrameBytes;      // the store's capacity in bytes, as its set-up returned it
extern std::uint32_t AveragingCapacity;  // frames a batch of averaging can hold; 0: not worked out yet
extern std::int32_t FramesInBuffer;      // frames stored
// Range and rectangle (inclusive) of stored frames that averaging, save and load work on.
extern std::int32_t BufferFirstFrame;
extern std::int32_t BufferLastFrame;
extern std::int32_t BufferRectTop;
extern std::int32_t BufferRectLeft;
extern std::int32_t BufferRectBottom;
extern std::int32_t BufferRectRight;
// 0: the live display is held off while a long acquisition owns the board.
extern std::int32_t PeriodicUpdates;

}  // namespace kelvo
