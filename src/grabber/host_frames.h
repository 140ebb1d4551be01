// The pool of frames in host memory: bursts are captured into it at full speed. Frames are Hroi x Vroi counts: those
// that averaging gathers are raw, in readout order, without DataOffset; those of a stored burst or buffer file (the
// first FramesInBuffer of state/buffer_state.h) stand in image order with DataOffset.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

constexpr std::int32_t kMostHostFrames = 10000;

extern const std::vector<std::vector<std::int16_t>>& HostFrames;
extern const std::int32_t& HostFramesAllocated;  // flag
extern const std::int32_t& HostFrameNext;        // index of the next free frame
extern const std::int32_t&
    HostFramesWithoutBlank;  // of the last capture: waits that ran out, so that an old frame was read
// numBufFrames (state/camera_config.h): a wish as the camera's key has it; after allocation the count of frames.

// Makes the frames if they aren't there, or are of another size than the camera's: as many as memory and the key
// MaxNumFramesToAllocate of the camera's section in kelvo.ini allow (one more than is counted). The bytes available; 0
// if numBufFrames is 0. Where memory is refused part-way: "Unable to allocate all of RAM memory requested!" and the
// bytes so far.
std::int64_t AllocateHostFrames();
std::int32_t UsableHostFrames();  // numBufFrames, but no more than stand
// The main window's timer that replay of stored frames runs on (record/replay.h).
inline constexpr std::uint32_t kReplayTimer = 5;
// The stored frame that replay shows, which stands for the camera's frozen one; empty where replay is off, live video
// runs, a file is on view, or the frame isn't of the camera's size.
std::span<const std::int16_t> ReplayedFrame();
// Replay is off, wherever what it shows is no longer there: its timer is dead. Live video is left as it is.
void EndReplay();

void FreeHostFrames();  // HostFrameBytes, AveragingCapacity and FramesInBuffer are 0 then, and replay has ended
// Captures count frames, each after skip frames left out; in the frame account they are used. The number captured; 0 on
// failure, after its box. Fewer where a gather that runs is stopped (ui/gather.h).
std::int32_t CaptureToHostFrames(std::int32_t count, std::int32_t skip);
// Copies a rectangle of each frame first to last, DataOffset added, to destination. The copy is flat: rows are not
// respected. Start positions: 2 x (top x Hroi + left) in the frame, 2 x N x (k - first) in destination, N the
// rectangle's values. What lies outside either block is left out. 1.
std::int32_t ReadHostFrameRect(std::span<std::int16_t> destination, std::int32_t first, std::int32_t last,
                               std::int32_t top, std::int32_t left, std::int32_t bottom, std::int32_t right);
std::int32_t ResetHostFrameNext();  // 1

// One pixel of a stored frame, row and column of its picture from 0. 0 where there is none.
std::int16_t ReadBufferPixel(std::int32_t frame, std::int32_t row, std::int32_t column);
int BufferBoardReady();  // 1: the store needs no board

// None allocated.
void ResetHostFrames();

}  // namespace kelvo
