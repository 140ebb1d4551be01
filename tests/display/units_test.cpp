// Units row by row: expected values are worked here in double from the numbers of the fixture.
#include "display/units.h"

#include "imagefile/header_write.h"
#include "state/cal_state_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows_write.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

class Units : public testing::Test {
  protected:
    void SetUp() override
    {
        write::display.DisplayLow = 0;
        write::display.DisplayHigh = 16383;
        write::head.VoltsLow = -1.5F;
        write::head.VoltsHigh = 2.5F;
        write::cal.IntensityCold = 4000;
        write::cal.IntensityHot = 9000;
        write::cal.TemperatureCold = 20.0F;
        write::cal.TemperatureHot = 30.0F;
        write::cal.CalType = 2;
        write::display.ViewScaleGain = 4.0F;
        write::display.ViewScaleOffset = 0.5F;
    }

    void View(const char* name)
    {
        write::frames.ViewingFile = 1;
        write::windows.ViewFilePath = name;
        write::file.ImageHeader.DisplayLow = 0;
        write::file.ImageHeader.DisplayHigh = 16383;
        write::file.ImageHeader.TemperatureCold = 10.0F;
        write::file.ImageHeader.TemperatureHot = 50.0F;
        write::file.ImageHeader.IntensityCold = 2000;
        write::file.ImageHeader.IntensityHot = 12000;
        write::file.ImageHeader.DataType = 1;
    }

    static std::string Text(std::int32_t counts, std::int32_t unit)
    {
        std::string text;
        CountsToUnit(counts, unit, &text);
        return text;
    }

    static std::set<int> Offered()
    {
        std::set<int> offered;
        for (int unit = 0; unit < kUnitCount; ++unit) {
            if (IsUnitAvailable(unit)) offered.insert(unit);
        }
        return offered;
    }
};

constexpr double kKelvin = 273.149993896484375;     // 273.15 as a single
constexpr double kStep = 1.7999999523162841796875;  // 1.8 as a single

TEST_F(Units, EveryIndexHasItsNameAndUnit)
{
    const char* const names[30][2] = {{"Signal", "Counts"},
                                      {"Signal", "V"},
                                      {"Temperature", "\260C"},
                                      {"Temperature", "\260K"},
                                      {"Temperature", "\260F"},
                                      {"Radiance", "Ph/cm\262\267sr\267sec"},
                                      {"Radiance", "W/cm\262\267sr"},
                                      {"Exitance", "Ph/cm\262\267sec"},
                                      {"Exitance", "W/cm\262"},
                                      {"Noise", "Counts"},
                                      {"Noise", "V"},
                                      {"Noise", "\260C"},
                                      {"Noise", "\260K"},
                                      {"Noise", "\260F"},
                                      {"Noise", "Ph/cm\262\267sr\267sec"},
                                      {"Noise", "W/cm\262\267sr"},
                                      {"Noise", "Ph/cm\262\267sec"},
                                      {"Noise", "W/cm\262"},
                                      {"Gain", ""},
                                      {"Offset", ""},
                                      {"Emissivity", ""},
                                      {"Value", "Counts"},
                                      {"StdDev", "V"},
                                      {"StdDev", "\260C"},
                                      {"StdDev", "\260K"},
                                      {"StdDev", "\260F"},
                                      {"StdDev", "Ph/cm\262\267sr\267sec"},
                                      {"StdDev", "W/cm\262\267sr"},
                                      {"StdDev", "Ph/cm\262\267sec"},
                                      {"StdDev", "W/cm\262"}};
    std::string name;
    std::string unit;
    for (int i = 0; i < 30; ++i) {
        GetUnitName(i, name, unit);
        EXPECT_EQ(name, names[i][0]) << i;
        EXPECT_EQ(unit, names[i][1]) << i;
    }
}

TEST_F(Units, AnIndexOutsideTheTableIsSignalInCounts)
{
    std::string name;
    std::string unit;
    for (const int index : {-1, 30, 65535}) {
        GetUnitName(index, name, unit);
        EXPECT_EQ(name, "Signal");
        EXPECT_EQ(unit, "Counts");
    }
}

