// The files inside the program: dialogs, icons, help pages, default settings, under ":/kelvo/" ("dialogs/DISPLAY.ui",
// "icons/load.svg", "help/288.html", "defaults/kelvo220.bmp").
#pragma once

namespace kelvo {

// Makes them reachable. A linker leaves out of a static library what nobody calls, so the application's start calls
// this once; more calls do no harm.
void RegisterResources();

}  // namespace kelvo
