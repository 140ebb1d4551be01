#include "regions/region_list.h"

#include "platform/text.h"
#include "state/state_registry.h"
#include "ui/undo.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace kelvo {

namespace {

struct RegionVariables {
    std::vector<Region> regions;
    std::int32_t selected = 0;
    std::uint32_t version = 0;
    std::int32_t lastNumber = 0;
    void (*changed)() = nullptr;
};
constinit RegionVariables variables;

constexpr std::array<std::string_view, 4> kShapeNames{"rectangle", "ellipse", "line", "point"};

const StateNames kStateNames{
    Named("SelectedRegion", variables.selected),
    {"RegionCount", []() -> StateValue { return static_cast<std::int64_t>(variables.regions.size()); }},
};

Region* Numbered(std::int32_t number)
{
    const auto region = std::ranges::find(variables.regions, number, &Region::number);
    return region == variables.regions.end() ? nullptr : &*region;
}

bool IsTaken(std::string_view name)
{
    return FindRegion(name) != nullptr;
}

std::string FreeName()
{
    for (int n = 1;; ++n) {
        std::string name = Format("R%d", n);
        if (!IsTaken(name)) return name;
    }
}

std::string WhyNoName(std::string_view name)
{
    if (name.empty()) return "A region needs a name.";
    if (name.size() > kLongestRegionName)
        return Format("The name of a region has at most %zu characters.", kLongestRegionName);
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    return std::ranges::any_of(name, isControl) ? "The name of a region holds a character that can't be shown." : "";
}

std::string WhyNoEmissivity(const Region& region)
{
    if (!(region.emissivity >= kLeastEmissivity && region.emissivity <= 1)) {
        return Format("An emissivity lies between %g and 1.", kLeastEmissivity);
    }
    if (region.emissivity < 1 && !region.reflectedC)
        return "An emissivity below 1 needs the temperature of what is reflected.";
    if (region.reflectedC && !(*region.reflectedC > kAbsoluteZeroC && *region.reflectedC <= kMostReflectedC)) {
        return Format(
            "The temperature of what is reflected lies between %g and %g \xB0"
            "C.",
            kAbsoluteZeroC, kMostReflectedC);
    }
    return "";
}

bool IsWithin(std::int32_t place)
{
    return place >= kLeastRegionPlace && place <= kMostRegionPlace;
}

void Normalize(Region& region)
{
    if (region.emissivity == 1) region.reflectedC.reset();
    if (region.shape == RegionShape::kPoint) {
        region.place.x2 = region.place.x1;
        region.place.y2 = region.place.y1;
    }
}

void TellChange()
{
    if (variables.changed) variables.changed();
}

void Replace(std::vector<Region> regions)
{
    variables.regions = std::move(regions);
    ++variables.version;
    if (!Numbered(variables.selected)) variables.selected = 0;
    TellChange();
}

}  // namespace

constinit const std::vector<Region>& Regions = variables.regions;
constinit const std::int32_t& SelectedRegion = variables.selected;
constinit const std::uint32_t& RegionsVersion = variables.version;

const Region* FindRegion(std::int32_t number)
{
    return Numbered(number);
}

const Region* FindRegion(std::string_view name)
{
    const auto region = std::ranges::find(variables.regions, name, &Region::name);
    return region == variables.regions.end() ? nullptr : &*region;
}

std::string WhyNoRegion(const Region& region)
{
    std::string why = WhyNoName(region.name);
    if (!why.empty()) return why;
    const RegionPlace& place = region.place;
    if (!IsWithin(place.x1) || !IsWithin(place.y1) || !IsWithin(place.x2) || !IsWithin(place.y2)) {
        return Format("A region lies between %d and %d.", kLeastRegionPlace, kMostRegionPlace);
    }
    return WhyNoEmissivity(region);
}

std::int32_t AddRegion(Region region, std::string& why)
{
    if (region.name.empty() || IsTaken(region.name)) region.name = FreeName();
    region.number = 0;
    std::vector<Region> regions = variables.regions;
    regions.push_back(std::move(region));
    return SetRegions(std::move(regions), why) ? variables.regions.back().number : 0;
}

bool ChangeRegion(Region region, std::string& why)
{
    const Region* const former = Numbered(region.number);
    if (!former) {
        why = "There is no such region.";
        return false;
    }
    Normalize(region);
    if (region == *former) return true;
    std::vector<Region> regions = variables.regions;
    regions[static_cast<std::size_t>(former - variables.regions.data())] = std::move(region);
    return SetRegions(std::move(regions), why);
}

void RemoveRegion(std::int32_t number)
{
    std::vector<Region> regions = variables.regions;
    if (std::erase_if(regions, [number](const Region& region) { return region.number == number; }) != 0) {
        const Gesture gesture;
        Replace(std::move(regions));
    }
}

void SelectRegion(std::int32_t number)
{
    const std::int32_t selected = Numbered(number) ? number : 0;
    if (std::exchange(variables.selected, selected) != selected) TellChange();
}

bool SetRegions(std::vector<Region> regions, std::string& why)
{
    if (regions.size() > kMostRegions) {
        why = Format("There can be at most %zu regions.", kMostRegions);
        return false;
    }
    std::int32_t lastNumber = variables.lastNumber;
    for (auto region = regions.begin(); region != regions.end(); ++region) {
        why = WhyNoRegion(*region);
        if (!why.empty()) return false;
        if (std::find_if(regions.begin(), region, [&](const Region& other) { return other.name == region->name; }) !=
            region) {
            why = "There are two regions named " + region->name + ".";
            return false;
        }
        Normalize(*region);
        if (region->number == 0) region->number = ++lastNumber;
        lastNumber = std::max(lastNumber, region->number);
    }
    variables.lastNumber = lastNumber;
    if (regions == variables.regions) return true;
    const Gesture gesture;
    Replace(std::move(regions));
    return true;
}

void PutBackRegions(std::vector<Region> regions)
{
    Replace(std::move(regions));
}

std::string_view ShapeName(RegionShape shape)
{
    return kShapeNames[static_cast<std::size_t>(shape)];
}

std::optional<RegionShape> ShapeNamed(std::string_view name)
{
    const auto found = std::ranges::find(kShapeNames, name);
    if (found == kShapeNames.end()) return std::nullopt;
    return static_cast<RegionShape>(found - kShapeNames.begin());
}

void SetRegionsHook(void (*changed)())
{
    variables.changed = changed;
}

void ResetRegions()
{
    variables = {};
}

}  // namespace kelvo
