// The line plot as calculation: which pixels, which figures, which shapes.
#include "analysis/line_plot.h"

#include "display/units.h"
#include "pixel/region_marks.h"
#include "platform/memory.h"
#include "state/display_state_write.h"
#include "state/head_state_write.h"
#include "support/picture_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace kelvo {

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::IsSupersetOf;

using Samples = std::vector<std::int16_t>;

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

LinePlotSettings Line(std::int32_t x1, std::int32_t y1, std::int32_t x2, std::int32_t y2)
{
    LinePlotSettings line;
    line.Xstart = x1;
    line.Ystart = y1;
    line.Xend = x2;
    line.Yend = y2;
    return line;
}

std::vector<Point> PointsOf(const LinePlotSettings& line)
{
    std::vector<Point> points;
    for (std::int64_t i = 0; i < LinePoints(line); ++i) points.push_back(LinePoint(line, i));
    return points;
}

// --- Which pixels --------------------------------------------------------------------------------------------------

TEST(LinePoints, OfOnePixelIsOne)
{
    EXPECT_THAT(PointsOf(Line(7, 3, 7, 3)), ElementsAre(Point{7, 3}));
}

TEST(LinePoints, GoByColumnsWhereTheseAreMore)
{
    // Slope 0.5: rows 1, 1.5, 2, 2.5, 3 cut.
    EXPECT_THAT(PointsOf(Line(2, 1, 6, 3)),
                ElementsAre(Point{2, 1}, Point{3, 1}, Point{4, 2}, Point{5, 2}, Point{6, 3}));
    EXPECT_THAT(PointsOf(Line(2, 3, 6, 1)),
                ElementsAre(Point{2, 3}, Point{3, 3}, Point{4, 2}, Point{5, 2}, Point{6, 1}));
    // From right to left the part is cut towards the start too.
    EXPECT_THAT(PointsOf(Line(6, 3, 2, 1)),
                ElementsAre(Point{6, 3}, Point{5, 3}, Point{4, 2}, Point{3, 2}, Point{2, 1}));
}

TEST(LinePoints, GoByRowsOtherwise)
{
    EXPECT_THAT(PointsOf(Line(1, 2, 2, 5)), ElementsAre(Point{1, 2}, Point{1, 3}, Point{1, 4}, Point{2, 5}));
    EXPECT_THAT(PointsOf(Line(4, 5, 4, 3)), ElementsAre(Point{4, 5}, Point{4, 4}, Point{4, 3}));
}

TEST(LinePoints, OfFortyFiveDegreesGoByRows)
{
    // By columns these would be the same pixels: what tells is that the line's mark stands left and right of it.
    EXPECT_THAT(PointsOf(Line(4, 1, 2, 3)), ElementsAre(Point{4, 1}, Point{3, 2}, Point{2, 3}));
    EXPECT_THAT(PointsOf(Line(2, 3, 4, 1)), ElementsAre(Point{2, 3}, Point{3, 2}, Point{4, 1}));
}

TEST(LinePoints, MultiplyAStepWithTheSlopeAtFullWidth)
{
    // (float)5 / 6 is 0.8333333134651..., below 5 / 6: six of them are 4.9999998808, which single precision makes 5.
    ASSERT_EQ(6.0F * (5.0F / 6.0F), 5.0F);
    EXPECT_EQ(LinePoint(Line(0, 0, 6, 5), 6), (Point{6, 4}));
    EXPECT_EQ(LinePoint(Line(6, 5, 0, 0), 6), (Point{0, 1}));
}

TEST(LinePoints, StayNumbersWhateverTheEnds)
{
    EXPECT_EQ(LinePoints(Line(kLeast, 0, kMost, 0)), std::int64_t{1} << 32);
    EXPECT_EQ(LinePoint(Line(kLeast, kMost, kMost, kLeast), 0), (Point{kLeast, kMost}));
}

TEST(LineSamples, AreTheCountsUnderThePoints)
{
    Samples frame(6 * 4);
    std::iota(frame.begin(), frame.end(), std::int16_t{0});  // column + 6 x row
    Samples samples;
    ASSERT_TRUE(SampleLine(frame, {6, 4}, Line(5, 3, 0, 1), samples));
    // Slope 0.4: rows 3, 3 - 0.4, 3 - 0.8, 3 - 1.2, 3 - 1.6, 3 - 2.0 with the part cut.
    EXPECT_THAT(samples, ElementsAre(23, 22, 21, 14, 13, 6));
}

