// The frame graph: its figures against the plain formulas, its shapes against tables worked by hand.
#include "analysis/frame_graph.h"

#include "analysis/frame_graph_settings_write.h"
#include "display/units.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/buffer_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/head_state_write.h"
#include "state/windows_write.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace kelvo {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

float Plain(std::int32_t count)
{
    return static_cast<float>(count);
}

// ---- Figures

TEST(GraphFigures, AreMeanSampleDeviationAndTheFirstOfEachExtreme)
{
    const std::vector<std::int16_t> counts = {4, 9, 2, 9, 2, 4};
    const GraphFigures figures = FiguresOf(counts, 10, Plain);
    EXPECT_DOUBLE_EQ(figures.mean, 5.0);
    // (1 + 16 + 9 + 16 + 9 + 1) / 5
    ASSERT_TRUE(figures.deviation);
    EXPECT_DOUBLE_EQ(*figures.deviation, std::sqrt(52.0 / 5.0));
    EXPECT_EQ(figures.minimum, 2);
    EXPECT_EQ(figures.minimumFrame, 12);
    EXPECT_EQ(figures.maximum, 9);
    EXPECT_EQ(figures.maximumFrame, 11);
}

TEST(GraphFigures, AreOfTheValuesInTheUnit)
{
    const GraphFigures figures =
        FiguresOf(std::vector<std::int16_t>{0, 10, 20}, 0, [](std::int32_t count) { return 0.5F * Plain(count) - 1; });
    EXPECT_DOUBLE_EQ(figures.mean, 4.0);
    EXPECT_DOUBLE_EQ(*figures.deviation, 5.0);
    EXPECT_EQ(figures.maximum, 20) << "extremes are counts";
}

TEST(GraphFigures, OfRandomCountsAreThoseOfThePlainFormulas)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> any(-32768, 32767);
    std::vector<std::int16_t> counts(1000);
    for (std::int16_t& count : counts) count = static_cast<std::int16_t>(any(random));
    const GraphFigures figures = FiguresOf(counts, 0, Plain);
    const double mean = std::accumulate(counts.begin(), counts.end(), 0.0) / 1000;
    double ofSquares = 0;
    for (const int count : counts) ofSquares += static_cast<double>(count) * count;
    EXPECT_NEAR(figures.mean, mean, 1e-9);
    EXPECT_NEAR(*figures.deviation, std::sqrt((ofSquares - 1000 * mean * mean) / 999), 1e-6);
}

TEST(GraphFigures, OfFewFramesHaveNoDeviationOrThatOfNone)
{
    EXPECT_FALSE(FiguresOf(std::vector<std::int16_t>{}, 0, Plain).deviation);
    EXPECT_FALSE(FiguresOf(std::vector<std::int16_t>{7}, 0, Plain).deviation);
    EXPECT_EQ(*FiguresOf(std::vector<std::int16_t>{7, 9}, 0, Plain).deviation, 0.0);
    EXPECT_NEAR(*FiguresOf(std::vector<std::int16_t>{7, 9, 8}, 0, Plain).deviation, 1.0, 1e-12);
}

TEST(GraphFigures, OfAConstantPixelHaveNoDeviationInAnyUnit)
{
    // A third isn't a binary number: the sum of a thousand of them is rounded.
    const std::vector<std::int16_t> counts(1000, 1);
    const GraphFigures figures = FiguresOf(counts, 0, [](std::int32_t count) { return Plain(count) / 3; });
    EXPECT_EQ(figures.deviation, 0.0);
    EXPECT_EQ(ReportOf(figures, kUnitCounts).deviation, "0");
}

class GraphReport : public testing::Test {
  protected:
    void SetUp() override
    {
        write::display.DisplayLow = 0;
        write::display.DisplayHigh = 16000;
    }
};

