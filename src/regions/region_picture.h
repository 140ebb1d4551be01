// A region as it is drawn and taken hold of: grips, outline, and what a pull at a grip makes of its place. Pure
// geometry: no window, no state.
#pragma once

#include "platform/types.h"
#include "regions/region.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

// Outlines and names are drawn in two tones, the second one below and to the right of the first one by a pixel, so that
// they are seen on black and on white. 0x00BBGGRR.
inline constexpr std::uint32_t kRegionTone = 0x00FFFFFF;
inline constexpr std::uint32_t kRegionRim = 0x00000000;

// How pixels of the frame lie in the main window: the point of a pixel's upper left edge, in fractions of logical
// pixels.
struct PictureMap {
    double originX = 0;
    double originY = 0;
    double scaleX = 1;  // logical pixels a column and a row
    double scaleY = 1;

    Point ToClient(double column, double row) const;
};

// Which coordinates of a place follow a pull, and where it is taken hold of: a pixel. A body has all of them.
struct RegionGrip {
    Point at{};
    bool x1 = true;
    bool y1 = true;
    bool x2 = true;
    bool y2 = true;
    friend bool operator==(const RegionGrip&, const RegionGrip&) = default;
};

// A rectangle and an ellipse have eight, at corners and in the middle of sides, a line its two ends, a point none.
std::vector<RegionGrip> GripsOf(const Region& region);

// The place after a pull by so many pixels. It stays within what places may be; a body keeps its size.
RegionPlace Pulled(const Region& region, const RegionGrip& grip, Point by);
// Its right and lower side, or a line's second end, moved; a side doesn't pass the one across. A point stays.
RegionPlace Resized(const Region& region, Point by);

// Whether a pixel is one of these or lies within reach of one, in both directions.
bool IsNear(std::span<const PixelRun> runs, Point pixel, int reach);

// The outline in the main window, closed: around a rectangle's pixels, the ellipse that touches those edges, a line
// from the middle of one end to that of the other, a cross at a point.
std::vector<std::vector<Point>> OutlineOf(const Region& region, const PictureMap& map);

// Where the upper left corner of its name lies, of that size in logical pixels: above its own upper left corner, below
// it where there is no room; nullopt where it wouldn't be seen whole.
std::optional<Point> PlaceOfName(const Region& region, const PictureMap& map, const Rect& clip, const Point& size);

// The middle of a grip there: on the outline.
Point PlaceOfGrip(const Region& region, const RegionGrip& grip, const PictureMap& map);

}  // namespace kelvo
