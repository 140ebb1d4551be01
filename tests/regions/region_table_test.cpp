#include "regions/region_table.h"

#include "display/units.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::HasSubstr;
using testing::Not;

Region Plate()
{
    Region region;
    region.name = "plate";
    region.place = {3, 2, 20, 12};
    return region;
}

RegionReading Reading()
{
    RegionReading reading;
    reading.figures.pixels = 198;
    reading.figures.leftOut = 3;
    reading.figures.least = {1123, 3, 2};
    reading.figures.most = {2278, 20, 12};
    reading.figures.outsideSources = 7;
    reading.values = {1699.32828, 255.5433, 1123, 2278};
    return reading;
}

// The words of a line.
std::vector<std::string> Words(const std::string& line)
{
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

TEST(RegionTable, ALineHasEachFigureWithItsPlace)
{
    EXPECT_THAT(Words(RegionTableLine(Plate(), Reading(), kUnitCounts)),
                testing::ElementsAre("plate", "rectangle", "3,2-20,12", "198", "3", "1699.3283", "255.5433", "1123",
                                     "@3,2", "2278", "@20,12", "-", "7"));
}

TEST(RegionTable, AnEmissivityBearsAStarAndDegreesHaveDecimals)
{
    RegionReading reading = Reading();
    reading.values.least = 20.125;
    EXPECT_THAT(RegionTableLine(Plate(), reading, kUnitCelsius), HasSubstr(" 20.125 "));
    EXPECT_THAT(RegionTableLine(Plate(), reading, kUnitCelsius), Not(HasSubstr("*")));
    reading.emissivityApplies = true;
    EXPECT_THAT(RegionTableLine(Plate(), reading, kUnitCelsius), HasSubstr("1699.3283*"));
}

TEST(RegionTable, WithoutPixelsThereAreDashes)
{
    EXPECT_THAT(Words(RegionTableLine(Plate(), {}, kUnitCounts)),
                testing::ElementsAre("plate", "rectangle", "3,2-20,12", "0", "0", "-", "-", "-", "-", "-", "-"));
}

TEST(RegionTable, ColumnsStandUnderOneAnotherWhateverTheName)
{
    const std::size_t width = RegionTableLine(Plate(), Reading(), kUnitCounts).size();
    Region other = Plate();
    other.name = "a name that is far too long";
    EXPECT_EQ(RegionTableLine(other, Reading(), kUnitCounts).size(), width);
    EXPECT_THAT(RegionTableLine(other, Reading(), kUnitCounts), testing::StartsWith("a name t.. rectangle"));
    other.name = "20 \xB0";  // two bytes on the screen's side
    EXPECT_EQ(RegionTableLine(other, Reading(), kUnitCounts).size(), width + 1);
    EXPECT_EQ(RegionTableHead(kUnitCounts).size(), width);
    EXPECT_THAT(RegionTableHead(kUnitCelsius), HasSubstr("Mean \xC2\xB0"
                                                         "C"));
}

}  // namespace
}  // namespace kelvo