TEST_F(Units, CountsAreCounts)
{
    for (const int unit : {0, 5, 6, 7, 8, 14, 15, 16, 17, 20, 26, 27, 28, 29, 30, -1}) {
        EXPECT_EQ(CountsToUnit(-1234, unit, nullptr), -1234.0F) << unit;
        EXPECT_EQ(Text(-1234, unit), "-1234") << unit;
    }
}

TEST_F(Units, VoltsSpanTheLiveRange)
{
    EXPECT_EQ(CountsToUnit(0, 1, nullptr), -1.5F);
    EXPECT_EQ(CountsToUnit(16383, 1, nullptr), 2.5F);
    EXPECT_EQ(CountsToUnit(5000, 1, nullptr), static_cast<float>(4.0 * 5000 / 16383 - 1.5));
    EXPECT_EQ(Text(5000, 1), "-0.279");
    write::display.DisplayLow = 1000;
    EXPECT_EQ(CountsToUnit(5000, 1, nullptr), static_cast<float>(4.0 * 4000 / 15383 - 1.5));
}

TEST_F(Units, TemperaturesFollowTheCalibrationPair)
{
    const double celsius = 10.0 * (5500 - 4000) / 5000 + 20.0;  // 23
    EXPECT_EQ(CountsToUnit(5500, 2, nullptr), static_cast<float>(celsius));
    EXPECT_EQ(Text(5500, 2), "23.000");
    EXPECT_EQ(CountsToUnit(5500, 3, nullptr), static_cast<float>(celsius + kKelvin));
    EXPECT_EQ(Text(5500, 3), "296.150");
    EXPECT_EQ(CountsToUnit(5500, 4, nullptr), static_cast<float>(celsius * kStep + 32.0));
    EXPECT_EQ(Text(5500, 4), "73.400");
}

TEST_F(Units, NoiseListsHoldTwentyTimesTheNoise)
{
    EXPECT_EQ(CountsToUnit(145, 9, nullptr), static_cast<float>(145 / 20.0));
    EXPECT_EQ(Text(145, 9), "7.250");
    EXPECT_EQ(CountsToUnit(145, 10, nullptr), static_cast<float>(4.0 * 7.25 / 16383));
    EXPECT_EQ(Text(145, 10), "0.0018");
    EXPECT_EQ(CountsToUnit(145, 11, nullptr), static_cast<float>(7.25 * 10.0 / 5000));
    EXPECT_EQ(Text(145, 11), Text(145, 12));
    EXPECT_EQ(CountsToUnit(145, 12, nullptr), static_cast<float>(7.25 * 10.0 / 5000));
    EXPECT_EQ(CountsToUnit(145, 13, nullptr), static_cast<float>(7.25 * 10.0 / 5000 * kStep));
    EXPECT_EQ(Text(145, 13), "0.026");
}

TEST_F(Units, ScaledValuesDivideByTheGainAndAddTheOffset)
{
    for (const int unit : {18, 19, 21}) {
        EXPECT_EQ(CountsToUnit(1001, unit, nullptr), static_cast<float>(1001 / 4.0 + 0.5)) << unit;
        EXPECT_EQ(Text(1001, unit), "250.750") << unit;
    }
}

TEST_F(Units, DeviationInVoltsMultipliesByTheGainAndAddsTheGain)
{
    EXPECT_EQ(CountsToUnit(1001, 22, nullptr), static_cast<float>(4.0 * (1001 * 4.0 + 4.0) / 16383));
    EXPECT_EQ(Text(1001, 22), "0.9786");  // 16032 / 16383
}

