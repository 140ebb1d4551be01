#include "display/display_pipeline.h"
#include "grabber/board.h"
#include "grabber/board_state_write.h"
#include "grabber/frame_account.h"
#include "grabber/host_frames.h"
#include "imagefile/header_write.h"
#include "platform/memory.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/buffer_state.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/recording_board.h"
#include "support/stored_files.h"
#include "video/video.h"

#include <gmock/gmock.h>

#include <array>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kLiveTimerId = 3;
constexpr std::array<MenuEntry, 2> kMenu{{
    {MenuEntry::Kind::kTop, 0, "&Image"},
    {MenuEntry::Kind::kItem, kCmdFreeze, "&Freeze frame\tF2"},
}};

class LiveFrames : public BoardTest {
  protected:
    LiveFrames() { write::display.DisplayHigh = 16383; }
};

TEST_F(LiveFrames, OneReadABlankAndThePriorityStaysRaised)
{
    GoLive(4, 2);
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("priority 1", "icp_wait_vb 11 5", "icp_read_area 11 5 0 0 4 2"));
    EXPECT_THAT(RawFrame, ElementsAre(1000, 1001, 1002, 1003, 1100, 1101, 1102, 1103));
    EXPECT_EQ(LiveFrame, RawFrame);
    EXPECT_TRUE(FrameBitmap);
}

TEST_F(LiveFrames, ATimeOutOfTheBlankIsTold)
{
    GoLive(4, 2);
    recordingBoard.answers["icp_wait_vb"] = -7;
    EXPECT_EQ(RefreshLiveFrame(), 0);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("priority 1", "icp_wait_vb 11 5", "priority 0"));
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Timeout waiting for vertical blank!");
    EXPECT_EQ(op.Boxes()[0].caption, "icp_wait_vb() Error!");
}

TEST_F(LiveFrames, OtherAnswersOfTheBlankDontCount)
{
    GoLive(4, 2);
    recordingBoard.answers["icp_wait_vb"] = -1;
    EXPECT_EQ(RefreshLiveFrame(), 1);
}

TEST_F(LiveFrames, AFailedReadIsTold)
{
    GoLive(4, 2);
    recordingBoard.answers["icp_read_area"] = 3;
    EXPECT_EQ(RefreshLiveFrame(), 0);
    EXPECT_EQ(recordingBoard.asked.back(), "priority 0");
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "icp_read_area() Error");
    EXPECT_EQ(op.Boxes()[0].caption, "ITEX Board Error!");
}

TEST_F(LiveFrames, InsideItsBoxNoSecondOneOpens)
{
    GoLive(4, 2);
    recordingBoard.answers["icp_read_area"] = 3;
    int inside = -1;
    op.AtNextBox([&](const FrontBox&) { inside = RefreshLiveFrame(); });
    EXPECT_EQ(RefreshLiveFrame(), 0);
    EXPECT_EQ(inside, 0);
    EXPECT_EQ(op.Boxes().size(), 1U);
    recordingBoard.answers.clear();
    EXPECT_EQ(RefreshLiveFrame(), 1);
}

TEST_F(LiveFrames, FrozenTheBoardIsNotTouchedAndTheCursorMoves)
{
    GoLive(4, 2);
    RefreshLiveFrame();
    ToggleFreeze(write::frames.LiveVideo);
    ForgetAsked();
    write::frames.ImageCursorOn = 1;
    write::frames.CursorX = 1;
    write::frames.CursorY = 0;
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_THAT(LiveFrame, ElementsAre(1000, 1001, 1002, 1003, 1100, 1101, 1102, 1103));
    EXPECT_EQ(CursorValue, 1001);
    write::frames.CursorX = 2;
    write::frames.CursorY = 1;
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_THAT(LiveFrame, ElementsAre(1000, 1001, 1002, 1003, 1100, 1101, 1102, 1103));
    EXPECT_EQ(CursorValue, 1102);
    EXPECT_THAT(recordingBoard.asked, IsEmpty());
}

TEST_F(LiveFrames, AFreezeWithTheCursorOnKeepsTheFrameWhole)
{
    GoLive(4, 2);
    write::frames.ImageCursorOn = 1;
    write::frames.CursorX = 1;
    write::frames.CursorY = 0;
    RefreshLiveFrame();
    ToggleFreeze(write::frames.LiveVideo);
    const auto kept = ImageBufferPixels(0);
    EXPECT_THAT(std::vector<std::int16_t>(kept.begin(), kept.end()),
                ElementsAre(1000, 1001, 1002, 1003, 1100, 1101, 1102, 1103));
}

