// The dialog GRAPH: one pixel over the frames, as a plot with its figures. What it shows stands in
// analysis/frame_graph_settings.h.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Shows the graph until the operator leaves it: 1, or 0 after "Unable to display dialog" under "System Error". The
// frames are read once, half a second after it has opened; its size may change.
int FrameGraphWindow(HWND parent);

// Reads the counts, works out the figures, shows them and paints the plot. Where that fails the plot stays empty, after
// "Failure to allocate global intensity memory!", "Failed to read entire file\n%s" or a text that asks to choose the
// file again; a read that was stopped by Esc is told on the status line.
void DrawFrameGraph(HWND window);

}  // namespace kelvo
