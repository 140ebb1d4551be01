// The help window: pages by context number, in a window of its own that stays open while the operator works.
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

int CurrentHelpContext();  // 0: no help is shown

}  // namespace kelvo
