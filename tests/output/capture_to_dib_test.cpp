// The frame on view as a bitmap against rows worked by hand: with the table of these tests a gray value is its count's
// low byte.
#include "output/capture_to_dib.h"

#include "display/color_map.h"
#include "grabber/board_state_write.h"
#include "grabber/host_frames_write.h"
#include "imagefile/header_write.h"
#include "platform/memory.h"
#include "resources/ids.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/recording_board.h"

#include <gmock/gmock.h>

#include <cstring>
#include <vector>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Grays = std::vector<int>;

void UseLowBytes()
{
    write::display.DisplayLut.resize(65535);
    for (std::size_t i = 0; i < DisplayLut.size(); ++i) {
        write::display.DisplayLut[i] = static_cast<std::uint8_t>(i & 0xFF);
    }
}

// A row of the bitmap counted from the top, with its padding.
Grays Row(const Dib& dib, int row)
{
    const auto rowBytes = static_cast<std::size_t>(DibRowBytes(8, DibWidth(*dib)));
    const auto fromBottom = static_cast<std::size_t>(DibHeight(*dib) - 1 - row);
    const std::span<const std::uint8_t> bytes = DibBits(*dib).subspan(fromBottom * rowBytes, rowBytes);
    return {bytes.begin(), bytes.end()};
}

// The camera's frame: picture + 100 y + x at column x, row y.
class CaptureToDibTest : public BoardTest {
  protected:
    CaptureToDibTest()
    {
        UseLowBytes();
        recordingBoard.picture = 1;
        write::camera.numBufFrames = 4;
    }

    static void Live(int columns, int rows)
    {
        PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=3\n");
        GoLive(columns, rows);
        write::board.DataOffset = 0;
        write::cal.CalType = 0;
    }

    static void View(int columns, int rows, const std::vector<std::int16_t>& samples, std::int16_t prefix = 0)
    {
        write::file.ImageHeader.ImageWidth = static_cast<std::int16_t>(columns);
        write::file.ImageHeader.ImageHeight = static_cast<std::int16_t>(rows);
        write::file.ImageHeader.ImageHeaderDataOffset = prefix;
        write::frames.ImageBuffer.resize(samples.size() * 2);
        std::memcpy(write::frames.ImageBuffer.data(), samples.data(), ImageBuffer.size());
        write::frames.ViewingFile = 1;
    }

    static Dib Capture(const FrameRect* rectangle = nullptr) { return CaptureToDib(50, 500, rectangle); }
    std::string Told() const
    {
        return op.Boxes().size() == 1 ? op.Boxes()[0].text + " / " + op.Boxes()[0].caption : std::string();
    }
};

TEST_F(CaptureToDibTest, AnEightBitBitmapOfAWidthOfFiveHasRowsOfEightBytesTheLastThreeBeingZero)
{
    View(5, 2, {11, 12, 13, 14, 15, 21, 22, 23, 24, 25});
    const Dib dib = Capture();
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibBitCount(*dib), 8);
    EXPECT_EQ(DibBits(*dib).size(), 16U);
    EXPECT_THAT(Row(dib, 0), ElementsAre(11, 12, 13, 14, 15, 0, 0, 0));
    EXPECT_THAT(Row(dib, 1), ElementsAre(21, 22, 23, 24, 25, 0, 0, 0));
}

TEST_F(CaptureToDibTest, OfAFileIsWhatStandsBehindTheFrameHeader)
{
    View(2, 2, {91, 92, 93, 94, 1, 2, 3, 4}, 8);
    const Dib dib = Capture();
    ASSERT_TRUE(dib);
    EXPECT_THAT(Row(dib, 0), ElementsAre(1, 2, 0, 0));
    EXPECT_THAT(Row(dib, 1), ElementsAre(3, 4, 0, 0));
}

TEST_F(CaptureToDibTest, OfAFileAsksNoBoard)
{
    Live(3, 2);
    View(2, 1, {5, 6});
    ASSERT_TRUE(Capture());
    EXPECT_THAT(recordingBoard.asked, IsEmpty());
}

TEST_F(CaptureToDibTest, CutsTheRectangleOutOfTheFrame)
{
    View(4, 3, {11, 12, 13, 14, 21, 22, 23, 24, 31, 32, 33, 34});
    const FrameRect middle{1, 1, 2, 2};
    const Dib dib = Capture(&middle);
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibWidth(*dib), 2);
    EXPECT_EQ(DibHeight(*dib), 2);
    EXPECT_THAT(Row(dib, 0), ElementsAre(22, 23, 0, 0));
    EXPECT_THAT(Row(dib, 1), ElementsAre(32, 33, 0, 0));
}

TEST_F(CaptureToDibTest, IsBlackBesideTheFrame)
{
    View(2, 2, {11, 12, 21, 22});
    const FrameRect around{-1, -1, 2, 2};
    const Dib dib = Capture(&around);
    ASSERT_TRUE(dib);
    EXPECT_THAT(Row(dib, 0), Each(0));
    EXPECT_THAT(Row(dib, 1), ElementsAre(0, 11, 12, 0));
    EXPECT_THAT(Row(dib, 2), ElementsAre(0, 21, 22, 0));
    EXPECT_THAT(Row(dib, 3), Each(0));
    const FrameRect beyond{2, 0, 3, 1};
    EXPECT_THAT(Row(Capture(&beyond), 0), Each(0));
}

