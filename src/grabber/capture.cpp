#include "grabber/capture.h"

#include "grabber/board_state.h"
#include "platform/clock.h"
#include "platform/memory.h"
#include "platform/thread_priority.h"

#include <algorithm>
#include <condition_variable>
#include <limits>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int64_t kMostRingBytes = std::numeric_limits<std::int32_t>::max();  // a block of 2 GB is refused
// 2 GB of frames of 64 x 64, the smallest array. What is kept about each place is touched at every start, and would
// otherwise take seconds with the few pixels of a small window.
constexpr std::int64_t kMostRingFrames = std::int64_t{1} << 18;
constexpr std::int64_t kSliceUs = 20'000;  // the thread that captures looks that often for calls to the board
constexpr std::int64_t kSliceMs = 20;
constexpr std::int64_t kUsPerMs = 1000;

std::int64_t ringBytes = 0;  // the setting

// Calls to the board on their way to the thread that owns it. One at a time: who calls waits.
class BoardCalls {
  public:
    // Has the call done by the thread that captures.
    void Carry(const BoardCall& call)
    {
        std::unique_lock lock(mutex_);
        done_.wait(lock, [&] { return call_ == nullptr; });
        call_ = &call;
        done_.wait(lock, [&] { return call_ != &call; });
    }

    void DoWhatWaits()
    {
        const std::scoped_lock lock(mutex_);
        if (!call_) return;
        (*call_)();
        call_ = nullptr;
        done_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable done_;
    const BoardCall* call_ = nullptr;
};

// Who observes, and the frames on their way to him.
class Observation {
  public:
    Observation(FrameObserver observer, std::size_t values) : observer_(std::move(observer)), values_(values) {}
    ~Observation()
    {
        ring_.Close();
        if (!observes_.joinable()) return;
        observes_.request_stop();
        observes_.join();
    }
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;

    bool Begin(std::size_t frames)
    {
        if (!ring_.Allocate(frames, values_)) return false;
        if (!ClockIsVirtual()) observes_ = std::jthread([this](const std::stop_token& stop) { ObserveOnThread(stop); });
        return true;
    }
    // By the one who captures. The values stay his.
    void Show(const CapturedFrame& frame)
    {
        if (frame.values.size() != values_) return;
        if (!observes_.joinable()) {
            observer_({.stamp = frame.stamp, .missed = std::exchange(missed_, 0), .values = frame.values});
            return;
        }
        CapturedFrame& copy = ring_.Claim();
        copy.stamp = frame.stamp;
        copy.lostByRing = missed_;
        std::ranges::copy(frame.values, copy.values.begin());
        missed_ = ring_.Commit() ? 0 : missed_ + 1;
    }
    void ShowUnreadable() { ++missed_; }

  private:
    void ObserveOnThread(const std::stop_token& stop)
    {
        while (ring_.WaitForMore(0, kSliceMs) > 0 || !stop.stop_requested()) {
            if (ring_.Waiting() == 0) continue;
            const CapturedFrame& frame = ring_.At(0);
            observer_({.stamp = frame.stamp, .missed = frame.lostByRing, .values = frame.values});
            ring_.Drop(1);
        }
    }

    FrameObserver observer_;
    std::size_t values_;
    FrameRing ring_;
    std::int64_t missed_ = 0;  // of the one who captures
    std::jthread observes_;    // none with the virtual clock
};
std::unique_ptr<Observation> observation;
std::mutex observationMutex;  // of the pointer; who captures holds it while he shows a frame

// Frames that nobody gets, by where they went.
struct Losses {
    std::int64_t byTransport = 0;
    std::int64_t byBoard = 0;
    std::int64_t byRing = 0;
};

// A capture that runs, or ran last.
struct Run {
    CaptureOptions options;
    BoardModule module = 0;
    BoardFrame frame = kNoBoardFrame;
    FrameRing ring;

    // Of the one who captures.
    std::int64_t lastNumber = 0;
    Losses before;  // since the last frame in the ring

    std::mutex mutex;  // of the counts; a frame is counted and put into the ring in one
    CaptureCounts counts;
    std::int64_t unreadable = 0;

    std::int64_t unreadableTold = 0;  // of the one who records
    std::int64_t dropped = 0;         // frames, of the same