TEST(LineSamples, OfAFrameOfOneRowOrColumn)
{
    const Samples frame{4, 5, 6};
    Samples samples;
    ASSERT_TRUE(SampleLine(frame, {3, 1}, Line(2, 0, 0, 0), samples));
    EXPECT_THAT(samples, ElementsAre(6, 5, 4));
    ASSERT_TRUE(SampleLine(frame, {1, 3}, Line(0, 0, 0, 2), samples));
    EXPECT_THAT(samples, ElementsAre(4, 5, 6));
}

TEST(LineSamples, AreLeftAsTheyWereWhereTheyCannotBeTaken)
{
    const Samples frame(12, 5);
    Samples samples{1, 2};
    FailAllocation(1);
    EXPECT_FALSE(SampleLine(frame, {4, 3}, Line(0, 0, 3, 2), samples)) << "no memory";
    EXPECT_FALSE(SampleLine(frame, {4, 3}, Line(0, 0, 4, 2), samples));
    EXPECT_FALSE(SampleLine(frame, {4, 3}, Line(0, -1, 3, 2), samples));
    EXPECT_FALSE(SampleLine(frame, {4, 3}, Line(kLeast, kLeast, kMost, kMost), samples));
    EXPECT_FALSE(SampleLine(std::span(frame).first(11), {4, 3}, Line(0, 0, 3, 2), samples)) << "a frame cut short";
    EXPECT_THAT(samples, ElementsAre(1, 2));
}

class LineInPicture : public PictureTest {};

// The mark shows what is sampled: each sampled pixel stays as it is, and both its sides are dark.
TEST_F(LineInPicture, LiesBetweenTheSidesOfItsMark)
{
    constexpr std::int32_t kColumns = 40;
    constexpr std::int32_t kRows = 30;
    constexpr std::int16_t kCount = 77;
    View(kColumns, kRows, Samples(kColumns * kRows, kCount));
    std::mt19937 random(1);
    const auto place = [&](std::int32_t count) {
        return static_cast<std::int32_t>(random() % static_cast<unsigned>(count));
    };
    for (int round = 0; round < 500; ++round) {
        const LinePlotSettings line = Line(place(kColumns), place(kRows), place(kColumns), place(kRows));
        Samples frame(kColumns * kRows, kCount);
        ASSERT_EQ(MarkLine(frame, line.Xstart, line.Ystart, line.Xend, line.Yend), 1);
        Samples samples;
        ASSERT_TRUE(SampleLine(frame, {kColumns, kRows}, line, samples));
        EXPECT_THAT(samples, Each(kCount));
        const bool byColumns = std::abs(line.Xend - line.Xstart) > std::abs(line.Yend - line.Ystart);
        for (const Point at : PointsOf(line)) {
            const Point side = byColumns ? Point{at.x, at.y + 1} : Point{at.x + 1, at.y};
            if (side.x >= kColumns || side.y >= kRows) continue;
            EXPECT_EQ(frame[static_cast<std::size_t>(side.y * kColumns + side.x)], 0);
        }
    }
}

// --- What they measure ---------------------------------------------------------------------------------------------

class LineMeasured : public PictureTest {
  protected:
    LineMeasured() { View(8, 1, {3, 9, 9, 4, 3, 0, 0, 0}); }
};

TEST_F(LineMeasured, TellsMeanDeviationAndTheFirstOfEqualExtremes)
{
    const Samples samples{3, 9, 9, 4, 3};
    const PlotReport report = ReportLine(MeasureLine(samples, Line(0, 0, 4, 0), kUnitCounts), kUnitCounts);
    // Mean 28 / 5; squares of 2.6, 3.4, 3.4, 1.6, 2.6 are 39.2, a fifth of them 7.84, its root 2.8.
    EXPECT_EQ(report.mean, "5.600");
    EXPECT_EQ(report.deviation,
              "\xB1"
              "2.800");
    EXPECT_EQ(report.minimum, "3");
    EXPECT_EQ(report.minimumPlace, "(0,0)");
    EXPECT_EQ(report.maximum, "9");
    EXPECT_EQ(report.maximumPlace, "(1,0)");
}

