#include "record/live_video.h"

#include "state/frame_state_write.h"
#include "support/recording_board.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LiveVideoFirst : public BoardTest {
  protected:
    LiveVideoFirst() { GoLive(4, 2); }
};

TEST_F(LiveVideoFirst, RunsOnAsItIs)
{
    EXPECT_TRUE(BeginLiveVideo());
    EXPECT_THAT(TakeBoardCalls(), IsEmpty());
}

TEST_F(LiveVideoFirst, BeginsWhereItWasFrozenOrAFileIsOnView)
{
    write::frames.LiveVideo = 0;
    EXPECT_TRUE(BeginLiveVideo());
    EXPECT_EQ(LiveVideo, 1);
    write::frames.LiveVideo = 0;
    write::frames.ViewingFile = 1;
    EXPECT_TRUE(BeginLiveVideo());
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_EQ(ViewingFile, 0);
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("grab", "grab"));
}

TEST_F(LiveVideoFirst, RefusesWithoutACamera)
{
    write::frames.CameraOn = 0;
    write::frames.LiveVideo = 0;
    EXPECT_FALSE(BeginLiveVideo());
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Video Data Acquisition Failed, Hardware error");
    EXPECT_EQ(LiveVideo, 0);
}

}  // namespace
}  // namespace kelvo
