// The capture with its threads, in real time, on a board that completes a frame each millisecond.
#include "grabber/board_state_write.h"
#include "grabber/capture.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "simcam/sim_camera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr std::int32_t kColumns = 32;
constexpr std::int32_t kRows = 4;
constexpr std::int64_t kPeriodUs = 1000;
constexpr std::int64_t kKept = 50;  // frames behind the newest

// Only the thread that captures may touch it while it runs.
struct PacedBoard {
    std::int64_t beganUs = 0;
    std::thread::id owner = {};
    bool calledByAnother = false;
    std::int32_t triggerSetting = 0;
};
PacedBoard paced;

void NoteCaller()
{
    if (paced.owner == std::thread::id()) paced.owner = std::this_thread::get_id();
    if (paced.owner != std::this_thread::get_id()) paced.calledByAnother = true;
}

std::int64_t CountNow()
{
    return (TickUs() - paced.beganUs) / kPeriodUs;
}

std::int32_t NextFrame(BoardModule /*module*/, BoardFrame /*frame*/, std::int64_t after, std::int64_t limitUs,
                       std::int32_t width, std::int32_t height, std::span<std::int16_t> buffer, FrameStamp& stamp)
{
    NoteCaller();
    const std::int64_t number = std::max(after + 1, CountNow() - kKept);
    const std::int64_t dueUs = paced.beganUs + number * kPeriodUs;
    if (dueUs - TickUs() > limitUs) {
        DelayUntilUs(TickUs() + limitUs);
        return kBoardTimeout;
    }
    DelayUntilUs(dueUs);
    stamp = {.number = number, .monotonicNs = dueUs * 1000};
    for (std::int16_t& value : buffer.first(static_cast<std::size_t>(width * height))) {
        value = static_cast<std::int16_t>(number);
    }
    return 0;
}

void Trigen(BoardModule /*module*/, std::int32_t on)
{
    NoteCaller();
    paced.triggerSetting = on;
}

const BoardTable& PacedTable()
{
    static const BoardTable table = [] {
        BoardTable t{};
        t.name = "none";  // the name of the board where no settings name one
        t.trigen = Trigen;
        t.os_set_realtime_priority = [](std::int32_t) {};
        t.frame_count = [](BoardModule) { return CountNow(); };
        t.next_frame = NextFrame;
        return t;
    }();
    return table;
}

class CaptureThreads : public testing::Test {
  protected:
    CaptureThreads()
    {
        paced = {.beganUs = TickUs()};
        RegisterBoard(PacedTable());
        write::board.IcpModule = 1;
        write::board.AcqModule = 2;
        write::board.FrameA = 1;
    }
    ~CaptureThreads() override
    {
        ResetCapture();
        ForgetBoardTables();
        ClearFaults();
    }
    static bool Start(std::size_t ringFrames, std::function<void()> consume = {})
    {
        return StartCapture(
            {.columns = kColumns, .rows = kRows, .ringFrames = ringFrames, .consume = std::move(consume)});
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
    std::vector<std::int16_t> values(kColumns * kRows);
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
    std::vector<std::int16_t> values(kColumns * kRows);
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
    EXPECT_FALSE(paced.calledByAnother);
    EXPECT_EQ(paced.triggerSetting, 20);
    paced.owner = {};
    amdig_trigen(AcqModule, 99);
    EXPECT_EQ(paced.triggerSetting, 99) << "straight to the board again";
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
    constexpr std::int64_t kAtLeast = 30;  // of both, however the machine divides its time
    std::atomic<std::int64_t> frames = 0;
    std::atomic<std::int64_t> asked = 0;
    std::thread captures([&] {
        std::vector<std::int16_t> values(64 * 64);
        for (; frames < kAtLeast || asked < kAtLeast; ++frames) {
            ReadSimFrame(*camera, frames, frames * 10'000, 64, 64, values);
        }
    });
    for (; frames < kAtLeast || asked < kAtLeast; ++asked) {
        PutSimSource(*camera, asked % 2 == 0 ? SimSource::kLow : SimSource::kScene);
        EXPECT_TRUE(SetSimSourceDegrees(*camera, SimSource::kLow, static_cast<double>(20 + asked % 10)));
        AnswerSimFrame(*camera, {0x50, 0, 0, 2});
        SimHeadRegisters(*camera);
        SimFramePeriodUs(*camera);
    }
    captures.join();
    ForgetSimCameras();
}

}  // namespace
}  // namespace kelvo
