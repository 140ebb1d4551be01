#include "analysis/histogram_plot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace kelvo {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

// Box: 50, 10 to 385, 250; that is 335 x 240, of which 323 columns are the values'.
constexpr Rect kClient{0, 0, 400, 300};

HistSettingsRecord Axes(std::int32_t xMin, std::int32_t xMax, std::int32_t yMin = 0, std::int32_t yMax = 10)
{
    return {.XplotMin = xMin, .YplotMin = yMin, .XplotMax = xMax, .YplotMax = yMax};
}

HistSettingsRecord LogAxes(std::int32_t yMax)
{
    HistSettingsRecord settings = Axes(0, 4, 0, yMax);
    settings.Yscaling = 1;
    return settings;
}

PlotPicture Plot(const HistSettingsRecord& settings, const std::vector<std::uint32_t>& counts = {},
                 const Rect& client = kClient)
{
    std::vector<std::uint32_t> bins(static_cast<std::size_t>(settings.XplotMax - settings.XplotMin) + 3);
    std::ranges::copy(counts, bins.begin() + 1);
    bins.front() = 1000;  // never drawn
    bins.back() = 1000;
    return HistogramPicture(client, settings, bins, {.title = "Signal (Counts)", .textOf = [](std::int32_t count) {
                                                         return std::to_string(count);
                                                     }});
}

// Where the ticks above the box stand, and how long they are.
std::map<int, int> TopTicks(const PlotPicture& picture)
{
    std::map<int, int> ticks;
    for (const PlotLine& line : picture.lines) {
        if (line.to.y == picture.box.top && line.from.y < line.to.y) ticks[line.from.x] = line.to.y - line.from.y;
    }
    return ticks;
}

std::map<int, int> BottomTicks(const PlotPicture& picture)
{
    std::map<int, int> ticks;
    for (const PlotLine& line : picture.lines) {
        if (line.from.y == picture.box.bottom && line.from.x == line.to.x) ticks[line.from.x] = line.to.y - line.from.y;
    }
    return ticks;
}

// Rows of the ticks left of the box, and where they begin.
std::map<int, int> LeftTicks(const PlotPicture& picture)
{
    std::map<int, int> ticks;
    for (const PlotLine& line : picture.lines) {
        if (line.to.x == picture.box.left && line.from.x < line.to.x) ticks[line.from.y] = line.from.x;
    }
    return ticks;
}

std::vector<int> RightTicks(const PlotPicture& picture)
{
    std::vector<int> rows;
    for (const PlotLine& line : picture.lines) {
        if (line.from.x == picture.box.right) {
            EXPECT_EQ(line.to.x, picture.box.right + 3);
            rows.push_back(line.from.y);
        }
    }
    return rows;
}

// Rows of the dotted lines across, columns of those upward.
std::vector<int> GridRows(const PlotPicture& picture)
{
    std::vector<int> rows;
    for (const PlotLine& line : picture.lines) {
        if (line.pen != PlotPen::kGrayDotted || line.from.y != line.to.y) continue;
        EXPECT_EQ(line.from.x, 52);
        EXPECT_EQ(line.to.x, 385);
        rows.push_back(line.from.y);
    }
    return rows;
}

std::vector<int> GridColumns(const PlotPicture& picture)
{
    std::vector<int> columns;
    for (const PlotLine& line : picture.lines) {
        if (line.pen != PlotPen::kGrayDotted || line.from.x != line.to.x) continue;
        EXPECT_EQ(line.from.y, 12);
        EXPECT_EQ(line.to.y, 250);
        columns.push_back(line.from.x);
    }
    return columns;
}

// Labels left of the box by their row; below it by their column.
std::map<int, std::string> NumberLabels(const PlotPicture& picture)
{
    std::map<int, std::string> labels;
    for (const PlotLabel& label : picture.labels) {
        if (label.align == TextAlign::kLeft && label.at.x == 10) labels[label.at.y] = label.text;
    }
    return labels;
}

std::map<int, std::string> ValueLabels(const PlotPicture& picture)
{
    std::map<int, std::string> labels;
    for (const PlotLabel& label : picture.labels) {
        if (label.at.y != picture.box.bottom + 10) continue;
        EXPECT_EQ(label.align, TextAlign::kCentre);
        labels[label.at.x] = label.text;
    }
    return labels;
}

// --- The step table --------------------------------------------------------------------------------------------------

