#include "regions/region_view.h"

#include "display/display_pipeline.h"
#include "display/frame_bitmap.h"
#include "platform/paint.h"
#include "platform/timers.h"
#include "regions/region_list.h"
#include "regions/regions_file.h"
#include "state/windows.h"
#include "ui/view_switch.h"
#include "ui/window_file.h"

#include <algorithm>
#include <string>
#include <vector>

namespace kelvo {

namespace {

constexpr const char* kShowKey = "ShowRegions";
constexpr ColorRef kSelectedTone = 0x0000E0FF;  // amber
constexpr int kGripHalf = 3;                    // logical pixels

bool isShown = true;
bool isEdited = false;

// In two tones, so that it is seen on black and on white.
void DrawTwice(const std::vector<Point>& points, const Rect& clip, ColorRef tone)
{
    std::vector<Point> rim = points;
    for (Point& point : rim) point = {point.x + 1, point.y + 1};
    DrawPolyline(hWndMain, rim, clip, kRegionRim);
    DrawPolyline(hWndMain, points, clip, tone);
}

Rect Within(const Rect& area, const Rect& clip)
{
    return {std::max(area.left, clip.left), std::max(area.top, clip.top), std::min(area.right, clip.right),
            std::min(area.bottom, clip.bottom)};
}

void FillWithin(const Rect& area, const Rect& clip, ColorRef color)
{
    const Rect seen = Within(area, clip);
    if (seen.left < seen.right && seen.top < seen.bottom) FillSurface(hWndMain, seen, color);
}

void DrawGrips(const Region& region, const PictureMap& map, const Rect& clip)
{
    for (const RegionGrip& grip : GripsOf(region)) {
        const Point at = PlaceOfGrip(region, grip, map);
        FillWithin({at.x - kGripHalf - 1, at.y - kGripHalf - 1, at.x + kGripHalf + 2, at.y + kGripHalf + 2}, clip,
                   kRegionRim);
        FillWithin({at.x - kGripHalf, at.y - kGripHalf, at.x + kGripHalf + 1, at.y + kGripHalf + 1}, clip,
                   kSelectedTone);
    }
}

void DrawName(const Region& region, const PictureMap& map, const Rect& clip, ColorRef tone)
{
    const Point size{TextWidth(hWndMain, region.name), PictureTextHeight()};
    const std::optional<Point> place = PlaceOfName(region, map, clip, size);
    if (place) DrawTextLine(hWndMain, place->x, place->y, region.name, TextAlign::kLeft, tone, kRegionRim);
}

void OnChange()
{
    SetTimer(hWndMain, kKeepRegionsTimer, kKeepRegionsMs);
    RepaintPicture();
}

}  // namespace

void OpenRegions()
{
    isShown = WindowFileInt(kViewSection, kShowKey, 1) != 0;
    LoadKeptRegions();
    SetRegionsHook(OnChange);
    AddPictureLayer(PaintRegions);
}

bool RegionsAreShown()
{
    return isShown;
}

void ShowRegions(bool on)
{
    isShown = on;
    WriteWindowFile(kViewSection, kShowKey, on ? "1" : "0");
    RepaintPicture();
}

bool RegionsAreEdited()
{
    return isEdited && isShown;
}

void EditRegions(bool on)
{
    isEdited = on;
    RepaintPicture();
}

std::optional<PictureMap> MapOfPicture()
{
    const Rect points = PicturePoints();
    const Point size = PictureSize();
    if (size.x <= 0 || size.y <= 0 || points.Width() <= 0 || points.Height() <= 0) return std::nullopt;
    PictureMap map;
    map.scaleX = static_cast<double>(points.Width()) / size.x;
    map.scaleY = static_cast<double>(points.Height()) / size.y;
    map.originX = points.left - DefaultFrameRect().left * map.scaleX;  // columns begin with the pan's
    map.originY = points.top;
    return map;
}

void PaintRegions(bool /*newFrame*/)
{
    if (!isShown || Regions.empty()) return;
    const std::optional<PictureMap> map = MapOfPicture();
    if (!map) return;
    const Rect clip = PicturePoints();
    for (const Region& region : Regions) {
        const bool isSelected = RegionsAreEdited() && region.number == SelectedRegion;
        const ColorRef tone = isSelected ? kSelectedTone : kRegionTone;
        for (const std::vector<Point>& line : OutlineOf(region, *map)) DrawTwice(line, clip, tone);
        DrawName(region, *map, clip, tone);
        if (isSelected) DrawGrips(region, *map, clip);
    }
}

void ResetRegionView()
{
    isShown = true;
    isEdited = false;
}

}  // namespace kelvo