TEST_F(CaptureToDibTest, OfAnEmptyRectangleHasNoPixels)
{
    View(2, 2, {11, 12, 21, 22});
    const FrameRect none{1, 0, 0, 1};
    const Dib dib = Capture(&none);
    ASSERT_TRUE(dib);
    EXPECT_THAT(DibBits(*dib), IsEmpty());
}

TEST_F(CaptureToDibTest, LiveIsANewFrameOfTheCamera)
{
    Live(3, 2);
    const Dib dib = Capture();
    ASSERT_TRUE(dib);
    EXPECT_THAT(Row(dib, 0), ElementsAre(1, 2, 3, 0));
    EXPECT_THAT(Row(dib, 1), ElementsAre(101, 102, 103, 0));
    EXPECT_THAT(recordingBoard.asked, Not(IsEmpty()));
}

TEST_F(CaptureToDibTest, LiveBeginsAtThePannedColumnAndTheFirstRow)
{
    Live(3, 2);
    write::display.Xpan = 1;
    write::display.Ypan = 1;
    const Dib dib = Capture();
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibWidth(*dib), 2);
    EXPECT_EQ(DibHeight(*dib), 2);
    EXPECT_THAT(Row(dib, 0), ElementsAre(2, 3, 0, 0));
    EXPECT_THAT(Row(dib, 1), ElementsAre(102, 103, 0, 0));
}

TEST_F(CaptureToDibTest, FrozenIsTheFrameThatWasReadLast)
{
    Live(2, 2);
    write::frames.LiveVideo = 0;
    write::frames.RawFrame = {7, 8, 9, 10};
    ForgetAsked();
    const Dib dib = Capture();
    ASSERT_TRUE(dib);
    EXPECT_THAT(Row(dib, 0), ElementsAre(7, 8, 0, 0));
    EXPECT_THAT(Row(dib, 1), ElementsAre(9, 10, 0, 0));
}

TEST_F(CaptureToDibTest, IsTurnedAsTheScreenShowsItWithAndWithoutACalibration)
{
    Live(2, 2);
    write::frames.LiveVideo = 0;
    write::frames.RawFrame = {7, 8, 9, 10};
    write::cal.DecomList = {3, 2, 1, 0};
    write::cal.OffsetList = {1, 1, 1, 1};
    write::cal.GainList = {1, 1, 1, 1};
    const Dib plain = Capture();
    ASSERT_TRUE(plain);
    EXPECT_THAT(Row(plain, 0), ElementsAre(10, 9, 0, 0));
    EXPECT_THAT(Row(plain, 1), ElementsAre(8, 7, 0, 0));
    write::cal.CalType = 2;
    const Dib corrected = Capture();
    ASSERT_TRUE(corrected);
    EXPECT_THAT(Row(corrected, 0), ElementsAre(9, 8, 0, 0));
    EXPECT_THAT(Row(corrected, 1), ElementsAre(7, 6, 0, 0));
}

TEST_F(CaptureToDibTest, IsTheReplayedFrameThatIsOnTheScreen)
{
    Live(2, 2);
    write::frames.LiveVideo = 0;
    write::frames.RawFrame = {7, 8, 9, 10};
    write::hostFrames.HostFrames = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    write::buffer.ReplayActive = 1;
    write::buffer.ReplayOnView = 1;
    const Dib dib = Capture();
    ASSERT_TRUE(dib);
    EXPECT_THAT(Row(dib, 0), ElementsAre(5, 6, 0, 0));
    EXPECT_THAT(Row(dib, 1), ElementsAre(7, 8, 0, 0));
}

TEST_F(CaptureToDibTest, HasTheColoursThatAreInForce)
{
    View(1, 1, {3});
    SetColorMap(kInvertedGray);
    write::display.ImageColor = kInvertedGray;
    const Dib inverted = Capture();
    ASSERT_TRUE(inverted);
    EXPECT_THAT(DibPalette(*inverted).first(8), ElementsAre(255, 255, 255, 0, 254, 254, 254, 0));
    SetColorMap(kNormalGray);
    write::display.ImageColor = kNormalGray;
    EXPECT_THAT(DibPalette(*Capture()).first(8), ElementsAre(0, 0, 0, 0, 1, 1, 1, 0));
}

TEST_F(CaptureToDibTest, WithoutMemoryTellsSo)
{
    Live(2, 2);
    ASSERT_TRUE(Capture());         // colours and host frames stand
    for (int n = 1; n <= 3; ++n) {  // the bitmap, the frame, its image order
        FailAllocation(n);
        EXPECT_FALSE(Capture());
        EXPECT_EQ(op.Boxes().size(), static_cast<std::size_t>(n));
        EXPECT_EQ(op.Boxes().back().text, "Failure to allocate video memory!");
        EXPECT_EQ(op.Boxes().back().caption, "Kelvo message");
    }
}

TEST_F(CaptureToDibTest, OfAFileThatHoldsLessThanItsHeaderSaysTellsSo)
{
    View(2, 2, {1, 2, 3});
    EXPECT_FALSE(Capture());
    EXPECT_EQ(Told(), "Failure to allocate video memory! / Kelvo message");
}

TEST_F(CaptureToDibTest, WithoutAFrameTellsSo)
{
    Live(2, 2);
    write::frames.LiveVideo = 0;
    write::frames.RawFrame.clear();
    EXPECT_FALSE(Capture());
    EXPECT_EQ(Told(), "Video Data Acquisition Failed, Hardware error / Kelvo message");
}

}  // namespace
}  // namespace kelvo