TEST(HistogramNumberAxis, HasTheFirstStepThatSuitsItsSpan)
{
    struct Row {
        std::int32_t span;
        std::int64_t step;
    };
    for (const Row& row :
         {Row{1, 1},     {10, 1},       {11, 2},       {20, 2},        {21, 5},        {50, 5},       {51, 10},
          {100, 10},     {101, 20},     {200, 20},     {201, 50},      {500, 50},      {501, 100},    {1000, 100},
          {1001, 200},   {2000, 200},   {2001, 500},   {5000, 500},    {5001, 1000},   {10000, 1000}, {10001, 2000},
          {20000, 2000}, {20001, 5000}, {50000, 5000}, {50001, 10000}, {100000, 10000}}) {
        EXPECT_EQ(LinearAxisOf(0, row.span).step, row.step) << row.span;
        EXPECT_EQ(LinearAxisOf(7, row.span + 7).step, row.step) << row.span;
    }
}

TEST(HistogramNumberAxis, Beyond100000StepsByItsMaxLessATenthOfItsMin)
{
    EXPECT_EQ(LinearAxisOf(0, 100001).step, 100001);
    EXPECT_EQ(LinearAxisOf(500, 100501).step, 100451);
    EXPECT_EQ(LinearAxisOf(500, 100501).ticks, 1);
    EXPECT_EQ(LinearAxisOf(500, 100501).extent, 100451);  // 500 + 100451 is above 100501
}

TEST(HistogramNumberAxis, EndsAtAWholeStep)
{
    const LinearAxis axis = LinearAxisOf(3, 30);  // 27: steps of 5
    EXPECT_EQ(axis.ticks, 6);
    EXPECT_EQ(axis.extent, 30);
}

TEST(HistogramNumberAxis, HasFewTicksAtTheEndsOf32Bits)
{
    for (const auto& [low, high] :
         {std::pair{kLeast, kMost}, {kLeast, 2}, {0, kMost}, {kMost - 1, kMost}, {kLeast, kLeast + 1}}) {
        const LinearAxis axis = LinearAxisOf(low, high);
        EXPECT_GE(axis.step, 1);
        EXPECT_GE(axis.ticks, 1);
        EXPECT_LE(axis.ticks, 25);
    }
}

// --- The number axis, linear -----------------------------------------------------------------------------------------

TEST(HistogramPlot, HasItsBoxWithinTheControlsMargins)
{
    const PlotPicture picture = Plot(Axes(0, 4), {}, {5, 7, 405, 307});
    EXPECT_EQ(picture.box, (Rect{55, 17, 390, 257}));
    EXPECT_EQ(picture.clip, picture.box);
    EXPECT_THAT(picture.lines, Contains(PlotLine{{55, 17}, {390, 17}}));
    EXPECT_THAT(picture.lines, Contains(PlotLine{{55, 256}, {390, 256}}));
    EXPECT_THAT(picture.lines, Contains(PlotLine{{55, 17}, {55, 257}}));
    EXPECT_THAT(picture.lines, Contains(PlotLine{{389, 17}, {389, 257}}));
}

TEST(HistogramPlot, MarksALinearNumberAxisAtEachStep)
{
    const PlotPicture picture = Plot(Axes(0, 4, 0, 50));  // ten steps of 5 in 240 rows
    std::map<int, int> ticks;
    for (int i = 0; i <= 10; ++i) ticks[10 + 24 * i] = 47;
    EXPECT_EQ(LeftTicks(picture), ticks);
    EXPECT_THAT(RightTicks(picture), ElementsAre(10, 34, 58, 82, 106, 130, 154, 178, 202, 226, 250));
    EXPECT_THAT(GridRows(picture), IsEmpty());
    EXPECT_THAT(NumberLabels(picture),
                ElementsAre(Pair(6, "   50"), Pair(30, "   45"), Pair(54, "   40"), Pair(78, "   35"),
                            Pair(102, "   30"), Pair(126, "   25"), Pair(150, "   20"), Pair(174, "   15"),
                            Pair(198, "   10"), Pair(222, "    5"), Pair(246, "    0")));
}

TEST(HistogramPlot, CutsThePositionsOfTicks)
{
    // Seven steps of 240 / 7 rows, which as a single is 34.28571...32: the seventh ends just above the bottom.
    EXPECT_THAT(RightTicks(Plot(Axes(0, 4, 1, 8))), ElementsAre(10, 44, 78, 112, 147, 181, 215, 249));
}

TEST(HistogramPlot, DrawsAGridAcrossButForTheFirstAndTheLast)
{
    HistSettingsRecord settings = Axes(0, 4, 0, 4);
    settings.Ygridlines = 1;
    EXPECT_THAT(GridRows(Plot(settings)), ElementsAre(70, 130, 190));
}

