#include "video/zoom_pan.h"

#include "display/display_pipeline.h"
#include "grabber/frame_size.h"
#include "platform/paint.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/docking.h"
#include "ui/undo.h"
#include "video/image_cursor.h"
#include "video/video.h"

#include <algorithm>
#include <cstdlib>

namespace kelvo {

namespace {

constexpr std::int64_t kMinZoom = 1;
constexpr std::int64_t kMaxZoom = 16;
// A sixteenth of the frame: what the large steps move.
constexpr std::int64_t kPageDivisor = 16;

// Values of settings files come in unlimited: the sums are made in 64 bits.
std::int64_t MultipleOfFour(std::int64_t value)
{
    return value / 4 * 4;
}

bool Store(std::int32_t& value, std::int64_t result)
{
    value = static_cast<std::int32_t>(std::clamp<std::int64_t>(result, INT32_MIN, INT32_MAX));
    return true;
}

bool StepUp(std::int32_t& value, std::int64_t step, std::int64_t limit)
{
    return value < limit && Store(value, std::min(value + step, limit));
}

bool StepDown(std::int32_t& value, std::int64_t step, std::int64_t limit)
{
    return value != limit && Store(value, std::max(value - step, limit));
}

// The horizontal offset moves in whole multiples of four.
bool OffsetStepUp(std::int32_t& value, std::int64_t step, std::int64_t limit)
{
    return value < limit && Store(value, std::min(MultipleOfFour(value + step), limit));
}

bool OffsetStepDown(std::int32_t& value, std::int64_t step)
{
    return Store(value, std::max<std::int64_t>(MultipleOfFour(value - step), 0));
}

// One axis of the view, for keeping the pivot.
struct Axis {
    std::int64_t frame;
    std::int64_t roi;
    std::int64_t shown;  // pixels that fit into the view at the new zoom
};

std::int64_t PanAround(std::int64_t pan, std::int64_t pivot, const Axis& axis)
{
    const std::int64_t end = std::min(axis.frame, pan + axis.shown);
    const std::int64_t start = std::max<std::int64_t>(pan, 0);
    const std::int64_t centred = pan - ((end + start) / 2 - pivot);
    return std::max<std::int64_t>(std::min(centred, axis.roi - axis.shown), 0);
}

// The picture at another zoom: an offset ends where the picture meets the view's edge.
void SetZooms(DisplayGeometry& g, std::int64_t xzoom, std::int64_t yzoom, const ViewLimits& limits)
{
    Store(g.xzoom, xzoom);
    Store(g.yzoom, yzoom);
    const std::int64_t freeX = limits.viewWidth - std::int64_t{limits.width} * g.xzoom;
    const std::int64_t freeY = limits.viewHeight - std::int64_t{limits.height} * g.yzoom;
    Store(g.xoffset, MultipleOfFour(std::max<std::int64_t>(std::min<std::int64_t>(g.xoffset, freeX), 0)));
    Store(g.yoffset, std::max<std::int64_t>(std::min<std::int64_t>(g.yoffset, freeY), 0));
}

bool StepZoom(DisplayGeometry& g, std::int64_t step, const ViewLimits& limits)
{
    const auto refused = [step](std::int32_t zoom) { return step > 0 ? zoom >= kMaxZoom : zoom <= kMinZoom; };
    if (refused(g.xzoom) || refused(g.yzoom)) return false;
    SetZooms(g, g.xzoom + step, g.yzoom + step, limits);
    return true;
}

bool Zoom(DisplayGeometry& g, std::int64_t step, const ViewLimits& limits, Point pivot)
{
    if (!StepZoom(g, step, limits)) return false;
    Store(g.xpan, PanAround(g.xpan, pivot.x, {limits.width, limits.hroi, limits.viewWidth / g.xzoom}));
    return Store(g.ypan, PanAround(g.ypan, pivot.y, {limits.height, limits.vroi, limits.viewHeight / g.yzoom}));
}

bool ZoomsAreSound(const DisplayGeometry& geometry)
{
    return geometry.xzoom >= kMinZoom && geometry.yzoom >= kMinZoom;
}

bool Apply(int id, DisplayGeometry& g, const ViewLimits& limits, Point pivot)
{
    const std::int64_t hroi = limits.hroi;
    const std::int64_t vroi = limits.vroi;
    const std::int64_t columnStep = hroi / kPageDivisor;
    const std::int64_t rowStep = vroi / kPageDivisor;
    // The two axes differ: columns may be panned out of sight, rows only until the last one shows.
    const std::int64_t lastXpan = std::max(hroi, hroi - limits.viewWidth / g.xzoom);
    const std::int64_t lastYpan = std::max<std::int64_t>(vroi - limits.viewHeight / g.yzoom, 0);
    const std::int64_t lastXoffset = std::max<std::int64_t>(MultipleOfFour(limits.viewWidth - hroi * g.xzoom), 0);
    const std::int64_t lastYoffset = std::max<std::int64_t>(limits.viewHeight - vroi * g.yzoom, 0);

    switch (id) {
        case kCmdZoomIn:
            return Zoom(g, 1, limits, pivot);
        case kCmdZoomOut:
            return Zoom(g, -1, limits, pivot);
        case kCmdPanRight:
            return StepUp(g.xpan, 1, lastXpan);
        case kCmdPanLeft:
            return StepDown(g.xpan, 1, -hroi);
        case kCmdPanUp:
            return StepDown(g.ypan, 1, -vroi);
        case kCmdPanDown:
            return StepUp(g.ypan, 1, lastYpan);
        case kCmdPanPageRight:
            return StepUp(g.xpan, columnStep, lastXpan);
        case kCmdPanPageLeft:
            return StepDown(g.xpan, columnStep, -hroi);
        case kCmdPanPageUp:
            return StepDown(g.ypan, rowStep, -vroi);
        case kCmdPanPageDown:
            return StepUp(g.ypan, rowStep, lastYpan);
        case kCmdOffsetRight:
            return OffsetStepUp(g.xoffset, 4, lastXoffset);
        // Held against the frame's width, not 0: a small offset is taken back with the large step alone.
        case kCmdOffsetLeft:
            return g.xoffset > hroi && OffsetStepDown(g.xoffset, 4);
        case kCmdOffsetUp:
            return StepDown(g.yoffset, 1, 0);
        case kCmdOffsetDown:
            return StepUp(g.yoffset, 1, lastYoffset);
        case kCmdOffsetPageRight:
            return OffsetStepUp(g.xoffset, columnStep, lastXoffset);
        case kCmdOffsetPageLeft:
            return g.xoffset != 0 && OffsetStepDown(g.xoffset, columnStep);
        case kCmdOffsetPageUp:
            return StepDown(g.yoffset, rowStep, 0);
        case kCmdOffsetPageDown:
            return StepUp(g.yoffset, rowStep, lastYoffset);
        default:
            return false;
    }
}

ViewLimits LimitsInForce()
{
    const Point frame = FrameSizeOnView();
    return {frame.x, frame.y, ActiveConfig.Hroi, ActiveConfig.Vroi, ViewWidth, ViewHeight};
}

Point Minus(Point a, Point b)
{
    return {a.x - b.x, a.y - b.y};
}

bool Contains(const Rect& area, Point at)
{
    return at.x >= area.left && at.x < area.right && at.y >= area.top && at.y < area.bottom;
}

// Where a point of the picture lies after it was painted at another size.
Point Rescaled(Point at, const Rect& before, const Rect& now)
{
    const auto along = [](std::int64_t place, std::int64_t from, std::int64_t length, std::int64_t newLength) {
        const std::int64_t scaled = (place - from) * newLength;
        return from + (scaled >= 0 ? scaled / length : -((length - 1 - scaled) / length));
    };
    return {static_cast<int>(along(at.x, before.left, before.Width(), now.Width())),
            static_cast<int>(along(at.y, before.top, before.Height(), now.Height()))};
}

// Changes the zoom and keeps what stands at a point of the main window there. The pan stays.
void ZoomViewTo(const DisplayGeometry& geometry, Point at)
{
    const Rect before = PicturePoints();
    const Point view = ViewPosition();
    const Point client = Minus(at, view);
    const Point pixel = PixelUnder(at);
    if (!SetViewZoom(geometry) || before.Empty()) return;

    SetViewPosition(Minus(Rescaled(at, before, PicturePoints()), client));
    // At a fractional device ratio a pixel is a block of rounded size: the point may have come beside it.
    const Point now = ViewPosition();
    const bool slipped = PixelUnder({client.x + now.x, client.y + now.y}) != pixel;
    if (Contains(before, at) && slipped) SetViewPosition(Minus(PlaceOver(pixel), client));
    if (ViewPosition() == view) RepaintPicture();
}

// The middle of the picture's area, where the main window counts positions.
Point MiddleOfView()
{
    const Rect area = GetPictureArea(hWndMain);
    const Point view = ViewPosition();
    return {(area.left + area.right - PictureRightMargin) / 2 + view.x, (area.top + area.bottom) / 2 + view.y};
}

std::int32_t LargestZoomThatFits()
{
    const Rect area = ViewArea();
    const Point size = PictureSize();
    const auto fits = [&](int zoom) {
        return ScaledExtent(hWndMain, size.x, zoom) <= area.Width() - PictureRightMargin &&
               ScaledExtent(hWndMain, size.y, zoom) <= area.Height() - PictureBottomMargin;
    };
    auto zoom = static_cast<std::int32_t>(kMaxZoom);
    while (zoom > kMinZoom && !fits(zoom)) --zoom;
    return zoom;
}

DisplayGeometry GeometryAtZoom(std::int32_t zoom)
{
    DisplayGeometry geometry = GeometryInForce();
    SetZooms(geometry, zoom, zoom, LimitsInForce());
    return geometry;
}

}  // namespace

DisplayGeometry GeometryInForce()
{
    return {Xpan, Ypan, Xzoom, Yzoom, Xoffset, Yoffset};
}

Point ViewCentre(const DisplayGeometry& geometry, const ViewLimits& limits)
{
    if (!ZoomsAreSound(geometry)) return {};
    const auto centre = [](std::int64_t pan, std::int64_t roi, std::int64_t shown) {
        return static_cast<int>((std::max<std::int64_t>(pan, 0) + std::min(roi, pan + shown)) / 2);
    };
    return {centre(geometry.xpan, limits.hroi, limits.viewWidth / geometry.xzoom),
            centre(geometry.ypan, limits.vroi, limits.viewHeight / geometry.yzoom)};
}

std::optional<DisplayGeometry> ZoomPanned(int id, const DisplayGeometry& geometry, const ViewLimits& limits,
                                          Point pivot)
{
    if (!ZoomsAreSound(geometry)) return std::nullopt;
    DisplayGeometry changed = geometry;
    if (!Apply(id, changed, limits, pivot)) return std::nullopt;
    return changed;
}

void PlacePicture(const DisplayGeometry& geometry)
{
    const Point pixel = ImageCursorOn ? ImageCursorPosition() : Point{};
    SetDisplayGeometry(geometry.xpan, geometry.ypan, geometry.xzoom, geometry.yzoom, geometry.xoffset,
                       geometry.yoffset);
    if (!ImageCursorOn) return;
    ShowCursorValue(pixel.x, pixel.y, 1);
    PutPointerOverPixel(pixel);
}

void ZoomPanCommand(int id)
{
    const DisplayGeometry before = GeometryInForce();
    Point pivot = ViewCentre(before, LimitsInForce());
    if (ImageCursorOn) {
        pivot = ImageCursorPosition();
        ShowCursorValue(pivot.x, pivot.y, 0);
    }
    if (const auto after = ZoomPanned(id, before, LimitsInForce(), pivot)) {
        SetDisplayGeometry(after->xpan, after->ypan, after->xzoom, after->yzoom, after->xoffset, after->yoffset);
    }
    if (ImageCursorOn) {
        ShowCursorValue(pivot.x, pivot.y, 1);  // draws the picture at its new place
        PutPointerOverPixel(pivot);
    }
}

void ZoomAbout(int steps, Point at)
{
    const Gesture gesture({.repeats = true});
    DisplayGeometry geometry = GeometryInForce();
    if (!ZoomsAreSound(geometry)) return;
    for (int i = 0; i < std::abs(steps); ++i) StepZoom(geometry, steps > 0 ? 1 : -1, LimitsInForce());
    if (geometry != GeometryInForce()) ZoomViewTo(geometry, at);
}

void FitView()
{
    if (!FrameBitmap || !hWndMain) return;
    ZoomViewTo(GeometryAtZoom(LargestZoomThatFits()), MiddleOfView());
    CentreView();
}

void ShowOneToOne()
{
    if (hWndMain) ZoomViewTo(GeometryAtZoom(1), MiddleOfView());
}

}  // namespace kelvo
