#include "analysis/measured_frame.h"

#include "imagefile/header_write.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "support/picture_fixture.h"
#include "video/held_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace kelvo {

namespace {

using testing::ElementsAre;

class MeasuredFrame : public PictureTest {};

TEST_F(MeasuredFrame, OfAFileIsWhatIsOnView)
{
    View(3, 2, {1, -2, 3, 4, 5, 6});
    EXPECT_TRUE(SomethingToMeasure());
    EXPECT_TRUE(KeepFrameOnView());
    EXPECT_EQ(ReadFrameToMeasure(), 1);
    EXPECT_THAT(FrameToMeasure(), ElementsAre(1, -2, 3, 4, 5, 6));
    EXPECT_EQ(RangeOnView().low, 0);
    EXPECT_EQ(RangeOnView().high, 16383);
}

TEST_F(MeasuredFrame, OfAFileWithFrameHeadersLiesBehindThem)
{
    View(2, 2, {1, 2, 3, 4, 5, 6, 7, 8});
    write::file.ImageHeader.ImageHeaderDataOffset = 8;
    EXPECT_THAT(FrameToMeasure(), ElementsAre(5, 6, 7, 8));
    write::file.ImageHeader.ImageHeaderDataOffset = 10;
    EXPECT_TRUE(FrameToMeasure().empty());  // the last value is missing
}

TEST_F(MeasuredFrame, IsNoneWithoutFileAndCamera)
{
    EXPECT_FALSE(SomethingToMeasure());
    EXPECT_TRUE(FrameToMeasure().empty());
}

TEST(HeldPicture, IsHeldAsLongAsOneHoldsIt)
{
    EXPECT_FALSE(PictureIsHeld());
    {
        const HeldPicture outer;
        {
            const HeldPicture inner;
            EXPECT_TRUE(PictureIsHeld());
        }
        EXPECT_TRUE(PictureIsHeld());
    }
    EXPECT_FALSE(PictureIsHeld());
}

}  // namespace

}  // namespace kelvo
