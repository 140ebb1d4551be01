#include "ui/status.h"

#include "imagefile/header_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/stored_files.h"

#include <gtest/gtest.h>

#include <cstring>

namespace kelvo {
namespace {

TEST(StatusLine, TakesTextsBeforeItsWindowExists)
{
    TestOperator op;
    StatusMessage("early", 6);
    std::string text;
    EXPECT_EQ(GetStatusText(text), 6);
    EXPECT_EQ(text, "early");
    EXPECT_EQ(op.Texts("status", "text").back(), "early");
}

TEST(StatusLine, AnUnknownNumberIsToldAndChangesNothing)
{
    TestOperator op;
    StatusMessage("as it was", 2);
    StatusString(8, 0);
    EXPECT_EQ(op.Boxes().at(0).text, "String resource not available to output to Status window!");
    EXPECT_EQ(op.Boxes().at(0).caption, "Kelvo message");
    EXPECT_EQ(StatusText, "as it was");
    EXPECT_EQ(StatusAlign, 2);
}

class StatusOfAView : public ::testing::Test {
  protected:
    StatusOfAView()
    {
        write::file.ImageHeader = PlainHeader(4, 4);
        write::frames.ViewingFile = 1;
        write::windows.ViewFilePath = "/data/run7.seq";
    }
    TestOperator operator_;
};

TEST_F(StatusOfAView, ASingleImageIsDescribedByNameDateAndTime)
{
    StatusString(1, 0);
    EXPECT_EQ(StatusText, "Viewing Image /data/run7.seq  11/21/26  12:34:05");
}

TEST_F(StatusOfAView, ASequenceTellsItsFrame)
{
    write::frames.SteppingFrames = 1;
    write::frames.CurrentFrame = 12;
    StatusString(1, 0);
    EXPECT_EQ(StatusText, "Viewing Sequence /data/run7.seq  FrameNum: 12   11/21/26 12:34:05");
}

TEST_F(StatusOfAView, AFrameWithItsOwnHeaderTellsItsTimeAndRate)
{
    write::frames.SteppingFrames = 1;
    write::frames.CurrentFrame = 3;
    write::file.ImageHeader.ImageHeaderDataOffset = 80;
    write::file.ImageHeader.FrameRate = 59.94F;
    FrameHeaderRecord frame;
    std::memcpy(frame.FrameTimeText.data(), "Sat Nov 21 12:34:05.678 2026\n", 30);
    frame.AllFramesNum = 0x10005;  // only the low 16 bits are told
    frame.FrameIntegrationMsec = 1.25F;
    write::frames.ImageBuffer.assign(80 + 32, 0);
    std::memcpy(write::frames.ImageBuffer.data(), &frame, sizeof frame);
    StatusString(1, 0);
    EXPECT_EQ(StatusText,
              "Viewing /data/run7.seq FrameNum:3 AllFramesNum:5 Sat Nov 21 12:34:05.678 2026 59.9Hz 1.250msec");
}

TEST_F(StatusOfAView, StringOneIsNeverShownAsSuch)
{
    for (const int stepping : {0, 1}) {
        write::frames.SteppingFrames = stepping;
        StatusString(1, 0);
        EXPECT_EQ(StatusText.find("underlined"), std::string::npos);
    }
}

TEST_F(StatusOfAView, OtherStringsStayAsTheyAre)
{
    StatusString(120, 0);
    EXPECT_EQ(StatusText, " Display values affect the viewed image but not raw data");
}

}  // namespace
}  // namespace kelvo
