// The About box.
#pragma once

namespace kelvo {

// Runs dialog ABOUT with the start picture behind it. If it can't be made: "Unable to display dialog" under "System
// Error".
void ShowAbout();

}  // namespace kelvo
