// The order of a camera's frames. A buffer bears the number that the camera gave its frame: 16 bits that go from 65535
// to 1 (0 is none), or 64 bits that never go round. Buffers that had to wait for packets come late, behind newer ones;
// here they are put in order again, and frames that never come are given up after a while.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace kelvo {

enum class FrameNumbering {
    k16Bits,  // 1 to 65535, round and round
    k64Bits,  // one more each time
};

// Numbers of a stream that never go round, the first frame's 1.
class NumberUnwrapper {
  public:
    explicit NumberUnwrapper(FrameNumbering numbering) : numbering_(numbering) {}
    // The nearest number to the newest so far that ends as the buffer's does; below 1 for one from before the stream's
    // first. A camera that gives 0 in 16 bits doesn't number this frame: it is the one behind the newest.
    std::int64_t NumberOf(std::uint64_t fromBuffer);

  private:
    FrameNumbering numbering_;
    std::optional<std::uint64_t> newestFromBuffer_;
    std::int64_t newest_ = 0;
};

// A frame in order. Buffers are known by handles of whoever has them.
struct OrderedFrame {
    std::int64_t number = 0;
    std::int64_t lostBefore = 0;  // frames of the stream so far that came damaged or not at all
    std::size_t buffer = 0;
    friend bool operator==(const OrderedFrame&, const OrderedFrame&) = default;
};

class ArrivalOrder {
  public:
    // A frame that is behind others that are missing waits until these have come, until `most` frames wait, or for
    // limitUs; then the missing ones are lost.
    ArrivalOrder(std::size_t most, std::int64_t limitUs) : most_(most), limitUs_(limitUs) {}

    // A buffer came at nowUs with this frame, whole or damaged. False: nobody wants its contents (it is damaged, or
    // comes after its turn), and it can be filled again.
    bool Take(std::int64_t number, bool isWhole, std::size_t buffer, std::int64_t nowUs);
    // The frames whose turn has come by nowUs, in order.
    std::vector<OrderedFrame> TakeReady(std::int64_t nowUs);
    // All that wait, in order: nothing more comes.
    std::vector<OrderedFrame> TakeAll();

    // Frames up to the newest one given out that were lost.
    std::int64_t Lost() const { return lost_; }

  private:
    struct Waiting {
        std::optional<std::size_t> buffer;  // nullopt: it came damaged
        std::int64_t sinceUs = 0;
    };
    void GiveOldest(std::vector<OrderedFrame>& ready);

    std::size_t most_;
    std::int64_t limitUs_;
    std::map<std::int64_t, Waiting> waiting_;
    std::int64_t next_ = 1;  // whose turn it is
    std::int64_t lost_ = 0;
};

}  // namespace kelvo