TEST_F(LiveFrames, OnlyAnUncalibratedValueIsKeptFromBelowZero)
{
    GoLive(4, 1);
    recordingBoard.picture = 100;
    write::board.DataOffset = -102;
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_THAT(LiveFrame, ElementsAre(0, 0, 0, 1));
    write::cal.CalType = 1;
    write::cal.OffsetList = {0, 0, 5, 5};
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_THAT(LiveFrame, ElementsAre(-2, -1, -5, -4));
    write::cal.CalType = 2;
    write::cal.GainList = {0.5F, 1, 2, 4};
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_THAT(LiveFrame, ElementsAre(-4, -1, -2, -1));
}

TEST_F(LiveFrames, TheDecommutationListGathersAndStaysIfItFits)
{
    GoLive(4, 1);
    write::cal.DecomList = {3, 2, 1, 0, 77};
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_THAT(LiveFrame, ElementsAre(1003, 1002, 1001, 1000));
    EXPECT_EQ(DecomList.size(), 5U);
}

TEST_F(LiveFrames, AListThatIsMissingOrTooSmallIsMade)
{
    GoLive(4, 1);
    for (const std::vector<std::uint32_t>& list : {std::vector<std::uint32_t>{}, {3, 2, 1}}) {
        write::cal.DecomList = list;
        EXPECT_EQ(RefreshLiveFrame(), 1);
        EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3));
    }
}

TEST_F(LiveFrames, WithoutMemoryForTheListThereIsNoFrame)
{
    GoLive(4, 1);
    FailAllocation(1);
    EXPECT_EQ(RefreshLiveFrame(), 0);
    EXPECT_THAT(DecomList, IsEmpty());
    EXPECT_EQ(RefreshLiveFrame(), 1);
}

// A set-up to which memory was refused: the picture goes on as soon as there is some.
TEST_F(LiveFrames, ABlockThatMemoryRefusedIsAskedForAgain)
{
    GoLive(4, 1);
    write::cal.DecomList = {0, 1, 2, 3};
    std::vector<std::int16_t>().swap(write::frames.RawFrame);
    FailAllocation(1);
    EXPECT_EQ(RefreshLiveFrame(), 0);
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_EQ(RawFrame.size(), 4U);
}

TEST_F(LiveFrames, WithoutFittingBlocksThereIsNoFrameAndNoBox)
{
    GoLive(4, 2);
    SetSize(5, 2);
    EXPECT_EQ(RefreshLiveFrame(), 0);
    SetSize(0, 0);
    EXPECT_EQ(RefreshLiveFrame(), 0);
    SetSize(-4, -2);
    EXPECT_EQ(RefreshLiveFrame(), 0);
    EXPECT_THAT(recordingBoard.asked, IsEmpty());
    EXPECT_TRUE(op.Boxes().empty());
}

TEST_F(LiveFrames, ACallersBlockTakesTheFramesSize)
{
    GoLive(4, 2);
    std::vector<std::int16_t> frame(100, 1);
    EXPECT_EQ(GetVideoData(frame), 1);
    EXPECT_EQ(frame.size(), 8U);
}

TEST_F(LiveFrames, NothingIsDrawnWithTheDisplayOff)
{
    GoLive(4, 2);
    write::frames.DisplayEnabled = 0;
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_FALSE(FrameBitmap);
    EXPECT_EQ(CurrentFrameAccount().shown, 0);
    EXPECT_EQ(CurrentFrameAccount().delivered, 1);
}

// What the board delivers comes to its count by hand; each blank that is waited for adds one.
class LiveAccount : public BoardTest {
  protected:
    LiveAccount()
    {
        write::display.DisplayHigh = 16383;
        ClearFrameAccount();
        GoLive(4, 2);
        RefreshLiveFrame();
        RefreshLiveFrame();
    }
    static FrameAccount Account() { return CurrentFrameAccount(); }
    static void ExpectNothingForgotten()
    {
        EXPECT_EQ(Account().delivered, Account().shown + Account().used + Account().lost + Account().missed);
    }
};

TEST_F(LiveAccount, WhatPassedBeforeAFreezeIsLost)
{
    recordingBoard.frameCount += 24;
    ToggleLiveVideo();
    EXPECT_EQ(Account().lost, 24);
    EXPECT_EQ(Account().delivered, 26);
    ToggleLiveVideo();
    RefreshLiveFrame();
    EXPECT_EQ(Account().lost, 24);
    EXPECT_EQ(Account().delivered, 27);
    ExpectNothingForgotten();
}

