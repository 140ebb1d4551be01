// The dialog SUPPORT: what goes into the support files, shown before it is written.
#pragma once

#include "platform/types.h"
#include "ui/command_end.h"

namespace kelvo {

// Gathers the files (shell/support_bundle.h) and runs the dialog: their list, and the text of the one that is chosen.
// Save asks for the name of a zip archive and writes these very texts, whole or not at all; where that fails the
// operator reads "Unable to write the support files to\nPATH" and the dialog stays. Cancel writes nothing. The status
// line tells what was written.
CommandEnd SaveSupportFiles();

LRESULT fnSUPPORTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
