#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "grabber/board.h"
#include "grabber/board_state_write.h"
#include "grabber/host_frames_write.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/buffer_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/recording_board.h"

#include <gmock/gmock.h>

#include <limits>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kColumns = 4;
constexpr int kRows = 2;
constexpr std::int64_t kBytes = 16;  // of a frame

class HostFrameMemory : public BoardTest {
  protected:
    HostFrameMemory()
    {
        SetSize(kColumns, kRows);
        write::camera.numBufFrames = 8;
    }
    void LimitFrames(int frames)
    {
        PutFile(IniFilePath, Format("[Camera.2]\nMaxNumFramesToAllocate=%d\n", frames));
        ForgetProfile(IniFilePath);
    }
    void LimitMemory(std::int64_t bytes)
    {
        PutFile(directory / "platform.ini",
                Format("[Board]\nBoard=recording\n[Memory]\nShare=100\nLimit=%d\n", static_cast<int>(bytes)));
        ForgetProfile(directory / "platform.ini");
    }
    void Open()
    {
        init_itex();
        ForgetAsked();
    }
};

TEST_F(HostFrameMemory, ALimitOfTwoGivesThreeFramesOfWhichTwoAreCounted)
{
    LimitFrames(2);
    EXPECT_EQ(AllocateHostFrames(), 2 * kBytes);
    EXPECT_EQ(numBufFrames, 2);
    EXPECT_EQ(HostFramesAllocated, 1);
    ASSERT_EQ(HostFrames.size(), 3U);
    for (const auto& frame : HostFrames) EXPECT_EQ(frame.size(), 8U);
    EXPECT_THAT(op.Texts("status", "text"), ElementsAre("  Allocating frame buffer #1", "  Allocating frame buffer #2",
                                                        "  Allocating frame buffer #3"));
}

TEST_F(HostFrameMemory, AreMadeOnce)
{
    LimitFrames(2);
    AllocateHostFrames();
    write::hostFrames.HostFrames[0][0] = 42;
    EXPECT_EQ(AllocateHostFrames(), 2 * kBytes);
    EXPECT_EQ(HostFrames[0][0], 42);
    EXPECT_EQ(op.Texts("status", "text").size(), 3U);
}

TEST_F(HostFrameMemory, AreOffWithNoBufferFrames)
{
    write::camera.numBufFrames = 0;
    EXPECT_EQ(AllocateHostFrames(), 0);
    EXPECT_EQ(HostFramesAllocated, 0);
    Open();
    EXPECT_EQ(CaptureToHostFrames(5, 0), 0);
    EXPECT_THAT(HostFrames, IsEmpty());
    EXPECT_THAT(recordingBoard.asked, ElementsAre("priority 1", "priority 0"));
}

TEST_F(HostFrameMemory, TheMemoryLessTenFramesIsTaken)
{
    LimitMemory(30 * kBytes + 15);
    EXPECT_EQ(AllocateHostFrames(), 20 * kBytes);
    EXPECT_EQ(numBufFrames, 20);
}

TEST_F(HostFrameMemory, AtLeastEightFramesAreTried)
{
    LimitMemory(15 * kBytes);
    EXPECT_EQ(AllocateHostFrames(), 8 * kBytes);
    FreeHostFrames();
    LimitMemory(10 * kBytes);  // none left after the ten
    EXPECT_EQ(AllocateHostFrames(), 8 * kBytes);
}

TEST_F(HostFrameMemory, WithLessThanTenFramesOfMemoryTheNextLimitHolds)
{
    LimitMemory(9 * kBytes);
    EXPECT_EQ(AllocateHostFrames(), 9999 * kBytes) << "9 - 10 wraps to a huge count";
    EXPECT_EQ(HostFrames.size(), 10000U);
    FreeHostFrames();
    LimitFrames(3);
    EXPECT_EQ(AllocateHostFrames(), 3 * kBytes);
}

TEST_F(HostFrameMemory, AFrameBeyondTheMemoryThatMayBeTakenIsRefused)
{
    LimitMemory(kBytes - 1);
    EXPECT_EQ(AllocateHostFrames(), 0);
    EXPECT_THAT(HostFrames, IsEmpty());
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Unable to allocate all of RAM memory requested!");
}

