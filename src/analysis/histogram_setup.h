// The dialog HISTAXIS, in which the histogram's axes are set up while the plot stays open.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Runs it over the histogram's dialog; each change is drawn there at once. 1 by Ok, 0 by Cancel, which brings
// HistSettings and DisplayUnit back as they were. Nothing is written to kelvo.ini. Blocks.
int HistogramSetupDialog(HWND dialog);

}  // namespace kelvo
