#include "genicam/frame_order.h"

#include <algorithm>
#include <ranges>

namespace kelvo {

namespace {

constexpr std::int64_t kRound = 65535;  // numbers of 16 bits without the 0

}  // namespace

std::int64_t NumberUnwrapper::NumberOf(std::uint64_t fromBuffer)
{
    const bool goesRound = numbering_ == FrameNumbering::k16Bits;
    if (goesRound && fromBuffer == 0) return ++newest_;
    if (!newestFromBuffer_) {
        newestFromBuffer_ = fromBuffer;
        return ++newest_;
    }
    auto step = static_cast<std::int64_t>(fromBuffer - *newestFromBuffer_);
    if (goesRound) {
        // To -32767 to 32767: a late frame is at most half a round behind.
        step %= kRound;
        if (step > kRound / 2) step -= kRound;
        if (step < -(kRound / 2)) step += kRound;
    }
    if (step > 0) newestFromBuffer_ = fromBuffer;
    const std::int64_t number = newest_ + step;
    newest_ = std::max(newest_, number);
    return number;
}

bool ArrivalOrder::Take(std::int64_t number, bool isWhole, std::size_t buffer, std::int64_t nowUs)
{
    if (number < next_) return false;  // its turn is over: it has been counted as lost
    const auto buffered = isWhole ? std::optional(buffer) : std::nullopt;
    return waiting_.try_emplace(number, Waiting{.buffer = buffered, .sinceUs = nowUs}).second && isWhole;
}

void ArrivalOrder::GiveOldest(std::vector<OrderedFrame>& ready)
{
    const auto oldest = waiting_.begin();
    lost_ += oldest->first - next_;
    next_ = oldest->first + 1;
    if (const std::optional<std::size_t> buffer = oldest->second.buffer) {
        ready.push_back({.number = oldest->first, .lostBefore = lost_, .buffer = *buffer});
    } else {
        ++lost_;
    }
    waiting_.erase(oldest);
}

std::vector<OrderedFrame> ArrivalOrder::TakeReady(std::int64_t nowUs)
{
    std::vector<OrderedFrame> ready;
    const auto longest = [this] {
        return std::ranges::min(waiting_ | std::views::values | std::views::transform(&Waiting::sinceUs));
    };
    while (!waiting_.empty()) {
        const bool isNext = waiting_.begin()->first == next_;
        if (!isNext && waiting_.size() <= most_ && nowUs - longest() < limitUs_) break;
        GiveOldest(ready);
    }
    return ready;
}

std::vector<OrderedFrame> ArrivalOrder::TakeAll()
{
    std::vector<OrderedFrame> ready;
    while (!waiting_.empty()) GiveOldest(ready);
    return ready;
}

}  // namespace kelvo
