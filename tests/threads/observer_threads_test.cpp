// Who observes the capture, in real time, each on his own thread.
#include "grabber/capture.h"
#include "platform/clock.h"
#include "threads/paced_board.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

class ObserverThreads : public PacedBoardTest {
  protected:
    // consume drops what waits; every frame is recorded.
    static bool Start()
    {
        return StartCapture({.columns = kPacedColumns, .rows = kPacedRows, .ringFrames = 2000, .consume = [] {
                                 DropFrames(1, FrameFate::kRecorded);
                             }});
    }
    static bool Observe(FrameObserver observer, std::size_t frames = 64)
    {
        return ObserveFrames(std::move(observer), kPacedColumns, kPacedRows, frames);
    }
};

struct Seen {
    std::vector<std::int64_t> numbers{};
    std::int64_t missed = 0;
    bool isWhole = true;  // each frame's pixels are its own
    void Note(const ObservedFrame& frame)
    {
        missed += frame.missed;
        numbers.push_back(frame.stamp.number);
        for (const std::int16_t value : frame.values) {
            isWhole = isWhole && value == static_cast<std::int16_t>(frame.stamp.number);
        }
    }
};

TEST_F(ObserverThreads, EachFrameOnceInOrder)
{
    Seen seen;
    ASSERT_TRUE(Observe([&seen](const ObservedFrame& frame) { seen.Note(frame); }, 2000));
    ASSERT_TRUE(Start());
    while (CurrentCaptureCounts().delivered < 200) DelayMs(1);
    StopCapture();
    ObserveFrames({});
    const CaptureCounts counts = CurrentCaptureCounts();
    EXPECT_TRUE(seen.isWhole);
    EXPECT_EQ(seen.missed, 0);
    ASSERT_EQ(std::ssize(seen.numbers), counts.delivered - counts.lostByBoard.value_or(0));
    for (std::size_t i = 1; i < seen.numbers.size(); ++i) EXPECT_GT(seen.numbers[i], seen.numbers[i - 1]);
    EXPECT_EQ(seen.numbers.back(), counts.lastNumber);
}

TEST_F(ObserverThreads, ASlowOneLosesFramesForItselfAlone)
{
    Seen seen;
    ASSERT_TRUE(Observe(
        [&seen](const ObservedFrame& frame) {
            seen.Note(frame);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        },
        4));
    ASSERT_TRUE(Start());
    while (CurrentCaptureCounts().delivered < 300) DelayMs(1);
    StopCapture();
    const CaptureCounts counts = CurrentCaptureCounts();
    ObserveFrames({});
    EXPECT_TRUE(seen.isWhole);
    EXPECT_EQ(counts.lostByRing, 0);
    EXPECT_EQ(counts.recorded, counts.delivered - counts.lostByBoard.value_or(0));
    EXPECT_GT(seen.missed, 0);
    EXPECT_LE(std::ssize(seen.numbers) + seen.missed, counts.recorded) << "some may have been missed behind its last";
    for (std::size_t i = 1; i < seen.numbers.size(); ++i) EXPECT_GT(seen.numbers[i], seen.numbers[i - 1]);
}

TEST_F(ObserverThreads, ComeAndGoWhileACaptureRuns)
{
    ASSERT_TRUE(Start());
    for (int i = 0; i < 20; ++i) {
        std::atomic<bool> isHere = true;
        std::atomic<int> frames = 0;
        std::atomic<bool> cameLate = false;
        ASSERT_TRUE(Observe([&](const ObservedFrame&) {
            if (!isHere) cameLate = true;
            ++frames;
        }));
        while (frames < 3) DelayMs(1);
        ObserveFrames({});
        isHere = false;
        DelayMs(2);
        EXPECT_FALSE(cameLate) << "nothing after the end";
    }
    StopCapture();
    const CaptureCounts counts = CurrentCaptureCounts();
    EXPECT_EQ(counts.delivered, counts.recorded + counts.lostByBoard.value_or(0));
}

TEST_F(ObserverThreads, GetsNoFramesOfAnotherSize)
{
    std::atomic<int> frames = 0;
    ASSERT_TRUE(ObserveFrames([&frames](const ObservedFrame&) { ++frames; }, kPacedColumns, kPacedRows + 1));
    ASSERT_TRUE(Start());
    while (CurrentCaptureCounts().delivered < 20) DelayMs(1);
    StopCapture();
    ObserveFrames({});
    EXPECT_EQ(frames, 0);
}

}  // namespace
}  // namespace kelvo
