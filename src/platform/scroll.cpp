// The scroll bars of the picture area, and the way between what the operator sees and the surface that scrolls there.

#include "platform/picture_scroll.h"
#include "platform/qt_window.h"

#include <QScrollBar>

#include <algorithm>

namespace kelvo {

struct ScrollData {
    QPointer<QScrollBar> horizontal;
    QPointer<QScrollBar> vertical;
    QPointer<QWidget> corner;
    ScrollExtent extent;
    Rect area;             // between the insets, without the bars, as they were fitted last
    Point origin;          // what of the surface stands in the client area's corner
    bool fitting = false;  // a change of range is no scrolling by the operator
};

namespace {

constexpr int kLineStep = 16;
constexpr int kKeptInSight = 32;  // of a picture, wherever it is moved

Rect WholeArea(const Window& window)
{
    const int width = window.widget->width();
    const int height = window.widget->height();
    const int top = std::clamp(window.scroll->extent.topInset, 0, height);
    return {0, top, width, std::max(height - window.scroll->extent.bottomInset, top)};
}

// One direction of the picture in its area. The picture begins where the area does as long as the origin is 0.
struct Line {
    int begin = 0;
    int pictureEnd = 0;
    int areaEnd = 0;
    int covered = 0;  // of the area, at its end

    // The origins at which no more of the picture is out of sight than must be.
    int RestFrom() const { return std::min(0, pictureEnd + covered - areaEnd); }
    int RestTo() const { return std::max(0, pictureEnd + covered - areaEnd); }
    int Middle() const { return (pictureEnd + covered - areaEnd) / 2; }
    bool CutsOff(int origin) const { return origin > 0 || pictureEnd + covered - origin > areaEnd; }