TEST_F(LiveAccount, WhatPassedBeforeAChangeOfGeometryIsLost)
{
    recordingBoard.frameCount += 24;
    SetDisplayGeometry(0, 0, 2, 2, 0, 0);
    EXPECT_EQ(Account().lost, 24);
    RefreshLiveFrame();
    EXPECT_EQ(Account().lost, 24);
    EXPECT_EQ(Account().delivered, 27);
    ExpectNothingForgotten();
}

TEST_F(LiveAccount, WhatPassedBeforeAChangeOfSizeIsLost)
{
    recordingBoard.frameCount += 24;
    SetSize(6, 3);
    FrameSizeChanged();
    EXPECT_EQ(Account().lost, 24);
    RefreshLiveFrame();
    EXPECT_EQ(Account().lost, 24);
    EXPECT_EQ(Account().delivered, 27);
    ExpectNothingForgotten();
}

TEST_F(LiveAccount, WhatPassedBeforeTheTriggerIsArmedIsLost)
{
    recordingBoard.frameCount += 24;
    SetTriggerMode(1);
    EXPECT_EQ(Account().lost, 24);
    SetTriggerMode(0);
    RefreshLiveFrame();
    EXPECT_EQ(Account().lost, 24);
    EXPECT_EQ(Account().delivered, 27);
    ExpectNothingForgotten();
}

TEST_F(LiveAccount, AFrameThatCantBeReadAfterItsBlankIsLost)
{
    recordingBoard.answers["icp_read_area"] = 3;
    op.AtNextBox([](const FrontBox&) { recordingBoard.frameCount += 5; });
    EXPECT_EQ(RefreshLiveFrame(), 0);
    EXPECT_EQ(Account().lost, 1);
    ToggleLiveVideo();
    EXPECT_EQ(Account().lost, 1);
    EXPECT_EQ(Account().missed, 5) << "behind the box";
    ExpectNothingForgotten();
}

TEST_F(LiveAccount, WhatPassesBehindTheBoxOfATimeOutIsMissed)
{
    recordingBoard.frameCount += 2;
    recordingBoard.answers["icp_wait_vb"] = kBoardTimeout;
    op.AtNextBox([](const FrontBox&) { recordingBoard.frameCount += 5; });
    EXPECT_EQ(RefreshLiveFrame(), 0);
    EXPECT_EQ(Account().lost, 3) << "the recording board counts on while it says that no blank came";
    ToggleLiveVideo();
    EXPECT_EQ(Account().missed, 5);
    ExpectNothingForgotten();
}

// The board goes on as it was: nothing begins anew.
TEST_F(LiveAccount, AGrabThatDoesntStartAgainCountsOn)
{
    recordingBoard.frameCount = 100;
    RefreshLiveFrame();
    ASSERT_EQ(Account().delivered, 101);
    recordingBoard.answers["icp_grab"] = -1;
    RestartGrab();
    RefreshLiveFrame();
    EXPECT_EQ(Account().delivered, 102);
    ExpectNothingForgotten();
}

// Several steps of a wheel or a key come between two frames.
TEST_F(LiveAccount, ChangesOfGeometryBetweenTwoFramesRestartTheGrabOnce)
{
    ForgetAsked();
    for (int zoom = 2; zoom <= 6; ++zoom) SetDisplayGeometry(0, 0, zoom, zoom, 0, 0);
    SetDisplayGeometry(3, 0, 6, 6, 0, 0);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("icp_grab 11 5"));
    EXPECT_EQ(Xzoom, 6);
    EXPECT_EQ(Xpan, 3);
    RefreshLiveFrame();
    ForgetAsked();
    SetDisplayGeometry(0, 0, 5, 5, 0, 0);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("icp_grab 11 5")) << "a frame has come since";
}

TEST_F(LiveAccount, TheSameGeometryAgainRestartsTheGrabEachTime)
{
    ForgetAsked();
    RefreshPicture();
    RefreshPicture();
    EXPECT_THAT(recordingBoard.asked, ElementsAre("icp_grab 11 5", "icp_grab 11 5"));
}

TEST_F(LiveAccount, FramesOfABurstAreUsed)
{
    write::camera.numBufFrames = 8;
    ASSERT_EQ(CaptureToHostFrames(3, 0), 3);
    EXPECT_EQ(Account().used, 3);
    RefreshLiveFrame();
    EXPECT_EQ(Account().missed, 0);
    EXPECT_EQ(Account().lost, 0);
    ExpectNothingForgotten();
}

