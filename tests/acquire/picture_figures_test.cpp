// What the live picture tells of the source in front.
#include "acquire/picture_figures.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelvo {
namespace {

TEST(PictureFigures, MeanDeviationAndSaturatedShareOfRawCounts)
{
    // Mean 16383 / 4; the squares of the distances, 3 x 4095.75^2 + 12287.25^2, are 12 x 4095.75^2: over 3, twice it.
    const auto figures = FiguresOf(std::vector<std::int16_t>{0, 0, 0, 16383});
    ASSERT_TRUE(figures);
    EXPECT_DOUBLE_EQ(figures->mean, 4095.75);
    EXPECT_NEAR(figures->deviation, 8191.5, 1e-9);
    EXPECT_DOUBLE_EQ(figures->saturatedShare, 1.0);

    const auto plain = FiguresOf(std::vector<std::int16_t>{1, 2, 3, 16382, 16383});
    EXPECT_DOUBLE_EQ(plain->saturatedShare, 0.2);
}

TEST(PictureFigures, ALargeFrameOfOneCountHasNoDeviation)
{
    const auto figures = FiguresOf(std::vector<std::int16_t>(1024 * 1024, 16382));
    EXPECT_DOUBLE_EQ(figures->mean, 16382);
    EXPECT_DOUBLE_EQ(figures->deviation, 0);
    EXPECT_DOUBLE_EQ(figures->saturatedShare, 0);
}

TEST(PictureFigures, OneDetectorAndNone)
{
    EXPECT_DOUBLE_EQ(FiguresOf(std::vector<std::int16_t>{-7})->deviation, 0);
    EXPECT_FALSE(FiguresOf({}));
}

TEST(MeanWatch, SteadyOnceASecondHasPassedWithoutHalfACount)
{
    MeanWatch watch;
    EXPECT_FALSE(watch.IsSteady());
    watch.Add(0, 8000.0);
    watch.Add(999, 8000.25);
    EXPECT_FALSE(watch.IsSteady()) << "not a second yet";
    watch.Add(1000, 8000.25);
    EXPECT_TRUE(watch.IsSteady());
    watch.Add(1500, 8000.5);
    EXPECT_FALSE(watch.IsSteady()) << "half a count above the mean at 0, the last before the second";
    watch.Add(2000, 8000.5);
    EXPECT_TRUE(watch.IsSteady()) << "what lies before the mean a second ago is forgotten";
}

TEST(MeanWatch, AMeanThatCameBackHasMovedAllTheSame)
{
    MeanWatch watch;
    for (int ms = 0; ms <= 2000; ms += 250) watch.Add(ms, ms == 1500 ? 8001.0 : 8000.0);
    EXPECT_FALSE(watch.IsSteady());
    watch.Clear();
    EXPECT_FALSE(watch.IsSteady());
}

}  // namespace
}  // namespace kelvo