TEST_F(Units, DeviationInDegreesIsTheScaledValueTimesTheSlope)
{
    const double celsius = (1001 / 4.0 + 0.5) * 10.0 / 5000;
    EXPECT_EQ(CountsToUnit(1001, 23, nullptr), static_cast<float>(celsius));
    EXPECT_EQ(CountsToUnit(1001, 24, nullptr), static_cast<float>(celsius));
    EXPECT_EQ(CountsToUnit(1001, 25, nullptr), static_cast<float>(celsius * kStep));
    EXPECT_EQ(Text(1001, 23), "0.502");  // 0.5015 as a single is 0.50150001049
}

TEST_F(Units, WithoutAValidCalibrationATemperatureIsTheCount)
{
    for (const int unit : {2, 3, 4, 11, 12, 13, 23, 24, 25}) {
        write::cal.IntensityCold = 9000;
        write::cal.IntensityHot = 9000;
        EXPECT_EQ(Text(777, unit), "777") << unit;
        EXPECT_EQ(CountsToUnit(777, unit, nullptr), 777.0F);
        EXPECT_EQ(UnitToCounts(776.95F, unit), 777);  // floor of 777.05
        write::cal.IntensityCold = 4000;
        write::cal.TemperatureCold = 30.0F;
        EXPECT_EQ(Text(777, unit), "777") << unit;
        write::cal.TemperatureCold = 20.0F;
    }
}

TEST_F(Units, AStoredFrameBringsItsOwnCalibration)
{
    View("a.img");
    EXPECT_EQ(CountsToUnit(7000, 2, nullptr), 30.0F);  // 40 x 5000 / 10000 + 10
    write::file.ImageHeader.IntensityCold = -2000;     // widened with sign
    EXPECT_EQ(CountsToUnit(5000, 2, nullptr), 30.0F);  // 40 x 7000 / 14000 + 10
}

TEST_F(Units, ValuesBackToCountsInVolts)
{
    write::display.DisplayLow = 1000;
    const auto counts = static_cast<int>((0.25 + 1.5) * 15383 / 4.0) + 1000;
    for (const int unit : {1, 10, 22}) EXPECT_EQ(UnitToCounts(0.25F, unit), counts) << unit;
}

TEST_F(Units, ValuesBackToCountsInDegrees)
{
    EXPECT_EQ(UnitToCounts(23.0F, 2), 5500);
    // 73.4 as a single, less 32, over the single 1.8.
    const double celsius = (static_cast<double>(73.4F) - 32.0) / kStep;
    EXPECT_EQ(UnitToCounts(73.4F, 4), static_cast<int>((celsius - 20.0) * 5000 / 10.0 + 4000));
    EXPECT_EQ(UnitToCounts(2.0F, 11), 1000);
    EXPECT_EQ(UnitToCounts(2.0F, 12), 1000);
    EXPECT_EQ(UnitToCounts(2.0F, 23), 1000);
    EXPECT_EQ(UnitToCounts(2.0F, 24), 1000);
    EXPECT_EQ(UnitToCounts(3.6F, 13), static_cast<int>(5000.0 * (static_cast<double>(3.6F) / kStep) / 10.0));
    EXPECT_EQ(UnitToCounts(3.6F, 25), static_cast<int>(5000.0 * (static_cast<double>(3.6F) / kStep) / 10.0));
}

TEST_F(Units, KelvinIsAddedOnTheWayBackToo)
{
    write::display.DisplayHigh = 2000000;
    EXPECT_NE(UnitToCounts(20.0F, 3), IntensityCold);
    EXPECT_EQ(UnitToCounts(20.0F, 3), static_cast<int>(kKelvin * 5000 / 10.0 + 4000));  // 140574
}

TEST_F(Units, NoiseInCountsDoesntComeBack)
{
    EXPECT_EQ(CountsToUnit(400, 9, nullptr), 20.0F);
    EXPECT_EQ(UnitToCounts(20.0F, 9), 20);
    EXPECT_EQ(UnitToCounts(20.95F, 9), 21);  // 21.05
    EXPECT_EQ(UnitToCounts(20.85F, 9), 20);
}