TEST_F(LiveAccount, WhatPassesBetweenTwoFramesOfABurstIsLost)
{
    write::camera.numBufFrames = 8;
    recordingBoard.onRead = [](std::int32_t n) {
        if (n == 2) recordingBoard.frameCount += 2;  // it is read late
    };
    ASSERT_EQ(CaptureToHostFrames(3, 0), 3);
    EXPECT_EQ(Account().used, 3);
    EXPECT_EQ(Account().lost, 2);
    ExpectNothingForgotten();
}

TEST_F(LiveAccount, WhatABurstLeavesOutIsMissed)
{
    write::camera.numBufFrames = 8;
    ASSERT_EQ(CaptureToHostFrames(2, 3), 2);
    EXPECT_EQ(Account().used, 2);
    EXPECT_EQ(Account().missed, 6);
    EXPECT_EQ(Account().lost, 0);
    ExpectNothingForgotten();
}

TEST_F(LiveAccount, AFailedBurstLosesItsFrame)
{
    write::camera.numBufFrames = 8;
    recordingBoard.onRead = [](std::int32_t n) {
        if (n == 2) recordingBoard.answers["icp_read_area"] = -1;
    };
    ASSERT_EQ(CaptureToHostFrames(3, 0), 0);
    EXPECT_EQ(Account().used, 1);
    EXPECT_EQ(Account().lost, 1);
    ExpectNothingForgotten();
}

class Freezing : public BoardTest {
  protected:
    Freezing()
    {
        RegisterWindowClass({"LIVE", DefWindowProc, {}});
        write::windows.hWndMain = CreateMainWindow("LIVE", "before");
        SetMenu(hWndMain, kMenu);
        SetSize(4, 2);
        init_itex();
        write::frames.CameraOn = 1;
        write::display.DisplayHigh = 16383;
        ForgetAsked();
    }
    ~Freezing() override
    {
        DestroyWindow(hWndMain);
        write::windows.hWndMain = nullptr;
    }
    static std::string MenuText() { return GetMenuItem(hWndMain, kCmdFreeze)->text; }
    // The kinds of what the operator saw, in order, with their texts.
    static std::vector<std::string> Seen(std::size_t from)
    {
        std::vector<std::string> seen;
        for (std::size_t i = from; i < TranscriptLines().size(); ++i) {
            const TranscriptLine& line = TranscriptLines()[i];
            for (const auto& [key, value] : line.fields) {
                if (key == "text") seen.push_back(line.kind + " " + std::get<std::string>(value));
            }
        }
        return seen;
    }
};

TEST_F(Freezing, WithoutTheCameraNothingHappens)
{
    write::frames.CameraOn = 0;
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_THAT(recordingBoard.asked, IsEmpty());
    EXPECT_EQ(MenuText(), "&Freeze frame\tF2");
}

TEST_F(Freezing, ResumingStartsTheGrabAndTheTimer)
{
    write::file.ImageHeader.ImageHeaderDataOffset = 80;
    const std::size_t from = TranscriptLines().size();
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("icp_grab 11 5"));
    EXPECT_THAT(Seen(from), ElementsAre("menu &Freeze\tF2", "title Kelvo"));
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_EQ(ImageHeader.ImageHeaderDataOffset, 0);
    EXPECT_TRUE(TimerIsSet(hWndMain, kLiveTimerId));
}

TEST_F(Freezing, WithTheDisplayOffNoTimerIsSetOrKilled)
{
    write::frames.DisplayEnabled = 0;
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_FALSE(TimerIsSet(hWndMain, kLiveTimerId));
    SetTimer(hWndMain, kLiveTimerId, 1000);
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_TRUE(TimerIsSet(hWndMain, kLiveTimerId));
}

TEST_F(Freezing, AGrabThatFailsIsToldAndResumedAllTheSame)
{
    recordingBoard.answers["icp_grab"] = -1;
    const std::size_t from = TranscriptLines().size();
    ToggleFreeze(write::frames.LiveVideo);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].caption, "icp_grab");
    const std::vector<std::string> seen = Seen(from);
    EXPECT_EQ(seen.at(1), "box Error starting grab to image processing board");
    EXPECT_EQ(seen.back(), "title Kelvo");
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_TRUE(TimerIsSet(hWndMain, kLiveTimerId));
}

