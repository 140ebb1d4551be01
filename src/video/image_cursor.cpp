#include "video/image_cursor.h"

#include "display/display_pipeline.h"
#include "display/lookup_table.h"
#include "grabber/frame_size.h"
#include "platform/dialog.h"
#include "platform/paint.h"
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
#include <cmath>

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

CursorMapping MappingInForce()
{
    const Rect area = ViewArea();
    const Point frame = FrameSizeOnView();
    const int xzoom = std::max(Xzoom, 1);
    const int yzoom = std::max(Yzoom, 1);
    return {frame,
            {Xpan, Ypan},
            {std::min(frame.x - Xpan, ViewWidth / xzoom), std::min(frame.y - Ypan, ViewHeight / yzoom)},
            {area.Width(), area.Height()}};
}

// Beyond any screen, and far from the end of the integers.
constexpr double kFarthestPlace = 1e6;

// The mapping takes an image pixel for zoom logical pixels. At a fractional device ratio the painter's blocks are
// larger or smaller than that, and the pointer is stretched along: a factor, 1 at whole ratios.
double BlockStretch(std::int32_t zoom)
{
    constexpr int kPixels = 12000;
    const int nominal = std::clamp(zoom, 1, 1000);
    const int extent = ScaledExtent(hWndMain, kPixels, nominal);
    return extent > 0 ? static_cast<double>(extent) / kPixels / nominal : 1.0;
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

void WriteLevels()
{
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

Point PixelUnder(double x, double y, const CursorMapping& mapping)
{
    const auto along = [](double at, int pan, int shown, int clip, int size) {
        if (clip <= 0 || size <= 0) return 0;
        const double pixel = pan + 0.49 + at * shown / clip;
        return static_cast<int>(std::clamp(std::trunc(pixel), 0.0, size - 1.0));
    };
    return {along(x, mapping.pan.x, mapping.shown.x, mapping.clip.x, mapping.frame.x),
            along(y, mapping.pan.y, mapping.shown.y, mapping.clip.y, mapping.frame.y)};
}

Point PlaceOver(Point pixel, const CursorMapping& mapping)
{
    // PixelUnder cuts off after adding 0.49: a hundredth up is the middle of what falls on the pixel.
    const auto along = [](int at, int pan, int shown, int clip) {
        if (shown <= 0) return 0;
        const double place = (static_cast<double>(at) - pan + 0.01) * clip / shown;
        return static_cast<int>(std::clamp(std::floor(place + 0.5), 0.0, kFarthestPlace));
    };
    return {along(pixel.x, mapping.pan.x, mapping.shown.x, mapping.clip.x),
            along(pixel.y, mapping.pan.y, mapping.shown.y, mapping.clip.y)};
}

Point ImageCursorPosition()
{
    if (!hWndMain) return {};
    ClipPointer(ViewArea());
    const Point pointer = ScreenToClient(hWndMain, GetPointerPosition());
    return PixelUnder(pointer.x / BlockStretch(Xzoom), (pointer.y - PanelHeight()) / BlockStretch(Yzoom),
                      MappingInForce());
}

void PutPointerOverPixel(Point pixel)
{
    if (!hWndMain) return;
    const Point place = PlaceOver(pixel, MappingInForce());
    SetPointerPosition(
        ClientToScreen(hWndMain, {static_cast<int>(std::lround(place.x * BlockStretch(Xzoom))),
                                  static_cast<int>(std::lround(place.y * BlockStretch(Yzoom))) + PanelHeight()}));
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
