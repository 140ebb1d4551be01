// Traces in volts and degrees, with numbers to check in the head.
#include "regions/trace_unit.h"

#include "display/units.h"
#include "imagefile/header.h"
#include "state/display_state_write.h"
#include "state/head_state_write.h"
#include "support/stored_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

// 1000 counts at 20 degrees, 3000 at 40: 100 counts a degree.
ImageHeaderRecord Calibrated()
{
    ImageHeaderRecord header = PlainHeader(4, 2);
    header.IntensityCold = 1000;
    header.IntensityHot = 3000;
    header.TemperatureCold = 20;
    header.TemperatureHot = 40;
    return header;
}

void TellVolts()  // 4 volts over 16000 counts
{
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = 16000;
    write::head.VoltsLow = -1;
    write::head.VoltsHigh = 3;
}

std::vector<Region> BlackAndGray()
{
    return {{.number = 1, .name = "black", .place = {0, 0, 1, 1}},
            {.number = 2, .name = "gray", .place = {2, 0, 3, 1}, .emissivity = 0.5, .reflectedC = 30}};
}

std::vector<std::int32_t> NumbersOf(const std::vector<TraceUnit>& units)
{
    std::vector<std::int32_t> numbers;
    for (const TraceUnit& unit : units) numbers.push_back(unit.unit);
    return numbers;
}

TEST(TraceUnit, CountsStayCounts)
{
    const TracePoint point{.mean = 1234.5, .deviation = 2.25, .minimum = -7, .maximum = 32767};
    const TraceValue value{.mean = 1234.5, .deviation = 2.25, .minimum = -7, .maximum = 32767};
    EXPECT_EQ(ValueOf(point, {}), value);
    EXPECT_EQ(ScaleOf(Trace{}, 0, 0), TraceScale{});
    EXPECT_EQ(UnitTextOf(Trace{}, 0), "counts");
}

TEST(TraceUnit, AreThoseOfTheFile)
{
    TellVolts();
    const ImageHeaderRecord header = Calibrated();
    const UnitScope ofFile(header, "/a/b.seq");
    const std::vector<Region> regions = BlackAndGray();
    const std::vector<TraceUnit> units = UnitsOfTrace(regions, TracedCounts::kAsShown);
    ASSERT_THAT(NumbersOf(units), ElementsAre(kUnitCounts, kUnitVolts, kUnitCelsius, kUnitKelvin, kUnitFahrenheit));
    EXPECT_EQ(units[0].text, "counts");
    EXPECT_EQ(units[2].text,
              "\xB0"
              "C");
    for (const TraceUnit& unit : units) ASSERT_THAT(unit.scales, SizeIs(2));

    const TracePoint point{.mean = 1500.5, .deviation = 30, .minimum = 1400, .maximum = 1600};
    const TraceValue black = ValueOf(point, units[2].scales[0]);
    EXPECT_NEAR(black.mean, 25.005, 1e-12);
    EXPECT_NEAR(black.deviation, 0.3, 1e-12);
    EXPECT_EQ(black.minimum, 24.0F);
    EXPECT_EQ(black.maximum, 26.0F);
    // 30 degrees are 2000 counts: (1500.5 - 0.5 x 2000) / 0.5 = 1001 counts, 20.01 degrees.
    const TraceValue gray = ValueOf(point, units[2].scales[1]);
    EXPECT_NEAR(gray.mean, 20.01, 1e-12);
    EXPECT_NEAR(gray.deviation, 0.6, 1e-12);
    EXPECT_NEAR(ValueOf(point, units[0].scales[1]).mean, 1001, 1e-9) << "as the regions' table has it";
    EXPECT_NEAR(ValueOf(point, units[4].scales[0]).mean, 25.005 * 1.8 + 32, 1e-5) << "1.8 is a single";
    EXPECT_NEAR(ValueOf(point, units[4].scales[0]).deviation, 0.54, 1e-7);
    EXPECT_NEAR(ValueOf(point, units[1].scales[0]).mean, -0.624875, 1e-12) << "1500.5 counts of 0.25 mV above -1 V";
}

