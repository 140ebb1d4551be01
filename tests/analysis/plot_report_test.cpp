#include "analysis/plot_report.h"

#include "analysis/plot_save.h"
#include "display/units.h"
#include "support/picture_fixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <optional>

namespace kelvo {

namespace {

TEST(PlotReport, WritesThreeDecimalsAndFiveForVoltsOfNoise)
{
    EXPECT_EQ(MeanText(12.34567F, kUnitCounts), "12.346");
    EXPECT_EQ(MeanText(0.0123456F, kUnitNoiseVolts), "0.01235");
    EXPECT_EQ(DeviationText(1.5, kUnitCelsius),
              "\xB1"
              "1.500");
    EXPECT_EQ(DeviationText(0.000125, kUnitNoiseVolts),
              "\xB1"
              "0.00013");
    EXPECT_EQ(PlaceText(Point{12, 34}), "(12,34)");
    EXPECT_EQ(PlaceText(std::nullopt), "");
}

TEST(PlotReport, TheFirstOfEqualExtremesKeepsItsPlace)
{
    Extremes extremes;
    extremes.Take(5, {1, 0});
    extremes.Take(5, {2, 0});
    extremes.Take(7, {3, 0});
    extremes.Take(7, {4, 0});
    EXPECT_EQ(extremes.minimumAt, (Point{1, 0}));
    EXPECT_EQ(extremes.maximumAt, (Point{3, 0}));
}

class PlotReportOfCounts : public PictureTest {};

TEST_F(PlotReportOfCounts, LeavesExtremesWithoutAPlaceEmpty)
{
    View(1, 1, {0});
    Extremes extremes;
    extremes.Take(0x7FFF, {0, 0});  // beyond the seed of the minimum
    PlotReport report;
    ReportExtremes(report, extremes, kUnitCounts);
    EXPECT_EQ(report.minimum, "");
    EXPECT_EQ(report.minimumPlace, "");
    EXPECT_EQ(report.maximum, "32767");
    EXPECT_EQ(report.maximumPlace, "(0,0)");
}

TEST(PlotSums, DivideTwoSinglesAndRoundOneFactor)
{
    UnitSums sums;
    for (const float value : {1.0F, 2.0F, 4.0F}) sums.Add(value);
    EXPECT_EQ(sums.Mean(), 7.0F / 3.0F);
    const double mean = 7.0F / 3.0F;
    double expected = 0;
    for (const double value : {1.0, 2.0, 4.0}) {
        sums.AddSquare(sums.Mean(), static_cast<float>(value));
        expected += (mean - value) * static_cast<double>(static_cast<float>(mean - value));
    }
    EXPECT_EQ(sums.Squares(), expected);
    EXPECT_EQ(UnitSums().Mean(), 0.0F);
}

TEST(PlotFigures, ReadBackAsTheSameSingle)
{
    for (const float value : {0.1F, -273.15F, 16383.0F, 1.0F / 3.0F, 1e-12F}) {
        EXPECT_EQ(std::strtof(CsvNumber(value).c_str(), nullptr), value) << CsvNumber(value);
    }
    EXPECT_EQ(CsvNumber(2.5F), "2.5");
    EXPECT_EQ(CsvNote("unit", "counts"), "# unit: counts\n");
}

}  // namespace

}  // namespace kelvo
