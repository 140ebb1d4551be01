// The regions' figures in the frame on view as lines of text, in columns of fixed width.
#pragma once

#include "regions/region.h"
#include "regions/region_measure.h"
#include "regions/region_value.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

// What a region measures in the frame on view, and the unit of its values.
struct RegionReading {
    RegionFigures figures{};
    RegionValues values{};
    bool emissivityApplies = false;
};
RegionReading ReadRegion(const Region& region);
std::vector<RegionReading> ReadRegions();  // of the view's, in their order

// The unit of the values: DisplayUnit where the frame on view can be read in it, otherwise counts.
std::int32_t UnitOfRegions();

// The line above the columns, and that of a region. A value with an emissivity bears a star; "-": there is no pixel, or
// the number isn't known. A name that is too long for its column ends with "..".
std::string RegionTableHead(std::int32_t unit);
std::string RegionTableLine(const Region& region, const RegionReading& reading, std::int32_t unit);

// "10,20" of a point, "10,20-73,83" of the others.
std::string PlaceText(const Region& region);

}  // namespace kelvo