TEST_F(GraphReport, HasTheFiguresWithThreeDecimalsAndTheFramesAsTheyAreNumbered)
{
    const PlotReport report = ReportOf(FiguresOf(std::vector<std::int16_t>{4, 9, 2, 9, 2, 4}, 10, Plain), kUnitCounts);
    EXPECT_EQ(report.mean, "5.000");
    EXPECT_EQ(report.deviation,
              "\xB1"
              "3.225");
    EXPECT_EQ(report.minimum, "2");
    EXPECT_EQ(report.minimumPlace, "12");
    EXPECT_EQ(report.maximum, "9");
    EXPECT_EQ(report.maximumPlace, "11");
}

TEST_F(GraphReport, LeavesTheDeviationOfOneFrameEmpty)
{
    EXPECT_EQ(ReportOf(FiguresOf(std::vector<std::int16_t>{4}, 0, Plain), kUnitCounts).deviation, "");
}

TEST_F(GraphReport, CallsTheLowerValueTheMinimumWhereTheUnitFalls)
{
    write::head.VoltsLow = 4.0F;  // at 0 counts
    write::head.VoltsHigh = 0.0F;
    const auto volts = [](std::int32_t count) { return CountsToUnit(count, kUnitVolts, nullptr); };
    const PlotReport report = ReportOf(FiguresOf(std::vector<std::int16_t>{4000, 8000, 12000}, 5, volts), kUnitVolts);
    EXPECT_EQ(report.mean, "2.000");
    EXPECT_EQ(report.minimum, "1.000");
    EXPECT_EQ(report.minimumPlace, "7");
    EXPECT_EQ(report.maximum, "3.000");
    EXPECT_EQ(report.maximumPlace, "5");
}

// ---- The value axis's range

TEST(GraphRange, FollowsTheDataOrTheLimitsInsideWhatCanBeShown)
{
    GraphFigures figures;
    figures.minimum = -5;
    figures.maximum = 70;
    EXPECT_EQ(RangeOf(figures).low, -5);
    EXPECT_EQ(RangeOf(figures).high, 70);
    const auto held = [](std::int32_t low, std::int32_t high) {
        const CountRange range = HeldInside({low, high}, {100, 4000});
        return std::pair(range.low, range.high);
    };
    EXPECT_EQ(held(200, 300), std::pair(200, 300));
    EXPECT_EQ(held(0, 9000), std::pair(100, 4000));
    EXPECT_EQ(held(5000, 6000), std::pair(4000, 4000));
    EXPECT_EQ(HeldInside({5, 6}, {10, 1}).low, 10) << "of a header whose range is upside down";
}

// ---- The plot

TEST(FrameStep, IsOneToAHundredAndThenATenth)
{
    const std::pair<int, int> kSteps[] = {{2, 1},     {10, 1},     {11, 2},     {20, 2},     {21, 5},    {50, 5},
                                          {51, 10},   {100, 10},   {101, 20},   {200, 20},   {201, 50},  {500, 50},
                                          {501, 100}, {1000, 100}, {1001, 100}, {1010, 101}, {3999, 399}};
    for (const auto& [frames, step] : kSteps) EXPECT_EQ(FrameStep(frames), step) << frames;
}

std::string CountText(std::int32_t count)
{
    return Format("%d", count);
}

int SixAPiece(std::string_view text)
{
    return 6 * static_cast<int>(text.size());
}

PlotPicture PictureOf(const std::vector<std::int16_t>& counts, const CountRange& range, int first = 0,
                      bool squareRoot = false, const Rect& area = {0, 0, 340, 260})
{
    return FrameGraphPicture(area, {.counts = counts, .first = first, .range = range, .squareRoot = squareRoot},
                             CountText, SixAPiece);
}

std::vector<std::string> LabelsAt(const PlotPicture& picture, TextAlign align, int y = -1)
{
    std::vector<std::string> texts;
    for (const PlotLabel& label : picture.labels) {
        if (label.align == align && (y < 0 || label.at.y == y)) texts.push_back(label.text);
    }
    return texts;
}

// The columns in which a tick of that length stands below the box.
std::vector<int> TicksBelow(const PlotPicture& picture, int length)
{
    std::vector<int> columns;
    for (const PlotLine& line : picture.lines) {
        if (line.from.y == picture.box.bottom && line.to.y == line.from.y + length) columns.push_back(line.from.x);
    }
    return columns;
}

