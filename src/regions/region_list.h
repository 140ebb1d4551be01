// The regions of the view: what is measured on every frame and drawn over the picture. They are the operator's, not the
// frame's: another file on view leaves them where they are. A change is a gesture (ui/undo.h) and can be taken back;
// the file of the data directory that keeps them across starts is regions/regions_file.h's.
#pragma once

#include "regions/region.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

constexpr std::size_t kMostRegions = 256;
constexpr std::size_t kLongestRegionName = 63;  // bytes
constexpr std::int32_t kLeastRegionPlace = -32768;
constexpr std::int32_t kMostRegionPlace = 32767;
constexpr double kAbsoluteZeroC = -273.15;
constexpr double kLeastEmissivity = 0.001;  // no surface has less; counts over it stay numbers
constexpr double kMostReflectedC = 10000;

// In the order in which they are drawn and listed.
extern const std::vector<Region>& Regions;
// The number of the one that is selected; 0: none. It is no part of what undo takes back.
extern const std::int32_t& SelectedRegion;
// Goes up with each change of Regions.
extern const std::uint32_t& RegionsVersion;

const Region* FindRegion(std::int32_t number);  // nullptr: there is none
const Region* FindRegion(std::string_view name);

// Why a region can't be one of the view's, a whole sentence; empty: it can. A name holds 1 to kLongestRegionName bytes
// without control characters; places lie between kLeastRegionPlace and kMostRegionPlace; an emissivity lies between
// kLeastEmissivity and 1, and below 1 a reflected temperature above kAbsoluteZeroC, at most kMostReflectedC, stands
// with it.
std::string WhyNoRegion(const Region& region);

// Adds it behind the others under a new number, which is returned, and under a free name ("R1", "R2") where it has none
// or one that is taken. 0 with the reason in why: it is no region, or there are kMostRegions.
std::int32_t AddRegion(Region region, std::string& why);
// Changes the region of that number to this. False with the reason in why: it is no region, none has that number, or
// another one has the name. A reflected temperature of a black body goes.
bool ChangeRegion(Region region, std::string& why);
void RemoveRegion(std::int32_t number);
void SelectRegion(std::int32_t number);  // a number of none: none is

// All at once, from a file: each keeps its number, one of 0 gets one. False with the
// reason in why, and the list as it was: one is no region, a name stands twice, or there are too many.
bool SetRegions(std::vector<Region> regions, std::string& why);

// Regions as they stood before, which is no gesture: for undo.
void PutBackRegions(std::vector<Region> regions);

// "rectangle", "ellipse", "line", "point", as files and scripts name them.
std::string_view ShapeName(RegionShape shape);
std::optional<RegionShape> ShapeNamed(std::string_view name);

// Called after each change of Regions or SelectedRegion.
void SetRegionsHook(void (*changed)());

// No regions; numbers begin anew. No hook.
void ResetRegions();

}  // namespace kelvo