TEST_F(HostFrameMemory, ALimitOfNoneCountsNone)
{
    LimitFrames(0);
    EXPECT_EQ(AllocateHostFrames(), 0);
    EXPECT_EQ(numBufFrames, 0);
    EXPECT_EQ(HostFrames.size(), 1U);
}

TEST_F(HostFrameMemory, ANegativeLimitIsNone)
{
    LimitMemory(30 * kBytes);
    LimitFrames(-1);
    EXPECT_EQ(AllocateHostFrames(), 20 * kBytes);
}

TEST_F(HostFrameMemory, RefusedPartWayTheBytesSoFarAreGiven)
{
    LimitFrames(6);
    FailAllocation(4);
    EXPECT_EQ(AllocateHostFrames(), 3 * kBytes);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Unable to allocate all of RAM memory requested!");
    EXPECT_EQ(op.Boxes()[0].caption, "RAM Memory Warning!");
    EXPECT_EQ(numBufFrames, 6) << "the wanted count stays";
    EXPECT_EQ(HostFrames.size(), 3U);

    // Whoever goes by the count alone stays within the frames that are there.
    Open();
    EXPECT_EQ(CaptureToHostFrames(6, 0), 3);
    EXPECT_EQ(HostFrameNext, 3);
    std::vector<std::int16_t> all(100, -5);
    EXPECT_EQ(ReadHostFrameRect(all, 0, 5, 0, 0, kRows - 1, kColumns - 1), 1);
    FreeHostFrames();
    EXPECT_THAT(HostFrames, IsEmpty());
}

TEST_F(HostFrameMemory, WithoutASizeThereAreNone)
{
    SetSize(0, 5);
    EXPECT_EQ(AllocateHostFrames(), 0);
    EXPECT_EQ(HostFramesAllocated, 0);
}

TEST_F(HostFrameMemory, FreeingTakesTheColourMapAlongAndThePictureKeepsItsColours)
{
    LimitFrames(2);
    SetColorMap(1231);
    write::display.ImageColor = 1231;
    write::display.DisplayHigh = 16383;
    AllocateHostFrames();
    FreeHostFrames();
    EXPECT_EQ(HostFramesAllocated, 0);
    EXPECT_THAT(HostFrames, IsEmpty());
    EXPECT_THAT(ColorMap, IsEmpty());

    const std::vector<std::int16_t> frame(8);
    write::frames.CameraOn = 1;
    DrawFrame(frame);
    ASSERT_TRUE(FrameBitmap);
    ASSERT_EQ(ColorMap.size(), 768U);
    EXPECT_EQ(ColorMap[0], 255) << "inverted, as before";
    EXPECT_EQ(ColorMap[255], 0);
}

TEST_F(HostFrameMemory, FreeingNothingKeepsTheColourMap)
{
    SetColorMap(1230);
    FreeHostFrames();
    EXPECT_EQ(ColorMap.size(), 768U);
}

TEST_F(HostFrameMemory, FramesOfAnotherSizeAreMadeAgain)
{
    LimitFrames(2);
    AllocateHostFrames();
    SetSize(kColumns, kRows + 1);
    EXPECT_EQ(AllocateHostFrames(), 2 * 24);
    EXPECT_EQ(HostFrames.at(0).size(), 12U);

    SetSize(kColumns + 1, kRows);
    Open();
    EXPECT_EQ(CaptureToHostFrames(2, 0), 2);
    EXPECT_THAT(HostFrames.at(1), ElementsAre(1000, 1001, 1002, 1003, 1004, 1100, 1101, 1102, 1103, 1104));

    SetSize(1, 1);
    std::vector<std::int16_t> one = {-9};
    EXPECT_EQ(ReadHostFrameRect(one, 0, 0, 0, 0, 0, 0), 1);
    EXPECT_THAT(one, ElementsAre(0)) << "the new frame, not one of the old size";

    SetSize(0, 5);
    EXPECT_EQ(CaptureToHostFrames(2, 0), 0);
    EXPECT_THAT(HostFrames, IsEmpty());
}

