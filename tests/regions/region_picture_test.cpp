#include "regions/region_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

Region Shape(RegionShape shape, RegionPlace place)
{
    Region region;
    region.shape = shape;
    region.place = place;
    return region;
}

TEST(RegionPicture, ACornerMovesTwoSidesAndASideOne)
{
    const Region rectangle = Shape(RegionShape::kRectangle, {10, 20, 30, 40});
    const std::vector<RegionGrip> grips = GripsOf(rectangle);
    ASSERT_THAT(grips, SizeIs(8));
    EXPECT_EQ(Pulled(rectangle, grips[0], {2, 3}), (RegionPlace{12, 23, 30, 40}));
    EXPECT_EQ(Pulled(rectangle, grips[1], {2, 3}), (RegionPlace{10, 20, 32, 43}));
    for (const RegionGrip& grip : grips) {
        EXPECT_EQ(grip.x1 || grip.x2, grip.at.x == 10 || grip.at.x == 30) << grip.at.x;
        EXPECT_EQ(grip.y1 || grip.y2, grip.at.y == 20 || grip.at.y == 40) << grip.at.y;
    }
    EXPECT_THAT(GripsOf(Shape(RegionShape::kLine, {1, 2, 3, 4})), SizeIs(2));
    EXPECT_THAT(GripsOf(Shape(RegionShape::kPoint, {1, 2, 1, 2})), IsEmpty());
}

TEST(RegionPicture, ABodyKeepsItsSizeAtTheEndOfWhatPlacesMayBe)
{
    const Region rectangle = Shape(RegionShape::kRectangle, {10, 20, 32760, 40});
    EXPECT_EQ(Pulled(rectangle, {}, {100, 1}), (RegionPlace{17, 21, 32767, 41}));
    EXPECT_EQ(Pulled(rectangle, {}, {-40000, 0}), (RegionPlace{-32768, 20, -18, 40}));
}

TEST(RegionPicture, ASideDoesntPassTheOneAcross)
{
    const Region rectangle = Shape(RegionShape::kRectangle, {30, 20, 10, 22});
    EXPECT_EQ(Resized(rectangle, {1, -1}), (RegionPlace{10, 20, 31, 21}));
    EXPECT_EQ(Resized(rectangle, {-50, -50}), (RegionPlace{10, 20, 10, 20}));
    EXPECT_EQ(Resized(Shape(RegionShape::kLine, {1, 2, 3, 4}), {-5, 1}), (RegionPlace{1, 2, -2, 5}));
    EXPECT_EQ(Resized(Shape(RegionShape::kPoint, {1, 2, 1, 2}), {5, 5}), (RegionPlace{1, 2, 1, 2}));
}

TEST(RegionPicture, NearIsWithinReachInBothDirections)
{
    const std::vector<PixelRun> runs{{5, 10, 12}};
    EXPECT_TRUE(IsNear(runs, {12, 5}, 0));
    EXPECT_FALSE(IsNear(runs, {13, 5}, 0));
    EXPECT_TRUE(IsNear(runs, {14, 7}, 2));
    EXPECT_FALSE(IsNear(runs, {15, 7}, 2));
    EXPECT_FALSE(IsNear(runs, {12, 8}, 2));
    EXPECT_FALSE(IsNear({}, {0, 0}, 100));
}

TEST(RegionPicture, AnOutlineRunsAroundThePixels)
{
    const PictureMap map{.originX = 100, .originY = 50, .scaleX = 4, .scaleY = 2};
    EXPECT_THAT(
        OutlineOf(Shape(RegionShape::kRectangle, {3, 2, 1, 1}), map),
        ElementsAre(ElementsAre(Point{104, 52}, Point{116, 52}, Point{116, 56}, Point{104, 56}, Point{104, 52})));
    EXPECT_THAT(OutlineOf(Shape(RegionShape::kLine, {0, 0, 2, 1}), map),
                ElementsAre(ElementsAre(Point{102, 51}, Point{110, 53})));
    const auto ellipse = OutlineOf(Shape(RegionShape::kEllipse, {0, 0, 9, 9}), map);
    ASSERT_THAT(ellipse, SizeIs(1));
    EXPECT_EQ(ellipse[0].front(), (Point{140, 60}));
    EXPECT_EQ(ellipse[0].front(), ellipse[0].back());
    for (const Point& point : ellipse[0]) {  // within half a point of ((x - 120) / 20)^2 + ((y - 60) / 10)^2 = 1
        const double radius = std::hypot((point.x - 120) / 20.0, (point.y - 60) / 10.0);
        EXPECT_NEAR(radius, 1, 0.06);
    }
    EXPECT_THAT(OutlineOf(Shape(RegionShape::kPoint, {5, 5, 5, 5}), map), SizeIs(2));
}

}  // namespace
}  // namespace kelvo
