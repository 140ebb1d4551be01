#include "record/replay.h"

#include "grabber/board.h"
#include "grabber/host_frames_write.h"
#include "platform/clock.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"
#include "support/recording_board.h"
#include "video/video.h"
#include "viewing/stored_view.h"

#include <gmock/gmock.h>

#include <string>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;

// Four frames of 2 x 2 are stored; those of slot n count 10 n.
class Replay : public PictureTest {
  protected:
    Replay()
    {
        PutFile(directory / "platform.ini", "[Board]\nBoard=recording\n[Memory]\nShare=100\n");
        RegisterRecordingBoard();
        write::camera.ActiveConfig.Hroi = 2;
        write::camera.ActiveConfig.Vroi = 2;
        write::camera.numBufFrames = 8;
        EXPECT_EQ(init_itex(), 1);
        write::frames.CameraOn = 1;
        ToggleLiveVideo();
        write::buffer.HostFrameBytes = AllocateHostFrames();
        for (std::size_t slot = 0; slot < 4; ++slot) {
            write::hostFrames.HostFrames[slot].assign(4, static_cast<std::int16_t>(10 * slot));
        }
        write::buffer.FramesInBuffer = 4;
        SetReplayRate(3);  // 15 Hz
        KillTimer(hWndMain, kLiveTimer);
    }

    static void ExpectOff()
    {
        EXPECT_EQ(ReplayActive, 0);
        EXPECT_EQ(ReplayPaused, 0);
        EXPECT_FALSE(TimerIsSet(hWndMain, kReplayTimer));
        EXPECT_TRUE(ReplayedFrame().empty());
    }
};

TEST_F(Replay, TheRatesGivePeriodsTruncatedToMilliseconds)
{
    const std::pair<std::string_view, std::int32_t> periods[] = {
        {"50", 20}, {"24", 41},  {"20", 50},    {"15", 66},    {"10", 100},   {"5", 200},
        {"2", 500}, {"1", 1000}, {"0.5", 2000}, {"0.2", 5000}, {"0.1", 10000}};
    ASSERT_EQ(std::size(kReplayRates), std::size(periods));
    for (std::int32_t row = 0; row < std::ssize(periods); ++row) {
        SetReplayRate(row);
        EXPECT_EQ(kReplayRates[static_cast<std::size_t>(row)].text, periods[row].first);
        EXPECT_EQ(ReplayPeriodMs, periods[row].second);
        EXPECT_EQ(ReplayRateIndex, row);
    }
    SetReplayRate(11);
    SetReplayRate(-1);
    EXPECT_EQ(ReplayRateIndex, 10);
    EXPECT_EQ(ReplayPeriodMs, 10000);
}

TEST_F(Replay, RefusesWhatIsNotStored)
{
    EXPECT_EQ(StartReplay(0), kReplayNoFrames);
    EXPECT_EQ(StartReplay(-1), kReplayNoFrames);
    EXPECT_EQ(StartReplay(numBufFrames + 1), kReplayNoFrames);
    write::buffer.HostFrameBytes = 0;
    EXPECT_EQ(StartReplay(4), kReplayNoStore);
    EXPECT_EQ(StartReplay(0), kReplayNoFrames);  // looked at first
    EXPECT_EQ(LiveVideo, 1);
    ExpectOff();
}

TEST_F(Replay, FreezesLiveVideoAndBeginsAtOnce)
{
    ASSERT_EQ(StartReplay(4), 1);
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_EQ(ReplayActive, 1);
    EXPECT_EQ(NextTimerDueUs(), TickUs());
    EXPECT_TRUE(TimerIsSet(hWndMain, kReplayTimer));
}

