// The commands on the camera as a whole: on and off, its video, its configuration.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// Command 169: the turn-on dialog. After a turn-on without a calibration the operator sets the video up and calibrates.
// In any case the display then fits what is in force, and the pointer its mode.
CommandEnd TurnOn();

// The video set-up with the oscilloscope; the item that turns the camera on or off follows.
CommandEnd VideoSetup();

// The configuration dialog. The image cursor is off meanwhile: its place belongs to the camera and the zoom that may
// change.
CommandEnd Configure();

}  // namespace kelvo