// --- The number axis, logarithmic ------------------------------------------------------------------------------------

TEST(HistogramPlot, NamesEachNumberOfAShortLogarithmicAxis)
{
    // 250 - 3 - whole part of 237 x log10(k).
    const PlotPicture picture = Plot(LogAxes(10));
    EXPECT_THAT(LeftTicks(picture),
                ElementsAre(Pair(10, 44), Pair(21, 47), Pair(33, 47), Pair(47, 47), Pair(63, 47), Pair(82, 47),
                            Pair(105, 47), Pair(134, 47), Pair(176, 47), Pair(247, 44)));
    EXPECT_THAT(RightTicks(picture), ElementsAre(247, 176, 134, 105, 82, 63, 47, 33, 21, 10));
    EXPECT_THAT(
        NumberLabels(picture),
        ElementsAre(Pair(2, "   10"), Pair(13, "    9"), Pair(25, "    8"), Pair(39, "    7"), Pair(55, "    6"),
                    Pair(74, "    5"), Pair(97, "    4"), Pair(126, "    3"), Pair(168, "    2"), Pair(239, "    1")));
}

TEST(HistogramPlot, GoesBy125OnALongLogarithmicAxis)
{
    // The top is 200: 250 - 3 - whole part of 237 x log10(k) / 2.30103.
    HistSettingsRecord settings = LogAxes(100);
    settings.Ygridlines = 1;
    const PlotPicture picture = Plot(settings);
    EXPECT_THAT(LeftTicks(picture), ElementsAre(Pair(10, 47), Pair(42, 44), Pair(73, 47), Pair(113, 47), Pair(145, 44),
                                                Pair(176, 47), Pair(216, 47), Pair(247, 44)));
    EXPECT_THAT(NumberLabels(picture),
                ElementsAre(Pair(2, "  200"), Pair(34, "  100"), Pair(65, "   50"), Pair(105, "   20"),
                            Pair(137, "   10"), Pair(168, "    5"), Pair(208, "    2"), Pair(239, "    1")));
    EXPECT_THAT(GridRows(picture), ElementsAre(216, 176, 145, 113, 73, 42));
}

TEST(HistogramPlot, HasALogarithmicAxisForAnyNumber)
{
    for (const std::int32_t most : {kLeast, -1, 0, 1, 2, 11, kMost}) {
        const PlotPicture picture = Plot(LogAxes(most), {0, 1, 2, 4000000000, 7});
        EXPECT_LE(picture.labels.size(), 45U) << most;
        for (const PlotLabel& label : picture.labels) EXPECT_LE(label.at.y, 280) << most;
    }
}

// --- The value axis --------------------------------------------------------------------------------------------------

TEST(HistogramPlot, MarksEachValueOfAShortAxis)
{
    // 80.75 columns a value.
    const PlotPicture picture = Plot(Axes(100, 104));
    EXPECT_THAT(TopTicks(picture), ElementsAre(Pair(56, 6), Pair(136, 6), Pair(217, 6), Pair(298, 6), Pair(379, 6)));
    EXPECT_EQ(BottomTicks(picture), TopTicks(picture));
    EXPECT_THAT(ValueLabels(picture),
                ElementsAre(Pair(56, "100"), Pair(136, "101"), Pair(217, "102"), Pair(298, "103"), Pair(379, "104")));
}

TEST(HistogramPlot, HasAShortTickForEachValueWithRoom)
{
    // 16.15 columns a value, a long tick each third one. 16.15 as a single lies below it: the 20th value begins at 378.
    const std::map<int, int> ticks = TopTicks(Plot(Axes(0, 20)));
    ASSERT_EQ(ticks.size(), 21U);
    for (const int column : {56, 104, 152, 201, 249, 298, 346}) EXPECT_EQ(ticks.at(column), 6) << column;
    EXPECT_EQ(std::ranges::count(ticks, 3, &std::pair<const int, int>::second), 14);
    EXPECT_EQ(ticks.at(72), 3);
    EXPECT_EQ(ticks.at(378), 3);
}

TEST(HistogramPlot, HasOneShortTickBetweenLongOnesWithoutRoom)
{
    // A column a value, a long tick each 33, a short one at the 16th between.
    HistSettingsRecord settings = Axes(0, 323);
    settings.Xgridlines = 1;
    const PlotPicture picture = Plot(settings);
    std::map<int, int> ticks;
    std::vector<int> grid;
    for (int i = 0; i <= 323; i += 33) {
        ticks[56 + i] = 6;
        grid.push_back(56 + i);
        if (i + 16 <= 323) ticks[56 + i + 16] = 3;
    }
    EXPECT_EQ(TopTicks(picture), ticks);
    EXPECT_EQ(BottomTicks(picture), ticks);
    EXPECT_EQ(GridColumns(picture), grid);
}

