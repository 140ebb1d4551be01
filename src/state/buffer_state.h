// The host frame store as capture, replay, averaging and buffer files share it.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

extern const std::int64_t&
    HostFrameBytes;  // the store's capacity in bytes, as its set-up returned it; 0 without a store
extern const std::uint32_t& AveragingCapacity;  // frames a batch of averaging can hold; 0: not worked out yet
extern const std::int32_t& FramesInBuffer;      // frames stored, from slot 0 on; after a wrap all of them
extern const std::int32_t& BufferStale;         // 1: the next capture must empty the store first
// Range (from 0) and rectangle (image pixels, inclusive) of stored frames that averaging, save and load work on. Valid
// while FramesInBuffer is above 0.
extern const std::int32_t& BufferFirstFrame;
extern const std::int32_t& BufferLastFrame;
extern const std::int32_t& BufferRectTop;
extern const std::int32_t& BufferRectLeft;
extern const std::int32_t& BufferRectBottom;
extern const std::int32_t& BufferRectRight;
extern const std::int32_t& BufferLoadAt;  // from which slot on the frames of the last load count
// Replay of the stored frames (record/replay.h). It runs on while no dialog is open.
extern const std::int32_t& ReplayActive;     // 1: replay is on, running or paused
extern const std::int32_t& ReplayPaused;     // 1: it stands
extern const std::int32_t& ReplayCurrent;    // the frame that comes next
extern const std::int32_t& ReplayOnView;     // the frame on view; -1: none
extern const std::int32_t& ReplayRateIndex;  // row of the dialog's list of rates
extern const std::int32_t& ReplayPeriodMs;   // 1000 / rate, truncated
extern const HWND& BufferDialog;             // the dialog BUFFER while it is open, otherwise null
// 0: the live display is held off while a long acquisition owns the board; otherwise 1.
extern const std::int32_t& PeriodicUpdates;

}  // namespace kelvo
