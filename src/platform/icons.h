// Icons and pointer pictures from the resources. Line icons are drawn in the palette's text colour at the moment of
// painting, at any device ratio, so that they follow a change between light and dark.
#pragma once

#include <QColor>
#include <QCursor>
#include <QIcon>
#include <QPixmap>

#include <string_view>

namespace kelvo {

// "load", "save", ..., "1_LN2DEWAR" (the program's own, in colour). A name that isn't there gives an empty icon.
QIcon IconNamed(std::string_view name);

// One icon as a picture of size x size logical pixels with the colour given.
QPixmap IconPixmap(std::string_view name, int size, const QColor& color, double deviceRatio);

// "cross" and "trackball": the spot is the middle of the picture.
QCursor CursorNamed(std::string_view name);

}  // namespace kelvo
