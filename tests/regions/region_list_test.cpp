#include "regions/region_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace kelvo {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

Region At(std::int32_t x, std::int32_t y, std::string name = "")
{
    return {.name = std::move(name), .place = {x, y, x + 3, y + 3}};
}

std::int32_t Add(const Region& region)
{
    std::string why;
    const std::int32_t number = AddRegion(region, why);
    EXPECT_EQ(number != 0, why.empty()) << why;
    return number;
}

TEST(RegionList, EachRegionHasANumberOfItsOwnAndAFreeName)
{
    const std::int32_t first = Add(At(1, 1));
    const std::int32_t second = Add(At(2, 2));
    EXPECT_EQ(FindRegion(first)->name, "R1");
    EXPECT_EQ(FindRegion("R2")->number, second);
    RemoveRegion(second);
    EXPECT_GT(Add(At(3, 3)), second);
    EXPECT_EQ(Regions.back().name, "R2");
    EXPECT_EQ(FindRegion(Add(At(4, 4, "R1")))->name, "R3");
    EXPECT_EQ(FindRegion(second), nullptr);
    EXPECT_EQ(FindRegion("none"), nullptr);
}

TEST(RegionList, WhatIsNoRegionIsRefusedAndTheListStays)
{
    const std::int32_t number = Add(At(1, 1));
    Add(At(1, 1, "other"));
    const std::vector<Region> before = Regions;
    const std::uint32_t version = RegionsVersion;
    const auto refused = [&](auto change) {
        Region region = *FindRegion(number);
        change(region);
        std::string why;
        EXPECT_FALSE(ChangeRegion(region, why));
        EXPECT_EQ(Regions, before);
        EXPECT_EQ(RegionsVersion, version);
        return why;
    };
    EXPECT_THAT(refused([](Region& r) { r.name = ""; }), HasSubstr("needs a name"));
    EXPECT_THAT(refused([](Region& r) { r.name = "a\nb"; }), HasSubstr("can't be shown"));
    EXPECT_THAT(refused([](Region& r) { r.name = std::string(64, 'a'); }), HasSubstr("at most 63"));
    EXPECT_THAT(refused([](Region& r) { r.name = "other"; }), HasSubstr("two regions named other"));
    EXPECT_THAT(refused([](Region& r) { r.place.x2 = 32768; }), HasSubstr("between -32768 and 32767"));
    EXPECT_THAT(refused([](Region& r) { r.place.y1 = -32769; }), HasSubstr("between"));
    EXPECT_THAT(refused([](Region& r) { r.emissivity = 0; }), HasSubstr("between 0.001 and 1"));
    EXPECT_THAT(refused([](Region& r) { r.emissivity = 1.01; }), HasSubstr("between 0.001 and 1"));
    EXPECT_THAT(refused([](Region& r) { r.emissivity = 1e-320, r.reflectedC = 20; }), HasSubstr("between 0.001 and 1"));
    EXPECT_THAT(refused([](Region& r) { r.emissivity = 0.5, r.reflectedC = 1e308; }), HasSubstr("-273.15 and 10000"));
    EXPECT_THAT(refused([](Region& r) { r.emissivity = std::numeric_limits<double>::quiet_NaN(); }),
                HasSubstr("between 0.001 and 1"));
    EXPECT_THAT(refused([](Region& r) { r.emissivity = 0.9; }), HasSubstr("needs the temperature"));
    EXPECT_THAT(refused([](Region& r) { r.emissivity = 0.9, r.reflectedC = -273.15; }), HasSubstr("-273.15"));
    EXPECT_THAT(refused([](Region& r) { r.number = 99; }), HasSubstr("no such region"));
}

TEST(RegionList, AChangeIsSeenAndOneThatChangesNothingIsNone)
{
    const std::int32_t number = Add(At(1, 1));
    const std::uint32_t version = RegionsVersion;
    Region region = *FindRegion(number);
    std::string why;
    region.reflectedC = 20;  // a black body reflects nothing
    EXPECT_TRUE(ChangeRegion(region, why));
    EXPECT_EQ(RegionsVersion, version);
    EXPECT_FALSE(FindRegion(number)->reflectedC);
    region.emissivity = 0.5;
    EXPECT_TRUE(ChangeRegion(region, why));
    EXPECT_NE(RegionsVersion, version);
    EXPECT_EQ(FindRegion(number)->reflectedC, 20.0);
}

TEST(RegionList, WhatIsRemovedIsNoLongerSelected)
{
    const std::int32_t number = Add(At(1, 1));
    SelectRegion(number);
    EXPECT_EQ(SelectedRegion, number);
    RemoveRegion(number);
    EXPECT_EQ(SelectedRegion, 0);
    SelectRegion(number);
    EXPECT_EQ(SelectedRegion, 0);
    EXPECT_THAT(Regions, IsEmpty());
}

TEST(RegionList, ThereAreAtMostSoMany)
{
    for (std::size_t i = 0; i < kMostRegions; ++i) Add(At(1, 1));
    std::string why;
    EXPECT_EQ(AddRegion(At(1, 1), why), 0);
    EXPECT_THAT(why, HasSubstr("at most 256"));
    EXPECT_EQ(Regions.size(), kMostRegions);
}

TEST(RegionList, TheHookHearsOfEachChangeAndOfTheSelection)
{
    static int heard = 0;
    heard = 0;
    SetRegionsHook([] { ++heard; });
    const std::int32_t number = Add(At(1, 1));
    EXPECT_EQ(heard, 1);
    SelectRegion(number);
    SelectRegion(number);
    EXPECT_EQ(heard, 2);
    RemoveRegion(number);
    EXPECT_EQ(heard, 3);
}

TEST(RegionList, ShapesAreKnownByName)
{
    for (const auto shape : {RegionShape::kRectangle, RegionShape::kEllipse, RegionShape::kLine, RegionShape::kPoint}) {
        EXPECT_EQ(ShapeNamed(ShapeName(shape)), shape);
    }
    EXPECT_EQ(ShapeName(RegionShape::kLine), "line");
    EXPECT_FALSE(ShapeNamed("circle"));
}

}  // namespace
}  // namespace kelvo
