// The commands on how the detectors make the picture: its orientation, and whether bad pixels are replaced.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// The image set-up dialog (badpixel/geometry_dialog.h); the check of "Replace bad pixels" follows it.
CommandEnd ImageSetup();

// F9: bad pixels are replaced, or not (calib/orientation.h).
CommandEnd ReplaceBadPixels();

}  // namespace kelvo
