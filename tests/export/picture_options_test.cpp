// The scale beside a picture: what its colors stand for in a unit.
#include "export/picture_options.h"

#include "display/color_map.h"
#include "display/units.h"

#include <gtest/gtest.h>

#include <array>

namespace kelvo {
namespace {

PictureLook LookOver(CountRange range)
{
    const std::array<std::uint8_t, kColorMapBytes> black{};
    return PictureLook::Over(range, black).value();
}

Provenance Measured(std::int16_t cold, float coldC, std::int16_t hot, float hotC)
{
    Provenance provenance;
    provenance.source = "/somewhere/warm.seq";
    provenance.header.HeaderVersion = 8;
    provenance.header.IntensityCold = cold;
    provenance.header.TemperatureCold = coldC;
    provenance.header.IntensityHot = hot;
    provenance.header.TemperatureHot = hotC;
    return provenance;
}

// 3000 counts are 20 degrees, 9000 are 25: a degree is 1200 counts.
TEST(ScaleOfExport, IsOnTheLineThroughTheSourcesOfTheFile)
{
    const PictureLook look = LookOver({600, 10200});
    const Provenance provenance = Measured(3000, 20, 9000, 25);
    const PictureScale celsius = ScaleOfExport(look, ExportWhat::kFile, provenance, kUnitCelsius);
    EXPECT_EQ(celsius.title,
              "\xB0"
              "C");
    EXPECT_EQ(celsius.line.counts, (CountRange{600, 10200}));
    EXPECT_DOUBLE_EQ(celsius.line.lowValue, 18);
    EXPECT_DOUBLE_EQ(celsius.line.highValue, 26);
    EXPECT_FALSE(celsius.line.whole);
    const PictureScale fahrenheit = ScaleOfExport(look, ExportWhat::kFile, provenance, kUnitFahrenheit);
    EXPECT_NEAR(fahrenheit.line.lowValue, 64.4, 1e-5);
    EXPECT_NEAR(fahrenheit.line.highValue, 78.8, 1e-5);
}

TEST(ScaleOfExport, IsInCountsWhereTheFileHasNoTemperatures)
{
    const Provenance provenance =
        Measured(kUncalibratedIntensity, kUncalibratedTemperature, kUncalibratedIntensity, kUncalibratedTemperature);
    const PictureScale scale = ScaleOfExport(LookOver({-100, 300}), ExportWhat::kFile, provenance, kUnitCelsius);
    EXPECT_EQ(scale.title, "Counts");
    EXPECT_EQ(std::pair(scale.line.lowValue, scale.line.highValue), std::pair(-100.0, 300.0));
    EXPECT_TRUE(scale.line.whole);
}

}  // namespace
}  // namespace kelvo
