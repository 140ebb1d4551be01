#include "video/video.h"

#include "imagefile/header_write.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "support/operator.h"
#include "support/stored_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

// The columns of a row that the cross has set to 0.
std::vector<int> Zeros(const std::vector<std::int16_t>& frame, int width, int row)
{
    std::vector<int> columns;
    for (int c = 0; c < width; ++c) {
        if (frame[static_cast<std::size_t>(row * width + c)] == 0) columns.push_back(c);
    }
    return columns;
}

TEST(CursorCross, HasArmsOfFivePixelsAroundItsCentre)
{
    std::vector<std::int16_t> frame(20 * 20, 7);
    EXPECT_EQ(StampCursorCross(frame, 20, 20, 10, 9), 7);
    EXPECT_THAT(Zeros(frame, 20, 9), ElementsAre(5, 6, 7, 8, 9, 11, 12, 13, 14, 15));
    for (int r = 0; r < 20; ++r) {
        const bool arm = (r >= 4 && r <= 8) || (r >= 10 && r <= 14);
        EXPECT_EQ(frame[static_cast<std::size_t>(r * 20 + 10)], arm ? 0 : 7) << r;
    }
}

TEST(CursorCross, StopsShortOfTheFirstColumnAndAtTheLast)
{
    std::vector<std::int16_t> frame(10, 7);
    StampCursorCross(frame, 10, 1, 3, 0);
    EXPECT_THAT(Zeros(frame, 10, 0), ElementsAre(1, 2, 4, 5, 6, 7, 8));
    frame.assign(10, 7);
    StampCursorCross(frame, 10, 1, 8, 0);
    EXPECT_THAT(Zeros(frame, 10, 0), ElementsAre(3, 4, 5, 6, 7, 9));
}

TEST(CursorCross, TheCountIsUnsigned)
{
    std::vector<std::int16_t> frame = {-1};
    EXPECT_EQ(StampCursorCross(frame, 1, 1, 0, 0), 65535);
}

TEST(CursorCross, OutsideTheFrameNothingIsStamped)
{
    std::vector<std::int16_t> frame(4, 7);
    for (const auto& [x, y] : {std::pair{2, 0}, {0, 2}, {-1, 0}, {0, -1}})
        EXPECT_EQ(StampCursorCross(frame, 2, 2, x, y), 0);
    EXPECT_THAT(frame, ElementsAre(7, 7, 7, 7));
}

TEST(VideoData, AStoredFrameIsCopied)
{
    TestOperator op;
    write::file.ImageHeader = PlainHeader(2, 1);
    write::frames.ViewingFile = 1;
    write::frames.ImageBuffer = {1, 0, 2, 0};
    std::vector<std::int16_t> frame;
    EXPECT_EQ(GetVideoData(frame), 1);
    EXPECT_THAT(frame, ElementsAre(1, 2));
}

TEST(VideoData, WithoutABufferThereIsNoFrame)
{
    TestOperator op;
    write::file.ImageHeader = PlainHeader(2, 1);
    write::frames.ViewingFile = 1;
    write::frames.ImageBuffer = {1, 0};  // shorter than the header says
    std::vector<std::int16_t> frame;
    EXPECT_EQ(GetVideoData(frame), 0);
    write::frames.ImageBuffer.clear();
    EXPECT_EQ(GetVideoData(frame), 0);
    EXPECT_TRUE(op.Boxes().empty());
}

TEST(VideoData, TheCrossIsStampedIntoTheCopyAlone)
{
    TestOperator op;
    write::file.ImageHeader = PlainHeader(3, 1);
    write::frames.ViewingFile = 1;
    write::frames.ImageCursorOn = 1;
    write::frames.CursorX = 1;
    write::frames.CursorY = 0;
    write::frames.ImageBuffer = {5, 0, 6, 0, 7, 0};
    std::vector<std::int16_t> frame;
    EXPECT_EQ(GetVideoData(frame), 1);
    EXPECT_EQ(CursorValue, 6);
    EXPECT_THAT(frame, ElementsAre(5, 6, 0));
    EXPECT_EQ(ImageBuffer.at(4), 7);
}

TEST(Freeze, HasNoEffectWithTheCameraOff)
{
    write::frames.CameraOn = 0;
    write::frames.LiveVideo = 0;
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_EQ(LiveVideo, 0);
    write::frames.LiveVideo = 1;
    ToggleFreeze(write::frames.LiveVideo);
    EXPECT_EQ(LiveVideo, 1);
}

}  // namespace
}  // namespace kelvo
