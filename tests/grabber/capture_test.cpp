// The capture under the virtual clock, with a board that only has its newest frame, and one that counts nothing.
#include "grabber/capture.h"

#include "grabber/board.h"
#include "grabber/frame_account.h"
#include "grabber/frame_read.h"
#include "grabber/frame_ring.h"
#include "grabber/frame_size.h"
#include "grabber/recording.h"
#include "platform/clock.h"
#include "platform/memory.h"
#include "state/camera_config.h"
#include "state/frame_state_write.h"
#include "support/recording_board.h"
#include "video/video.h"

#include <gmock/gmock.h>
#include <malloc.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Capture : public BoardTest {
  protected:
    Capture()
    {
        GoLive(4, 2);
        ClearFrameAccount();
    }
    static std::vector<std::int64_t> TakeNumbers(int frames)
    {
        std::vector<std::int64_t> numbers;
        std::vector<std::int16_t> values(CameraFrameValues());
        CapturedFrame taken;
        for (int i = 0; i < frames; ++i) {
            EXPECT_EQ(TakeNextFrame(values, taken, FrameFate::kRecorded, 2000), TakeResult::kTaken);
            numbers.push_back(taken.stamp.number);
        }
        return numbers;
    }
    static void ExpectBalance()
    {
        const CaptureCounts counts = CurrentCaptureCounts();
        EXPECT_EQ(counts.delivered, counts.recorded + counts.passedOver + counts.lostByTransport +
                                        counts.lostByBoard.value_or(0) + counts.lostByRing + counts.waiting);
    }
};

TEST_F(Capture, TakesTheNextFrameEachTime)
{
    const Recording recording(8);
    ASSERT_TRUE(recording.Began());
    EXPECT_THAT(TakeNumbers(4), ElementsAre(1, 2, 3, 4));
    ExpectBalance();
}

TEST_F(Capture, BeginsWithTheFirstFrameAfterItsStart)
{
    recordingBoard.frameCount = 77;
    const Recording recording(8);
    EXPECT_THAT(TakeNumbers(2), ElementsAre(78, 79));
}

TEST_F(Capture, CountsWhatABoardWithItsNewestFrameAloneHasLost)
{
    const Recording recording(8);
    TakeNumbers(1);
    recordingBoard.frameCount = 5;
    EXPECT_THAT(TakeNumbers(2), ElementsAre(5, 6));
    EXPECT_EQ(CurrentCaptureCounts().lostByBoard, 3);
    EXPECT_EQ(CurrentCaptureCounts().recorded, 3);
    ExpectBalance();
}

TEST_F(Capture, TellsWhatTheTransportLostFromWhatTheBoardLost)
{
    recordingBoard.frameCount = 10;
    recordingBoard.lostByTransport = 4;  // before it began
    const Recording recording(8);
    TakeNumbers(1);
    recordingBoard.frameCount = 15;  // 12 to 14 weren't read; one of them never came
    recordingBoard.lostByTransport = 5;
    std::vector<std::int16_t> values(CameraFrameValues());
    CapturedFrame taken;
    ASSERT_EQ(TakeNextFrame(values, taken, FrameFate::kRecorded, 2000), TakeResult::kTaken);
    EXPECT_EQ(taken.stamp.number, 15);
    EXPECT_EQ(taken.lostByTransport, 1);
    EXPECT_EQ(taken.lostByBoard, 2);
    EXPECT_EQ(CurrentCaptureCounts().lostByTransport, 1);
    EXPECT_EQ(CurrentCaptureCounts().lostByBoard, 2);
    EXPECT_EQ(CurrentFrameAccount().lostByTransport, 5) << "those before it began too";
    ExpectBalance();
}

TEST_F(Capture, SaysUnknownOfABoardWithoutACounter)
{
    recordingBoard.counts = false;
    const Recording recording(8);
    EXPECT_THAT(TakeNumbers(2), ElementsAre(kUncounted, kUncounted));
    EXPECT_EQ(CurrentCaptureCounts().lostByBoard, std::nullopt);
    EXPECT_EQ(CurrentCaptureCounts().delivered, 2);
    EXPECT_FALSE(CurrentFrameAccount().lostIsKnown);
}

TEST_F(Capture, TellsEachUnreadableFrameOnceAndGoesOnBehindIt)
{
    const Recording recording(8);
    std::vector<std::int16_t> values(CameraFrameValues());
    CapturedFrame taken;
    recordingBoard.answers["icp_read_area"] = -1;
    EXPECT_EQ(TakeNextFrame(values, taken, FrameFate::kRecorded, 2000), TakeResult::kUnreadable);
    recordingBoard.answers.clear();
    EXPECT_THAT(TakeNumbers(1), ElementsAre(2));
    EXPECT_EQ(CurrentCaptureCounts().lostByBoard, 1);
    ExpectBalance();
}

TEST_F(Capture, SharesTheFramesOutWithoutARest)
{
    AccountFrameRead(true);
    ASSERT_TRUE(BeginRecording(2));
    std::vector<std::int16_t> values(CameraFrameValues());
    CapturedFrame taken;
    TakeNumbers(3);
    TakeNextFrame(values, taken, FrameFate::kPassedOver, 2000);
    EndRecording();
    const FrameAccount account = CurrentFrameAccount();
    EXPECT_EQ(account.used, 3);
    EXPECT_EQ(account.missed, 1);
    EXPECT_EQ(account.waiting, 0);
    EXPECT_EQ(account.delivered, 4);
}