    BoardCalls calls;
    std::jthread captures;
    std::jthread records;
};
std::unique_ptr<Run> run;
bool runs = false;
bool following = false;  // with the virtual clock: frames are being taken

bool BoardCounts(std::int64_t number)
{
    return number != kUncounted;
}

// The frames that passed between the last one and this one: those that never came whole to the board, and those that
// it doesn't have any more.
Losses LostBefore(const Run& r, const FrameStamp& stamp)
{
    if (!BoardCounts(stamp.number)) return {};
    const std::int64_t passed = std::max<std::int64_t>(stamp.number - r.lastNumber - 1, 0);
    const std::int64_t byTransport =
        std::clamp<std::int64_t>(stamp.lostByTransport - r.counts.lastLostByTransport, 0, passed);
    return {.byTransport = byTransport, .byBoard = passed - byTransport};
}

void AddLosses(Run& r, const Losses& lost)
{
    r.counts.lostByTransport += lost.byTransport;
    if (r.counts.lostByBoard) *r.counts.lostByBoard += lost.byBoard;
    r.counts.lostByRing += lost.byRing;
    r.counts.delivered += lost.byTransport + lost.byBoard + lost.byRing;
    r.before.byTransport += lost.byTransport;
    r.before.byBoard += lost.byBoard;
    r.before.byRing += lost.byRing;
}

// Before who records decides about it.
void LetObserve(const CapturedFrame& frame, bool isReadable)
{
    const std::scoped_lock lock(observationMutex);
    if (!observation) return;
    if (isReadable) {
        observation->Show(frame);
    } else {
        observation->ShowUnreadable();
    }
}

void Count(Run& r, CapturedFrame& frame)
{
    frame.lostByTransport = r.before.byTransport;
    frame.lostByBoard = r.before.byBoard;
    frame.lostByRing = r.before.byRing;
    frame.unreadable = r.unreadable;
    if (!r.ring.Commit()) {
        AddLosses(r, {.byRing = 1});
        return;
    }
    r.before = {};
    ++r.counts.delivered;
    ++r.counts.waiting;
}

// One frame from the board, or none within the limit: false.
bool CaptureOne(Run& r, std::int64_t limitUs)
{
    CapturedFrame& frame = r.ring.Claim();
    FrameStamp& stamp = frame.stamp;
    stamp = {.number = r.lastNumber + 1};
    const std::int32_t result = icp_next_frame(r.module, r.frame, r.lastNumber, limitUs, r.options.columns,
                                               r.options.rows, frame.values, stamp);
    if (result == kBoardTimeout) return false;
    LetObserve(frame, result == 0);

    const std::scoped_lock lock(r.mutex);
    AddLosses(r, LostBefore(r, stamp));
    if (BoardCounts(stamp.number)) {
        r.lastNumber = r.counts.lastNumber = stamp.number;
        r.counts.lastLostByTransport = stamp.lostByTransport;
    }
    if (result == 0) {
        Count(r, frame);
    } else {
        AddLosses(r, {.byBoard = 1});
        ++r.unreadable;
    }
    return true;
}

void CaptureOnThread(const std::stop_token& stop, Run& r)
{
    OwnBoard();
    itx_os_set_realtime_priority(1);
    RaiseThreadPriority();  // most users may not: then the machine's other work may cost frames, which are counted
    while (!stop.stop_requested()) {
        r.calls.DoWhatWaits();
        CaptureOne(r, kSliceUs);
    }
    while (CaptureOne(r, 0)) {
    }  // what the board completed before the end
    r.ring.Close();
    r.calls.DoWhatWaits();
}

// Gives who records his turn; false where nothing waits, or he wants to wait himself. Meanwhile the ring may fill.
bool ConsumeSome(const Run& r)
{
    if (!r.options.consume || r.ring.Waiting() == 0) return false;
    const std::int64_t before = r.dropped;
    r.options.consume();
    return r.dropped > before;
}

void RecordOnThread(const std::stop_token& stop, const Run& r)
{
    std::size_t left = 0;
    while (!stop.stop_requested()) {
        if (r.ring.WaitForMore(left, kSliceMs) > left) {
            while (ConsumeSome(r)) {
            }
        }
        left = r.ring.Waiting();
    }
    while (ConsumeSome(r)) {
    }
}

// What the two threads do otherwise: the frames that are complete by now, and who records. Time that he takes lets more
// frames come, which are taken before his next turn.
void WorkByTheClock(Run& r)
{
    do {
        while (CaptureOne(r, 0)) {
        }
    } while (ConsumeSome(r));
}

// One frame, for which time may pass; false where none came. A board that doesn't wait itself gives one at once.
bool CaptureByTheClock(Run& r, std::int64_t limitUs)
{
    following = true;
    const bool came = CaptureOne(r, limitUs);
    WorkByTheClock(r);
    following = false;
    return came;
}

void FollowTheClock(std::int64_t untilUs)
{
    if (following) return;
    for (std::int64_t nowUs = -1; nowUs < TickUs();) {
        nowUs = TickUs();
        CaptureByTheClock(*run, std::max<std::int64_t>(untilUs - nowUs, 0));
    }
}

void LetTimePass(std::int64_t limitUs)
{
    const std::int64_t beganUs = TickUs();
    const bool came = CaptureByTheClock(*run, limitUs);
    if (!came && TickUs() == beganUs) AdvanceVirtualClock(limitUs);
}

void BeginThreads(Run& r)
{
    CarryBoardCalls([&r](const BoardCall& call) { r.calls.Carry(call); });
    r.captures = std::jthread([&r](const std::stop_token& stop) { CaptureOnThread(stop, r); });
    if (r.options.consume) r.records = std::jthread([&r](const std::stop_token& stop) { RecordOnThread(stop, r); });
}

void EndThreads(Run& r)
{
    r.captures.request_stop();
    r.captures.join();
    CarryBoardCalls({});
    if (!r.records.joinable()) return;
    r.records.request_stop();
    r.records.join();
}

}  // namespace

