#include "analysis/plot_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace kelvo {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(PlotPosition, IsCutTowardZeroAtFullWidth)
{
    EXPECT_EQ(PlotPosition(0, 12.5F), 0);
    EXPECT_EQ(PlotPosition(3, 12.5F), 37);
    EXPECT_EQ(PlotPosition(-3, 12.5F), -37);
    // 0.1F is 0.100000001490116...: ten of them are a hair more than 1, which single precision would lose.
    EXPECT_EQ(PlotPosition(10, 0.1F), 1);
    // 0.3F is 0.30000001192...; a hundred thousand of them are 30000.0011, not 30000.002.
    EXPECT_EQ(PlotPosition(100000, 0.3F), 30000);
}

TEST(PlotPosition, StaysANumberWhateverTheScale)
{
    EXPECT_EQ(PlotPosition(1, std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(PlotPosition(1, std::numeric_limits<float>::infinity()), 0);
    EXPECT_EQ(PlotPosition(1000, 1e30F), 1 << 24);
    EXPECT_EQ(PlotPosition(-1000, 1e30F), -(1 << 24));
}

TEST(PlotShapes, AFrameIsTheOutermostPixels)
{
    PlotPicture picture;
    AddFrame(picture, {10, 20, 14, 23});
    EXPECT_THAT(picture.lines, ElementsAre(PlotLine{{10, 20}, {14, 20}}, PlotLine{{10, 22}, {14, 22}},
                                           PlotLine{{10, 20}, {10, 23}}, PlotLine{{13, 20}, {13, 23}}));
    PlotPicture none;
    AddFrame(none, {10, 20, 10, 23});
    EXPECT_THAT(none.lines, IsEmpty());
}

TEST(PlotShapes, ValueTicksStandOnBothSidesAndTheGridBetweenFirstAndLast)
{
    PlotPicture picture;
    picture.box = {50, 10, 100, 31};
    AddValueTicks(picture, 2, 10.5F, true);
    EXPECT_THAT(picture.lines, ElementsAre(PlotLine{{47, 10}, {50, 10}}, PlotLine{{100, 10}, {103, 10}},  //
                                           PlotLine{{47, 20}, {50, 20}}, PlotLine{{100, 20}, {103, 20}},
                                           PlotLine{{52, 20}, {100, 20}, PlotPen::kGrayDotted},  //
                                           PlotLine{{47, 31}, {50, 31}}, PlotLine{{100, 31}, {103, 31}}));
}

TEST(PlotShapes, ColumnTicksAreShortOrLongBelowAndAbove)
{
    PlotPicture picture;
    picture.box = {50, 10, 100, 31};
    AddColumnTick(picture, 60, PlotTick::kLong);
    AddColumnTick(picture, 70, PlotTick::kShort);
    AddColumnGrid(picture, 60, 2);
    EXPECT_THAT(picture.lines,
                ElementsAre(PlotLine{{60, 31}, {60, 37}}, PlotLine{{60, 4}, {60, 10}}, PlotLine{{70, 31}, {70, 34}},
                            PlotLine{{70, 7}, {70, 10}}, PlotLine{{60, 12}, {60, 31}, PlotPen::kGrayDotted}));
}

TEST(PlotStep, IsThatOfTheFirstBoundAbove)
{
    constexpr PlotStep kSteps[] = {{11, 1}, {21, 2}};
    EXPECT_EQ(StepFor(0, kSteps, 99), 1);
    EXPECT_EQ(StepFor(10, kSteps, 99), 1);
    EXPECT_EQ(StepFor(11, kSteps, 99), 2);
    EXPECT_EQ(StepFor(20, kSteps, 99), 2);
    EXPECT_EQ(StepFor(21, kSteps, 99), 99);
}

}  // namespace

}  // namespace kelvo
