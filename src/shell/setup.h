// The two steps of the set-up that a change of camera runs again. Start-up owns them (shell/startup.cpp); this header
// stands by itself because the configuration dialog, which the main window's commands open, calls them too.
#pragma once

namespace kelvo {

// Reads the settings and the active camera's section into the state, finds DefaultDir and the paths. Where another
// camera's frames have another size, what was made for the old one is dropped (FrameSizeChanged); where its head hangs
// on another port, the link is closed. 1.
int InitialSetup();

// Identifies the camera head and prepares the display side. 1, or 0 where no head answers.
int InitializeHardware();

}  // namespace kelvo
