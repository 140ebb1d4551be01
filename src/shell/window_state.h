// The main window as the operator left it: its place and size, and the theme, kept in window.ini
// (ui/window_file.h). The first start is maximised, in the desktop's theme.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Shows the main window where it was at the last end. Values that can't be a window's count as none; a place that no
// screen has any more comes onto one.
void ShowMainWindow(HWND window);
// At the end of the program.
void KeepWindowPlace();

// The theme of the last choice, unless the command line names one for this run; the menu's items follow.
void UseStoredTheme(HWND window);
// The commands of the View menu: at once, and for later starts.
void UseDesktopTheme();
void UseLightTheme();
void UseDarkTheme();

}  // namespace kelvo
