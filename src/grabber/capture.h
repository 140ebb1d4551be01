// The capture: while something records, every frame that the board completes is taken, in order, into a ring of frames
// (grabber/frame_ring.h). Who records takes the next one from there, never the newest; the live view takes the newest
// and leaves the rest alone.
//
// With the real clock a thread of its own takes the frames and owns the board: calls of other threads to it are carried
// there (grabber/copm2.h). Beside the ring and the counts here it shares nothing; the simulated camera guards its own
// registers. A second thread runs `consume`, where one is given. Both exist from StartCapture to StopCapture. With the
// virtual clock there is no thread: the clock itself takes the frames each time that it moves, and then runs consume.
//
// An observer may look at each frame too, whether it is recorded or not. It works on a thread of its own, from copies
// in a ring of its own, so that a slow one loses frames for itself alone; with the virtual clock it is called as a
// frame comes, before who records.
//
// StartCapture, StopCapture and ObserveFrames are the main thread's. TakeNextFrame, FramesWaiting, WaitForFrames,
// WaitForNextFrame, WaitingFrame and DropFrames belong to the one who records: consume's thread where there is a
// consume, otherwise the main thread. CopyNewestFrame is the main thread's. The counts may be asked for anywhere.
#pragma once

#include "grabber/frame_ring.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace kelvo {

// At each moment: delivered = recorded + passedOver + lostByTransport + lostByBoard + lostByRing + waiting.
struct CaptureCounts {
    // Since the capture began, by the board's numbers; of a board that doesn't count: those read.
    std::int64_t delivered = 0;
    std::int64_t recorded = 0;
    std::int64_t passedOver = 0;                  // on purpose: skips, intervals, before a trigger, after the end
    std::optional<std::int64_t> lostByBoard = 0;  // gone before they were read, or not readable; nullopt: it can't know
    std::int64_t lostByRing = 0;                  // no place was free
    std::int64_t lostByTransport = 0;             // damaged or gone on the way to the board
    std::int64_t waiting = 0;                     // in the ring
    std::int64_t lastNumber = 0;                  // of the newest frame, by the board
    std::int64_t lastLostByTransport = 0;         // by its stamp
};

struct CaptureOptions {
    std::int32_t columns = 0;       // of a frame
    std::int32_t rows = 0;          //
    std::size_t ringFrames = 1;     // that may wait
    std::function<void()> consume;  // called while frames wait, until it drops none; may be empty
};

// A ring as large as the setting says (SetRingBytes), in frames of that many values, what is kept about each of them
// included: 1 to 262,144.
std::size_t RingFrames(std::int64_t frameValues);
// 0, as at start: a quarter of the memory that is available, at most 2 GB.
void SetRingBytes(std::int64_t bytes);

// Live video runs: it begins with the first frame that is completed from now on, the ring empty. False, and nothing
// runs, where memory is refused, one runs already, or the board isn't open.
bool StartCapture(const CaptureOptions& options);
// Ends it: what is in the ring by then is given to consume for as long as that drops any; the rest has been passed
// over. The counts stand until the next start. Nothing happens where none runs.
void StopCapture();
bool CaptureRuns();
CaptureCounts CurrentCaptureCounts();

// The frames of one that records.
enum class FrameFate { kRecorded, kPassedOver };
std::size_t FramesWaiting();
std::size_t WaitForFrames(std::size_t have, std::int64_t limitMs);  // until more than `have` wait; how many do
const CapturedFrame& WaitingFrame(std::size_t index);               // 0: the oldest. Stays as it is until it is dropped
void DropFrames(std::size_t frames, FrameFate fate);                // the oldest ones

enum class TakeResult {
    kTaken,
    kTimeout,     // the board completed none within the limit
    kUnreadable,  // one came and couldn't be read; the next call goes on behind it
    kEnded        // no capture runs
};
// Waits at most limitMs until a frame waits: kTaken where WaitingFrame(0) is there, which stays until it is dropped.
TakeResult WaitForNextFrame(std::int64_t limitMs);
// The oldest frame that waits, or the next one that comes within limitMs: its values to out, and what is known of it to
// taken, whose values are those in out.
TakeResult TakeNextFrame(std::span<std::int16_t> out, CapturedFrame& taken, FrameFate fate, std::int64_t limitMs);

// The newest frame, once each, for the live view; waits at most limitMs for one.
TakeResult CopyNewestFrame(std::span<std::int16_t> out, std::int64_t limitMs);

// A frame as an observer gets it. He calls nothing of this header.
struct ObservedFrame {
    FrameStamp stamp;
    std::int64_t missed = 0;               // that came and it didn't get: unreadable, or its ring was full
    std::span<const std::int16_t> values;  // as the board gave them; only as long as the observer looks
};
using FrameObserver = std::function<void(const ObservedFrame&)>;
// From here on each frame of columns x rows that a capture takes goes to the observer, in order, through every capture
// that begins and ends meanwhile; frames of another size don't. An empty one ends it: what still waits is observed
// before the call returns, and nothing after it. False, and nobody observes, where memory for the ring of
// observerFrames is refused.
bool ObserveFrames(FrameObserver observer, std::int32_t columns = 0, std::int32_t rows = 0,
                   std::size_t observerFrames = 64);

// As at start: nothing runs, nobody observes, nothing was counted, no setting.
void ResetCapture();

}  // namespace kelvo
