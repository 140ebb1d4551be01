// The ring of frames between the one that captures and the one that records: reserved at once, filled in order, emptied
// in order. It knows neither board nor window.
//
// Three parties may work at the same time, each on its own thread, and nobody ever waits for a copy of another:
// - the one who captures: Claim, Commit;
// - the one who records: Waiting, WaitForMore, At, Drop. A frame is his from the moment that Waiting counts it until he
//   drops it, and nobody writes into it meanwhile;
// - the one who looks: CopyNewest.
// Close may come from anywhere. Allocate and Free are called while none of them is at work.
//
// The place that became free last is filled first: as long as who records keeps up, a few places stay warm in the cache
// and the rest of the memory is never touched.
#pragma once

#include "grabber/copm2.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

struct CapturedFrame {
    FrameStamp stamp;
    std::int64_t lostByBoard = 0;      // between the frame before it in the ring and this one
    std::int64_t lostByRing = 0;       // the same
    std::int64_t lostByTransport = 0;  // the same
    std::int64_t unreadable = 0;       // frames of this capture so far that came and couldn't be read
    std::span<std::int16_t> values;    // as the board gave them: readout order, without DataOffset
};

class FrameRing {
  public:
    // What the place of a frame of that many values takes: they themselves, and what is kept about it.
    static constexpr std::size_t BytesOfPlace(std::size_t values)
    {
        return values * sizeof(std::int16_t) + sizeof(CapturedFrame) + 2 * sizeof(std::size_t) + 1;
    }
    // Room for that many frames of that many values to wait, none of them waiting. False where memory is refused: there
    // is no room then.
    bool Allocate(std::size_t frames, std::size_t values);
    void Free();
    std::size_t Capacity() const { return order_.size(); }

    // The place for the next frame. There always is one.
    CapturedFrame& Claim();
    // The frame that was claimed is complete, and the newest: it waits now. False where as many wait as there is room
    // for: then it is there to be looked at alone.
    bool Commit();

    std::size_t Waiting() const;
    // Blocks until more than `have` frames wait, and says how many do; at most limitMs, and not once the ring is
    // closed.
    std::size_t WaitForMore(std::size_t have, std::int64_t limitMs) const;
    const CapturedFrame& At(std::size_t index) const;  // 0: the oldest that waits; below Waiting()
    void Drop(std::size_t frames);                     // the oldest ones; at most those that wait

    // The newest frame, if it isn't the one that this call gave last: its values to out (as many as fit), and its
    // stamp. Blocks at most limitMs for one. nullopt: none came.
    std::optional<FrameStamp> CopyNewest(std::span<std::int16_t> out, std::int64_t limitMs);

    void Close();  // no frame comes any more: nobody waits for one

  private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    // Gives a place back whose frame neither waits nor is the newest nor is looked at.
    void FreeIfUnused(std::size_t slot);

    std::unique_ptr<std::int16_t[]> memory_;
    std::vector<CapturedFrame> slots_;

    mutable std::mutex mutex_;  // of what follows; never held while values are copied
    mutable std::condition_variable came_;
    std::vector<std::size_t> free_;   // as a stack
    std::vector<std::size_t> order_;  // as a ring: the places of the frames that wait, oldest at first_
    std::vector<bool> waits_;         // of each place
    std::size_t first_ = 0;           // in order_
    std::size_t count_ = 0;           // frames that wait
    std::size_t claimed_ = kNone;
    std::size_t newest_ = kNone;
    std::size_t lookedAt_ = kNone;
    bool newestWasSeen_ = true;  // by CopyNewest; none is there at first
    bool closed_ = false;
};

}  // namespace kelvo
