#include "video/image_cursor.h"

#include "display/display_pipeline.h"
#include "display/lookup_table.h"
#include "platform/dialog.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/window.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/state_registry.h"
#include "ui/docking.h"
#include "ui/panel_readouts.h"
#include "video/image_cursor_write.h"

#include <algorithm>

namespace kelvo {

namespace write {
TrackballVariables trackball;
}

constinit const std::int32_t& TrackballMode = write::trackball.TrackballMode;

namespace {

// Where the pointer was when the mode began, screen coordinates.
std::int32_t SavedCursorX = 0;
std::int32_t SavedCursorY = 0;

const StateNames kStateNames{
    Named("TrackballMode", TrackballMode),
    Named("SavedCursorX", SavedCursorX),
    Named("SavedCursorY", SavedCursorY),
};

// The same area where pointer positions are counted: they follow the scrolling of a picture larger than the window.
Rect ScrolledViewArea()
{
    const Rect area = ViewArea();
    const Point origin = GetScrollOrigin(hWndMain);
    return {area.left + origin.x, area.top + origin.y, area.right + origin.x, area.bottom + origin.y};
}

Rect Common(const Rect& a, const Rect& b)
{
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

Rect ToScreen(const Rect& client)
{
    const Point topLeft = ClientToScreen(hWndMain, {client.left, client.top});
    return {topLeft.x, topLeft.y, topLeft.x + client.Width(), topLeft.y + client.Height()};
}

// The part of the picture's area that shows the picture; the whole area where there is none.
Rect PictureInSight()
{
    const Rect picture = PicturePoints();
    const Rect area = ViewArea();
    if (picture.Empty()) return area;
    const Point origin = GetScrollOrigin(hWndMain);
    const Rect seen{picture.left - origin.x, picture.top - origin.y, picture.right - origin.x,
                    picture.bottom - origin.y};
    const Rect inSight = Common(Common(ToScreen(seen), ToScreen(GetPictureArea(hWndMain))), area);
    return inSight.Empty() ? area : inSight;
}

// In a small window the rest lies at the edge of what the pointer can reach.
Point TrackballCentre()
{
    const Rect area = ScrolledViewArea();
    const Point origin = GetScrollOrigin(hWndMain);
    const Point centre = ClientToScreen(hWndMain, {TrackballCentreX + origin.x, TrackballCentreY + origin.y});
    return {std::max(std::min(centre.x, area.right - 1), area.left),
            std::max(std::min(centre.y, area.bottom - 1), area.top)};
}

// A place of a picture larger than the window may be scrolled away: then it comes to the middle.
void BringIntoSight(Point place)
{
    const Rect area = GetPictureArea(hWndMain);
    const Point origin = GetScrollOrigin(hWndMain);
    const auto along = [](int at, int from, int to, int scrolled) {
        const bool inSight = at - scrolled >= from && at - scrolled < to;
        return inSight ? scrolled : at - (from + to) / 2;
    };
    const Point middle{along(place.x, area.left, area.right, origin.x),
                       along(place.y, area.top, area.bottom, origin.y)};
    if (middle != origin) ScrollPictureTo(hWndMain, RestingOrigin(hWndMain, middle));
}

void WriteLevels()
{
    if (LevelsAreFitted) return;
    WritePrivateProfileString("Display", "Contrast", Format("%d", Contrast), IniFilePath);
    WritePrivateProfileString("Display", "Brightness", Format("%d", Brightness), IniFilePath);
}

void EnterTrackball()
{
    const Point centre = TrackballCentre();
    const Point saved = ImageCursorOn ? GetPointerPosition() : centre;
    SavedCursorX = saved.x;
    SavedCursorY = saved.y;
    SetPointerPosition(centre);
    ClipPointer(ViewArea());
    ShowLevelsInPanel();
    SetPointer(Pointer::kTrackball);
    write::trackball.TrackballMode = 1;
}

void LeaveTrackball()
{
    if (ImageCursorOn) {
        SetPointer(Pointer::kCross);
        SetPointerPosition({SavedCursorX, SavedCursorY});
    } else {
        ReleasePointerClip();
        SetPointer(Pointer::kArrow);
    }
    WriteLevels();
    write::trackball.TrackballMode = 0;
}

}  // namespace

Point ImageCursorPosition()
{
    if (!hWndMain) return {};
    ClipPointer(PictureInSight());
    return PixelUnder(ScreenToClient(hWndMain, GetPointerPosition()));
}

void PutPointerOverPixel(Point pixel)
{
    if (!hWndMain) return;
    const Point place = PlaceOver(pixel);
    BringIntoSight(place);
    SetPointerPosition(ClientToScreen(hWndMain, place));
}

void TrackballToggle()
{
    if (!hWndMain) return;
    if (TrackballMode) {
        LeaveTrackball();
    } else {
        EnterTrackball();
    }
}

TrackballLevels LevelsAfterMotion(TrackballLevels levels, int dx, int dy)
{
    constexpr int kSidewaysRest = 4;
    constexpr int kUpDownRest = 20;
    if (dx > kSidewaysRest) levels.brightness = std::min(levels.brightness + (dx + 2) / 5, kMaxBrightness);
    if (dx < -kSidewaysRest) levels.brightness = std::max(levels.brightness - (-dx + 2) / 5, kMinBrightness);
    if (dy > kUpDownRest) levels.contrast = std::max(levels.contrast - 1, kMinContrast);
    if (dy < -kUpDownRest) levels.contrast = std::min(levels.contrast + 1, kMaxContrast);
    return levels;
}

void TrackballMotion()
{
    SetPointer(Pointer::kTrackball);
    const Point centre = TrackballCentre();
    const Point pointer = GetPointerPosition();
    if (pointer == centre) return;
    const TrackballLevels levels =
        LevelsAfterMotion({Contrast, Brightness}, pointer.x - centre.x, pointer.y - centre.y);
    SetPointerPosition(centre);
    BuildDisplayLut(levels.contrast, levels.brightness);
}

void ResetImageCursor()
{
    write::trackball.TrackballMode = 0;
    SavedCursorX = 0;
    SavedCursorY = 0;
}

}  // namespace kelvo
