// Plots on the screen.
#pragma once

#include "analysis/plot_picture.h"
#include "platform/types.h"

#include <string_view>

namespace kelvo {

// The surface of a dialog's plot control (DlgItemWindow), and the area that it paints on, from {0, 0}.
Rect PlotArea(HWND control);
// The picture on white, in place of what stood there.
void PaintPlot(HWND control, const PlotPicture& picture);
// Logical pixels that a label takes there.
int PlotTextWidth(HWND control, std::string_view text);

}  // namespace kelvo
