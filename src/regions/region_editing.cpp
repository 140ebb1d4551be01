#include "regions/region_editing.h"

#include "display/display_pipeline.h"
#include "grabber/frame_size.h"
#include "platform/box.h"
#include "platform/window.h"
#include "regions/region_list.h"
#include "regions/region_view.h"
#include "resources/ids.h"
#include "ui/undo.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr int kGripReach = 6;  // logical pixels
constexpr int kBodyReach = 4;
constexpr std::int32_t kFarStep = 10;  // pixels, with Shift

std::optional<RegionShape> drawnShape;

struct Drag {
    Region before;  // as it was taken
    RegionGrip grip;
    Point from{};        // the pixel that was pressed
    bool isNew = false;  // it is being drawn
    bool moved = false;
    std::int32_t selectedBefore = 0;
};
std::optional<Drag> drag;

bool Holds(const Rect& area, Point at)
{
    return at.x >= area.left && at.x < area.right && at.y >= area.top && at.y < area.bottom;
}

std::optional<RegionGrip> GripUnder(Point at, const Region& region, const PictureMap& map)
{
    for (const RegionGrip& grip : GripsOf(region)) {
        const Point place = PlaceOfGrip(region, grip, map);
        if (std::abs(place.x - at.x) <= kGripReach && std::abs(place.y - at.y) <= kGripReach) return grip;
    }
    return std::nullopt;
}

bool LiesUnder(Point pixel, const Region& region, const PictureMap& map)
{
    const Point size = FrameSizeOnView();
    const std::vector<PixelRun> runs = PixelsOf(region.shape, region.place, size.x, size.y);
    return IsNear(runs, pixel, static_cast<int>(std::lround(kBodyReach / std::max(map.scaleX, 1.0))));
}

// The selected one first, then that on top.
const Region* RegionUnder(Point pixel, const PictureMap& map)
{
    const Region* const selected = FindRegion(SelectedRegion);
    if (selected && LiesUnder(pixel, *selected, map)) return selected;
    const auto found = std::ranges::find_if(Regions.rbegin(), Regions.rend(),
                                            [&](const Region& r) { return LiesUnder(pixel, r, map); });
    return found == Regions.rend() ? nullptr : &*found;
}

void Take(const Region& region, const RegionGrip& grip, Point pixel, bool isNew, std::int32_t selectedBefore)
{
    drag = Drag{.before = region, .grip = grip, .from = pixel, .isNew = isNew, .selectedBefore = selectedBefore};
}

void TakeWhatLiesUnder(Point at, Point pixel, const PictureMap& map)
{
    const Region* const selected = FindRegion(SelectedRegion);
    std::optional<RegionGrip> grip = selected ? GripUnder(at, *selected, map) : std::nullopt;
    const Region* const taken = grip ? selected : RegionUnder(pixel, map);
    const std::int32_t selectedBefore = SelectedRegion;
    SelectRegion(taken ? taken->number : 0);
    if (!taken) return;
    BeginGesture({});
    Take(*taken, grip.value_or(RegionGrip{}), pixel, false, selectedBefore);
}

void BeginShape(RegionShape shape, Point pixel)
{
    BeginGesture({});
    std::string why;
    Region region;
    region.shape = shape;
    region.place = {pixel.x, pixel.y, pixel.x, pixel.y};
    const std::int32_t selectedBefore = SelectedRegion;
    const std::int32_t number = AddRegion(region, why);
    SelectRegion(number);
    const Region* const added = FindRegion(number);
    if (!added) {
        MessageBeep(Sound::kDefault);
        EndGesture();
        return;
    }
    const bool isPoint = shape == RegionShape::kPoint;
    Take(*added, isPoint ? RegionGrip{} : RegionGrip{pixel, false, false, true, true}, pixel, true, selectedBefore);
}

struct Movement {
    int command = 0;
    Point by;
    bool resizes = false;
};
constexpr Movement kMovements[] = {
    {kCmdPanRight, {1, 0}},
    {kCmdPanLeft, {-1, 0}},
    {kCmdPanUp, {0, -1}},
    {kCmdPanDown, {0, 1}},
    {kCmdOffsetRight, {kFarStep, 0}},
    {kCmdOffsetLeft, {-kFarStep, 0}},
    {kCmdOffsetUp, {0, -kFarStep}},
    {kCmdOffsetDown, {0, kFarStep}},
    {kCmdRegionWider, {1, 0}, true},
    {kCmdRegionNarrower, {-1, 0}, true},
    {kCmdViewFaster, {0, -1}, true},  // Ctrl+Up
    {kCmdViewSlower, {0, 1}, true},   // Ctrl+Down
};

