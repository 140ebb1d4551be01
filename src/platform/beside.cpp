#include "platform/beside.h"

#include <algorithm>

namespace kelvo {

namespace {

// Of the screens the one that shows most of the window.
qsizetype ScreenOf(const QRect& window, const QList<QRect>& screens)
{
    const auto shown = [&window](const QRect& screen) {
        const QRect part = screen.intersected(window);
        return part.width() * part.height();
    };
    const auto most = std::max_element(screens.begin(), screens.end(),
                                       [&shown](const QRect& a, const QRect& b) { return shown(a) < shown(b); });
    return most - screens.begin();
}

bool Holds(const QRect& screen, const QSize& size)
{
    return size.width() <= screen.width() && size.height() <= screen.height();
}

}  // namespace

QPoint PlaceBeside(const QRect& window, const QSize& size, const QList<QRect>& screens)
{
    if (screens.isEmpty()) return window.topLeft();
    const qsizetype own = ScreenOf(window, screens);
    const QRect& screen = screens[own];
    const int lowest = std::max(screen.top(), screen.bottom() + 1 - size.height());
    const int top = std::clamp(window.top(), screen.top(), lowest);
    const int right = window.right() + 1;
    if (right + size.width() <= screen.right() + 1) return {right, top};
    if (window.left() - size.width() >= screen.left()) return {window.left() - size.width(), top};
    for (qsizetype i = 0; i < screens.size(); ++i) {
        if (i == own || !Holds(screens[i], size)) continue;
        QRect place(QPoint(), size);
        place.moveCenter(screens[i].center());
        return place.topLeft();
    }
    return {std::max(screen.left(), screen.right() + 1 - size.width()), screen.top()};
}

}  // namespace kelvo
