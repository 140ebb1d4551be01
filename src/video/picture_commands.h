// The commands on the picture itself: live or frozen, its colours, its display set-up.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// Freezes live video or resumes it (ToggleFreeze); live video is read in a unit that it has.
CommandEnd FreezeFrame();

// The colour maps by name, and the one after the map in force. What is on view is drawn again at once.
CommandEnd ShowNormalGray();
CommandEnd ShowInvertedGray();
CommandEnd ShowNormalColor();
CommandEnd ShowNextColorMap();

// The display set-up dialog.
CommandEnd DisplaySetup();

}  // namespace kelvo