TEST_F(HostFrameMemory, FreedTheStoreHasNoCapacity)
{
    LimitFrames(2);
    write::buffer.HostFrameBytes = AllocateHostFrames();
    write::buffer.AveragingCapacity = 2;
    FreeHostFrames();
    EXPECT_EQ(HostFrameBytes, 0);
    EXPECT_EQ(AveragingCapacity, 0U);
}

class HostFrameCapture : public HostFrameMemory {
  protected:
    HostFrameCapture()
    {
        LimitFrames(4);
        Open();
        recordingBoard.onRead = [](std::int32_t n) { recordingBoard.picture = 1000 * n; };
    }
};

TEST_F(HostFrameCapture, TakesOneFrameABlank)
{
    write::board.DataOffset = 7;  // not added: the frames stay raw
    EXPECT_EQ(CaptureToHostFrames(2, 0), 2);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("priority 1", "icp_wait_vb 11 5", "icp_read_area 11 5 0 0 4 2",
                                                  "icp_wait_vb 11 5", "icp_read_area 11 5 0 0 4 2", "priority 0"));
    EXPECT_THAT(HostFrames[0], ElementsAre(1000, 1001, 1002, 1003, 1100, 1101, 1102, 1103));
    EXPECT_THAT(HostFrames[1], ElementsAre(2000, 2001, 2002, 2003, 2100, 2101, 2102, 2103));
    EXPECT_THAT(HostFrames[2], Each(0));
    EXPECT_EQ(HostFrameNext, 2);
}

TEST_F(HostFrameCapture, SkipsFrames)
{
    EXPECT_EQ(CaptureToHostFrames(1, 2), 1);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("priority 1", "icp_wait_vb 11 5", "icp_wait_vb 11 5",
                                                  "icp_wait_vb 11 5", "icp_read_area 11 5 0 0 4 2", "priority 0"));
}

TEST_F(HostFrameCapture, StopsAtTheCountedFramesAndBeginsAgainThere)
{
    EXPECT_EQ(CaptureToHostFrames(100, 0), 4);
    EXPECT_EQ(HostFrameNext, 0);
    EXPECT_THAT(HostFrames[4], Each(0)) << "the one beyond the count isn't used";
    EXPECT_EQ(CaptureToHostFrames(4, 0), 4);
    EXPECT_EQ(HostFrameNext, 0);
    EXPECT_EQ(CaptureToHostFrames(-3, 0), 0);
}

TEST_F(HostFrameCapture, AFailedReadEndsItWithItsBox)
{
    recordingBoard.onRead = [](std::int32_t n) {
        if (n == 3) recordingBoard.answers["icp_read_area"] = -4;
    };
    EXPECT_EQ(CaptureToHostFrames(4, 0), 0);
    EXPECT_EQ(recordingBoard.asked.back(), "priority 0");
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "icp_read_area() Error");
    EXPECT_EQ(op.Boxes()[0].caption, "ITEX Board Error!");
}

TEST_F(HostFrameCapture, ATimeOutOfTheBlankIsNotLookedAt)
{
    recordingBoard.answers["icp_wait_vb"] = -7;
    EXPECT_EQ(CaptureToHostFrames(2, 0), 2);
    EXPECT_TRUE(op.Boxes().empty());
}

class HostFrameRead : public HostFrameCapture {
  protected:
    HostFrameRead()
    {
        CaptureToHostFrames(4, 0);
        write::board.DataOffset = -1000;
    }
};

TEST_F(HostFrameRead, AWholeFrameComesWithItsOffset)
{
    std::vector<std::int16_t> out(8);
    EXPECT_EQ(ReadHostFrameRect(out, 2, 2, 0, 0, kRows - 1, kColumns - 1), 1);
    EXPECT_THAT(out, ElementsAre(2000, 2001, 2002, 2003, 2100, 2101, 2102, 2103));
}

