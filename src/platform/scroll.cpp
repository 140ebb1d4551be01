// The scroll bars of the picture area, and the way between what the operator sees and the surface that scrolls there.

#include "platform/qt_window.h"

#include <QScrollBar>

#include <algorithm>

namespace kelvo {

struct ScrollData {
    QPointer<QScrollBar> horizontal;
    QPointer<QScrollBar> vertical;
    QPointer<QWidget> corner;
    Point extent;
    int topInset = 0;
    int bottomInset = 0;
    bool fitting = false;  // a change of range is no scrolling by the operator
};

namespace {

constexpr int kLineStep = 16;

Rect WholeArea(const Window& window)
{
    const int width = window.widget->width();
    const int height = window.widget->height();
    const int top = std::clamp(window.scroll->topInset, 0, height);
    return {0, top, width, std::max(height - window.scroll->bottomInset, top)};
}

Point OriginOf(const Window& window)
{
    if (!window.scroll || !window.scroll->horizontal || !window.scroll->vertical) return {};
    return {window.scroll->horizontal->value(), window.scroll->vertical->value()};
}

// The picture moves under the operator's hand: it is painted before the call returns.
void PaintScrolled(HWND window)
{
    if (!IsWindow(window) || window->scroll->fitting) return;
    InvalidateRect(window, nullptr, true);
    UpdateWindow(window);
}

QScrollBar* MakeBar(Qt::Orientation orientation, HWND window)
{
    QScrollBar* const bar = std::make_unique<QScrollBar>(orientation, window->widget).release();  // the parent owns it
    bar->setFocusPolicy(Qt::NoFocus);
    bar->setCursor(Qt::ArrowCursor);
    bar->setSingleStep(kLineStep);
    bar->setAutoFillBackground(true);  // the picture beneath may change without the bar being drawn again
    bar->hide();
    QObject::connect(bar, &QScrollBar::valueChanged, window->widget, [window] { PaintScrolled(window); });
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

// Each bar takes room that may make the other one needed.
BarSizes NeededBars(const ScrollData& scroll, const Rect& area)
{
    const int width = scroll.vertical->sizeHint().width();
    const int height = scroll.horizontal->sizeHint().height();
    BarSizes needed;
    for (int pass = 0; pass < 2; ++pass) {
        if (scroll.extent.x > area.right - needed.width) needed.height = height;
        if (scroll.extent.y > area.bottom - needed.height) needed.width = width;
    }
    const bool roomForBars = area.Width() > width && area.Height() > height;
    return roomForBars ? needed : BarSizes{};
}

void PlaceBar(QScrollBar& bar, const Rect& place, int page, int maximum)
{
    bar.setVisible(!place.Empty());
    bar.setGeometry(place.left, place.top, place.Width(), place.Height());
    bar.setPageStep(std::max(page, 1));
    bar.setRange(0, std::max(maximum, 0));
    bar.raise();
}

}  // namespace

void FitScrollBars(Window& window)
{
    if (!window.scroll || !window.widget) return;
    ScrollData& scroll = *window.scroll;
    const Rect area = WholeArea(window);
    const BarSizes bars = NeededBars(scroll, area);
    const Rect seen{area.left, area.top, area.right - bars.width, area.bottom - bars.height};
    const Point before = OriginOf(window);

    scroll.fitting = true;
    PlaceBar(*scroll.horizontal, bars.height ? Rect{seen.left, seen.bottom, seen.right, area.bottom} : Rect{},
             seen.Width(), bars.height ? scroll.extent.x - seen.right : 0);
    PlaceBar(*scroll.vertical, bars.width ? Rect{seen.right, seen.top, area.right, seen.bottom} : Rect{}, seen.Height(),
             bars.width ? scroll.extent.y - seen.bottom : 0);
    scroll.corner->setVisible(bars.width && bars.height);
    scroll.corner->setGeometry(seen.right, seen.bottom, bars.width, bars.height);
    scroll.fitting = false;

    if (OriginOf(window) != before) InvalidateRect(&window, nullptr, true);
}

Rect PictureArea(const Window& window)
{
    if (!window.widget) return {};
    if (!window.scroll) return {0, 0, window.widget->width(), window.widget->height()};
    Rect area = WholeArea(window);
    if (!window.scroll->vertical->isHidden()) area.right -= window.scroll->vertical->width();
    if (!window.scroll->horizontal->isHidden()) area.bottom -= window.scroll->horizontal->height();
    return area;
}

bool ScrollPictureTo(HWND window, Point origin)
{
    if (!IsWindow(window) || !window->scroll) return false;
    window->scroll->horizontal->setValue(origin.x);
    window->scroll->vertical->setValue(origin.y);
    return true;
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

void SetScrollExtent(HWND window, Point extent, int topInset, int bottomInset)
{
    if (!IsWindow(window) || !window->widget) return;
    ScrollData& scroll = EnsureBars(window);
    if (scroll.extent == extent && scroll.topInset == topInset && scroll.bottomInset == bottomInset) return;
    scroll.extent = extent;
    scroll.topInset = topInset;
    scroll.bottomInset = bottomInset;
    FitScrollBars(*window);
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