std::size_t RingFrames(std::int64_t frameValues)
{
    const auto available = static_cast<std::int64_t>(
        std::min<std::uint64_t>(AvailablePhysicalMemory(), static_cast<std::uint64_t>(kMostRingBytes)));
    const std::int64_t bytes = ringBytes > 0 ? std::min(ringBytes, kMostRingBytes) : available;
    const auto values = static_cast<std::size_t>(std::max<std::int64_t>(frameValues, 1));
    const auto frames = bytes / static_cast<std::int64_t>(FrameRing::BytesOfPlace(values)) - 4;
    return static_cast<std::size_t>(std::clamp<std::int64_t>(frames, 1, kMostRingFrames));
}

void SetRingBytes(std::int64_t bytes)
{
    ringBytes = bytes;
}

bool StartCapture(const CaptureOptions& options)
{
    if (runs || IcpModule == 0 || FrameA == kNoBoardFrame) return false;
    auto fresh = std::make_unique<Run>();
    fresh->options = options;
    fresh->module = IcpModule;
    fresh->frame = FrameA;
    const auto values = static_cast<std::size_t>(options.columns) * static_cast<std::size_t>(options.rows);
    if (!fresh->ring.Allocate(options.ringFrames, values)) return false;
    fresh->counts.lastLostByTransport = icp_lost_by_transport(IcpModule);
    fresh->lastNumber = icp_frame_count(IcpModule);
    fresh->counts.lastNumber = fresh->lastNumber;
    if (!BoardCounts(fresh->lastNumber)) fresh->counts.lostByBoard.reset();
    run = std::move(fresh);
    runs = true;
    if (ClockIsVirtual()) {
        FollowVirtualClock(FollowTheClock);
    } else {
        BeginThreads(*run);
    }
    return true;
}

void StopCapture()
{
    if (!runs) return;
    if (run->captures.joinable()) {
        EndThreads(*run);
    } else {
        if (ClockIsVirtual()) CaptureByTheClock(*run, 0);  // not where its clock has gone before it
        FollowVirtualClock(nullptr);
    }
    DropFrames(run->ring.Waiting(), FrameFate::kPassedOver);
    run->ring.Free();
    runs = false;
}

bool CaptureRuns()
{
    return runs;
}

CaptureCounts CurrentCaptureCounts()
{
    if (!run) return {};
    const std::scoped_lock lock(run->mutex);
    return run->counts;
}

std::size_t FramesWaiting()
{
    return run ? run->ring.Waiting() : 0;
}

std::size_t WaitForFrames(std::size_t have, std::int64_t limitMs)
{
    if (!runs) return FramesWaiting();
    if (!ClockIsVirtual()) return run->ring.WaitForMore(have, limitMs);
    const std::int64_t endUs = TickUs() + limitMs * kUsPerMs;
    while (run->ring.Waiting() <= have && TickUs() < endUs) LetTimePass(endUs - TickUs());
    return run->ring.Waiting();
}

