// The units in which traces of regions can be read.
#pragma once

#include "regions/region.h"
#include "regions/region_counts.h"
#include "regions/trace.h"

#include <span>
#include <vector>

namespace kelvo {

enum class TracedCounts { kAsShown, kRaw };

// Makes the lines of a trace that begins, without a point yet, and its units.
void AddLines(Trace& trace, std::span<const Region> regions, const RegionCounts& counts, TracedCounts traced);

// Counts, then volts and degrees where the frames that UnitScope says (display/units.h) can be read in them now; raw
// counts are no temperatures. Values are those of the regions' table (regions/region_value.h): a surface's emissivity
// is counted in, in each unit, where temperatures are known.
std::vector<TraceUnit> UnitsOfTrace(std::span<const Region> regions, TracedCounts counts);

}  // namespace kelvo
