// The capture of the simulated board, under the virtual clock: from the clock itself, as a thread would take the
// frames.
#include "grabber/board_state.h"
#include "grabber/capture.h"
#include "grabber/frame_account.h"
#include "grabber/frame_read.h"
#include "grabber/recording.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "simcam/sim_board_fixture.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::ElementsAre;

class SimCapture : public SimBoardTest {
  protected:
    void SetUp() override
    {
        OpenAt100Hz();
        AccountCycleStops();
        icp_grab(IcpModule, FrameA);
        AccountGrabStarted();
        grabUs = TickUs();
    }
    static std::vector<std::int64_t> WaitingNumbers()
    {
        std::vector<std::int64_t> numbers;
        for (std::size_t i = 0; i < FramesWaiting(); ++i) numbers.push_back(WaitingFrame(i).stamp.number);
        return numbers;
    }
    static void ExpectBalance()
    {
        const CaptureCounts counts = CurrentCaptureCounts();
        EXPECT_EQ(counts.delivered, counts.recorded + counts.passedOver + counts.lostByBoard.value_or(0) +
                                        counts.lostByRing + counts.waiting);
    }
    std::int64_t grabUs = 0;
};

TEST_F(SimCapture, TakesEachFrameAsTheClockPassesItsBlank)
{
    const Recording recording(100);
    AdvanceVirtualClock(35'000);
    EXPECT_THAT(WaitingNumbers(), ElementsAre(1, 2, 3));
    DelayMs(20);
    EXPECT_THAT(WaitingNumbers(), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(SimCapture, StampsAFrameWithThePulsesTakenByItsBlank)
{
    const Recording recording(100);
    amdig_trigen(AcqModule, 1);
    AdvanceVirtualClock(15'000);
    PulseSimTrigger();  // within the second frame
    AdvanceVirtualClock(10'000);
    PulseSimTrigger();
    PulseSimTrigger();  // within the third
    AdvanceVirtualClock(20'000);
    std::vector<std::int64_t> triggers;
    for (std::size_t i = 0; i < FramesWaiting(); ++i) triggers.push_back(WaitingFrame(i).stamp.triggers);
    EXPECT_THAT(triggers, ElementsAre(0, 1, 3, 3));
}

TEST_F(SimCapture, StampsAFrameWithItsBlank)
{
    const Recording recording(100);
    AdvanceVirtualClock(35'000);
    EXPECT_EQ(WaitingFrame(2).stamp.monotonicNs, (grabUs + 30'000) * 1000);
    EXPECT_EQ(WaitingFrame(2).stamp.utcNs - WaitingFrame(0).stamp.utcNs, 20'000'000);
    EXPECT_EQ(WaitingFrame(2).stamp.utcNs / 1'000'000'000, WallClockSeconds());
}

TEST_F(SimCapture, HoldsThePixelsThatTheCameraGives)
{
    const Recording recording(100);
    AdvanceVirtualClock(30'000);
    const std::span<const std::int16_t> values = WaitingFrame(1).values;
    EXPECT_EQ(std::vector<std::int16_t>(values.begin(), values.end()), Expected(1, grabUs + 20'000));
}

TEST_F(SimCapture, WaitsForTheNextFrameWhereNoneIsThere)
{
    const Recording recording(100);
    std::vector<std::int16_t> values(320UL * 256UL);
    CapturedFrame taken;
    EXPECT_EQ(TakeNextFrame(values, taken, FrameFate::kRecorded, 2000), TakeResult::kTaken);
    EXPECT_EQ(TickUs(), grabUs + 10'000);
    EXPECT_EQ(WaitForFrames(2, 1000), 3U);
    EXPECT_EQ(TickUs(), grabUs + 40'000);
}

TEST_F(SimCapture, NamesTheFramesThatTheBoardSkipped)
{
    SkipSimFrames(3, 3);
    SkipSimFrames(5, 7);
    const Recording recording(100);
    AdvanceVirtualClock(100'000);
    EXPECT_THAT(WaitingNumbers(), ElementsAre(1, 2, 4, 8, 9, 10));
    EXPECT_EQ(WaitingFrame(2).lostByBoard, 1);
    EXPECT_EQ(WaitingFrame(3).lostByBoard, 3);
    EXPECT_EQ(WaitingFrame(4).lostByBoard, 0);
    EXPECT_EQ(CurrentCaptureCounts().lostByBoard, 4);
    ExpectBalance();
}

TEST_F(SimCapture, CountsWhatTheRingHadNoPlaceFor)
{
    const Recording recording(4);
    AdvanceVirtualClock(100'000);
    EXPECT_THAT(WaitingNumbers(), ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(CurrentCaptureCounts().lostByRing, 6);
    DropFrames(4, FrameFate::kRecorded);
    AdvanceVirtualClock(10'000);
    EXPECT_THAT(WaitingNumbers(), ElementsAre(11));
    EXPECT_EQ(WaitingFrame(0).lostByRing, 6);
    ExpectBalance();
}

TEST_F(SimCapture, AFrameThatCantBeReadIsLostByTheBoard)
{
    const Recording recording(100);
    SetFaultOnce("icp_read_area", 2);
    AdvanceVirtualClock(30'000);
    EXPECT_THAT(WaitingNumbers(), ElementsAre(1, 3));
    EXPECT_EQ(CurrentCaptureCounts().lostByBoard, 1);
    ExpectBalance();
}

TEST_F(SimCapture, WhoRecordsIsServedAsTheClockMoves)
{
    std::vector<std::int64_t> numbers;
    ASSERT_TRUE(BeginRecording(100, [&numbers] {
        numbers.push_back(WaitingFrame(0).stamp.number);
        DropFrames(1, FrameFate::kRecorded);
    }));
    AdvanceVirtualClock(30'000);
    EXPECT_THAT(numbers, ElementsAre(1, 2, 3));
    AdvanceVirtualClock(5'000);
    EndRecording();
    EXPECT_EQ(numbers.size(), 3U);
    EXPECT_EQ(CurrentFrameAccount().used, 3);
}

// A disk that takes 50 ms now and then, five frames' time.
TEST_F(SimCapture, ASlowDiskWithinTheRingLosesNothing)
{
    ASSERT_TRUE(BeginRecording(6, [] {
        if (WaitingFrame(0).stamp.number % 20 == 0) DelayMs(50);
        DropFrames(1, FrameFate::kRecorded);
    }));
    for (int i = 0; i < 20; ++i) AdvanceVirtualClock(100'000);
    EndRecording();
    EXPECT_EQ(CurrentCaptureCounts().lostByRing, 0);
    EXPECT_EQ(CurrentCaptureCounts().recorded, CurrentCaptureCounts().delivered);
    EXPECT_GE(CurrentCaptureCounts().recorded, 200);
}

TEST_F(SimCapture, ASlowDiskBeyondTheRingIsCountedExactly)
{
    std::int64_t missing = 0;
    std::int64_t last = 0;
    ASSERT_TRUE(BeginRecording(3, [&] {
        const CapturedFrame& frame = WaitingFrame(0);
        missing += frame.stamp.number - last - 1;
        EXPECT_EQ(frame.lostByRing, frame.stamp.number - last - 1);
        last = frame.stamp.number;
        if (frame.stamp.number % 20 == 0) DelayMs(100);
        DropFrames(1, FrameFate::kRecorded);
    }));
    for (int i = 0; i < 20; ++i) AdvanceVirtualClock(100'000);
    EndRecording();
    EXPECT_GT(missing, 0);
    const std::int64_t atTheEnd = CurrentCaptureCounts().lastNumber - last;
    EXPECT_EQ(CurrentCaptureCounts().lostByRing, missing + atTheEnd);
    ExpectBalance();
}

TEST_F(SimCapture, TheFrameThatIsCompleteAtTheEndIsRecordedToo)
{
    std::int64_t recorded = 0;
    ASSERT_TRUE(BeginRecording(100, [&recorded] {
        ++recorded;
        DropFrames(1, FrameFate::kRecorded);
    }));
    AdvanceVirtualClock(20'000);
    EndRecording();
    EXPECT_EQ(recorded, 2);
    EXPECT_EQ(CurrentFrameAccount().delivered, 2);
    AdvanceVirtualClock(50'000);
    EXPECT_EQ(recorded, 2) << "nothing follows the clock any more";
}

TEST_F(SimCapture, AStoppedCameraEndsTheWaitAfterItsLimit)
{
    PowerDownSimHead(*camera);
    const Recording recording(8);
    std::vector<std::int16_t> values(320UL * 256UL);
    CapturedFrame taken;
    const std::int64_t beganUs = TickUs();
    EXPECT_EQ(TakeNextFrame(values, taken, FrameFate::kRecorded, 2000), TakeResult::kTimeout);
    EXPECT_EQ(TickUs() - beganUs, 2'000'000);
}

}  // namespace
}  // namespace kelvo
