// The scripts of the data directory, scripts/*.lua, in the menu Analysis > Scripts. One that is chosen runs beside the
// operator's work (script/script.h) and tells its course in the window SCRIPT (shell/script_window.h).
#pragma once

#include <string>
#include <vector>

namespace kelvo {

// DefaultDir/scripts
std::string ScriptDirectory();

// The menu is about to open: reads which scripts there are, in the order of their names. Beyond kScriptCount of them a
// last line tells how many more there are; where there is none, one line says so.
void ListScriptsInMenu();

// The commands from kCmdScriptFirst on: runs the script of that line. A box tells where none can run now, or what the
// line of the menu that is no script means.
void RunMenuScript(int id);

// Escape in the main window, and the command.
void StopMenuScript();

// Nothing listed.
void ResetMenuScripts();

}  // namespace kelvo
