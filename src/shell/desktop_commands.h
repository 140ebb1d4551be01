// The commands that open something beside the main window: the help's pages, and the desktop's own tools.
#pragma once

namespace kelvo {

void ShowKeysHelp();
void ShowTutorial();
void SearchHelp();      // for an empty key: all pages
void ShowDialogHelp();  // on dialogs as such

// The desktop's printer set-up, begun under the hourglass; a box where it has none.
void OpenPrinterSetup();

}  // namespace kelvo
