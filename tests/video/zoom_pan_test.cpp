// The zoom and pan commands row by row, at their limits.
#include "video/zoom_pan.h"

#include <gtest/gtest.h>

#include <optional>

namespace kelvo {
namespace {

// A region of 320 x 256 pixels at zoom 3 in a view of 1101 x 300: 367 columns and 100 rows fit. So the pan goes to 320
// and 156, the offset to 140 (of 141 free) and 0. In a view of 1101 x 900 the vertical offset goes to 132.
constexpr ViewLimits kLimits{320, 256, 320, 256, 1101, 300};
constexpr ViewLimits kTallView{320, 256, 320, 256, 1101, 900};
constexpr Point kPivot{160, 128};

DisplayGeometry At(std::int32_t xpan, std::int32_t ypan, std::int32_t xoffset = 0, std::int32_t yoffset = 0)
{
    return {xpan, ypan, 3, 3, xoffset, yoffset};
}

std::optional<DisplayGeometry> After(int id, const DisplayGeometry& geometry, const ViewLimits& limits = kLimits)
{
    return ZoomPanned(id, geometry, limits, kPivot);
}

TEST(ZoomPan, RightMovesByOneUpToTheRegionsWidth)
{
    EXPECT_EQ(After(202, At(0, 0)), At(1, 0));
    EXPECT_EQ(After(202, At(319, 0)), At(320, 0));
    EXPECT_EQ(After(202, At(320, 0)), std::nullopt);
    EXPECT_EQ(After(202, At(321, 0)), std::nullopt);
}

TEST(ZoomPan, LeftMovesByOneDownToMinusTheRegionsWidth)
{
    EXPECT_EQ(After(203, At(0, 0)), At(-1, 0));
    EXPECT_EQ(After(203, At(-319, 0)), At(-320, 0));
    EXPECT_EQ(After(203, At(-320, 0)), std::nullopt);
    EXPECT_EQ(After(203, At(320, 0)), At(319, 0));
}

TEST(ZoomPan, UpMovesByOneDownToMinusTheRegionsHeight)
{
    EXPECT_EQ(After(204, At(0, 0)), At(0, -1));
    EXPECT_EQ(After(204, At(0, -255)), At(0, -256));
    EXPECT_EQ(After(204, At(0, -256)), std::nullopt);
}

TEST(ZoomPan, DownMovesByOneUntilTheLastRowShows)
{
    EXPECT_EQ(After(205, At(0, 0)), At(0, 1));
    EXPECT_EQ(After(205, At(0, 155)), At(0, 156));
    EXPECT_EQ(After(205, At(0, 156)), std::nullopt);
    EXPECT_EQ(After(205, At(0, 157)), std::nullopt);
    EXPECT_EQ(After(205, At(0, 0), kTallView), std::nullopt);  // all rows show: the limit is 0
    EXPECT_EQ(After(205, At(0, -1), kTallView), At(0, 0));
}

TEST(ZoomPan, HomeMovesRightByASixteenth)
{
    EXPECT_EQ(After(206, At(0, 0)), At(20, 0));
    EXPECT_EQ(After(206, At(310, 0)), At(320, 0));
    EXPECT_EQ(After(206, At(320, 0)), std::nullopt);
}

TEST(ZoomPan, EndMovesLeftByASixteenth)
{
    EXPECT_EQ(After(207, At(0, 0)), At(-20, 0));
    EXPECT_EQ(After(207, At(-310, 0)), At(-320, 0));
    EXPECT_EQ(After(207, At(-320, 0)), std::nullopt);
}

TEST(ZoomPan, PageUpMovesUpByASixteenth)
{
    EXPECT_EQ(After(208, At(0, 0)), At(0, -16));
    EXPECT_EQ(After(208, At(0, -250)), At(0, -256));
    EXPECT_EQ(After(208, At(0, -256)), std::nullopt);
}

TEST(ZoomPan, PageDownMovesDownByASixteenth)
{
    EXPECT_EQ(After(209, At(0, 0)), At(0, 16));
    EXPECT_EQ(After(209, At(0, 150)), At(0, 156));
    EXPECT_EQ(After(209, At(0, 156)), std::nullopt);
}

TEST(ZoomPan, TheColumnLimitIsTheRegionsWidthWhateverTheViewShows)
{
    const ViewLimits narrow{320, 256, 320, 256, 30, 30};
    EXPECT_EQ(After(202, At(319, 0), narrow), At(320, 0));
    EXPECT_EQ(After(202, At(320, 0), narrow), std::nullopt);
}

TEST(ZoomPan, OffsetRightMovesByFourInMultiplesOfFour)
{
    EXPECT_EQ(After(210, At(0, 0, 0)), At(0, 0, 4));
    EXPECT_EQ(After(210, At(0, 0, 7)), At(0, 0, 8));  // 11 / 4 x 4
    EXPECT_EQ(After(210, At(0, 0, 136)), At(0, 0, 140));
    EXPECT_EQ(After(210, At(0, 0, 140)), std::nullopt);
    EXPECT_EQ(After(210, At(0, 0, 141)), std::nullopt);
}

TEST(ZoomPan, OffsetLeftNeedsAnOffsetAboveTheRegionsWidth)
{
    EXPECT_EQ(After(211, At(0, 0, 320)), std::nullopt);
    EXPECT_EQ(After(211, At(0, 0, 321)), At(0, 0, 316));  // 317 / 4 x 4
    EXPECT_EQ(After(211, At(0, 0, 400)), At(0, 0, 396));
}

TEST(ZoomPan, OffsetLeftRefusesAtEightWithARegionOf125Columns)
{
    EXPECT_EQ(ZoomPanned(211, {0, 0, 3, 3, 8, 0}, {125, 124, 125, 124, 1101, 300}, {}), std::nullopt);
}

TEST(ZoomPan, OffsetUpMovesByOneDownToZero)
{
    EXPECT_EQ(After(212, At(0, 0, 0, 2)), At(0, 0, 0, 1));
    EXPECT_EQ(After(212, At(0, 0, 0, 1)), At(0, 0, 0, 0));
    EXPECT_EQ(After(212, At(0, 0, 0, 0)), std::nullopt);
}

TEST(ZoomPan, OffsetDownMovesByOneUpToTheFreeRows)
{
    EXPECT_EQ(After(213, At(0, 0, 0, 131), kTallView), At(0, 0, 0, 132));
    EXPECT_EQ(After(213, At(0, 0, 0, 132), kTallView), std::nullopt);
    EXPECT_EQ(After(213, At(0, 0, 0, 0)), std::nullopt);  // no free rows
}

TEST(ZoomPan, OffsetPageRightMovesByASixteenthInMultiplesOfFour)
{
    EXPECT_EQ(After(214, At(0, 0, 0)), At(0, 0, 20));
    EXPECT_EQ(After(214, At(0, 0, 3)), At(0, 0, 20));
    EXPECT_EQ(After(214, At(0, 0, 130)), At(0, 0, 140));
    EXPECT_EQ(After(214, At(0, 0, 140)), std::nullopt);
}

TEST(ZoomPan, OffsetPageLeftMovesByASixteenthDownToZero)
{
    EXPECT_EQ(After(215, At(0, 0, 140)), At(0, 0, 120));
    EXPECT_EQ(After(215, At(0, 0, 43)), At(0, 0, 20));  // 23 / 4 x 4
    EXPECT_EQ(After(215, At(0, 0, 8)), At(0, 0, 0));
    EXPECT_EQ(After(215, At(0, 0, 0)), std::nullopt);
}

TEST(ZoomPan, OffsetPageUpAndDownMoveByASixteenth)
{
    EXPECT_EQ(After(216, At(0, 0, 0, 100)), At(0, 0, 0, 84));
    EXPECT_EQ(After(216, At(0, 0, 0, 5)), At(0, 0, 0, 0));
    EXPECT_EQ(After(216, At(0, 0, 0, 0)), std::nullopt);
    EXPECT_EQ(After(217, At(0, 0, 0, 100), kTallView), At(0, 0, 0, 116));
    EXPECT_EQ(After(217, At(0, 0, 0, 120), kTallView), At(0, 0, 0, 132));
    EXPECT_EQ(After(217, At(0, 0, 0, 132), kTallView), std::nullopt);
}

TEST(ZoomPan, ZoomAtItsLimitInOneAxisRefusesForBoth)
{
    EXPECT_EQ(After(200, {0, 0, 16, 3, 0, 0}), std::nullopt);
    EXPECT_EQ(After(200, {0, 0, 3, 16, 0, 0}), std::nullopt);
    EXPECT_EQ(After(201, {0, 0, 1, 3, 0, 0}), std::nullopt);
    EXPECT_EQ(After(201, {0, 0, 3, 1, 0, 0}), std::nullopt);
    EXPECT_EQ(After(200, {0, 0, 20, 3, 0, 0}), std::nullopt);  // beyond it
}

TEST(ZoomPan, UnlikeZoomsMoveByTheSameStep)
{
    const auto in = After(200, {0, 0, 2, 5, 0, 0});
    ASSERT_TRUE(in);
    EXPECT_EQ(in->xzoom, 3);
    EXPECT_EQ(in->yzoom, 6);
    const auto out = After(201, {0, 0, 2, 5, 0, 0});
    ASSERT_TRUE(out);
    EXPECT_EQ(out->xzoom, 1);
    EXPECT_EQ(out->yzoom, 4);
}

TEST(ZoomPan, ZoomingInKeepsThePivotInTheMiddle)
{
    // Zoom 6 in a view of 600 x 300: 100 columns and 50 rows. From pan 100, 80 the middle would be 150, 105; for the
    // pivot 160, 128 the pan goes on by 10 and 23.
    const ViewLimits limits{320, 256, 320, 256, 600, 300};
    EXPECT_EQ(ZoomPanned(200, {100, 80, 5, 5, 0, 0}, limits, {160, 128}), (DisplayGeometry{110, 103, 6, 6, 0, 0}));
}

TEST(ZoomPan, AfterZoomingThePanStaysWithinTheFrame)
{
    const ViewLimits limits{320, 256, 320, 256, 600, 300};
    // The pivot in a corner: at most 320 - 100 and 256 - 50, at least 0.
    EXPECT_EQ(ZoomPanned(200, {210, 190, 5, 5, 0, 0}, limits, {319, 255}), (DisplayGeometry{220, 206, 6, 6, 0, 0}));
    EXPECT_EQ(ZoomPanned(200, {10, 10, 5, 5, 0, 0}, limits, {0, 0}), (DisplayGeometry{0, 0, 6, 6, 0, 0}));
}

TEST(ZoomPan, ZoomingOutToTheWholeFrameClearsThePan)
{
    // At zoom 1 all fits: 320 - 600 is below 0.
    EXPECT_EQ(ZoomPanned(201, {30, 40, 2, 2, 0, 0}, {320, 256, 320, 256, 600, 300}, {100, 100}),
              (DisplayGeometry{0, 0, 1, 1, 0, 0}));
}

TEST(ZoomPan, ZoomingTakesOffsetsThatNoLongerFitBack)
{
    // Free at zoom 4: 1500 - 1280 = 220 columns, 1100 - 1024 = 76 rows.
    const ViewLimits limits{320, 256, 320, 256, 1500, 1100};
    const auto fits = ZoomPanned(200, {0, 0, 3, 3, 203, 50}, limits, kPivot);
    ASSERT_TRUE(fits);
    EXPECT_EQ(fits->xoffset, 200);  // a multiple of 4
    EXPECT_EQ(fits->yoffset, 50);
    const auto cut = ZoomPanned(200, {0, 0, 3, 3, 400, 300}, limits, kPivot);
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->xoffset, 220);
    EXPECT_EQ(cut->yoffset, 76);
    const auto none = ZoomPanned(200, {0, 0, 5, 5, 400, 300}, limits, kPivot);
    ASSERT_TRUE(none);
    EXPECT_EQ(none->xoffset, 0);
    EXPECT_EQ(none->yoffset, 0);
}

TEST(ZoomPan, OffsetsAfterZoomingFollowTheFrameOnView)
{
    // A stored frame of 640 x 480 at zoom 2 leaves 220 columns and 140 rows, whatever the region of interest is.
    const auto cut = ZoomPanned(200, {0, 0, 1, 1, 400, 300}, {640, 480, 320, 256, 1500, 1100}, kPivot);
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->xoffset, 220);
    EXPECT_EQ(cut->yoffset, 140);
}

