// Who observes the capture, under the virtual clock: what he gets, and that nobody else notices.
#include "grabber/capture.h"
#include "grabber/frame_account.h"
#include "grabber/frame_read.h"
#include "grabber/frame_size.h"
#include "grabber/recording.h"
#include "platform/clock.h"
#include "platform/memory.h"
#include "support/recording_board.h"
#include "video/video.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Observer : public BoardTest {
  protected:
    Observer()
    {
        GoLive(4, 2);
        ClearFrameAccount();
    }
    FrameObserver Notes()
    {
        return [this](const ObservedFrame& frame) {
            numbers_.push_back(frame.stamp.number);
            firsts_.push_back(frame.values[0]);
            missed_.push_back(frame.missed);
        };
    }
    static void Take(int frames)
    {
        std::vector<std::int16_t> values(CameraFrameValues());
        CapturedFrame taken;
        for (int i = 0; i < frames; ++i) TakeNextFrame(values, taken, FrameFate::kRecorded, 2000);
    }
    static void Look(int frames)
    {
        std::vector<std::int16_t> values(CameraFrameValues());
        for (int i = 0; i < frames; ++i) EXPECT_EQ(CopyNewestFrame(values, 2000), TakeResult::kTaken);
    }

    std::vector<std::int64_t> numbers_;
    std::vector<std::int16_t> firsts_;
    std::vector<std::int64_t> missed_;
};

TEST_F(Observer, GetsEachFrameWhileNothingRecords)
{
    recordingBoard.frames = {{1}, {2}, {3}, {4}, {5}};
    ASSERT_TRUE(BeginObserving(Notes()));
    EXPECT_FALSE(RecordingRuns());
    EXPECT_TRUE(CaptureIsUsed());
    Look(3);
    EndObserving();
    EXPECT_FALSE(CaptureIsUsed());
    EXPECT_THAT(numbers_, ElementsAre(1, 2, 3));
    EXPECT_THAT(firsts_, ElementsAre(1, 2, 3));
    EXPECT_THAT(missed_, ElementsAre(0, 0, 0));
    EXPECT_EQ(CurrentFrameAccount().used, 3);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
}

TEST_F(Observer, GoesOnThroughARecordingAndBehindIt)
{
    ASSERT_TRUE(BeginObserving(Notes()));
    Look(2);
    ASSERT_TRUE(BeginRecording(8));
    EXPECT_TRUE(RecordingRuns());
    Take(3);
    EndRecording();
    EXPECT_FALSE(RecordingRuns());
    EXPECT_TRUE(ObservingRuns());
    Look(1);
    EndObserving();
    EXPECT_THAT(numbers_, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(Observer, JoinsARecordingThatRunsAndLeavesIt)
{
    ASSERT_TRUE(BeginRecording(8));
    Take(2);
    ASSERT_TRUE(BeginObserving(Notes()));
    Take(2);
    EndObserving();
    EXPECT_TRUE(RecordingRuns());
    Take(2);
    EXPECT_EQ(CurrentCaptureCounts().recorded, 6);
    EndRecording();
    EXPECT_THAT(numbers_, ElementsAre(3, 4));
}

TEST_F(Observer, GetsTheFramesForWhichTheRingOfARecordingHasNoPlace)
{
    ASSERT_TRUE(BeginRecording(2));
    ASSERT_TRUE(BeginObserving(Notes()));
    Look(5);
    EXPECT_GE(CurrentCaptureCounts().lostByRing, 2);
    EndRecording();
    EndObserving();
    EXPECT_THAT(numbers_, ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(Observer, IsToldWhatCameAndCouldNotBeRead)
{
    ASSERT_TRUE(BeginObserving(Notes()));
    Look(1);
    recordingBoard.answers["icp_read_area"] = -1;
    std::vector<std::int16_t> values(CameraFrameValues());
    EXPECT_EQ(CopyNewestFrame(values, 2000), TakeResult::kUnreadable);
    recordingBoard.answers.clear();
    Look(1);
    EndObserving();
    EXPECT_THAT(numbers_, ElementsAre(1, 3));
    EXPECT_THAT(missed_, ElementsAre(0, 1));
}

TEST_F(Observer, KeepsTheGrabAsARecordingDoes)
{
    ASSERT_TRUE(BeginObserving(Notes()));
    ForgetAsked();
    ToggleLiveVideo();
    EXPECT_THAT(TakeBoardCalls(), IsEmpty());
    EndObserving();
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("freeze")) << "the picture was frozen meanwhile";
}

TEST_F(Observer, IsOneAtATimeAndNeedsMemory)
{
    EXPECT_FALSE(BeginObserving({}));
    FailAllocation(1);
    EXPECT_FALSE(BeginObserving(Notes()));
    EXPECT_FALSE(CaptureIsUsed());
    FailAllocation(2);
    EXPECT_FALSE(BeginObserving(Notes()));
    EXPECT_FALSE(CaptureIsUsed());
    FailAllocation(0);
    ASSERT_TRUE(BeginObserving(Notes()));
    EXPECT_FALSE(BeginObserving(Notes()));
    EXPECT_TRUE(ObservingRuns());
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(Observer, OutlivesARecordingThatGetsNoMemory)
{
    ASSERT_TRUE(BeginObserving(Notes()));
    Look(1);
    FailAllocation(1);
    EXPECT_FALSE(BeginRecording(8));
    FailAllocation(0);
    EXPECT_EQ(op.Boxes().size(), 1U);
    EXPECT_TRUE(CaptureIsUsed());
    Look(1);
    EXPECT_THAT(numbers_, ElementsAre(1, 2));
}

TEST_F(Observer, EndsWithARecordingBehindWhichThereIsNoMemoryForIt)
{
    ASSERT_TRUE(BeginObserving(Notes()));
    ASSERT_TRUE(BeginRecording(8));
    Take(2);
    FailAllocation(1);
    EndRecording();
    FailAllocation(0);
    EXPECT_FALSE(ObservingRuns());
    EXPECT_FALSE(CaptureIsUsed());
    EXPECT_THAT(numbers_, ElementsAre(1, 2));
    EXPECT_THAT(op.Boxes(), IsEmpty());
    ASSERT_TRUE(BeginObserving(Notes())) << "somebody may again";
    EndObserving();
}

}  // namespace
}  // namespace kelvo
