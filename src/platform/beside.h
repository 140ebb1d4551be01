// Where a second window stands so that the first stays in sight. Inside of the platform layer.
#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

namespace kelvo {

// The top left corner of a window of that size: to the right of the window or to its left, where its screen has the
// room; else on another screen, in its middle; else in the top right corner of the window's own screen, since pictures
// begin on the left. Never beyond that screen's top left corner. screens: the areas that windows may take; none: where
// the window stands.
QPoint PlaceBeside(const QRect& window, const QSize& size, const QList<QRect>& screens);

}  // namespace kelvo