TEST_F(Units, ScaledValuesBackToCounts)
{
    EXPECT_EQ(UnitToCounts(12.9F, 18), 12);
    EXPECT_EQ(UnitToCounts(12.9F, 19), 12);
    EXPECT_EQ(UnitToCounts(250.75F, 21), 1001);   // 1001.1
    EXPECT_EQ(UnitToCounts(250.73F, 21), 1001);   // 1000.92 + 0.1
    EXPECT_EQ(UnitToCounts(250.715F, 21), 1000);  // 1000.86 + 0.1
}

TEST_F(Units, PlainValuesAreRoundedUpFromNineTenths)
{
    EXPECT_EQ(UnitToCounts(99.95F, 0), 100);
    EXPECT_EQ(UnitToCounts(99.85F, 0), 99);
    write::display.DisplayLow = -100;
    EXPECT_EQ(UnitToCounts(-0.5F, 0), -1);  // floor
    EXPECT_EQ(UnitToCounts(-0.5F, 18), 0);  // cut
}

TEST_F(Units, CountsAreLimitedToTheRangeOnView)
{
    write::display.DisplayLow = 100;
    EXPECT_EQ(UnitToCounts(50.0F, 0), 100);
    EXPECT_EQ(UnitToCounts(50000.0F, 0), 16383);
    View("a.img");
    write::file.ImageHeader.DisplayLow = 200;
    write::file.ImageHeader.DisplayHigh = 5000;
    EXPECT_EQ(UnitToCounts(50.0F, 0), 200);
    EXPECT_EQ(UnitToCounts(50000.0F, 0), 5000);
}

TEST_F(Units, TheLowBoundWinsWhereTheBoundsCross)
{
    write::display.DisplayLow = 9000;
    write::display.DisplayHigh = 100;
    EXPECT_EQ(UnitToCounts(500.0F, 0), 9000);
    EXPECT_EQ(UnitToCounts(50.0F, 0), 9000);
    EXPECT_EQ(UnitToCounts(10000.0F, 0), 9000);
}

TEST_F(Units, WhatIsNoNumberOrBeyondAllCountsEndsInTheRange)
{
    EXPECT_EQ(UnitToCounts(std::numeric_limits<float>::infinity(), 0), 16383);
    EXPECT_EQ(UnitToCounts(-std::numeric_limits<float>::infinity(), 0), 0);
    EXPECT_EQ(UnitToCounts(std::numeric_limits<float>::quiet_NaN(), 0), 0);
    write::head.VoltsHigh = VoltsLow;
    EXPECT_EQ(UnitToCounts(1.0F, 1), 16383);
}

TEST_F(Units, LiveVideoOffersCountsVoltsAndCalibratedTemperatures)
{
    EXPECT_EQ(Offered(), (std::set<int>{0, 1, 2, 3, 4}));
}

TEST_F(Units, OffsetsAloneOfferNoTemperature)
{
    write::cal.CalType = 1;
    EXPECT_EQ(Offered(), (std::set<int>{0, 1}));
    write::cal.CalType = 2;
    write::cal.TemperatureHot = TemperatureCold;
    EXPECT_EQ(Offered(), (std::set<int>{0, 1}));
}

TEST_F(Units, AStoredFrameOffersTemperaturesByItsOwnPair)
{
    write::cal.CalType = 0;
    View("a.img");
    EXPECT_EQ(Offered(), (std::set<int>{0, 1, 2, 3, 4}));
}

TEST_F(Units, AnUncalibratedStoredFrameOffersNoTemperature)
{
    View("a.img");
    write::file.ImageHeader.TemperatureCold = -999.0F;
    write::file.ImageHeader.TemperatureHot = -999.0F;
    EXPECT_EQ(Offered(), (std::set<int>{0, 1}));
}

TEST_F(Units, ANoiseListOffersNoise)
{
    View("NOISE.NOI");
    EXPECT_EQ(Offered(), (std::set<int>{9, 10, 11, 12, 13}));
    write::file.ImageHeader.TemperatureHot = 10.0F;
    EXPECT_EQ(Offered(), (std::set<int>{9}));
}

