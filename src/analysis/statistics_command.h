// The command "View statistics...".
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// Asks for a coefficient file, shows it as a picture and measures that with the histogram. A list of bad detectors is
// only read, with its messages; a set does nothing. kLeaveStatus where the operator cancels.
CommandEnd ViewStatistics();

}  // namespace kelvo
