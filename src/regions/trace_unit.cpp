#include "regions/trace_unit.h"

#include "display/units.h"
#include "platform/text.h"
#include "regions/region_value.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int32_t kOffered[] = {kUnitCounts, kUnitVolts, kUnitCelsius, kUnitKelvin, kUnitFahrenheit};

bool IsRead(std::int32_t unit, TracedCounts counts)
{
    if (unit == kUnitCounts) return true;
    const bool isTemperature = unit >= kUnitCelsius && unit <= kUnitFahrenheit;
    return IsUnitAvailable(unit) && !(isTemperature && counts == TracedCounts::kRaw);
}

TraceScale ScaleOf(const Region& region, std::int32_t unit, TracedCounts counts)
{
    const bool isSurface = counts == TracedCounts::kAsShown && EmissivityApplies(region);
    return {.zero = ValueOfCounts(isSurface ? CountsOfSurface(0, region) : 0, unit),
            .step = ValueOfDifference(isSurface ? 1 / region.emissivity : 1, unit)};
}

// Volts aren't where the converter's ends weren't told.
bool IsKnown(const TraceScale& scale)
{
    return std::isfinite(scale.zero) && std::isfinite(scale.step);
}

std::string TextOf(std::int32_t unit)
{
    if (unit == kUnitCounts) return TraceUnit{}.text;
    std::string name;
    std::string text;
    GetUnitName(unit, name, text);
    return text;
}

// How the region is read, for a file of figures; empty: as a black body.
std::string SurfaceText(const Region& region, TracedCounts counts)
{
    if (counts == TracedCounts::kRaw || !EmissivityApplies(region)) return {};
    return Format(
        "emissivity %g, reflected %g \xB0"
        "C",
        region.emissivity, region.reflectedC.value_or(0));
}

}  // namespace

std::vector<TraceUnit> UnitsOfTrace(std::span<const Region> regions, TracedCounts counts)
{
    std::vector<TraceUnit> units;
    for (const std::int32_t unit : kOffered) {
        if (!IsRead(unit, counts)) continue;
        TraceUnit read{.unit = unit, .text = TextOf(unit)};
        for (const Region& region : regions) read.scales.push_back(ScaleOf(region, unit, counts));
        if (std::ranges::all_of(read.scales, IsKnown)) units.push_back(std::move(read));
    }
    return units;
}

void AddLines(Trace& trace, std::span<const Region> regions, const RegionCounts& counts, TracedCounts traced)
{
    for (std::size_t i = 0; i < regions.size(); ++i) {
        trace.lines.push_back({.name = regions[i].name,
                               .pixels = counts.PixelsOfRegion(i),
                               .leftOut = counts.LeftOutOf(i),
                               .surface = SurfaceText(regions[i], traced)});
    }
    trace.units = UnitsOfTrace(regions, traced);
}

}  // namespace kelvo
