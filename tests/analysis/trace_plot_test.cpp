// The plot of a trace: its axes, and its line in the box.
#include "analysis/trace_plot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvo {
namespace {

using testing::ElementsAre;

int Width(std::string_view text)
{
    return 8 * static_cast<int>(text.size());
}

TEST(RoundAxis, HasRoundStepsAroundTheValues)
{
    const RoundAxis small = RoundAxisOf(8045.06, 8046.9, 10);
    EXPECT_DOUBLE_EQ(small.step, 0.2);
    EXPECT_DOUBLE_EQ(small.low, 8045.0);
    EXPECT_EQ(small.steps, 10);
    EXPECT_EQ(AxisText(small, small.low + small.step), "8045.2");
    const RoundAxis wide = RoundAxisOf(-32768, 32767, 10);
    EXPECT_DOUBLE_EQ(wide.step, 10'000);
    EXPECT_DOUBLE_EQ(wide.low, -40'000);
    EXPECT_EQ(wide.steps, 8);
    EXPECT_EQ(AxisText(wide, 0), "0");
    const RoundAxis flat = RoundAxisOf(7, 7, 10);
    EXPECT_LE(flat.low, 7);
    EXPECT_GE(flat.low + flat.steps * flat.step, 7);
}

TEST(RoundAxis, HoldsAnyValues)
{
    for (const double least : {-1e9, -3.7, 0.0, 1e-12, 0.1, 99.999, 123456.0}) {
        for (const double range : {0.0, 1e-9, 0.3, 1.0, 9.99, 77.0, 1e6}) {
            const RoundAxis axis = RoundAxisOf(least, least + range, 10);
            const double nearly = axis.step * 1e-6;
            EXPECT_LE(axis.low, least + nearly);
            EXPECT_GE(axis.low + axis.step * axis.steps, least + range - nearly);
            EXPECT_GE(axis.steps, 1);
            EXPECT_LE(axis.steps, 11);
        }
    }
}

TEST(TracePlot, LeavesGapsOpen)
{
    const std::vector<double> places = {0, 1, 2, 8, 9, 10};
    const std::vector<double> values = {0, 10, 0, 10, 0, 10};
    const std::vector<std::size_t> breaks = {3};
    const PlotPicture picture =
        TracePicture({0, 0, 540, 160}, {.places = places, .values = values, .breaks = breaks, .title = "s"}, Width);
    // The box: 30 left and right, 10 above, 50 below: 48 columns a second, ten a count.
    EXPECT_EQ(picture.box, (Rect{30, 10, 510, 110}));
    EXPECT_THAT(picture.trace, ElementsAre(Point{30, 110}, Point{78, 10}, Point{126, 110}, Point{414, 10},
                                           Point{462, 110}, Point{510, 10}));
    EXPECT_THAT(picture.breaks, ElementsAre(3));
}

TEST(TracePlot, ShowsManyFramesOfAColumnFromLowestToHighest)
{
    std::vector<double> places;
    std::vector<double> values;
    for (int i = 0; i <= 100'000; ++i) {
        places.push_back(i);
        values.push_back(i % 100 == 50 ? 10 : 0);
    }
    const PlotPicture picture =
        TracePicture({0, 0, 540, 160}, {.places = places, .values = values, .breaks = {}, .title = {}}, Width);
    EXPECT_LE(picture.trace.size(), 4U * 481U);
    EXPECT_THAT(picture.trace, testing::Contains(Point{270, 10}));
    EXPECT_THAT(picture.trace, testing::Contains(Point{270, 110}));
}

TEST(TracePlot, OfNothingIsAnEmptyFrame)
{
    EXPECT_THAT(TracePicture({0, 0, 540, 160}, {}, Width).trace, testing::IsEmpty());
    EXPECT_THAT(TracePicture({0, 0, 40, 40}, {}, Width).lines, testing::IsEmpty());
    const std::vector<double> one = {3};
    EXPECT_THAT(TracePicture({0, 0, 540, 160}, {.places = one, .values = one, .breaks = {}, .title = {}}, Width).trace,
                testing::SizeIs(1));
}

}  // namespace
}  // namespace kelvo
