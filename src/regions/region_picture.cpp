#include "regions/region_picture.h"

#include "regions/region_list.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvo {

namespace {

constexpr double kHalf = 0.5;       // of a pixel
constexpr int kEllipsePoints = 72;  // smooth at any size that a screen has
constexpr int kCrossArm = 6;        // logical pixels
constexpr int kNameGap = 3;

struct Bounds {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
};

Bounds BoundsOf(const RegionPlace& place)
{
    return {std::min(place.x1, place.x2), std::min(place.y1, place.y2), std::max(place.x1, place.x2),
            std::max(place.y1, place.y2)};
}

// As much of a pull as both coordinates that follow it have room for.
std::int32_t WithRoom(std::int32_t by, bool first, std::int32_t a, bool second, std::int32_t b)
{
    const auto limit = [&by](std::int32_t from) {
        by = std::clamp(by, kLeastRegionPlace - from, kMostRegionPlace - from);
    };
    if (first) limit(a);
    if (second) limit(b);
    return by;
}

std::int32_t SideAfter(std::int32_t side, std::int32_t across, std::int32_t by)
{
    return std::clamp(side + by, across, kMostRegionPlace);
}

std::vector<Point> EllipseIn(const Point& from, const Point& to)
{
    const double middleX = (from.x + to.x) / 2.0;
    const double middleY = (from.y + to.y) / 2.0;
    std::vector<Point> points;
    for (int i = 0; i <= kEllipsePoints; ++i) {
        const double angle = 2 * std::numbers::pi * i / kEllipsePoints;
        points.push_back({static_cast<int>(std::lround(middleX + (to.x - from.x) / 2.0 * std::cos(angle))),
                          static_cast<int>(std::lround(middleY + (to.y - from.y) / 2.0 * std::sin(angle)))});
    }
    return points;
}

}  // namespace

Point PictureMap::ToClient(double column, double row) const
{
    return {static_cast<int>(std::lround(originX + column * scaleX)),
            static_cast<int>(std::lround(originY + row * scaleY))};
}

std::vector<RegionGrip> GripsOf(const Region& region)
{
    const auto& [x1, y1, x2, y2] = region.place;
    if (region.shape == RegionShape::kPoint) return {};
    if (region.shape == RegionShape::kLine)
        return {{{x1, y1}, true, true, false, false}, {{x2, y2}, false, false, true, true}};
    const std::int32_t middleX = x1 + (x2 - x1) / 2;
    const std::int32_t middleY = y1 + (y2 - y1) / 2;
    return {{{x1, y1}, true, true, false, false},       {{x2, y2}, false, false, true, true},
            {{x1, y2}, true, false, false, true},       {{x2, y1}, false, true, true, false},
            {{x1, middleY}, true, false, false, false}, {{x2, middleY}, false, false, true, false},
            {{middleX, y1}, false, true, false, false}, {{middleX, y2}, false, false, false, true}};
}

RegionPlace Pulled(const Region& region, const RegionGrip& grip, Point by)
{
    RegionPlace place = region.place;
    const std::int32_t dx = WithRoom(by.x, grip.x1, place.x1, grip.x2, place.x2);
    const std::int32_t dy = WithRoom(by.y, grip.y1, place.y1, grip.y2, place.y2);
    if (grip.x1) place.x1 += dx;
    if (grip.y1) place.y1 += dy;
    if (grip.x2) place.x2 += dx;
    if (grip.y2) place.y2 += dy;
    return place;
}

RegionPlace Resized(const Region& region, Point by)
{
    if (region.shape == RegionShape::kPoint) return region.place;
    if (region.shape == RegionShape::kLine) return Pulled(region, {{}, false, false, true, true}, by);
    const Bounds bounds = BoundsOf(region.place);
    return {bounds.left, bounds.top, SideAfter(bounds.right, bounds.left, by.x),
            SideAfter(bounds.bottom, bounds.top, by.y)};
}

bool IsNear(std::span<const PixelRun> runs, Point pixel, int reach)
{
    return std::ranges::any_of(runs, [&](const PixelRun& run) {
        return std::abs(run.row - pixel.y) <= reach && pixel.x >= run.first - reach && pixel.x <= run.last + reach;
    });
}

std::vector<std::vector<Point>> OutlineOf(const Region& region, const PictureMap& map)
{
    const RegionPlace& place = region.place;
    const Bounds bounds = BoundsOf(place);
    const Point from = map.ToClient(bounds.left, bounds.top);
    const Point to = map.ToClient(bounds.right + 1, bounds.bottom + 1);
    const Point first = map.ToClient(place.x1 + kHalf, place.y1 + kHalf);
    switch (region.shape) {
        case RegionShape::kRectangle:
            return {{from, {to.x, from.y}, to, {from.x, to.y}, from}};
        case RegionShape::kEllipse:
            return {EllipseIn(from, to)};
        case RegionShape::kLine:
            return {{first, map.ToClient(place.x2 + kHalf, place.y2 + kHalf)}};
        case RegionShape::kPoint:
            break;
    }
    return {{{first.x - kCrossArm, first.y}, {first.x + kCrossArm, first.y}},
            {{first.x, first.y - kCrossArm}, {first.x, first.y + kCrossArm}}};
}

std::optional<Point> PlaceOfName(const Region& region, const PictureMap& map, const Rect& clip, const Point& size)
{
    const Bounds bounds = BoundsOf(region.place);
    const Point corner = map.ToClient(bounds.left, bounds.top);
    const int x = corner.x + kNameGap;
    const int above = corner.y - size.y - kNameGap;
    const int y = above >= clip.top ? above : corner.y + kNameGap;
    const bool fits = x >= clip.left && x + size.x <= clip.right && y >= clip.top && y + size.y <= clip.bottom;
    return fits ? std::optional(Point{x, y}) : std::nullopt;
}

Point PlaceOfGrip(const Region& region, const RegionGrip& grip, const PictureMap& map)
{
    constexpr double kMiddle = 0.5;
    if (region.shape == RegionShape::kLine) return map.ToClient(grip.at.x + kMiddle, grip.at.y + kMiddle);
    // On the outer edge of the pixel for a side, in its middle between two sides.
    const auto& [x1, y1, x2, y2] = region.place;
    const auto edge = [](bool first, bool second, std::int32_t at, std::int32_t one, std::int32_t other) {
        if (!first && !second) return at + kMiddle;
        const bool isFar = first ? one > other : other >= one;
        return static_cast<double>(at) + (isFar ? 1 : 0);
    };
    return map.ToClient(edge(grip.x1, grip.x2, grip.at.x, x1, x2), edge(grip.y1, grip.y2, grip.at.y, y1, y2));
}

}  // namespace kelvo
