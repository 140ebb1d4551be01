// The program's entry point: windows, settings, the camera head, the display side, the start
// picture, the control panel, the message loop.
#pragma once

#include "shell/setup.h"

#include <string_view>

namespace kelvo {

// Runs the program: the last message's exit code after a normal run, 0 on a start-up failure. Of the arguments only
// commandLine counts: 5 or more characters turn the camera on directly. The main window is always shown maximised.
int WinMain(const void* instance, const void* previousInstance, std::string_view commandLine, int show);

// The display side alone: colour map, look-up table, geometry. 1.
int InitImageProcessor();

}  // namespace kelvo
