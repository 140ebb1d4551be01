// The program's entry point and its orderly exit: windows, settings, the camera head, the display side, the start
// picture, the control panel, the message loop.
#pragma once

#include "dibapi32/dibapi32.h"
#include "platform/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

// What the command line says before the system's own part of it; main sets it.
struct StartOptions {
    std::string dataDirectory;  // --data; empty: the key of win.ini, else the user's data directory
    std::string viewFile;       // --view: opened as soon as the message loop runs
};
extern StartOptions startOptions;

// Runs the program: the last message's exit code after a normal run, 0 on a start-up failure. Of the arguments only
// commandLine counts: 5 or more characters turn the camera on directly. The main window is always shown maximised.
int WinMain(const void* instance, const void* previousInstance, std::string_view commandLine, int show);

// Directories, paths and settings. 1. Runs again after a change of camera: paths and windows survive.
int InitialSetup();

// The camera head and the display side. 1, or 0 where no head answers.
int InitializeHardware();
// The display side alone: colour map, look-up table, geometry. 1.
int InitImageProcessor();

// Saves the state of the display, gives everything back and ends the message loop. The camera head stays on.
void ShutDown();

// Paints the start picture over a window; null after a sound if there is none.
Dib ShowSplash(HWND window);
// Nothing for a null bitmap. Otherwise waits, during which no messages are handled, and gives the picture's place back.
void HideSplash(const Dib& bitmap, std::int64_t milliseconds);

}  // namespace kelvo
