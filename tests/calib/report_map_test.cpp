// The report's map by whole factors, on frames that a reader can check in the head.
#include "calib/report_map.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t kGood = 0x111111;

// columns x rows good detectors, and two classes.
CalibrationReport Frame(int columns, int rows)
{
    CalibrationReport report;
    report.columns = columns;
    report.rows = rows;
    report.classes = {{.name = "Noisy", .count = 1, .color = 0xFF0000},
                      {.name = "Inoperable opens", .count = 1, .color = 0x0000FF}};
    report.map.resize(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    report.answers.assign(report.map.size(), kNobodyAnswers);
    return report;
}

TEST(ReportMapView, TheWholeFrameTakesTheLargestFactorThatFits)
{
    EXPECT_EQ(WholeMap(100, 50, 399, 299).level, 3) << "300 x 150 of 399 x 299";
    EXPECT_EQ(WholeMap(320, 256, 360, 290).level, 1);
    EXPECT_EQ(WholeMap(640, 512, 360, 290).level, 0) << "two detectors a point: 320 x 256";
    EXPECT_EQ(WholeMap(640, 512, 360, 255).level, -1) << "three: 214 x 171";
    EXPECT_EQ(WholeMap(2, 2, 4000, 4000).level, kLargestMapLevel);
}

TEST(ReportMapView, StandsInTheMiddleOfItsSurface)
{
    const MapPart part = PartShown(WholeMap(100, 50, 399, 299));
    EXPECT_EQ(part.across, 100);
    EXPECT_EQ(part.down, 50);
    EXPECT_EQ(part.destination.left, 49);
    EXPECT_EQ(part.destination.Width(), 300);
    EXPECT_EQ(part.destination.top, 74);
    EXPECT_EQ(part.destination.Height(), 150);
}

TEST(ReportMapView, ThePointUnderThePointerStaysWhereItIsNearer)
{
    const CalibrationReport report = Frame(320, 256);
    const MapView whole = WholeMap(320, 256, 360, 290);
    const Point at{120, 90};
    const std::optional<Point> before = DetectorAt(report, whole, at);
    ASSERT_TRUE(before);
    EXPECT_EQ(*before, (Point{100, 73})) << "the map begins at 20, 17";
    MapView view = whole;
    for (int level = 2; level <= kLargestMapLevel; ++level) {
        view = Zoomed(view, 1, at);
        EXPECT_EQ(view.level, level);
        const std::optional<Point> after = DetectorAt(report, view, at);
        ASSERT_TRUE(after);
        EXPECT_LE(std::abs(after->x - 100), 1) << level;
        EXPECT_LE(std::abs(after->y - 73), 1) << level;
    }
    EXPECT_EQ(Zoomed(view, 1, at).level, kLargestMapLevel);
    EXPECT_EQ(Zoomed(view, -100, at).level, whole.level);
}

TEST(ReportMapView, AClickBringsAPlaceIntoTheMiddleAsFarAsTheEdgesAllow)
{
    const CalibrationReport report = Frame(320, 256);
    const MapView near = Zoomed(WholeMap(320, 256, 360, 290), 3, {180, 145});
    const std::optional<Point> clicked = DetectorAt(report, near, {240, 190});
    ASSERT_TRUE(clicked);
    const std::optional<Point> middle = DetectorAt(report, Centred(near, {240, 190}), {180, 145});
    ASSERT_TRUE(middle);
    EXPECT_LE(std::abs(middle->x - clicked->x), 1);
    EXPECT_LE(std::abs(middle->y - clicked->y), 1);
    MapView corner = near;
    for (int i = 0; i < 20; ++i) corner = Centred(corner, {0, 0});
    EXPECT_EQ(PartShown(corner).first, (Point{0, 0}));
}

TEST(ReportMapPicture, AColourForEachDetector)
{
    CalibrationReport report = Frame(3, 2);
    report.map = {0, 1, 0, 2, 0, 0};
    EXPECT_THAT(MapPicture(report, WholeMap(3, 2, 48, 32), kGood).pixels,
                ElementsAre(kGood, 0xFF0000U, kGood, 0x0000FFU, kGood, kGood));
}

TEST(ReportMapPicture, OfManyDetectorsInAPointTheBadOneIsSeenAndNamed)
{
    CalibrationReport report = Frame(8, 8);
    report.map[5 * 8 + 3] = 1;
    const MapView view = WholeMap(8, 8, 4, 4);
    ASSERT_EQ(view.level, 0);
    const DeviceBitmap picture = MapPicture(report, view, kGood);
    EXPECT_EQ(picture.width, 4);
    EXPECT_EQ(picture.pixels[2 * 4 + 1], 0xFF0000U);
    EXPECT_EQ(std::ranges::count(picture.pixels, kGood), 15);
    EXPECT_EQ(DetectorAt(report, view, {1, 2}), (Point{3, 5}));
    EXPECT_EQ(DetectorAt(report, view, {0, 0}), (Point{0, 0}));
}

TEST(ReportMapText, NamesTheDetectorItsClassAndWhoAnswers)
{
    CalibrationReport report = Frame(4, 2);
    report.map = {0, 1, 0, 0, 0, 0, 2, 0};
    report.answers[1] = 6 - 4;
    EXPECT_EQ(DetectorText(report, {0, 0}), "Column 0, row 0: good");
    EXPECT_EQ(DetectorText(report, {1, 0}), "Column 1, row 0: Noisy. Column 2, row 0 answers for it.");
    EXPECT_EQ(DetectorText(report, {2, 1}), "Column 2, row 1: Inoperable opens. Nobody answers for it.");
    const MapView view = WholeMap(4, 2, 10, 10);
    EXPECT_EQ(DetectorAt(report, view, {0, 0}), std::nullopt) << "beside the map";
    EXPECT_EQ(DetectorAt(report, view, {3, 3}), (Point{1, 0}));
}

}  // namespace
}  // namespace kelvo