const CapturedFrame& WaitingFrame(std::size_t index)
{
    return run->ring.At(index);
}

void DropFrames(std::size_t frames, FrameFate fate)
{
    if (!run) return;
    const std::scoped_lock lock(run->mutex);
    const std::size_t dropped = std::min(frames, run->ring.Waiting());
    // What couldn't be read before a frame that nobody wants isn't missed either.
    if (dropped > 0 && fate == FrameFate::kPassedOver) {
        run->unreadableTold = std::max(run->unreadableTold, run->ring.At(dropped - 1).unreadable);
    }
    run->ring.Drop(dropped);
    run->dropped += static_cast<std::int64_t>(dropped);
    const auto count = static_cast<std::int64_t>(dropped);
    (fate == FrameFate::kRecorded ? run->counts.recorded : run->counts.passedOver) += count;
    run->counts.waiting -= count;
}

namespace {

// A frame that couldn't be read is told once, before the one that came behind it.
bool UnreadableIsNext()
{
    const std::scoped_lock lock(run->mutex);
    const std::int64_t soFar = run->ring.Waiting() > 0 ? run->ring.At(0).unreadable : run->unreadable;
    return std::exchange(run->unreadableTold, std::max(soFar, run->unreadableTold)) < soFar;
}

// Until a frame comes, but no longer than a call of TakeNextFrame or CopyNewestFrame should be deaf.
void WaitForOne(std::int64_t limitUs)
{
    if (ClockIsVirtual()) {
        LetTimePass(limitUs);
    } else {
        run->ring.WaitForMore(0, std::min(limitUs / kUsPerMs + 1, kSliceMs));
    }
}

std::int64_t UnreadableSoFar()
{
    const std::scoped_lock lock(run->mutex);
    return run->unreadable;
}

}  // namespace

TakeResult WaitForNextFrame(std::int64_t limitMs)
{
    if (!run) return TakeResult::kEnded;
    for (const std::int64_t endUs = TickUs() + limitMs * kUsPerMs;;) {
        if (UnreadableIsNext()) return TakeResult::kUnreadable;
        if (FramesWaiting() > 0) return TakeResult::kTaken;
        if (!runs) return TakeResult::kEnded;
        if (TickUs() >= endUs) return TakeResult::kTimeout;
        WaitForOne(endUs - TickUs());
    }
}

TakeResult TakeNextFrame(std::span<std::int16_t> out, CapturedFrame& taken, FrameFate fate, std::int64_t limitMs)
{
    const TakeResult result = WaitForNextFrame(limitMs);
    if (result != TakeResult::kTaken) return result;
    const CapturedFrame& frame = WaitingFrame(0);
    const std::size_t values = std::min(out.size(), frame.values.size());
    std::copy_n(frame.values.begin(), values, out.begin());
    taken = frame;
    taken.values = out.first(values);
    DropFrames(1, fate);
    return TakeResult::kTaken;
}

TakeResult CopyNewestFrame(std::span<std::int16_t> out, std::int64_t limitMs)
{
    if (!runs) return TakeResult::kEnded;
    const std::int64_t unreadable = UnreadableSoFar();
    for (const std::int64_t endUs = TickUs() + limitMs * kUsPerMs;;) {
        const std::int64_t waitMs = ClockIsVirtual() ? 0 : kSliceMs;
        if (run->ring.CopyNewest(out, waitMs)) return TakeResult::kTaken;
        if (UnreadableSoFar() > unreadable) return TakeResult::kUnreadable;
        if (TickUs() >= endUs) return TakeResult::kTimeout;
        if (ClockIsVirtual()) LetTimePass(endUs - TickUs());
    }
}

bool ObserveFrames(FrameObserver observer, std::int32_t columns, std::int32_t rows, std::size_t observerFrames)
{
    std::unique_ptr<Observation> fresh;
    bool began = true;
    if (observer) {
        const std::size_t values = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
        fresh = std::make_unique<Observation>(std::move(observer), values);
        began = fresh->Begin(observerFrames);
        if (!began) fresh.reset();
    }
    std::unique_lock lock(observationMutex);
    std::swap(observation, fresh);
    lock.unlock();
    fresh.reset();  // the former one: it looks at what it has first
    return began;
}

void ResetCapture()
{
    StopCapture();
    ObserveFrames({});
    run.reset();
    ringBytes = 0;
}

}  // namespace kelvo
