// The capture with its threads, in real time.
#include "grabber/board_state.h"
#include "grabber/capture.h"
#include "platform/clock.h"
#include "simcam/sim_camera.h"
#include "threads/paced_board.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

class CaptureThreads : public PacedBoardTest {
  protected:
    static bool Start(std::size_t ringFrames, std::function<void()> consume = {})
    {
        return StartCapture(
            {.columns = kPacedColumns, .rows = kPacedRows, .ringFrames = ringFrames, .consume = std::move(consume)});
    }
    static void ExpectBalance(const CaptureCounts& counts)
    {
        EXPECT_EQ(counts.delivered, counts.recorded + counts.passedOver + counts.lostByBoard.value_or(0) +
                                        counts.lostByRing + counts.waiting);
    }
};

TEST_F(CaptureThreads, TheNextFrameEachTimeAndNoneTwice)
{
    ASSERT_TRUE(Start(100));
    std::vector<std::int16_t> values(kPacedValues);
    CapturedFrame taken;
    std::int64_t last = -1;
    std::int64_t missing = 0;
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(TakeNextFrame(values, taken, FrameFate::kRecorded, 2000), TakeResult::kTaken);
        EXPECT_EQ(values.back(), static_cast<std::int16_t>(taken.stamp.number));
        if (last >= 0) missing += taken.stamp.number - last - 1;
        last = taken.stamp.number;
    }
    StopCapture();
    const CaptureCounts counts = CurrentCaptureCounts();
    EXPECT_LE(missing, counts.lostByBoard.value_or(-1) + counts.lostByRing);
    EXPECT_EQ(counts.recorded, 200);
    EXPECT_EQ(counts.waiting, 0);
    ExpectBalance(counts);
}

TEST_F(CaptureThreads, EverythingBalancesWhileOthersLookAndAsk)
{
    std::atomic<std::int64_t> consumed = 0;
    ASSERT_TRUE(Start(20, [&consumed] {
        if (consumed % 40 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(30));
        DropFrames(1, FrameFate::kRecorded);
        ++consumed;
    }));
    std::vector<std::int16_t> values(kPacedValues);
    for (int i = 0; i < 100; ++i) {
        CopyNewestFrame(values, 100);
        EXPECT_EQ(values.front(), values.back());
        ExpectBalance(CurrentCaptureCounts());
        amdig_trigen(AcqModule, i % 2);
    }
    StopCapture();
    const CaptureCounts counts = CurrentCaptureCounts();
    ExpectBalance(counts);
    EXPECT_EQ(counts.recorded, consumed);
    EXPECT_EQ(counts.passedOver, 0) << "what waited at the end was given to who records";
}

TEST_F(CaptureThreads, CallsOfOthersReachTheBoardFromItsOwnThread)
{
    ASSERT_TRUE(Start(100));
    for (int i = 0; i < 20; ++i) amdig_trigen(AcqModule, i + 1);
    StopCapture();
    EXPECT_FALSE(WasCalledByAnotherThread());
    EXPECT_EQ(TriggerSetting(), 20);
    NewOwner();
    amdig_trigen(AcqModule, 99);
    EXPECT_EQ(TriggerSetting(), 99) << "straight to the board again";
}

TEST_F(CaptureThreads, TheRingLosesWhatNobodyTakes)
{
    ASSERT_TRUE(Start(5));
    while (CurrentCaptureCounts().lostByRing == 0) DelayMs(1);
    StopCapture();
    const CaptureCounts counts = CurrentCaptureCounts();
    EXPECT_EQ(counts.recorded, 0);
    EXPECT_EQ(counts.passedOver, 5);
    ExpectBalance(counts);
}

TEST_F(CaptureThreads, StartsAgainAfterItsEnd)
{
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(Start(50));
        EXPECT_FALSE(Start(50)) << "one at a time";
        while (FramesWaiting() == 0) DelayMs(1);
        EXPECT_GT(WaitForFrames(0, 1000), 0U);
        StopCapture();
        EXPECT_FALSE(CaptureRuns());
    }
}

// The simulated camera between the thread that reads its frames and the one that moves the bench and asks the head.
TEST(SimCameraThreads, FramesComeWhileTheBenchMovesAndTheHeadAnswers)
{
    std::string error;
    const std::shared_ptr<SimCamera> camera = OpenSimCamera(KELVO_DEFAULTS "/hgcdte64.cnf", error);
    ASSERT_TRUE(camera) << error;
    constexpr std::int64_t kEnough = 30;
    std::atomic<std::int64_t> asked = 0;
    std::atomic<bool> ended = false;
    const auto read = [&camera](std::int64_t number) {
        std::vector<std::int16_t> values(64 * 64);
        ReadSimFrame(*camera, number, number * 10'000, 64, 64, values);
        return values;
    };
    std::thread captures([&] {
        for (std::int64_t n = 0; n < kEnough || asked < kEnough; ++n) read(n);
        ended = true;
    });
    for (; !ended; ++asked) {
        PutSimSource(*camera, asked % 2 == 0 ? SimSource::kLow : SimSource::kScene);
        EXPECT_TRUE(SetSimSourceDegrees(*camera, SimSource::kLow, static_cast<double>(20 + asked % 10)));
        AnswerSimFrame(*camera, {0x50, 0, 0, 2});
        SimHeadRegisters(*camera);
        SimFramePeriodUs(*camera);
    }
    captures.join();
    PutSimSource(*camera, SimSource::kLow);
    EXPECT_EQ(read(5), read(5)) << "nothing of it is left half changed";
    ForgetSimCameras();
}

}  // namespace
}  // namespace kelvo
