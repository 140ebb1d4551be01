// A calibration from 4000 counts at 20 °C to 9000 counts at 30 °C: 500 counts a degree.
#include "regions/region_value.h"

#include "display/units.h"
#include "imagefile/header_write.h"
#include "state/cal_state_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows_write.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

class RegionValue : public testing::Test {
  protected:
    void SetUp() override
    {
        write::display.DisplayLow = 0;
        write::display.DisplayHigh = 16000;
        write::head.VoltsLow = -1.0F;
        write::head.VoltsHigh = 3.0F;
        write::cal.IntensityCold = 4000;
        write::cal.IntensityHot = 9000;
        write::cal.TemperatureCold = 20.0F;
        write::cal.TemperatureHot = 30.0F;
        write::cal.CalType = 2;
    }

    RegionFigures figures{.pixels = 4,
                          .mean = 6500.5,
                          .deviation = 25.0,
                          .least = {.count = 6000, .x = 1, .y = 2},
                          .most = {.count = 7000, .x = 3, .y = 2}};
    Region black;
    Region gray{.emissivity = 0.8, .reflectedC = 22.0};  // C(22) = 5000
};

TEST_F(RegionValue, AMeanTakesTheUnitsZeroAndADeviationItsStepAlone)
{
    const RegionValues celsius = ValuesOf(figures, black, kUnitCelsius);
    EXPECT_NEAR(celsius.mean, 25.001, 1e-12);
    EXPECT_NEAR(celsius.deviation, 0.05, 1e-12);
    EXPECT_EQ(celsius.least, 24.0);
    EXPECT_EQ(celsius.most, 26.0);
    const RegionValues fahrenheit = ValuesOf(figures, black, kUnitFahrenheit);
    EXPECT_NEAR(fahrenheit.mean, 25.001 * 1.8 + 32, 1e-5);  // 1.8 as a single
    EXPECT_NEAR(fahrenheit.deviation, 0.09, 1e-7);
    EXPECT_NEAR(ValuesOf(figures, black, kUnitKelvin).mean, 25.001 + 273.15, 1e-5);
    EXPECT_NEAR(ValuesOf(figures, black, kUnitKelvin).deviation, 0.05, 1e-12);
    const RegionValues volts = ValuesOf(figures, black, kUnitVolts);
    EXPECT_DOUBLE_EQ(volts.mean, 4 * 6500.5 / 16000 - 1);
    EXPECT_DOUBLE_EQ(volts.deviation, 4 * 25.0 / 16000);
    EXPECT_EQ(ValuesOf(figures, black, kUnitCounts).mean, 6500.5);
    EXPECT_EQ(ValuesOf(figures, black, kUnitCounts).deviation, 25.0);
}

TEST_F(RegionValue, ExtremesAreWhatTheImageCursorShows)
{
    figures.least.count = 4321;
    for (const std::int32_t unit : {kUnitCounts, kUnitVolts, kUnitCelsius, kUnitKelvin, kUnitFahrenheit}) {
        EXPECT_EQ(ValuesOf(figures, black, unit).least, static_cast<double>(CountsToUnit(4321, unit, nullptr))) << unit;
    }
}

TEST_F(RegionValue, EmissivityTakesWhatIsReflectedOffAndScalesTheRest)
{
    // (6500.5 - 0.2 x 5000) / 0.8 = 6875.625: 25.75125 degrees.
    EXPECT_NEAR(CountsOfSurface(6500.5, gray), 6875.625, 1e-9);
    const RegionValues celsius = ValuesOf(figures, gray, kUnitCelsius);
    EXPECT_NEAR(celsius.mean, 25.75125, 1e-9);
    EXPECT_NEAR(celsius.deviation, 0.05 / 0.8, 1e-12);
    EXPECT_NEAR(celsius.least, 24.5, 1e-6);  // (6000 - 1000) / 0.8 = 6250
    EXPECT_NEAR(celsius.most, 27.0, 1e-6);   // 7500
    EXPECT_TRUE(EmissivityApplies(gray));
    // A surface as warm as its surroundings looks like a black body, whatever its emissivity.
    EXPECT_NEAR(CountsOfSurface(5000, gray), 5000, 1e-9);
}

TEST_F(RegionValue, ABlackBodyKeepsItsCountsToTheLastBit)
{
    Region told = black;
    told.reflectedC = 22.0;
    for (const double counts : {0.1, 6500.5, -3.0 / 7}) {
        EXPECT_EQ(CountsOfSurface(counts, black), counts);
        EXPECT_EQ(CountsOfSurface(counts, told), counts);
    }
    EXPECT_FALSE(EmissivityApplies(told));
}

TEST_F(RegionValue, WithoutTemperaturesThereIsNoEmissivity)
{
    write::cal.CalType = 0;
    EXPECT_FALSE(EmissivityApplies(gray));
    EXPECT_EQ(CountsOfSurface(6500.5, gray), 6500.5);
    EXPECT_EQ(ValuesOf(figures, gray, kUnitCounts).deviation, 25.0);
    EXPECT_FALSE(CountsOfSources());
    EXPECT_FALSE(CountsOfCelsius(25));
}

TEST_F(RegionValue, AStoredFrameIsReadByItsOwnHeader)
{
    ImageHeaderRecord header;
    header.IntensityCold = 1000;
    header.TemperatureCold = 10.0F;
    header.IntensityHot = 2000;
    header.TemperatureHot = 60.0F;
    const UnitScope scope(header, "x.img");
    EXPECT_NEAR(CountsOfCelsius(22).value(), 1240, 1e-9);
    EXPECT_EQ(CountsOfSources(), (CountRange{1000, 2000}));
    EXPECT_NEAR(ValuesOf(figures, black, kUnitCelsius).deviation, 25 * 0.05, 1e-12);
}

TEST_F(RegionValue, WithoutPixelsThereAreNoValues)
{
    figures.pixels = 0;
    EXPECT_EQ(ValuesOf(figures, black, kUnitCelsius).mean, 0.0);
}

}  // namespace
}  // namespace kelvo
