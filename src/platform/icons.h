// Icons and pointer pictures from the resources; IconNamed (platform/qt_window.h) gives them by name. Line icons are
// drawn in the palette's text colour at the moment of painting, at any device ratio, so that they follow a change
// between light and dark.
#pragma once

#include <QColor>
#include <QCursor>
#include <QPixmap>

#include <string_view>

namespace kelvo {

// One icon as a picture of size x size logical pixels with the colour given.
QPixmap IconPixmap(std::string_view name, int size, const QColor& color, double deviceRatio);

// "cross" and "trackball": the spot is the middle of the picture.
QCursor CursorNamed(std::string_view name);

}  // namespace kelvo