TEST_F(LineMeasured, OfOnePointHasNoDeviation)
{
    const PlotReport report = ReportLine(MeasureLine(Samples{9}, Line(1, 0, 1, 0), kUnitCounts), kUnitCounts);
    EXPECT_EQ(report.mean, "9.000");
    EXPECT_EQ(report.deviation, "");
    EXPECT_EQ(report.minimumPlace, "(1,0)");
    EXPECT_EQ(report.maximumPlace, "(1,0)");
}

TEST_F(LineMeasured, HasTheDeviationZeroWhereTheSumIsZero)
{
    // Not a true deviation where the values cancel out; it is what the field shows.
    const PlotReport report = ReportLine(MeasureLine(Samples{-5, 5}, Line(0, 0, 1, 0), kUnitCounts), kUnitCounts);
    EXPECT_EQ(report.mean, "0.000");
    EXPECT_EQ(report.deviation, "0");
}

TEST_F(LineMeasured, DividesByTheNumberOfPoints)
{
    const LineMeasure measure = MeasureLine(Samples{1, 2}, Line(0, 0, 1, 0), kUnitCounts);
    EXPECT_EQ(LineDeviation(measure), 0.5);
}

TEST_F(LineMeasured, ChangesTheExtremesWhereAUnitFallsAsCountsRise)
{
    // 0 to 4000 counts are 2 to -2 volts.
    write::display.DisplayHigh = 4000;
    write::head.VoltsLow = 2.0F;
    write::head.VoltsHigh = -2.0F;
    const Samples samples{1500, 1000, 3000};
    const LineMeasure measure = MeasureLine(samples, Line(0, 0, 2, 0), kUnitVolts);
    const PlotReport report = ReportLine(measure, kUnitVolts);
    EXPECT_EQ(report.minimum, "-1.000");
    EXPECT_EQ(report.minimumPlace, "(2,0)");
    EXPECT_EQ(report.maximum, "1.000");
    EXPECT_EQ(report.maximumPlace, "(1,0)");

    // The plot stays one of counts.
    LinePlotSettings settings;
    AutoscaleLine(settings, measure.extremes, {.low = 0, .high = 16383});
    EXPECT_EQ(settings.YplotMin, 1000);
    EXPECT_EQ(settings.YplotMax, 3000);
}

TEST_F(LineMeasured, HasNoPlaceForWhatLiesAtTheEndOfTheSixteenBits)
{
    const PlotReport high = ReportLine(MeasureLine(Samples{32767, 32766}, Line(0, 0, 1, 0), kUnitCounts), kUnitCounts);
    EXPECT_EQ(high.minimumPlace, "");
    EXPECT_EQ(high.maximumPlace, "(0,0)");
    const PlotReport low = ReportLine(MeasureLine(Samples{-32767, -32768}, Line(0, 0, 1, 0), kUnitCounts), kUnitCounts);
    EXPECT_EQ(low.minimumPlace, "(1,0)");
    EXPECT_EQ(low.maximumPlace, "");
}

TEST_F(LineMeasured, WritesItsFiguresAsCommaSeparatedValues)
{
    EXPECT_EQ(LineFigures(Samples{3, 9, 9, 4}, Line(0, 0, 3, 0), kUnitCounts),
              "# line: (0,0) to (3,0)\n# unit: Signal (Counts)\n# mean: 6.25\n# deviation: 2.772634\n"
              "index,column,row,counts,value\n0,0,0,3,3\n1,1,0,9,9\n2,2,0,9,9\n3,3,0,4,4\n");
    EXPECT_EQ(LineFigures(Samples{9}, Line(1, 0, 1, 0), kUnitCounts),
              "# line: (1,0) to (1,0)\n# unit: Signal (Counts)\n# mean: 9\n# deviation: \n"
              "index,column,row,counts,value\n0,1,0,9,9\n");
}

// --- The axis that follows the data --------------------------------------------------------------------------------

LinePlotSettings AutoscaledTo(std::int32_t minimum, std::int32_t maximum, CountRange range)
{
    Extremes extremes;
    extremes.minimum = minimum;
    extremes.maximum = maximum;
    LinePlotSettings settings;
    AutoscaleLine(settings, extremes, range);
    return settings;
}

