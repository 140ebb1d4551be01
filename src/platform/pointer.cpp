#include "platform/pointer.h"

#include "platform/application.h"
#include "platform/faults.h"
#include "platform/icons.h"
#include "platform/qt_window.h"

#include <QApplication>
#include <QCursor>

#include <algorithm>
#include <optional>

namespace kelvo {

namespace {

Pointer current = Pointer::kArrow;
std::size_t hourglassDepth = 0;  // modal windows that were in front when it was set

std::optional<Rect> clip;
// Where the logic put the pointer; holds as long as the pointer stays there.
struct Placed {
    Point surface;  // as the logic gave it
    Point screen;   // where that is on the screen
};
std::optional<Placed> placed;
// Where the pointer was put or seen last: that is its place offscreen, and where the window system tells of it in
// events alone.
Point lastSeen;

QCursor CursorOf(Pointer shape)
{
    switch (shape) {
        case Pointer::kCross:
            return CursorNamed("cross");
        case Pointer::kTrackball:
            return CursorNamed("trackball");
        case Pointer::kHourglass:
            return {Qt::WaitCursor};
        case Pointer::kHand:
            return {Qt::ClosedHandCursor};
        case Pointer::kArrow:
            break;
    }
    return {Qt::ArrowCursor};
}

Point Clipped(Point position)
{
    if (!clip) return position;
    return {std::clamp(position.x, clip->left, std::max(clip->left, clip->right - 1)),
            std::clamp(position.y, clip->top, std::max(clip->top, clip->bottom - 1))};
}

// A place of the scrolled surface lies elsewhere on the screen; what is scrolled away lies on the area's edge.
Point OnScreen(Point surface)
{
    HWND window = MainWindow();
    if (!window || GetScrollOrigin(window) == Point{}) return surface;
    const Point seen = ToClient(*window, ScreenToClient(window, surface));
    const Rect area = PictureArea(*window);
    if (area.Empty()) return surface;
    return ClientToScreen(
        window, {std::clamp(seen.x, area.left, area.right - 1), std::clamp(seen.y, area.top, area.bottom - 1)});
}

Point OnSurface(Point screen)
{
    HWND window = MainWindow();
    return window ? ToSurface(*window, screen) : screen;
}

}  // namespace

void SetPointer(Pointer shape)
{
    current = shape;
    if (shape == Pointer::kHourglass) hourglassDepth = ModalDepth();
    HWND window = MainWindow();
    if (window && window->widget && shape != Pointer::kHourglass) window->widget->setCursor(CursorOf(shape));
    ShowPointerShape();
}

void ShowPointerShape()
{
    if (!qApp) return;
    // A window that came in front since then waits for the operator, not the other way round.
    const bool wanted = current == Pointer::kHourglass && ModalDepth() <= hourglassDepth;
    const bool shown = QApplication::overrideCursor() != nullptr;
    if (wanted && !shown) QApplication::setOverrideCursor(CursorOf(Pointer::kHourglass));
    if (!wanted && shown) QApplication::restoreOverrideCursor();
}

Pointer CurrentPointer()
{
    return current;
}

Hourglass::Hourglass() : before_(current)
{
    SetPointer(Pointer::kHourglass);
}

Hourglass::~Hourglass()
{
    SetPointer(before_);
}

Point PointerOnScreen()
{
    if (!qApp || RunsOffscreen() || !PointerCanBeMoved()) return lastSeen;
    const QPoint position = QCursor::pos();
    return {position.x(), position.y()};
}

Point GetPointerPosition()
{
    const Point screen = PointerOnScreen();
    const Point inside = Clipped(screen);
    if (placed && placed->screen == screen && inside == screen) return placed->surface;
    return OnSurface(inside);
}

void SetPointerPosition(Point screen)
{
    if (!PointerCanBeMoved()) return;
    placed = Placed{screen, OnScreen(screen)};
    MovePointerTo(placed->screen);
}

bool PointerCanBeMoved()
{
    const bool movable = RunsOffscreen() || QGuiApplication::platformName() != QLatin1String("wayland");
    return movable && !FaultIsSet("fixed pointer");
}

void MovePointerTo(Point screen)
{
    lastSeen = screen;
    if (qApp && !RunsOffscreen() && PointerCanBeMoved()) QCursor::setPos(screen.x, screen.y);
}

void NotePointer(Point screen)
{
    lastSeen = screen;
}

void ClipPointer(const Rect& screen)
{
    clip = screen;
}

void ReleasePointerClip()
{
    clip.reset();
}

bool PointerIsClipped()
{
    return clip.has_value();
}

bool PointerPresent()
{
    return !FaultIsSet("no mouse");
}

void ResetPointer()
{
    current = Pointer::kArrow;
    hourglassDepth = 0;
    clip.reset();
    placed.reset();
    lastSeen = {};
    ShowPointerShape();
}

}  // namespace kelvo
