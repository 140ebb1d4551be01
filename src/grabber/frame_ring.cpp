#include "grabber/frame_ring.h"

#include "platform/memory.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

namespace kelvo {

namespace {

// Beside those that wait: the one that is being filled, the newest, and the one that is looked at.
constexpr std::size_t kFramesBeside = 3;

// Not cleared: memory that no frame ever needs is then never touched.
std::unique_ptr<std::int16_t[]> Reserve(std::size_t count)
{
    if (!MemoryAvailable(count * sizeof(std::int16_t))) return nullptr;
    return std::unique_ptr<std::int16_t[]>(new (std::nothrow) std::int16_t[count]);
}

}  // namespace

bool FrameRing::Allocate(std::size_t frames, std::size_t values)
{
    Free();
    const std::size_t count = frames + kFramesBeside;
    memory_ = Reserve(count * values);
    if (!memory_) return false;
    const std::span<std::int16_t> all(memory_.get(), count * values);
    slots_.resize(count);
    order_.resize(frames);
    waits_.resize(count);
    free_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        slots_[i].values = all.subspan(i * values, values);
        free_.push_back(count - 1 - i);
    }
    return true;
}

void FrameRing::Free()
{
    slots_ = {};
    memory_.reset();
    free_ = {};
    order_ = {};
    waits_ = {};
    first_ = count_ = 0;
    claimed_ = newest_ = lookedAt_ = kNone;
    newestWasSeen_ = true;
    closed_ = false;
}

void FrameRing::FreeIfUnused(std::size_t slot)
{
    if (slot != kNone && slot != newest_ && slot != lookedAt_ && !waits_[slot]) free_.push_back(slot);
}

CapturedFrame& FrameRing::Claim()
{
    const std::scoped_lock lock(mutex_);
    if (claimed_ == kNone) {
        claimed_ = free_.back();
        free_.pop_back();
    }
    return slots_[claimed_];
}

bool FrameRing::Commit()
{
    bool waits = false;
    {
        const std::scoped_lock lock(mutex_);
        waits = count_ < order_.size();
        if (waits) order_[(first_ + count_++) % order_.size()] = claimed_;
        waits_[claimed_] = waits;
        const std::size_t before = std::exchange(newest_, std::exchange(claimed_, kNone));
        newestWasSeen_ = false;
        FreeIfUnused(before);
    }
    came_.notify_all();
    return waits;
}

std::size_t FrameRing::Waiting() const
{
    const std::scoped_lock lock(mutex_);
    return count_;
}

std::size_t FrameRing::WaitForMore(std::size_t have, std::int64_t limitMs) const
{
    std::unique_lock lock(mutex_);
    came_.wait_for(lock, std::chrono::milliseconds(limitMs), [&] { return closed_ || count_ > have; });
    return count_;
}

const CapturedFrame& FrameRing::At(std::size_t index) const
{
    const std::scoped_lock lock(mutex_);
    return slots_[order_[(first_ + index) % order_.size()]];
}

void FrameRing::Drop(std::size_t frames)
{
    const std::scoped_lock lock(mutex_);
    for (std::size_t left = std::min(frames, count_); left > 0; --left) {
        const std::size_t slot = order_[first_];
        first_ = (first_ + 1) % order_.size();
        --count_;
        waits_[slot] = false;
        FreeIfUnused(slot);
    }
}

std::optional<FrameStamp> FrameRing::CopyNewest(std::span<std::int16_t> out, std::int64_t limitMs)
{
    std::unique_lock lock(mutex_);
    came_.wait_for(lock, std::chrono::milliseconds(limitMs), [&] { return closed_ || !newestWasSeen_; });
    if (newestWasSeen_) return std::nullopt;
    newestWasSeen_ = true;
    lookedAt_ = newest_;
    const CapturedFrame& frame = slots_[newest_];
    lock.unlock();

    const std::size_t values = std::min(out.size(), frame.values.size());
    std::copy_n(frame.values.begin(), values, out.begin());
    const FrameStamp stamp = frame.stamp;

    lock.lock();
    const std::size_t seen = lookedAt_;
    lookedAt_ = kNone;
    FreeIfUnused(seen);
    return stamp;
}

void FrameRing::Close()
{
    {
        const std::scoped_lock lock(mutex_);
        closed_ = true;
    }
    came_.notify_all();
}

}  // namespace kelvo