TEST(FrameGraphPicture, LeavesRoomForItsLabels)
{
    // The widest label has one or two digits: 30 pixels are the least.
    EXPECT_EQ(PictureOf({0, 5, 9}, {0, 9}).box, (Rect{30, 10, 330, 210}));
    // "16391" takes 30, and 10 beside it.
    EXPECT_EQ(PictureOf({0, 5, 9}, {0, 16383}).box, (Rect{40, 10, 330, 210}));
    EXPECT_EQ(PictureOf({0, 5, 9}, {0, 9}, 0, false, {5, 6, 345, 266}).box, (Rect{35, 16, 335, 216}));
}

TEST(FrameGraphPicture, HasALevelForEachCountOfASmallRange)
{
    // 0 to 3: four steps of one count in 200 pixels.
    const PlotPicture picture = PictureOf({0, 3, 1}, {0, 3});
    EXPECT_THAT(LabelsAt(picture, TextAlign::kRight), ElementsAre("0", "1", "2", "3", "4"));
    std::vector<int> rows;
    for (const PlotLabel& label : picture.labels) {
        if (label.align == TextAlign::kRight) rows.push_back(label.at.y);
    }
    EXPECT_THAT(rows, ElementsAre(202, 152, 102, 52, 2));  // 8 above 210, 160, 110, 60 and 10
    // The line across at a level, from 2 pixels inside.
    EXPECT_THAT(picture.lines, testing::Contains(PlotLine{{32, 60}, {330, 60}, PlotPen::kGrayDashed}));
    EXPECT_THAT(picture.lines, testing::Contains(PlotLine{{27, 60}, {30, 60}}));
    EXPECT_THAT(picture.lines, testing::Contains(PlotLine{{330, 60}, {333, 60}}));
}

TEST(FrameGraphPicture, HasTenLevelsAtMost)
{
    // 11 counts: 10 levels of 10 / 10 + 1 = 2 counts. 16383: 1638 + 1.
    EXPECT_THAT(LabelsAt(PictureOf({0, 5, 9}, {5, 15}), TextAlign::kRight),
                ElementsAre("5", "7", "9", "11", "13", "15", "17", "19", "21", "23", "25"));
    EXPECT_THAT(LabelsAt(PictureOf({0, 5, 9}, {0, 9}), TextAlign::kRight),
                ElementsAre("0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10"));
    EXPECT_EQ(LabelsAt(PictureOf({0, 5, 9}, {0, 16383}), TextAlign::kRight).back(), "16390");
}

TEST(FrameGraphPicture, DrawsAConstantPixelAsAFlatLine)
{
    const PlotPicture picture = PictureOf({7, 7, 7, 7}, {7, 7});
    EXPECT_THAT(LabelsAt(picture, TextAlign::kRight), ElementsAre("7", "8"));
    EXPECT_THAT(picture.trace, ElementsAre(Point{30, 210}, Point{130, 210}, Point{230, 210}, Point{330, 210}));
}

TEST(FrameGraphPicture, DrawsTheCountsOverTheFrames)
{
    // 100 pixels a frame; ten levels of 10 counts (99 / 10 + 1) in 200 pixels: 2 pixels a count.
    const PlotPicture picture = PictureOf({0, 50, 99, 25}, {0, 99});
    EXPECT_THAT(picture.trace, ElementsAre(Point{30, 210}, Point{130, 110}, Point{230, 12}, Point{330, 160}));
    EXPECT_EQ(picture.clip, (Rect{30, 10, 331, 211}));
    EXPECT_THAT(picture.bars, IsEmpty());
}

TEST(FrameGraphPicture, HoldsCountsBeyondTheLimitsAtTheBoxsEdges)
{
    EXPECT_THAT(PictureOf({-100, 5000, 50}, {0, 99}).trace,
                ElementsAre(Point{30, 210}, Point{180, 10}, Point{330, 110}));
    EXPECT_THAT(PictureOf({-32768, 32767, 0}, {-32768, 32767}).trace.size(), 3U);
}