TEST_F(Units, CoefficientListsOfferTheirOwnValue)
{
    View("x.gai");
    EXPECT_EQ(Offered(), (std::set<int>{18}));
    View("x.Off");
    EXPECT_EQ(Offered(), (std::set<int>{19}));
}

TEST_F(Units, FloatsAreReadAsValues)
{
    View("a.img");
    write::file.ImageHeader.DataType = 8;
    EXPECT_EQ(Offered(), (std::set<int>{0, 1, 2, 3, 4, 21}));
    View("a.flt");
    write::file.ImageHeader.DataType = 8;
    EXPECT_EQ(Offered(), (std::set<int>{21}));
    View("a.gai");
    write::file.ImageHeader.DataType = 8;
    EXPECT_EQ(Offered(), (std::set<int>{18, 21}));
}

TEST_F(Units, ADeviationFileIsNeverReadInADeviationUnit)
{
    View("a.sdv");
    EXPECT_EQ(Offered(), std::set<int>{});
    write::file.ImageHeader.DataType = 8;
    EXPECT_EQ(Offered(), std::set<int>{21});
}

TEST_F(Units, AnExtensionOfALiveFrameCountsForNothing)
{
    write::windows.ViewFilePath = "last.noi";
    write::frames.ViewingFile = 0;
    EXPECT_EQ(Offered(), (std::set<int>{0, 1, 2, 3, 4}));
}

TEST_F(Units, OfAFileThatIsNotOnViewAreThoseOfItsHeader)
{
    ImageHeaderRecord header;
    header.IntensityCold = 1000;
    header.IntensityHot = 2000;
    header.TemperatureCold = 10.0F;
    header.TemperatureHot = 60.0F;
    header.DisplayLow = 900;
    header.DisplayHigh = 3000;
    header.DataType = 1;
    View("shown.off");
    {
        const UnitScope file(header, "burst.buf");
        EXPECT_EQ(Text(1500, kUnitCelsius), "35.000");
        EXPECT_EQ(UnitToCounts(35.0F, kUnitCelsius), 1500);
        EXPECT_EQ(UnitToCounts(5000.0F, kUnitCounts), 3000);
        EXPECT_EQ(UnitToCounts(-5000.0F, kUnitCounts), 900);
        EXPECT_EQ(Text(7, kUnitValue), "7.000") << "its samples aren't scaled";
        EXPECT_EQ(Offered(), (std::set<int>{0, 1, 2, 3, 4}));
    }
    EXPECT_EQ(Text(7000, kUnitCelsius), "30.000");
    EXPECT_EQ(Offered(), (std::set<int>{19}));
}

// By the range of the file's header, to the bit as a camera of that range and those volts would have it.
TEST_F(Units, VoltsThatAreGivenForAFileTakeThePlaceOfTheCameras)
{
    ImageHeaderRecord header;
    header.DisplayLow = -120;
    header.DisplayHigh = 4000;
    write::display.DisplayLow = header.DisplayLow;
    write::display.DisplayHigh = header.DisplayHigh;
    std::vector<float> expected;
    for (std::int32_t count = -32768; count <= 32767; ++count) {
        expected.push_back(CountsToUnit(count, kUnitVolts, nullptr));
    }
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = 0;
    EXPECT_FALSE(VoltsAreKnown());
    {
        const UnitScope file(header, "run.seq", std::pair(-1.5F, 2.5F));
        EXPECT_TRUE(VoltsAreKnown());
        for (std::int32_t count = -32768; count <= 32767; ++count) {
            ASSERT_EQ(CountsToUnit(count, kUnitVolts, nullptr), expected[static_cast<std::size_t>(count + 32768)]);
        }
        EXPECT_EQ(UnitToCounts(2.5F, kUnitVolts), 4000);
        EXPECT_DOUBLE_EQ(ValueOfDifference(103, kUnitVolts), 0.1);
    }
    {
        const UnitScope file(header, "run.seq", std::pair(1.0F, 1.0F));
        EXPECT_FALSE(VoltsAreKnown());
    }
    {
        const UnitScope file(header, "run.seq", std::pair(2.5F, -1.5F));
        EXPECT_TRUE(VoltsAreKnown()) << "a camera that counts up as its voltage falls";
        EXPECT_EQ(CountsToUnit(4000, kUnitVolts, nullptr), -1.5F);
    }
    header.DisplayHigh = header.DisplayLow;
    const UnitScope file(header, "run.seq", std::pair(-1.5F, 2.5F));
    EXPECT_FALSE(VoltsAreKnown());
}

