#include "video/image_cursor.h"

#include "display/display_pipeline.h"
#include "display/lookup_table.h"
#include "platform/dialog.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/window.h"
#include "state/contrast_fit.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/state_registry.h"
#include "ui/docking.h"
#include "ui/panel_readouts.h"
#include "ui/status.h"
#include "ui/undo.h"
#include "video/image_cursor_write.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

namespace write {
TrackballVariables trackball;
}

constinit const std::int32_t& TrackballMode = write::trackball.TrackballMode;

namespace {

constexpr std::string_view kTrackballHint =
    "  Trackball: move the pointer for brightness and contrast. Esc, F10 or the right button ends it";

// What the hint stands in place of; none while it isn't shown.
struct SavedStatus {
    std::string text;
    int align = kLeftAligned;
};
std::optional<SavedStatus> statusBefore;

// Motion, in pixels, that changes nothing.
constexpr int kSidewaysRest = 4;
constexpr int kUpDownRest = 20;

// Where the pointer can't be moved: from where its motion counts, screen coordinates.
std::optional<Point> motionFrom;

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
    const ContrastPair levels = ContrastToStore();
    WritePrivateProfileString("Display", "Contrast", Format("%d", levels.contrast), IniFilePath);
    WritePrivateProfileString("Display", "Brightness", Format("%d", levels.brightness), IniFilePath);
}

void EnterTrackball()
{
    BeginGesture({});
    const Point centre = TrackballCentre();
    const Point saved = ImageCursorOn ? GetPointerPosition() : centre;
    SavedCursorX = saved.x;
    SavedCursorY = saved.y;
    SetPointerPosition(centre);
    motionFrom.reset();
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
    EndGesture();
}

// Anything may have been told since.
void ShowTrackballHint()
{
    if (statusBefore && StatusText != kTrackballHint) StatusMessage(kTrackballHint, kLeftAligned);
}

void TakeStatusBack()
{
    if (statusBefore && StatusText == kTrackballHint) StatusMessage(statusBefore->text, statusBefore->align);
    statusBefore.reset();
}

void ChangeLevels(int dx, int dy)
{
    const TrackballLevels levels = LevelsAfterMotion({Contrast, Brightness}, dx, dy);
    BuildDisplayLut(levels.contrast, levels.brightness);
}

// Small motions add up until they pass the rest.
void TrackballMotionFrom(Point& from)
{
    const Point pointer = GetPointerPosition();
    const int dx = pointer.x - from.x;
    const int dy = pointer.y - from.y;
    if (std::abs(dx) > kSidewaysRest) from.x = pointer.x;
    if (std::abs(dy) > kUpDownRest) from.y = pointer.y;
    if (std::abs(dx) > kSidewaysRest || std::abs(dy) > kUpDownRest) ChangeLevels(dx, dy);
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
    if (dx > kSidewaysRest) levels.brightness = std::min(levels.brightness + (dx + 2) / 5, kMaxBrightness);
    if (dx < -kSidewaysRest) levels.brightness = std::max(levels.brightness - (-dx + 2) / 5, kMinBrightness);
    if (dy > kUpDownRest) levels.contrast = std::max(levels.contrast - 1, kMinContrast);
    if (dy < -kUpDownRest) levels.contrast = std::min(levels.contrast + 1, kMaxContrast);
    return levels;
}

void ToggleTrackballMode()
{
    if (!hWndMain) return;
    TrackballToggle();
    if (!TrackballMode) {
        TakeStatusBack();
        return;
    }
    SavedStatus before;
    before.align = GetStatusText(before.text);
    statusBefore = before;
    ShowTrackballHint();
}

void TrackballMotion()
{
    SetPointer(Pointer::kTrackball);
    ShowTrackballHint();
    if (!PointerCanBeMoved()) {
        if (!motionFrom) motionFrom = GetPointerPosition();
        TrackballMotionFrom(*motionFrom);
        return;
    }
    const Point centre = TrackballCentre();
    const Point pointer = GetPointerPosition();
    if (pointer == centre) return;
    SetPointerPosition(centre);
    ChangeLevels(pointer.x - centre.x, pointer.y - centre.y);
}

void TrackballPointerLeft()
{
    motionFrom.reset();
}

void ResetImageCursor()
{
    write::trackball.TrackballMode = 0;
    SavedCursorX = 0;
    SavedCursorY = 0;
    statusBefore.reset();
    motionFrom.reset();
}

}  // namespace kelvo
