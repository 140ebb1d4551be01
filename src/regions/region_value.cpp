#include "regions/region_value.h"

#include "display/units.h"

#include <cmath>
#include <optional>

namespace kelvo {

namespace {

// C(Tr) where the emissivity applies.
std::optional<double> ReflectedCounts(const Region& region)
{
    if (region.emissivity >= 1 || region.emissivity <= 0 || !region.reflectedC) return std::nullopt;
    return CountsOfCelsius(*region.reflectedC);
}

double Extreme(std::int16_t count, const Region& region, std::int32_t unit)
{
    return static_cast<double>(static_cast<float>(ValueOfCounts(CountsOfSurface(count, region), unit)));
}

}  // namespace

double CountsOfSurface(double counts, const Region& region)
{
    const std::optional<double> reflected = ReflectedCounts(region);
    return reflected ? (counts - (1 - region.emissivity) * *reflected) / region.emissivity : counts;
}

bool EmissivityApplies(const Region& region)
{
    return ReflectedCounts(region).has_value();
}

RegionValues ValuesOf(const RegionFigures& figures, const Region& region, std::int32_t unit)
{
    if (figures.pixels == 0) return {};
    const double step = EmissivityApplies(region) ? region.emissivity : 1;
    return {.mean = ValueOfCounts(CountsOfSurface(figures.mean, region), unit),
            .deviation = std::fabs(ValueOfDifference(figures.deviation / step, unit)),
            .least = Extreme(figures.least.count, region, unit),
            .most = Extreme(figures.most.count, region, unit)};
}

}  // namespace kelvo