TEST(LineAutoscale, ReachesFromTheMinimumToTheMaximum)
{
    const LinePlotSettings settings = AutoscaledTo(400, 900, {.low = 0, .high = 16383});
    EXPECT_EQ(settings.YplotMin, 400);
    EXPECT_EQ(settings.YplotMax, 900);
}

TEST(LineAutoscale, HasRoomAboveAndBelowFlatData)
{
    const LinePlotSettings settings = AutoscaledTo(500, 505, {.low = 0, .high = 16383});
    EXPECT_EQ(settings.YplotMin, 475);
    EXPECT_EQ(settings.YplotMax, 520);
}

TEST(LineAutoscale, NeverPassesTheRangesHighCountButFallsBelowItsLow)
{
    const LinePlotSettings above = AutoscaledTo(16380, 16383, {.low = 0, .high = 16383});
    EXPECT_EQ(above.YplotMax, 16383);
    EXPECT_EQ(AutoscaledTo(100, 2000, {.low = 0, .high = 1500}).YplotMax, 1500);
    EXPECT_EQ(AutoscaledTo(3, 8, {.low = 0, .high = 16383}).YplotMin, -22);
}

TEST(LineAutoscale, DoesNotTurnOverWhereAllDataLieAtTheHighCountOrBeyond)
{
    const LinePlotSettings beyond = AutoscaledTo(3000, 4000, {.low = 0, .high = 1500});
    EXPECT_EQ(beyond.YplotMin, 3000);
    EXPECT_EQ(beyond.YplotMax, 4000);
    const LinePlotSettings at = AutoscaledTo(1500, 1500, {.low = 0, .high = 1500});
    EXPECT_EQ(at.YplotMin, 1470);
    EXPECT_EQ(at.YplotMax, 1520);
}

// --- The plot as shapes --------------------------------------------------------------------------------------------

int SevenPixelsALetter(std::string_view text)
{
    return 7 * static_cast<int>(text.size());
}

// Labels of three digits take 21 pixels: the box is 31 to 231 and 10 to 110, 200 x 100 pixels.
constexpr Rect kArea{0, 0, 241, 160};

class LineLayout : public PictureTest {
  protected:
    LineLayout() { View(1, 1, {0}); }
    static LinePlotSettings Axis(std::int32_t low, std::int32_t high, std::int32_t xGrid, std::int32_t yGrid)
    {
        LinePlotSettings settings;
        settings.YplotMin = low;
        settings.YplotMax = high;
        settings.Xgridlines = xGrid;
        settings.Ygridlines = yGrid;
        return settings;
    }
    static PlotPicture LayOut(const Samples& samples, const LinePlotSettings& settings)
    {
        return LayOutLinePlot(kArea, samples, settings, kUnitCounts, SevenPixelsALetter);
    }
    // Columns of the ticks below the box, by their length.
    static std::vector<int> TicksBelow(const PlotPicture& picture, int length)
    {
        std::vector<int> columns;
        for (const PlotLine& line : picture.lines) {
            const bool below = line.from.y == picture.box.bottom && line.to.y == picture.box.bottom + length;
            if (below && line.from.x == line.to.x) columns.push_back(line.from.x);
        }
        return columns;
    }
    // The texts along the bottom with their middles.
    static std::vector<std::string> PointLabels(const PlotPicture& picture)
    {
        std::vector<std::string> labels;
        for (const PlotLabel& label : picture.labels) {
            if (label.at.y != picture.box.bottom + 10) continue;
            labels.push_back(label.text + " at " + std::to_string(label.at.x));
        }
        return labels;
    }
};

