// The window SCRIPT beside the main window: which script of the menu runs or ran last, what it printed, and what it
// failed with. It can be closed while the script runs, and comes back with an error.
#pragma once

#include "platform/types.h"

#include <string>
#include <string_view>

namespace kelvo {

// A script begins: the window is shown with nothing but its name.
void BeginScriptText(const std::string& name);
// What it printed, UTF-8, a line or several. The last 1 MB is kept.
void AddScriptText(std::string_view text);
// It is over; failure: why, or empty.
void EndScriptText(const std::string& failure);

// The name of the script that the window tells of; empty before the first.
std::string ScriptInWindow();

// The command: brings the window up. Nothing more happens where it is open.
void OpenScriptWindow();

// Exposed to the tests: controls are those of dialog_ids.h.
LRESULT fnSCRIPTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// No window, no script so far.
void ResetScriptWindow();

}  // namespace kelvo
