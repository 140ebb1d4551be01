// The image cursor's cross: where its arms lie, that it is seen on any ground, and that nothing but the screen has it.
#include "video/cursor_cross.h"

#include "display/display_pipeline.h"
#include "display/lookup_table.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "support/picture_fixture.h"
#include "video/cursor_command.h"
#include "video/video.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;

TEST(CrossArms, AreFivePixelsLongAndLeaveTheCentre)
{
    EXPECT_THAT(CrossArms({20, 20}, {10, 9}),
                ElementsAre(Rect{11, 9, 16, 10}, Rect{5, 9, 10, 10}, Rect{10, 10, 11, 15}, Rect{10, 4, 11, 9}));
}

TEST(CrossArms, StopShortOfTheFirstRowAndColumnAndAtTheLast)
{
    EXPECT_THAT(CrossArms({10, 8}, {3, 2}),
                ElementsAre(Rect{4, 2, 9, 3}, Rect{1, 2, 3, 3}, Rect{3, 3, 4, 8}, Rect{3, 1, 4, 2}));
    const auto corner = CrossArms({10, 8}, {0, 0});
    EXPECT_TRUE(corner[1].Empty());
    EXPECT_TRUE(corner[3].Empty());
    EXPECT_EQ(corner[0], (Rect{1, 0, 6, 1}));
}

TEST(CrossArms, AreEmptyOutsideTheFrame)
{
    for (const Point outside : {Point{2, 0}, {0, 2}, {-1, 0}, {0, -1}}) {
        EXPECT_TRUE(std::ranges::all_of(CrossArms({2, 2}, outside), &Rect::Empty));
    }
}

class CursorCross : public PictureTest, public testing::WithParamInterface<double> {
  protected:
    CursorCross() : PictureTest(GetParam()) {}
    ~CursorCross() override
    {
        RemovePictureLayer(DrawCursorCross);
        write::frames.ImageCursorOn = 0;
    }

    static void Show(std::int16_t count, int zoom)
    {
        View(40, 30, std::vector<std::int16_t>(40 * 30, count));
        write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = zoom;
        write::frames.ImageCursorOn = 1;
        write::frames.CursorX = 20;
        write::frames.CursorY = 15;
        AddPictureLayer(DrawCursorCross);
        ASSERT_EQ(RefreshLiveFrame(), 1);
    }
    static std::uint32_t ShownAt(int x, int y)
    {
        const Point at = PlaceOver({x, y});
        return Shown(at.x, at.y);
    }
};

TEST_P(CursorCross, IsSeenOnBlackOnWhiteAndOnGray)
{
    for (const int zoom : {1, 2, 3, 8, 16}) {
        for (const std::int16_t count : {std::int16_t{0}, std::int16_t{8191}, std::int16_t{16383}}) {
            Show(count, zoom);
            const std::uint32_t ground = DisplayLut.at(static_cast<std::size_t>(count)) * 0x010101U;
            EXPECT_EQ(ShownAt(20, 15), ground) << "the pixel that is read stays";
            for (int reach = 1; reach <= 5; ++reach) {
                for (const Point arm : {Point{20 + reach, 15}, {20 - reach, 15}, {20, 15 + reach}, {20, 15 - reach}}) {
                    EXPECT_EQ(ShownAt(arm.x, arm.y), 0xFFFFFFU) << "zoom " << zoom;
                }
            }
            const Point end = PlaceOver({26, 15});
            const Point arm = PlaceOver({25, 15});
            int black = 0;
            for (int x = arm.x; x <= end.x; ++x) black += Shown(x, arm.y) == 0x000000U;
            EXPECT_GE(black, 1) << "a dark rim ends the arm, zoom " << zoom;
            EXPECT_EQ(ShownAt(35, 25), ground);
        }
    }
}

TEST_P(CursorCross, NoFrameAndNoBitmapHasAnyOfIt)
{
    Show(8000, 3);
    EXPECT_THAT(LiveFrame, testing::Each(8000));
    EXPECT_THAT(DibBits(*FrameBitmap), testing::Each(DisplayLut.at(8000)));
    EXPECT_EQ(CursorValue, 8000);
}

INSTANTIATE_TEST_SUITE_P(Ratios, CursorCross, testing::Values(1.0, 1.5, 2.0));

}  // namespace
}  // namespace kelvo