TEST_F(Replay, ShowsOneFrameATickAndBeginsAnew)
{
    ASSERT_EQ(StartReplay(4), 1);
    for (const int count : {0, 10, 20, 30, 0, 10}) {
        OnReplayTimer();
        EXPECT_THAT(LiveFrame, Each(count));
        EXPECT_EQ(ReplayOnView, count / 10);
        EXPECT_EQ(ReplayCurrent, (count / 10 + 1) % 4);
        EXPECT_EQ(NextTimerDueUs(), TickUs() + 66'000);
    }
}

TEST_F(Replay, FindsItsWayBackFromAnyFrameNumber)
{
    ASSERT_EQ(StartReplay(4), 1);
    write::buffer.ReplayCurrent = 4;
    OnReplayTimer();
    EXPECT_EQ(ReplayOnView, 0);
    write::buffer.ReplayCurrent = -3;
    OnReplayTimer();
    EXPECT_EQ(ReplayOnView, 0);
}

TEST_F(Replay, ATickLongerThanThePeriodIsFollowedByOneMillisecond)
{
    ASSERT_EQ(StartReplay(4), 1);
    write::buffer.ReplayPeriodMs = -1;  // less than no time
    OnReplayTimer();
    EXPECT_EQ(NextTimerDueUs(), TickUs() + 1000);
}

TEST_F(Replay, PausesAndGoesOn)
{
    ASSERT_EQ(StartReplay(4), 1);
    OnReplayTimer();
    OnReplayTimer();
    StopReplay(1);
    EXPECT_FALSE(TimerIsSet(hWndMain, kReplayTimer));
    EXPECT_EQ(ReplayActive, 1);
    EXPECT_EQ(ReplayPaused, 1);
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_THAT(ReplayedFrame(), Each(10));
    ShowReplayFrame(3);
    EXPECT_THAT(LiveFrame, Each(30));
    ShowReplayFrame(99);
    EXPECT_EQ(ReplayCurrent, 3);
    ResumeReplay();
    EXPECT_EQ(ReplayPaused, 0);
    OnReplayTimer();
    EXPECT_EQ(ReplayOnView, 3);
}

TEST_F(Replay, StopsIntoLiveVideo)
{
    ASSERT_EQ(StartReplay(4), 1);
    OnReplayTimer();
    StopReplay(0);
    EXPECT_EQ(LiveVideo, 1);
    ExpectOff();
}

TEST_F(Replay, WhateverAsksForThePictureGetsTheReplayedFrame)
{
    ASSERT_EQ(StartReplay(4), 1);
    OnReplayTimer();
    OnReplayTimer();
    std::vector<std::int16_t> frame;
    ASSERT_EQ(GetVideoData(frame), 1);
    EXPECT_THAT(frame, ElementsAre(10, 10, 10, 10));
    write::frames.ImageCursorOn = 1;
    ShowCursorValue(1, 1, 1);
    EXPECT_EQ(CursorValue, 10);
}

TEST_F(Replay, IsEndedByResuming)
{
    ASSERT_EQ(StartReplay(4), 1);
    ToggleLiveVideo();
    EXPECT_EQ(LiveVideo, 1);
    ExpectOff();
}

TEST_F(Replay, IsEndedByAFile)
{
    ASSERT_EQ(StartReplay(4), 1);
    StopReplay(1);
    FreezeLiveVideo();
    ExpectOff();
}

TEST_F(Replay, IsEndedByFramesThatAreDropped)
{
    ASSERT_EQ(StartReplay(4), 1);
    FreeHostFrames();
    EXPECT_EQ(FramesInBuffer, 0);
    ExpectOff();
    OnReplayTimer();
    ExpectOff();
}

TEST_F(Replay, IsEndedByTheCameraTurnedOff)
{
    ASSERT_EQ(StartReplay(4), 1);
    ReleaseBoard();
    ExpectOff();
}

TEST_F(Replay, LeavesAFileThatIsOnView)
{
    View(2, 2, {1, 2, 3, 4});
    write::frames.LiveVideo = 0;
    ASSERT_EQ(StartReplay(4), 1);
    OnReplayTimer();
    EXPECT_EQ(ViewingFile, 0);
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_THAT(LiveFrame, Each(0));
}

TEST_F(Replay, ShowsStoredFramesWithoutACameraToo)
{
    write::frames.CameraOn = 0;
    write::frames.LiveVideo = 0;
    ASSERT_EQ(StartReplay(4), 1);
    EXPECT_EQ(LiveVideo, 0);
    OnReplayTimer();
    OnReplayTimer();
    EXPECT_THAT(LiveFrame, Each(10));
    StopReplay(0);
    EXPECT_EQ(LiveVideo, 0);
    ExpectOff();
}

}  // namespace
}  // namespace kelvo