TEST_F(HostFrameRead, ARectangleIsCopiedFlatFromTwiceItsPlace)
{
    // Two values from row 0, column 1: elements 2 and 3 of the frame, whatever the rows are.
    std::vector<std::int16_t> out(2);
    EXPECT_EQ(ReadHostFrameRect(out, 0, 0, 0, 1, 1, 1), 1);
    EXPECT_THAT(out, ElementsAre(2, 3));
}

TEST_F(HostFrameRead, EachFrameIsWrittenTwiceTheValuesApart)
{
    std::vector<std::int16_t> out(7, -9);
    EXPECT_EQ(ReadHostFrameRect(out, 1, 2, 0, 0, 0, 1), 1);
    EXPECT_THAT(out, ElementsAre(1000, 1001, -9, -9, 2000, 2001, -9));
}

TEST_F(HostFrameRead, FramesBeyondTheCountAreLeftOut)
{
    std::vector<std::int16_t> out(6, -9);
    EXPECT_EQ(ReadHostFrameRect(out, 3, 9, 0, 0, 0, 0), 1);
    EXPECT_THAT(out, ElementsAre(3000, -9, -9, -9, -9, -9));
}

TEST_F(HostFrameRead, WhatLiesOutsideEitherBlockIsLeftOut)
{
    std::vector<std::int16_t> out(4, -9);
    EXPECT_EQ(ReadHostFrameRect(out, 0, 0, 0, 3, 1, 3), 1);  // elements 6 and 7
    EXPECT_THAT(out, ElementsAre(102, 103, -9, -9));
    out.assign(4, -9);
    EXPECT_EQ(ReadHostFrameRect(out, 0, 0, 1, 2, 1, 3), 1);  // elements 12 and 13 of 8
    EXPECT_THAT(out, Each(-9));
    EXPECT_EQ(ReadHostFrameRect(out, 0, 3, 0, 0, kRows - 1, kColumns - 1), 1);
    EXPECT_THAT(out, ElementsAre(0, 1, 2, 3));
    constexpr int kHuge = std::numeric_limits<int>::max();
    EXPECT_EQ(ReadHostFrameRect(out, -kHuge, kHuge, -5, -5, kHuge, 1), 1);
    EXPECT_EQ(ReadHostFrameRect({}, 0, 3, 0, 0, 1, 1), 1);
    constexpr int kLow = std::numeric_limits<int>::min();
    out.assign(4, -9);
    EXPECT_EQ(ReadHostFrameRect(out, 1, 3, kLow, kLow, kHuge, kHuge), 1);
    EXPECT_EQ(ReadHostFrameRect(out, 0, 3, kHuge, kHuge, kHuge, kHuge), 1);
    EXPECT_EQ(ReadHostFrameRect(out, 0, 0, 1, 1, -1, -1), 1) << "back to front in both ways";
    EXPECT_THAT(out, Each(-9));
}

TEST_F(HostFrameRead, APixelIsThatOfItsRowAndColumn)
{
    EXPECT_EQ(ReadBufferPixel(0, 0, 0), 1000);
    EXPECT_EQ(ReadBufferPixel(2, 1, 3), 3103);
    EXPECT_EQ(BufferBoardReady(), 1);
}

TEST_F(HostFrameRead, APixelOutsideTheStoreReads0)
{
    EXPECT_EQ(ReadBufferPixel(-1, 0, 0), 0);
    EXPECT_EQ(ReadBufferPixel(static_cast<std::int32_t>(HostFrames.size()), 0, 0), 0);
    EXPECT_EQ(ReadBufferPixel(0, kRows, 0), 0);
    EXPECT_EQ(ReadBufferPixel(0, -1, 0), 0);
    EXPECT_EQ(ReadBufferPixel(0, 0, kColumns), 0);
    EXPECT_EQ(ReadBufferPixel(0, 0, -1), 0);
}

TEST_F(HostFrameRead, TheNextFrameCanBeSetBack)
{
    CaptureToHostFrames(2, 0);
    EXPECT_EQ(HostFrameNext, 2);
    EXPECT_EQ(ResetHostFrameNext(), 1);
    EXPECT_EQ(HostFrameNext, 0);
}

}  // namespace
}  // namespace kelvo