// The menu has items for Ctrl+Up and Ctrl+Down: chosen there they mean what they say.
bool ComesFromItsKey(int command)
{
    if (command == kCmdViewFaster) return KeyIsDown(Key::kUp);
    return command != kCmdViewSlower || KeyIsDown(Key::kDown);
}

void Place(Region region, const RegionPlace& place)
{
    region.place = place;
    std::string why;
    ChangeRegion(std::move(region), why);  // a place within what places may be is never refused
}

}  // namespace

std::optional<RegionShape> DrawnShape()
{
    return drawnShape;
}

void DrawShape(std::optional<RegionShape> shape)
{
    drawnShape = shape;
}

bool PressRegions(Point at)
{
    if (!RegionsAreEdited()) return false;
    const std::optional<PictureMap> map = MapOfPicture();
    if (!map) return false;
    EndRegionDrag();
    if (!Holds(PicturePoints(), at)) return true;
    const Point pixel = PixelUnder(at);
    if (drawnShape) {
        BeginShape(*drawnShape, pixel);
    } else {
        TakeWhatLiesUnder(at, pixel, *map);
    }
    return true;
}

bool DragRegions(Point at)
{
    if (!drag) return false;
    const Point pixel = PixelUnder(at);
    const Point by{pixel.x - drag->from.x, pixel.y - drag->from.y};
    if (by.x != 0 || by.y != 0) drag->moved = true;
    if (drag->moved) Place(drag->before, Pulled(drag->before, drag->grip, by));
    return true;
}

void EndRegionDrag()
{
    if (!drag) return;
    const Drag ended = *drag;
    drag.reset();
    if (ended.isNew && !ended.moved && ended.before.shape != RegionShape::kPoint) {
        RemoveRegion(ended.before.number);
        const std::optional<PictureMap> map = MapOfPicture();
        const Region* const under = map ? RegionUnder(ended.from, *map) : nullptr;
        SelectRegion(under ? under->number : 0);
    }
    EndGesture();
}

bool GiveUpRegionDrag()
{
    if (!drag) return false;
    const Drag given = *drag;
    drag.reset();
    if (given.isNew) {
        RemoveRegion(given.before.number);
    } else {
        Place(given.before, given.before.place);
    }
    SelectRegion(given.selectedBefore);
    EndGesture();
    return true;
}

bool RegionTakesCommand(int id)
{
    const Region* const selected = RegionsAreEdited() && !drag ? FindRegion(SelectedRegion) : nullptr;
    if (!selected) return false;
    if (id == kCmdRegionRemove) {
        RemoveRegion(selected->number);
        return true;
    }
    const auto* const movement = std::ranges::find(kMovements, id, &Movement::command);
    if (movement == std::end(kMovements) || !ComesFromItsKey(id)) return false;
    const Gesture gesture({.repeats = true});
    Place(*selected, movement->resizes ? Resized(*selected, movement->by) : Pulled(*selected, {}, movement->by));
    return true;
}

std::int32_t AddRegionInTheMiddle(RegionShape shape, std::string& why)
{
    constexpr std::int32_t kUsualColumns = 640;  // where no frame is on view
    constexpr std::int32_t kUsualRows = 512;
    const Point size = FrameSizeOnView();
    const std::int32_t columns = size.x > 0 ? size.x : kUsualColumns;
    const std::int32_t rows = size.y > 0 ? size.y : kUsualRows;
    Region region;
    region.shape = shape;
    const bool isPoint = shape == RegionShape::kPoint;
    const std::int32_t width = isPoint ? 1 : std::max(columns / 4, 1);
    const std::int32_t height = isPoint ? 1 : std::max(rows / 4, 1);
    region.place.x1 = (columns - width) / 2;
    region.place.y1 = (rows - height) / 2;
    region.place.x2 = region.place.x1 + width - 1;
    region.place.y2 = region.place.y1 + height - 1;
    const Gesture gesture;
    const std::int32_t number = AddRegion(region, why);
    if (number != 0) SelectRegion(number);
    return number;
}

void ResetRegionEditing()
{
    drawnShape.reset();
    drag.reset();
}

}  // namespace kelvo