TEST_F(LineLayout, OfFivePointsByHand)
{
    // Five parts of 200 - 100 / 5 + 1 = 21 counts over 100 pixels: 20 pixels each, 100 / 105 pixels a count.
    const PlotPicture picture = LayOut({100, 121, 142, 200, 205}, Axis(100, 200, 0, 0));
    EXPECT_EQ(picture.box, (Rect{31, 10, 231, 110}));
    EXPECT_EQ(picture.clip, (Rect{31, 10, 232, 111}));
    EXPECT_THAT(picture.trace,
                ElementsAre(Point{31, 110}, Point{71, 90}, Point{111, 70}, Point{151, 15}, Point{191, 10}));
    EXPECT_THAT(picture.bars, IsEmpty());
    EXPECT_THAT(
        picture.labels,
        ElementsAre(PlotLabel{{27, 102}, "100", TextAlign::kRight},  //
                    PlotLabel{{27, 82}, "121", TextAlign::kRight}, PlotLabel{{27, 62}, "142", TextAlign::kRight},
                    PlotLabel{{27, 42}, "163", TextAlign::kRight}, PlotLabel{{27, 22}, "184", TextAlign::kRight},
                    PlotLabel{{27, 2}, "205", TextAlign::kRight},
                    PlotLabel{{120, 140}, "Points (start to end)", TextAlign::kCentre},
                    PlotLabel{{31, 120}, "0", TextAlign::kCentre}, PlotLabel{{71, 120}, "1", TextAlign::kCentre},
                    PlotLabel{{111, 120}, "2", TextAlign::kCentre}, PlotLabel{{151, 120}, "3", TextAlign::kCentre},
                    PlotLabel{{191, 120}, "4", TextAlign::kCentre}));
    std::vector<PlotLine> lines{
        {{31, 10}, {232, 10}}, {{31, 110}, {232, 110}}, {{31, 10}, {31, 111}}, {{231, 10}, {231, 111}}};
    for (const int y : {10, 30, 50, 70, 90, 110}) {
        lines.push_back({{28, y}, {31, y}});
        lines.push_back({{231, y}, {234, y}});
    }
    for (const int x : {31, 71, 111, 151, 191}) {
        lines.push_back({{x, 110}, {x, 116}});
        lines.push_back({{x, 4}, {x, 10}});
    }
    EXPECT_THAT(picture.lines, ElementsAreArray(lines));
}

TEST_F(LineLayout, HasGridLinesWhereTheyAreWished)
{
    const Samples samples{100, 121, 142, 200, 205};
    const PlotPicture points = LayOut(samples, Axis(100, 200, 1, 0));
    std::vector<PlotLine> upright;
    for (const int x : {71, 111, 151, 191}) upright.push_back({{x, 10}, {x, 110}, PlotPen::kGrayDotted});
    EXPECT_THAT(points.lines, IsSupersetOf(upright));
    EXPECT_EQ(std::ranges::count(points.lines, PlotPen::kGrayDotted, &PlotLine::pen), 4) << "none at the first point";

    const PlotPicture values = LayOut(samples, Axis(100, 200, 0, 1));
    std::vector<PlotLine> level;
    for (const int y : {30, 50, 70, 90}) level.push_back({{33, y}, {231, y}, PlotPen::kGrayDotted});
    EXPECT_THAT(values.lines, IsSupersetOf(level));
    EXPECT_EQ(std::ranges::count(values.lines, PlotPen::kGrayDotted, &PlotLine::pen), 4) << "none at the ends";
}

TEST_F(LineLayout, OfOnePointHasTwoPartsAndOneLabel)
{
    const PlotPicture picture = LayOut({150}, Axis(100, 199, 1, 1));
    // Two parts of 99 / 2 + 1 = 50 counts: a pixel each.
    EXPECT_THAT(picture.trace, ElementsAre(Point{31, 60}));
    EXPECT_THAT(PointLabels(picture), ElementsAre("0 at 31"));
    EXPECT_EQ(picture.labels.front(), (PlotLabel{{27, 102}, "100", TextAlign::kRight}));
    EXPECT_EQ(picture.labels[2], (PlotLabel{{27, 2}, "200", TextAlign::kRight}));
}

TEST_F(LineLayout, HasAtMostTenParts)
{
    const PlotPicture picture = LayOut(Samples(100, 100), Axis(100, 200, 0, 0));
    // 100 / 10 + 1 = 11 counts a part, from 100 to 210.
    EXPECT_EQ(picture.labels[10], (PlotLabel{{27, 2}, "210", TextAlign::kRight}));
}

