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

TEST(VideoData, TheCountUnderTheCursorIsReadAndTheFrameStaysWhole)
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
    EXPECT_THAT(frame, ElementsAre(5, 6, 7));
    write::frames.ImageBuffer = {5, 0, 0xFF, 0xFF, 7, 0};
    EXPECT_EQ(GetVideoData(frame), 1);
    EXPECT_EQ(CursorValue, 65535) << "unsigned";
    for (const Point outside : {Point{3, 0}, {0, 1}, {-1, 0}, {0, -1}}) {
        write::frames.CursorX = outside.x;
        write::frames.CursorY = outside.y;
        EXPECT_EQ(GetVideoData(frame), 1);
        EXPECT_EQ(CursorValue, 0);
    }
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