TEST_F(Units, OfTheCamerasFramesAreThoseInForceWhileAFileIsOnView)
{
    View("shown.noi");
    {
        const UnitScope camera;
        EXPECT_EQ(Text(6500, kUnitCelsius), "25.000");
        EXPECT_EQ(UnitToCounts(25.0F, kUnitCelsius), 6500);
        EXPECT_EQ(Offered(), (std::set<int>{0, 1, 2, 3, 4}));
    }
    EXPECT_EQ(Text(7000, kUnitCelsius), "30.000");
}

TEST_F(Units, AValueThatIsNoWholeCountIsBetweenItsNeighbours)
{
    EXPECT_DOUBLE_EQ(ValueOfCounts(6500.5, kUnitCelsius), 25.001);
    EXPECT_DOUBLE_EQ(ValueOfCounts(100.25, kUnitCounts), 100.25);
    EXPECT_DOUBLE_EQ(ValueOfCounts(8191.5, kUnitVolts), 0.5);
    for (std::int32_t unit = 0; unit < kUnitCount; ++unit) {
        EXPECT_EQ(static_cast<float>(ValueOfCounts(4321, unit)), CountsToUnit(4321, unit, nullptr)) << unit;
    }
}

TEST_F(Units, ADifferenceIsScaledAndHasNoZero)
{
    EXPECT_DOUBLE_EQ(ValueOfDifference(250, kUnitCounts), 250);
    EXPECT_DOUBLE_EQ(ValueOfDifference(250, kUnitVolts), 4.0 * 250 / 16383);
    EXPECT_DOUBLE_EQ(ValueOfDifference(250, kUnitCelsius), 0.5);
    EXPECT_DOUBLE_EQ(ValueOfDifference(250, kUnitKelvin), 0.5);
    EXPECT_DOUBLE_EQ(ValueOfDifference(250, kUnitFahrenheit), 0.5 * kStep);
    EXPECT_DOUBLE_EQ(ValueOfDifference(250, kUnitNoiseCounts), 12.5);
    EXPECT_DOUBLE_EQ(ValueOfDifference(250, kUnitNoiseCelsius), 0.025);
    EXPECT_DOUBLE_EQ(ValueOfDifference(250, kUnitValue), 62.5);
    // Between two counts of a unit that has a zero it is the difference of the values.
    for (const std::int32_t unit : {kUnitVolts, kUnitCelsius, kUnitKelvin, kUnitFahrenheit, kUnitValue}) {
        EXPECT_NEAR(ValueOfDifference(250, unit), ValueOfCounts(6250, unit) - ValueOfCounts(6000, unit), 1e-9) << unit;
    }
}

TEST_F(Units, ATemperatureHasItsCountOnTheLineOfTheCalibration)
{
    EXPECT_DOUBLE_EQ(CountsOfCelsius(25.001).value(), 6500.5);
    EXPECT_DOUBLE_EQ(CountsOfCelsius(-20).value(), -16000);  // 40 degrees below the cold source: not limited
    EXPECT_EQ(CountsOfSources(), (CountRange{4000, 9000}));
    write::cal.TemperatureHot = 20.0F;
    EXPECT_FALSE(CountsOfCelsius(25));
    EXPECT_FALSE(CountsOfSources());
}

}  // namespace
}  // namespace kelvo