    int Rest(int origin) const { return std::clamp(origin, RestFrom(), RestTo()); }
    // Anywhere, as long as some of the picture is seen.
    int Free(int origin) const
    {
        const int kept = std::min(kKeptInSight, pictureEnd - begin);
        const int from = begin + kept - (areaEnd - covered);
        return std::clamp(origin, from, std::max(from, pictureEnd - kept - begin));
    }
};

Line Across(const ScrollExtent& extent, const Rect& area)
{
    return {area.left, extent.right, area.right, extent.rightCovered};
}

Line Down(const ScrollExtent& extent, const Rect& area)
{
    return {area.top, extent.bottom, area.bottom, 0};
}

// Where an origin goes when picture or area change: what was centred, or at rest, is so again.
int Refitted(int origin, const Line& before, const Line& now)
{
    if (origin != 0 && origin == before.Middle()) return now.Middle();
    return before.Rest(origin) == origin ? now.Rest(origin) : now.Free(origin);
}

Point OriginOf(const Window& window)
{
    return window.scroll ? window.scroll->origin : Point{};
}

// The picture moves under the operator's hand: it is painted before the call returns.
void PaintScrolled(HWND window)
{
    InvalidateRect(window, nullptr, true);
    UpdateWindow(window);
}

void Tell(HWND window, PictureScroll what)
{
    if (IsWindow(window)) SendMessage(window, WM_PICTURESCROLL, static_cast<WPARAM>(what), 0);
}

void FollowBars(HWND window)
{
    if (!IsWindow(window) || window->scroll->fitting) return;
    Tell(window, PictureScroll::kStep);
    window->scroll->origin = {window->scroll->horizontal->value(), window->scroll->vertical->value()};
    PaintScrolled(window);
    Tell(window, PictureScroll::kEnds);
}

QScrollBar* MakeBar(Qt::Orientation orientation, HWND window)
{
    QScrollBar* const bar = std::make_unique<QScrollBar>(orientation, window->widget).release();  // the parent owns it
    bar->setFocusPolicy(Qt::NoFocus);
    bar->setCursor(Qt::ArrowCursor);
    bar->setSingleStep(kLineStep);
    bar->setAutoFillBackground(true);  // the picture beneath may change without the bar being drawn again
    bar->hide();
    QObject::connect(bar, &QScrollBar::valueChanged, window->widget, [window] { FollowBars(window); });
    QObject::connect(bar, &QScrollBar::sliderPressed, window->widget,
                     [window] { Tell(window, PictureScroll::kThumbTaken); });
    QObject::connect(bar, &QScrollBar::sliderReleased, window->widget,
                     [window] { Tell(window, PictureScroll::kEnds); });
    return bar;
}

ScrollData& EnsureBars(HWND window)
{
    if (!window->scroll) {
        window->scroll = std::make_shared<ScrollData>();
        window->scroll->horizontal = MakeBar(Qt::Horizontal, window);
        window->scroll->vertical = MakeBar(Qt::Vertical, window);
        window->scroll->corner = std::make_unique<QWidget>(window->widget).release();
        window->scroll->corner->setAutoFillBackground(true);
        window->scroll->corner->hide();
    }
    return *window->scroll;
}

struct BarSizes {
    int width = 0;   // of the vertical bar; 0: not needed
    int height = 0;  // of the horizontal bar
};

Rect Without(const Rect& area, const BarSizes& bars)
{
    return {area.left, area.top, area.right - bars.width, area.bottom - bars.height};
}

// Each bar takes room that may make the other one needed. originIn: the origin that an area gives.
template <typename OriginIn>
BarSizes NeededBars(const ScrollData& scroll, const Rect& area, OriginIn originIn)
{
    const int width = scroll.vertical->sizeHint().width();
    const int height = scroll.horizontal->sizeHint().height();
    BarSizes needed;
    for (int pass = 0; pass < 2; ++pass) {
        const Rect seen = Without(area, needed);
        const Point origin = originIn(seen);
        if (Across(scroll.extent, seen).CutsOff(origin.x)) needed.height = height;
        if (Down(scroll.extent, Without(area, needed)).CutsOff(origin.y)) needed.width = width;
    }
    const bool roomForBars = area.Width() > width && area.Height() > height;
    return roomForBars ? needed : BarSizes{};
}

// The bar reaches over all places of rest, and to where the picture stands beyond them.
void PlaceBar(QScrollBar& bar, const Rect& place, int page, const Line& line, int origin)
{
    if (place.Empty()) bar.setSliderDown(false);  // the thumb is taken away from under the hand
    bar.setVisible(!place.Empty());
    bar.setGeometry(place.left, place.top, place.Width(), place.Height());
    bar.setPageStep(std::max(page, 1));
    bar.setRange(std::min(line.RestFrom(), origin), std::max(line.RestTo(), origin));
    bar.setValue(origin);
    bar.raise();
}

// originIn: the origin that an area gives. True where the picture stands elsewhere now.
template <typename OriginIn>
bool FitTo(Window& window, OriginIn originIn)
{
    ScrollData& scroll = *window.scroll;
    const Rect area = WholeArea(window);
    const BarSizes bars = NeededBars(scroll, area, originIn);
    const Rect seen = Without(area, bars);
    const Point before = scroll.origin;
    scroll.origin = originIn(seen);
    scroll.area = seen;

    scroll.fitting = true;
    PlaceBar(*scroll.horizontal, bars.height ? Rect{seen.left, seen.bottom, seen.right, area.bottom} : Rect{},
             seen.Width(), Across(scroll.extent, seen), scroll.origin.x);
    PlaceBar(*scroll.vertical, bars.width ? Rect{seen.right, seen.top, area.right, seen.bottom} : Rect{}, seen.Height(),
             Down(scroll.extent, seen), scroll.origin.y);
    scroll.corner->setVisible(bars.width && bars.height);
    scroll.corner->setGeometry(seen.right, seen.bottom, bars.width, bars.height);
    scroll.fitting = false;
    return scroll.origin != before;
}

// originOf: the origin that both directions of an area give.
template <typename OriginOfLines>
bool MoveTo(HWND window, OriginOfLines originOf)
{
    if (!IsWindow(window) || !window->scroll) return false;
    const ScrollExtent& extent = window->scroll->extent;
    const bool moved =
        FitTo(*window, [&](const Rect& area) { return originOf(Across(extent, area), Down(extent, area)); });
    if (moved) PaintScrolled(window);
    return true;
}

void Refit(Window& window, const ScrollExtent& extent)
{
    const Line across = Across(window.scroll->extent, window.scroll->area);
    const Line down = Down(window.scroll->extent, window.scroll->area);
    const Point origin = window.scroll->origin;
    window.scroll->extent = extent;
    const bool moved = FitTo(window, [&](const Rect& area) {
        return Point{Refitted(origin.x, across, Across(extent, area)), Refitted(origin.y, down, Down(extent, area))};
    });
    if (moved) InvalidateRect(&window, nullptr, true);
}

}  // namespace

void FitScrollBars(Window& window)
{
    if (window.scroll && window.widget) Refit(window, ScrollExtent(window.scroll->extent));
}

void LetGoOfScrollBars()
{
    const HWND window = MainWindow();
    if (!window || !window->scroll) return;
    for (QScrollBar* const bar : {window->scroll->horizontal.data(), window->scroll->vertical.data()}) {
        if (bar) bar->setSliderDown(false);
    }
}

Rect PictureArea(const Window& window)
{
    if (!window.widget) return {};
    if (!window.scroll) return {0, 0, window.widget->width(), window.widget->height()};
    return window.scroll->area;
}

bool ScrollPictureTo(HWND window, Point origin)
{
    return MoveTo(window, [&](const Line& across, const Line& down) {
        return Point{across.Free(origin.x), down.Free(origin.y)};
    });
}

bool CentrePicture(HWND window)
{
    return MoveTo(window, [](const Line& across, const Line& down) { return Point{across.Middle(), down.Middle()}; });
}

Point RestingOrigin(HWND window, Point origin)
{
    if (!IsWindow(window) || !window->scroll) return origin;
    const ScrollData& scroll = *window->scroll;
    return {Across(scroll.extent, scroll.area).Rest(origin.x), Down(scroll.extent, scroll.area).Rest(origin.y)};
}

Point ToSurface(const Window& window, Point client)
{
    const Point origin = OriginOf(window);
    return {client.x + origin.x, client.y + origin.y};
}

Point ToClient(const Window& window, Point surface)
{
    const Point origin = OriginOf(window);
    return {surface.x - origin.x, surface.y - origin.y};
}

void SetScrollExtent(HWND window, const ScrollExtent& extent)
{
    if (!IsWindow(window) || !window->widget) return;
    const bool isFirst = !window->scroll;
    ScrollData& scroll = EnsureBars(window);
    if (scroll.extent == extent && !isFirst) return;
    Refit(*window, extent);
}

Rect GetPictureArea(HWND window)
{
    return IsWindow(window) ? PictureArea(*window) : Rect{};
}

Point GetScrollOrigin(HWND window)
{
    return IsWindow(window) ? OriginOf(*window) : Point{};
}

}  // namespace kelvo
