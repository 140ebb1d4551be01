// A region's figures in the unit on view, and of a surface that is no black body.
//
// A surface of emissivity e gives off e times what a black body of its temperature does, and reflects (1 - e) of what
// comes from its surroundings at the temperature Tr. A count is linear in the radiation that arrives, so that the count
// of a black body in its place is
//
//     c' = (c - (1 - e) C(Tr)) / e
//
// with C(T) the count of temperature T on the line through the calibration pair (display/units.h, CountsOfCelsius). The
// air between is taken as clear. This correction is Kelvo's own; figures in counts, saturation and what lies outside of
// the sources go by what arrived.
#pragma once

#include "regions/region.h"
#include "regions/region_measure.h"

#include <cstdint>

namespace kelvo {

// c' of a region. The very count that was given where the emissivity is 1, where no temperature is given for what is
// reflected, and where the frame on view knows no temperatures.
double CountsOfSurface(double counts, const Region& region);
// Whether it is another than that.
bool EmissivityApplies(const Region& region);

struct RegionValues {
    double mean = 0;
    double deviation = 0;  // scaled alone: it has no zero, and no sign where counts rise as volts fall
    double least = 0;      // rounded to single, as the image cursor shows them
    double most = 0;
};

// The figures of a region in a unit (display/units.h, for the frames that UnitScope says there), its emissivity
// counted in. Of no pixels all are 0.
RegionValues ValuesOf(const RegionFigures& figures, const Region& region, std::int32_t unit);

}  // namespace kelvo
