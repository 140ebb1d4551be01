// The dialog BUF_GRAF, "Graph selected buffer board data": what the frame graph shows of which frames.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Runs the dialog, from which the graph is shown (analysis/frame_graph_window.h) as often as the operator asks for it.
// Meanwhile the picture is held, and a cross marks the pixel in it. 1: left by Exit or Ok; 0: cancelled, or after
// "Unable to display dialog" under "System Error". What was graphed is kept (SaveGraphSettings); where nothing was, all
// of analysis/frame_graph_settings.h is as it was before. The unit is in force where it is picked; where what is on
// view can't be read in it, the first one that it can be read in comes back.
int BufferGraphDialog(HWND parent);

}  // namespace kelvo