TEST(FrameGraphPicture, NumbersTheFramesAsTheyAre)
{
    const PlotPicture picture = PictureOf({0, 1, 2, 3}, {0, 3}, 100);
    EXPECT_THAT(LabelsAt(picture, TextAlign::kCentre, 220), ElementsAre("100", "101", "102", "103"));
    EXPECT_THAT(LabelsAt(picture, TextAlign::kCentre, 240), ElementsAre("Frame number"));
    EXPECT_THAT(TicksBelow(picture, 6), ElementsAre(30, 130, 230, 330));
    EXPECT_THAT(TicksBelow(picture, 3), IsEmpty());
    // Up the plot at each long mark but the first.
    EXPECT_THAT(picture.lines, testing::Contains(PlotLine{{130, 10}, {130, 210}, PlotPen::kGrayDashed}));
    EXPECT_THAT(picture.lines, testing::Not(testing::Contains(PlotLine{{30, 10}, {30, 210}, PlotPen::kGrayDashed})));
}

TEST(FrameGraphPicture, HasShortMarksWhereThereIsRoomForThem)
{
    // 20 frames on from the first: a label every second one, 15 pixels each.
    const PlotPicture picture = PictureOf(std::vector<std::int16_t>(21, 0), {0, 3});
    EXPECT_THAT(LabelsAt(picture, TextAlign::kCentre, 220),
                ElementsAre("0", "2", "4", "6", "8", "10", "12", "14", "16", "18", "20"));
    EXPECT_EQ(TicksBelow(picture, 6).size(), 11U);
    EXPECT_THAT(TicksBelow(picture, 3), ElementsAre(45, 75, 105, 135, 165, 195, 225, 255, 285, 315));
    // 300 frames on: a pixel each; one every 50, and one between.
    const PlotPicture dense = PictureOf(std::vector<std::int16_t>(301, 0), {0, 3});
    EXPECT_THAT(LabelsAt(dense, TextAlign::kCentre, 220), ElementsAre("0", "50", "100", "150", "200", "250", "300"));
    EXPECT_THAT(TicksBelow(dense, 6), ElementsAre(30, 80, 130, 180, 230, 280, 330));
    EXPECT_THAT(TicksBelow(dense, 3), ElementsAre(55, 105, 155, 205, 255, 305));
}

