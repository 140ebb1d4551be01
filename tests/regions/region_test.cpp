#include "regions/region.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <utility>

namespace kelvo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::set<std::pair<int, int>> PointsOf(const std::vector<PixelRun>& runs)
{
    std::set<std::pair<int, int>> points;
    for (const PixelRun& run : runs) {
        for (int x = run.first; x <= run.last; ++x) EXPECT_TRUE(points.emplace(run.row, x).second) << run.row;
    }
    return points;
}

TEST(RegionPixels, ARectangleHasBothItsEdgesAndEndsWithTheFrame)
{
    EXPECT_THAT(PixelsOf(RegionShape::kRectangle, {3, 2, 1, 1}, 10, 10),
                ElementsAre(PixelRun{1, 1, 3}, PixelRun{2, 1, 3}));
    EXPECT_THAT(PixelsOf(RegionShape::kRectangle, {-4, 8, 0, 20}, 10, 10),
                ElementsAre(PixelRun{8, 0, 0}, PixelRun{9, 0, 0}));
    EXPECT_THAT(PixelsOf(RegionShape::kRectangle, {10, 0, 12, 3}, 10, 10), IsEmpty());
}

TEST(RegionPixels, APointIsOnePixelOrNone)
{
    EXPECT_THAT(PixelsOf(RegionShape::kPoint, {4, 5, 9, 9}, 10, 10), ElementsAre(PixelRun{5, 4, 4}));
    EXPECT_THAT(PixelsOf(RegionShape::kPoint, {4, 10, 4, 10}, 10, 10), IsEmpty());
}

TEST(RegionPixels, AnEllipseOfFiveByFiveLosesItsCorners)
{
    // Centres at distance 2 sqrt(2) > 2.5 are out, those at sqrt(5) < 2.5 are in.
    EXPECT_THAT(
        PixelsOf(RegionShape::kEllipse, {0, 0, 4, 4}, 10, 10),
        ElementsAre(PixelRun{0, 1, 3}, PixelRun{1, 0, 4}, PixelRun{2, 0, 4}, PixelRun{3, 0, 4}, PixelRun{4, 1, 3}));
    EXPECT_THAT(PixelsOf(RegionShape::kEllipse, {2, 3, 2, 3}, 10, 10), ElementsAre(PixelRun{3, 2, 2}));
}

TEST(RegionPixels, AnEllipseHasThePixelsOfItsInequality)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> side(-5, 40);
    for (int round = 0; round < 300; ++round) {
        const RegionPlace place{side(random), side(random), side(random), side(random)};
        std::set<std::pair<int, int>> expected;
        const double width = std::abs(place.x2 - place.x1) + 1;
        const double height = std::abs(place.y2 - place.y1) + 1;
        for (int y = 0; y < 32; ++y) {
            for (int x = 0; x < 36; ++x) {
                const double dx = (2 * x - place.x1 - place.x2) * height;
                const double dy = (2 * y - place.y1 - place.y2) * width;
                if (dx * dx + dy * dy <= width * width * height * height) expected.emplace(y, x);
            }
        }
        EXPECT_EQ(PointsOf(PixelsOf(RegionShape::kEllipse, place, 36, 32)), expected) << round;
    }
}

TEST(RegionPixels, ALineIsTheSameFromEitherEnd)
{
    EXPECT_THAT(PixelsOf(RegionShape::kLine, {0, 0, 5, 2}, 10, 10),
                ElementsAre(PixelRun{0, 0, 1}, PixelRun{1, 2, 3}, PixelRun{2, 4, 5}));
    std::mt19937 random(9);
    std::uniform_int_distribution<int> place(-6, 30);
    for (int round = 0; round < 300; ++round) {
        const RegionPlace there{place(random), place(random), place(random), place(random)};
        const RegionPlace back{there.x2, there.y2, there.x1, there.y1};
        EXPECT_EQ(PixelsOf(RegionShape::kLine, there, 24, 24), PixelsOf(RegionShape::kLine, back, 24, 24));
    }
}

TEST(RegionPixels, ALineStaysWithinHalfAPixelOfTheTrueOne)
{
    std::mt19937 random(11);
    std::uniform_int_distribution<int> place(0, 60);
    for (int round = 0; round < 300; ++round) {
        const RegionPlace line{place(random), place(random), place(random), place(random)};
        const std::set<std::pair<int, int>> points = PointsOf(PixelsOf(RegionShape::kLine, line, 61, 61));
        const int dx = line.x2 - line.x1;
        const int dy = line.y2 - line.y1;
        const int longer = std::max(std::abs(dx), std::abs(dy));
        EXPECT_EQ(std::ssize(points), longer + 1);
        for (const auto& [y, x] : points) {  // along the longer side, the deviation on the other, in halves of a pixel
            const std::int64_t cross = std::int64_t{x - line.x1} * dy - std::int64_t{y - line.y1} * dx;
            EXPECT_LE(2 * std::abs(cross), longer) << round;
        }
    }
}

}  // namespace
}  // namespace kelvo