TEST(ZoomPan, OtherCommandsAndUnsoundZoomsAreRefused)
{
    EXPECT_EQ(After(199, At(0, 0)), std::nullopt);
    EXPECT_EQ(After(218, At(0, 0)), std::nullopt);
    for (int id = 200; id <= 217; ++id) {
        EXPECT_EQ(After(id, {0, 0, 0, 3, 0, 0}), std::nullopt) << id;
        EXPECT_EQ(After(id, {0, 0, 3, -1, 0, 0}), std::nullopt) << id;
    }
}

TEST(ZoomPan, SettingsOfAnySizeStayWithinTheIntegers)
{
    constexpr std::int32_t kHuge = 2147483647;
    const ViewLimits limits{kHuge, kHuge, kHuge, kHuge, kHuge, kHuge};
    EXPECT_EQ(ZoomPanned(202, {kHuge, 0, 3, 3, 0, 0}, limits, {}), std::nullopt);
    EXPECT_EQ(ZoomPanned(203, {-kHuge - 1, 0, 3, 3, 0, 0}, limits, {}), (DisplayGeometry{-kHuge, 0, 3, 3, 0, 0}));
    // A quarter of the frame fits: 2147483647 - 536870911.
    EXPECT_EQ(ZoomPanned(200, {kHuge, kHuge, 3, 3, kHuge, kHuge}, limits, {kHuge, kHuge}),
              (DisplayGeometry{1610612736, 1610612736, 4, 4, 0, 0}));
}

TEST(ViewCentre, IsTheMiddleOfWhatShows)
{
    EXPECT_EQ(ViewCentre({0, 0, 3, 3, 0, 0}, kLimits), (Point{160, 50}));       // 0 to 320, 0 to 100
    EXPECT_EQ(ViewCentre({100, 100, 3, 3, 0, 0}, kLimits), (Point{210, 150}));  // 100 to 320, 100 to 200
    EXPECT_EQ(ViewCentre({-100, -20, 3, 3, 0, 0}, kLimits), (Point{133, 40}));  // 0 to 267, 0 to 80
    EXPECT_EQ(ViewCentre({0, 0, 0, 3, 0, 0}, kLimits), (Point{0, 0}));
}

}  // namespace
}  // namespace kelvo