TEST(HistogramPlot, NamesEachSecondLongTickWhereTextsAreLong)
{
    EXPECT_THAT(ValueLabels(Plot(Axes(0, 323))),  // three characters: each 33
                ElementsAre(Pair(56, "0"), Pair(89, "33"), Pair(122, "66"), Pair(155, "99"), Pair(188, "132"),
                            Pair(221, "165"), Pair(254, "198"), Pair(287, "231"), Pair(320, "264"), Pair(353, "297")));
    EXPECT_THAT(ValueLabels(Plot(Axes(-100, 223))),  // "-100" has four
                ElementsAre(Pair(56, "-100"), Pair(122, "-34"), Pair(188, "32"), Pair(254, "98"), Pair(320, "164")));
}

TEST(HistogramPlot, HasItsTitleInTheMiddleOfTheControl)
{
    EXPECT_THAT(Plot(Axes(0, 4)).labels, Contains(PlotLabel{{200, 280}, "Signal (Counts)", TextAlign::kCentre}));
}

// --- The bars --------------------------------------------------------------------------------------------------------

TEST(HistogramPlot, RaisesABarForEachValueThatOccurs)
{
    // 24 rows a sample; half of 80.75 columns wide.
    EXPECT_THAT(Plot(Axes(100, 104), {3, 0, 10, 1, 5}).bars,
                ElementsAre(Rect{56, 178, 96, 250}, Rect{217, 10, 257, 250}, Rect{298, 226, 338, 250},
                            Rect{379, 130, 419, 250}));
}

TEST(HistogramPlot, MeasuresBarsFromTheFootOfTheAxis)
{
    // 2 to 12 are ten steps of 24 rows: what lies at or below 2 isn't seen.
    EXPECT_THAT(Plot(Axes(100, 104, 2, 12), {2, 1, 3, 12, 14}).bars,
                ElementsAre(Rect{217, 226, 257, 250}, Rect{298, 10, 338, 250}, Rect{379, -38, 419, 250}));
}

TEST(HistogramPlot, HasBarsOfTwoColumnsAtLeast)
{
    const PlotPicture picture = Plot(Axes(0, 323), {1});  // a column a value
    EXPECT_THAT(picture.bars, ElementsAre(Rect{56, 226, 58, 250}));
}

TEST(HistogramPlot, JoinsTheBarsOfOneColumnToTheHighest)
{
    // Two values a column.
    EXPECT_THAT(Plot(Axes(0, 646), {1, 4, 2, 0, 0, 3}).bars,
                ElementsAre(Rect{56, 154, 58, 250}, Rect{57, 202, 59, 250}, Rect{58, 178, 60, 250}));
}

TEST(HistogramPlot, LetsASingleSampleReachTheFootOfALogarithmicAxis)
{
    EXPECT_THAT(Plot(LogAxes(100), {0, 1, 100}).bars, ElementsAre(Rect{136, 247, 176, 250}, Rect{217, 42, 257, 250}));
}

TEST(HistogramPlot, DrawsNoBarForSamplesOutsideItsLimits)
{
    EXPECT_THAT(Plot(Axes(100, 104)).bars, IsEmpty());  // 1000 below and above
}

TEST(HistogramPlot, HoldsTheWholeRangeOfCounts)
{
    std::vector<std::uint32_t> counts(65536, 1);
    const PlotPicture picture = Plot(Axes(kLowestCount, kHighestCount), counts);
    EXPECT_EQ(picture.bars.size(), 324U);  // one a column
    EXPECT_EQ(picture.bars.back().left, 379);
    EXPECT_LE(TopTicks(picture).size(), 21U);
}

TEST(HistogramPlot, ShowsNothingInAControlThatIsTooSmall)
{
    for (const Rect& client : {Rect{}, Rect{0, 0, 77, 300}, Rect{0, 0, 400, 63}, Rect{10, 10, 0, 0}}) {
        const PlotPicture picture = Plot(Axes(0, 4), {1, 2, 3}, client);
        EXPECT_THAT(picture.lines, IsEmpty());
        EXPECT_THAT(picture.bars, IsEmpty());
        EXPECT_THAT(picture.labels, IsEmpty());
    }
    EXPECT_THAT(Plot(Axes(0, 4), {}, {0, 0, 78, 64}).lines, Not(IsEmpty()));
}

}  // namespace

}  // namespace kelvo