TEST(TraceUnit, IsThatOfEachPixelBeforeTheMean)
{
    TellVolts();
    const ImageHeaderRecord header = Calibrated();
    const UnitScope ofFile(header, "/a/b.seq");
    const std::vector<Region> regions = BlackAndGray();
    const std::vector<std::int16_t> counts = {1100, 1207, 1311, 999};
    const TracePoint point = MeasureCounts(counts);
    for (const TraceUnit& unit : UnitsOfTrace(regions, TracedCounts::kAsShown)) {
        double sum = 0;
        for (const std::int16_t count : counts) sum += ValueOfCounts(count, unit.unit);
        const double mean = sum / 4;
        double squares = 0;
        for (const std::int16_t count : counts) squares += std::pow(ValueOfCounts(count, unit.unit) - mean, 2);
        EXPECT_NEAR(ValueOf(point, unit.scales[0]).mean, mean, 1e-10) << unit.text;
        EXPECT_NEAR(ValueOf(point, unit.scales[0]).deviation, std::sqrt(squares / 3), 1e-10) << unit.text;
        EXPECT_EQ(ValueOf(point, unit.scales[0]).minimum, CountsToUnit(999, unit.unit, nullptr)) << unit.text;
    }
}

TEST(TraceUnit, RawFramesHaveNoDegrees)
{
    TellVolts();
    const ImageHeaderRecord header = Calibrated();
    const UnitScope ofFile(header, "/a/b.seq");
    const std::vector<TraceUnit> units = UnitsOfTrace(BlackAndGray(), TracedCounts::kRaw);
    ASSERT_THAT(NumbersOf(units), ElementsAre(kUnitCounts, kUnitVolts));
    EXPECT_EQ(units[0].scales[1], TraceScale{}) << "nor a surface";
}

TEST(TraceUnit, WithoutTheConvertersEndsThereAreNoVolts)
{
    const ImageHeaderRecord header = PlainHeader(4, 2);
    const UnitScope ofFile(header, "/a/b.seq");
    EXPECT_THAT(NumbersOf(UnitsOfTrace(BlackAndGray(), TracedCounts::kAsShown)), ElementsAre(kUnitCounts));
}

TEST(TraceUnit, TellsWhatWasLeftOutAndOfWhichSurface)
{
    TellVolts();
    const ImageHeaderRecord header = Calibrated();
    const UnitScope ofFile(header, "/a/b.seq");
    const std::vector<Region> regions = BlackAndGray();
    const std::vector<std::uint8_t> bad = {0, 1, 0, 0, 0, 0, 0, 0};
    std::string why;
    const std::optional<RegionCounts> counts = RegionCounts::Make(regions, 4, 2, why, bad);
    ASSERT_TRUE(counts) << why;
    Trace trace;
    AddLines(trace, regions, *counts, TracedCounts::kAsShown);
    ASSERT_THAT(trace.lines, SizeIs(2));
    EXPECT_EQ(trace.lines[0].pixels, 3U);
    EXPECT_EQ(trace.lines[0].leftOut, 1U);
    EXPECT_EQ(trace.lines[0].surface, "");
    EXPECT_EQ(trace.lines[1].pixels, 4U);
    EXPECT_EQ(trace.lines[1].leftOut, 0U);
    EXPECT_EQ(trace.lines[1].surface,
              "emissivity 0.5, reflected 30 \xB0"
              "C");
}

TEST(TraceUnit, ARegionNeedsAPixelThatIsLeftIn)
{
    const std::vector<Region> regions = BlackAndGray();
    const std::vector<std::uint8_t> bad = {1, 1, 0, 0, 1, 1, 0, 0};
    std::string why;
    EXPECT_FALSE(RegionCounts::Make(regions, 4, 2, why, bad));
    EXPECT_EQ(why, "All pixels of black are bad.");
}

}  // namespace
}  // namespace kelvo
