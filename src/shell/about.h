// The About box.
#pragma once

namespace kelvo {

// Runs dialog ABOUT, which tells the versions, the data directory and the licences of what comes from others, with the
// start picture behind it. If it can't be made: "Unable to display dialog" under "System Error".
void ShowAbout();

}  // namespace kelvo