TEST_F(Capture, AnAccountClearedMeanwhileBeginsAnew)
{
    const Recording recording(8);
    TakeNumbers(3);
    ClearFrameAccount();
    EXPECT_EQ(CurrentFrameAccount().delivered, 0);
    TakeNumbers(2);
    EXPECT_EQ(CurrentFrameAccount().delivered, 2);
    EXPECT_EQ(CurrentFrameAccount().used, 2);
}

TEST_F(Capture, RefusedMemoryIsToldAndNothingRuns)
{
    FailAllocation(1);
    EXPECT_FALSE(BeginRecording(8));
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Unable to allocate memory to store data to disk!");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo Warning");
    EXPECT_FALSE(RecordingRuns());
}

TEST_F(Capture, EndsAlsoWhereItsClockHasGone)
{
    ASSERT_TRUE(BeginRecording(8));
    TakeNumbers(2);
    const std::int64_t delivered = CurrentCaptureCounts().delivered;
    ResetClock();
    EndRecording();
    EXPECT_FALSE(CaptureRuns());
    EXPECT_EQ(CurrentCaptureCounts().delivered, delivered);
    ExpectBalance();
}

TEST_F(Capture, FreezeAndZoomLeaveTheGrabAlone)
{
    ASSERT_TRUE(BeginRecording(8));
    ForgetAsked();
    ToggleLiveVideo();
    ToggleLiveVideo();
    SetDisplayGeometry(0, 0, 2, 2, 0, 0);
    EXPECT_THAT(TakeBoardCalls(), IsEmpty());
    TakeNumbers(1);
    ToggleLiveVideo();
    EXPECT_EQ(LiveVideo, 0);
    EndRecording();
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("freeze")) << "the picture was frozen meanwhile";
}

TEST_F(Capture, WhoRecordsReadsTheNextAndTheLiveViewTheNewest)
{
    recordingBoard.frames = {{1}, {2}, {3}, {4}, {5}};
    const Recording recording(8);
    std::vector<std::int16_t> values(CameraFrameValues());
    EXPECT_TRUE(ReadBoardFrame(values));
    EXPECT_EQ(values[0], 1);
    EXPECT_TRUE(ReadBoardFrame(values));
    EXPECT_EQ(values[0], 2);
    const TakesNextFrame taking;
    EXPECT_TRUE(ReadBoardFrame(values));
    EXPECT_EQ(values[0], 1) << "nothing was taken away by looking";
    EXPECT_EQ(LastTakenFrame().stamp.number, 1);
    EXPECT_TRUE(ReadBoardFrame(values));
    EXPECT_EQ(values[0], 2);
}

TEST_F(Capture, ASilentBoardEndsAReadWithItsBox)
{
    recordingBoard.answers["icp_wait_vb"] = kBoardTimeout;
    const Recording recording(8);
    std::vector<std::int16_t> values(CameraFrameValues());
    EXPECT_FALSE(ReadBoardFrame(values));
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Timeout waiting for vertical blank!");
}

TEST(RingSize, IsTheSettingInFrames)
{
    SetRingBytes(1'000'000);
    EXPECT_EQ(RingFrames(1000), 1'000'000 / FrameRing::BytesOfPlace(1000) - 4) << "four don't wait";
    EXPECT_NEAR(static_cast<double>(RingFrames(1000)), 496, 25) << "pixels take nearly all of it";
    SetRingBytes(1);
    EXPECT_EQ(RingFrames(1000), 1U);
    SetRingBytes(std::int64_t{1} << 40);
    EXPECT_LE(RingFrames(327'680) * 655'360, std::size_t{1} << 31);
}

TEST(RingSize, IsBoundedForTheFewPixelsOfASmallWindow)
{
    SetRingBytes(std::int64_t{1} << 31);
    EXPECT_EQ(RingFrames(1), 262'144U);
    EXPECT_EQ(RingFrames(0), 262'144U);
    EXPECT_LT(RingFrames(64LL * 64), 262'144U) << "the memory is the bound of frames that a camera gives";
    EXPECT_GT(RingFrames(64LL * 64), 250'000U);
}

TEST(RingSize, CountsWhatIsKeptAboutEachFrame)
{
    constexpr std::int64_t kBytes = 10'000'000;
    SetRingBytes(kBytes);
    for (const std::size_t values : {std::size_t{1}, std::size_t{64}, std::size_t{5000}}) {
        const auto taken = [] {
            const struct mallinfo2 info = mallinfo2();
            return static_cast<std::int64_t>(info.uordblks + info.hblkhd);
        };
        FrameRing ring;
        const std::int64_t before = taken();
        ASSERT_TRUE(ring.Allocate(RingFrames(static_cast<std::int64_t>(values)), values));
        if (taken() == before) GTEST_SKIP() << "this allocator doesn't tell";
        EXPECT_LE(taken() - before, kBytes);
        EXPECT_GT(taken() - before, kBytes / 10 * 9) << values;
    }
}

}  // namespace
}  // namespace kelvo
