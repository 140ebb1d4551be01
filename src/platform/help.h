// The help window: pages by context number, in a window of its own that stays open while the operator works. It opens
// beside the main window where a screen has room. Escape and Ctrl+W close it; in its search field Return opens the
// first page found, and the words found are marked in the page.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// Each opens the window or brings it to the front, and tells the transcript {"kind":"help","context":n}.
void ShowHelpContext(int context);  // a context with no page of its own shows the contents page
void ShowHelpContents();
void ShowHelpSearch(std::string_view key);
void ShowHelpOnHelp();
void QuitHelp();

int CurrentHelpContext();       // 0: no help is shown
std::string CurrentHelpText();  // what is read on the page, UTF-8; empty if no help is shown

// What stands on a page at its comment "filled by the program", from now on. HTML, UTF-8.
void FillHelpPage(int context, std::string_view html);

}  // namespace kelvo