TEST(FrameGraphPicture, PutsFramesAtTheirSquareRoots)
{
    // sqrt(9) is the full width, 300 pixels: 100 a unit of the root.
    const PlotPicture picture = PictureOf({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {0, 9}, 0, true);
    std::vector<int> columns;
    for (const Point& at : picture.trace) columns.push_back(at.x);
    EXPECT_THAT(columns, ElementsAre(30, 130, 171, 203, 230, 253, 274, 294, 312, 330));
    EXPECT_THAT(TicksBelow(picture, 6), ElementsAre(30, 130, 171, 203, 230, 253, 274, 294, 312, 330));
    EXPECT_THAT(LabelsAt(picture, TextAlign::kCentre, 240), ElementsAre("Frame number (square-root scale)"));
}

TEST(FrameGraphPicture, LeavesOutLabelsThatWouldTouch)
{
    // Of 100 frames on, 20, 30, ... at 300 sqrt(i / 100): 0, 94, 134, 164, 189, 212, 232, 250, 268, 284, 300. Each is
    // 18 wide and keeps 4 from the one before.
    const PlotPicture picture = PictureOf(std::vector<std::int16_t>(101, 0), {0, 9}, 100, true);
    EXPECT_THAT(LabelsAt(picture, TextAlign::kCentre, 220),
                ElementsAre("100", "110", "120", "130", "140", "150", "170", "190"));
}

TEST(FrameGraphPicture, ShowsManyFramesInAColumnFromTheLowestToTheHighest)
{
    // 3000 frames in 300 pixels: ten a column, in which the count goes from 0 up to 90.
    std::vector<std::int16_t> counts;
    for (int i = 0; i <= 3000; ++i) counts.push_back(static_cast<std::int16_t>(i % 10 * 10));
    const PlotPicture picture = PictureOf(counts, {0, 99});
    EXPECT_LE(picture.trace.size(), 4U * 301);
    int lowest = 1000;
    int highest = 0;
    for (const Point& at : picture.trace) {
        if (at.x != 100) continue;
        lowest = std::min(lowest, at.y);
        highest = std::max(highest, at.y);
    }
    EXPECT_EQ(lowest, 30);
    EXPECT_EQ(highest, 210);
    EXPECT_EQ(picture.trace.back(), (Point{330, 210}));
}

TEST(FrameGraphPicture, IsEmptyWhereThereIsNoRoomOrNoData)
{
    EXPECT_THAT(PictureOf({1, 2, 3}, {0, 9}, 0, false, {0, 0, 40, 60}).trace, IsEmpty());
    EXPECT_THAT(PictureOf({}, {0, 9}).trace, IsEmpty());
    EXPECT_THAT(PictureOf({1}, {0, 9}).lines, IsEmpty());
}

// ---- Figures as a file

TEST(GraphLines, HaveTheFrameTheCountAndTheValue)
{
    EXPECT_EQ(GraphLines(std::vector<std::int16_t>{-3, 10}, 7, [](std::int32_t count) { return Plain(count) / 4; }),
              "frame,counts,value\n7,-3,-0.75\n8,10,2.5\n");
}

// ---- Settings

class GraphSettings : public testing::Test {
  protected:
    GraphSettings()
    {
        SetDefaultDir(directory.Path());
        write::camera.ActiveConfig.Hroi = 320;
        write::camera.ActiveConfig.Vroi = 256;
        write::display.DisplayHigh = 16383;
    }
    void Put(const std::string& contents) const
    {
        PutFile(directory / "kelvo.ini", contents);
        ForgetProfile(directory / "kelvo.ini");
    }
    static std::vector<int> Read()
    {
        ReadGraphSettings();
        return {PixelRow, PixelCol, yClipMin, yClipMax, SqrtTime, Autoscale};
    }

    TempDirectory directory;
};

TEST_F(GraphSettings, HaveTheirDefaults)
{
    EXPECT_THAT(Read(), ElementsAre(64, 64, 0, 16383, 0, 1));
}

TEST_F(GraphSettings, ThePixelIsTheLastOneWhereTheFrameIsSmaller)
{
    write::camera.ActiveConfig.Hroi = 64;
    write::camera.ActiveConfig.Vroi = 48;
    EXPECT_EQ(Read()[0], 47);
    EXPECT_EQ(PixelCol, 63);
    Put("[Graphics]\nPixelRow=-4\nPixelCol=500\n");
    EXPECT_EQ(Read()[0], 0);
    EXPECT_EQ(PixelCol, 63);
    write::camera.ActiveConfig.Hroi = 0;
    EXPECT_EQ(Read()[1], 0) << "no camera";
    write::camera.ActiveConfig.Hroi = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(Read()[1], 0) << "a section that holds any number";
}

TEST_F(GraphSettings, AreReadFromSectionGraphics)
{
    Put("[graphics]\nPixelRow=1\nPixelCol=2\nyClipMin=-3\nyClipMax=4\nSqrtTime=5\nAutoscale=0\n");
    EXPECT_THAT(Read(), ElementsAre(1, 2, -3, 4, 1, 0));
}

TEST_F(GraphSettings, AreWrittenKeyByKey)
{
    write::graph.PixelRow = 1;
    write::graph.PixelCol = 2;
    write::graph.yClipMin = 3;
    write::graph.yClipMax = 4;
    write::graph.SqrtTime = 1;
    write::graph.Autoscale = 0;
    SaveGraphSettings();
    ASSERT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(directory / "kelvo.ini"),
              "[GRAPHICS]\nPixelRow=1\nPixelCol=2\nyClipMin=3\nyClipMax=4\nSqrtTime=1\nAutoscale=0\n");
}

TEST_F(GraphSettings, TheFramesAreThoseOfTheHostFrames)
{
    write::buffer.FramesInBuffer = 12;
    ReadGraphSettings();
    EXPECT_EQ(GraphFirstFrame, 0);
    EXPECT_EQ(GraphLastFrame, 11);
    EXPECT_EQ(GraphFrames, 12);
}

}  // namespace

}  // namespace kelvo
