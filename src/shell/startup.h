// The program's entry point: windows, settings, the camera head, the display side, the start
// picture, the control panel, the message loop.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// Runs the program: the last message's exit code after a normal run, 0 on a start-up failure. Of the arguments only
// commandLine counts: 5 or more characters turn the camera on directly. The main window is always shown maximised.
int WinMain(const void* instance, const void* previousInstance, std::string_view commandLine, int show);

// Where Kelvo's files are: --data, else what win.ini names, else the user's own directory. Whole; it needn't exist.
std::string FindDefaultDirectory();

// Where the first file selection begins: among the user's documents, but empty, which is Kelvo's own directory, for a
// start that says where it works (--data, --script).
std::string FirstDirectoryForFiles();

// Reads the settings and the active camera's section into the state, finds DefaultDir and the paths. Where another
// camera's frames have another size, what was made for the old one is dropped (FrameSizeChanged); where its head hangs
// on another port, the link is closed. 1.
int InitialSetup();

// Identifies the camera head and prepares the display side. 1, or 0 where no head answers.
int InitializeHardware();

// The display side alone: colour map, look-up table, geometry. 1.
int InitImageProcessor();

}  // namespace kelvo
