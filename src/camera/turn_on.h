// The camera's main switch: the dialog that turns it on or off, and the turn-on procedure.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

// Command 169. Without a last calibration the video set-up is the default, and loading the last one is greyed. 1:
// turned on, and the video set-up follows. 0: turned on with a calibration, turned off, or nothing.
int TurnOnDialog(HWND parent);
LRESULT fnCLOCKONDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// The calibration file that the argument of a turn-on names, as a path of this machine: a name alone stands beside the
// settings, and .cal may be left out. Empty where it names none, or a file of another kind.
std::string CalibrationNamed(std::string_view argument);

// Programs the head, opens the board, starts live video. argument: a calibration file's path, the word AUTOSTART before
// or after it, or both, or nothing. 1; 0 where the head or the calibration failed, or where the camera section can't
// run (named in a box). flag has no effect.
int TurnCameraOn(const char* argument, int flag);

}  // namespace kelvo