TEST_F(LineLayout, LabelsPointsByTheTableOfSteps)
{
    const auto labelsOf = [](std::size_t points) {
        std::vector<std::string> texts;
        for (const std::string& label : PointLabels(LayOut(Samples(points, 100), Axis(100, 200, 0, 0)))) {
            texts.push_back(label.substr(0, label.find(' ')));
        }
        return texts;
    };
    EXPECT_EQ(labelsOf(10).size(), 10U);
    EXPECT_THAT(labelsOf(11), ElementsAre("0", "2", "4", "6", "8", "10"));
    EXPECT_THAT(labelsOf(21), ElementsAre("0", "5", "10", "15", "20"));
    EXPECT_THAT(labelsOf(51), ElementsAre("0", "10", "20", "30", "40", "50"));
    EXPECT_THAT(labelsOf(101), ElementsAre("0", "20", "40", "60", "80", "100"));
    EXPECT_THAT(labelsOf(201), ElementsAre("0", "50", "100", "150", "200"));
    EXPECT_THAT(labelsOf(500).back(), "450");
    EXPECT_THAT(labelsOf(501), ElementsAre("0"));
    EXPECT_THAT(labelsOf(1000), ElementsAre("0"));
    EXPECT_THAT(labelsOf(1001),
                ElementsAre("0", "100", "200", "300", "400", "500", "600", "700", "800", "900", "1000"));
}

TEST_F(LineLayout, OfSixHundredPointsHasALabelAtTheFirstAlone)
{
    const PlotPicture picture = LayOut(Samples(600, 100), Axis(100, 200, 0, 0));
    EXPECT_THAT(PointLabels(picture), ElementsAre("0 at 31"));
    EXPECT_THAT(TicksBelow(picture, 6), ElementsAre(31));
    EXPECT_THAT(TicksBelow(picture, 3), ElementsAre(31 + 166));  // half a step of 1000: 500 x 200 / 600
}

TEST_F(LineLayout, HasShortTicksAtEachPointThatHasRoom)
{
    // 16 points of 12.5 pixels, a step of 2: long and short in turn.
    const PlotPicture wide = LayOut(Samples(16, 100), Axis(100, 200, 0, 0));
    EXPECT_THAT(TicksBelow(wide, 6), ElementsAre(31, 56, 81, 106, 131, 156, 181, 206));
    EXPECT_THAT(TicksBelow(wide, 3), ElementsAre(43, 68, 93, 118, 143, 168, 193, 218));
}

TEST_F(LineLayout, HasAShortTickHalfWayWhereThereIsNoRoom)
{
    // 100 points of exactly 2 pixels, a step of 10: the points 5, 15 and so on.
    const PlotPicture dense = LayOut(Samples(100, 100), Axis(100, 200, 0, 0));
    EXPECT_THAT(TicksBelow(dense, 6), ElementsAre(31, 51, 71, 91, 111, 131, 151, 171, 191, 211));
    EXPECT_THAT(TicksBelow(dense, 3), ElementsAre(41, 61, 81, 101, 121, 141, 161, 181, 201, 221));
}

TEST_F(LineLayout, MakesRoomForItsLabels)
{
    EXPECT_EQ(LayOut({1}, Axis(0, 9, 0, 0)).box.left, 30) << "at least";
    EXPECT_EQ(LayOut({1}, Axis(0, 99999, 0, 0)).box.left, 45) << "five letters and ten pixels";
    EXPECT_EQ(LayOut({1}, Axis(-999999, 9, 0, 0)).box.left, 49) << "the lower bound has no pixels beside it";
}

TEST_F(LineLayout, IsEmptyWithoutSamplesOrRoom)
{
    EXPECT_THAT(LayOut({}, Axis(0, 9, 1, 1)).lines, IsEmpty());
    const PlotPicture small =
        LayOutLinePlot({0, 0, 40, 60}, Samples{1, 2}, Axis(0, 9, 1, 1), kUnitCounts, SevenPixelsALetter);
    EXPECT_THAT(small.lines, IsEmpty());
    EXPECT_THAT(small.trace, IsEmpty());
}

TEST_F(LineLayout, StaysInNumbersWhateverTheBounds)
{
    for (const auto& [low, high] : {std::pair{kLeast, kMost}, {kMost, kLeast}, {0, 0}, {5, 4}, {12, 0}}) {
        const PlotPicture picture = LayOut({-32768, 0, 32767}, Axis(low, high, 1, 1));
        EXPECT_EQ(picture.trace.size(), 3U) << low;
    }
}

TEST_F(LineLayout, NamesTheUnit)
{
    EXPECT_EQ(LineTitle(kUnitCounts), "Signal (Counts) vs Line Pixel Number");
    EXPECT_EQ(LineTitle(kUnitCelsius),
              "Temperature (\xB0"
              "C) vs Line Pixel Number");
}

}  // namespace

}  // namespace kelvo