TEST_F(Freezing, KeepsTheLastFrameOfTheDisplay)
{
    ToggleFreeze(write::frames.LiveVideo);
    RefreshLiveFrame();
    ForgetAsked();
    const std::size_t from = TranscriptLines().size();
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("icp_freeze 11 5"));
    EXPECT_THAT(Seen(from), ElementsAre("menu &Continue\tF2", "title Kelvo - frozen"));
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_FALSE(TimerIsSet(hWndMain, kLiveTimerId));
    EXPECT_EQ(ImageBuffer.size(), 16U);
    const std::span<const std::int16_t> kept = ImageBufferPixels(0);
    EXPECT_THAT(std::vector(kept.begin(), kept.end()), ElementsAre(1000, 1001, 1002, 1003, 1100, 1101, 1102, 1103));
}

TEST_F(Freezing, KeepsTheFrameBehindThePrefix)
{
    write::frames.LiveVideo = 1;
    write::frames.LiveFrame.assign(8, 5);
    write::frames.ImageBuffer.assign(90, 0xEE);  // 6 bytes short of what is needed: made anew
    write::file.ImageHeader.ImageHeaderDataOffset = 80;
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_EQ(ImageBuffer.size(), 96U);
    EXPECT_EQ(ImageBufferPixels(80).front(), 5);

    write::frames.LiveVideo = 1;
    write::frames.ImageBuffer.assign(200, 0xEE);
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_EQ(ImageBuffer.size(), 200U) << "large enough: it stays";
    EXPECT_EQ(ImageBuffer[79], 0xEE);
    EXPECT_EQ(ImageBufferPixels(80)[7], 5);
    EXPECT_EQ(ImageBuffer[96], 0xEE);
}

TEST_F(Freezing, AFrameOfAnotherSizeIsNotKept)
{
    write::frames.LiveVideo = 1;
    write::frames.LiveFrame.assign(9, 5);
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_THAT(ImageBuffer, IsEmpty());
    write::frames.LiveFrame.assign(8, 5);
    write::frames.LiveVideo = 1;
    write::frames.ViewingFile = 1;
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_THAT(ImageBuffer, IsEmpty());
    write::frames.LiveVideo = 1;
    write::frames.ViewingFile = 0;
    FailAllocation(1);
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_THAT(ImageBuffer, IsEmpty());
    EXPECT_EQ(LiveVideo, 0);
}

TEST_F(Freezing, ResumingLeavesTheStoredFile)
{
    write::file.ImageHeader = PlainHeader(3, 1);
    write::file.ImageHeader.DataType = 0;
    write::frames.ViewingFile = 1;
    write::frames.SteppingFrames = 1;
    write::display.DisplayUnit = 18;  // gains are read of coefficient files alone
    write::display.Xpan = 5;
    write::windows.CameraFilePath = directory / "camera.ini";
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_EQ(ViewingFile, 0);
    EXPECT_EQ(ViewingSequence, 0);
    EXPECT_EQ(Xpan, 5);
    EXPECT_EQ(GetPrivateProfileInt(ActiveCameraSection(), "Xpan", 0, CameraFilePath), 5) << "the camera's, from now on";
    EXPECT_EQ(DisplayUnit, 0);
    EXPECT_EQ(LiveVideo, 1);
    RefreshLiveFrame();
    EXPECT_EQ(LiveFrame.size(), 8U);
    EXPECT_THAT(recordingBoard.asked,
                ElementsAre("icp_grab 11 5", "priority 1", "icp_wait_vb 11 5", "icp_read_area 11 5 0 0 4 2"));
}

// At contrast 1 and brightness 1000 the table rises over the whole range: 100 of 16382 counts are 1.56 of 255 grays.
TEST_F(Freezing, ResumingTheTableIsThatOfTheLiveRangeAgain)
{
    write::file.ImageHeader = PlainHeader(3, 1);
    write::file.ImageHeader.HeaderVersion = 4;
    write::file.ImageHeader.DisplayLow = 0;
    write::file.ImageHeader.DisplayHigh = 100;
    write::frames.ImageBuffer.assign(6, 0);
    write::frames.ViewingFile = 1;
    BuildDisplayLut(1, 1000);
    ASSERT_EQ(DisplayLut.at(100), 255) << "the file's range ends here";
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_EQ(DisplayLut.at(100), 1);
    EXPECT_EQ(DisplayLut.at(16383), 255);
    EXPECT_EQ(Contrast, 1);
    EXPECT_EQ(Brightness, 1000);
}

TEST_F(Freezing, AChangeOfGeometryRestartsTheGrab)
{
    ToggleFreeze(write::frames.LiveVideo);
    ForgetAsked();
    SetDisplayGeometry(1, 0, 2, 2, 0, 0);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("icp_grab 11 5"));
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_EQ(Xzoom, 2);
}

}  // namespace
}  // namespace kelvo
