// Calls of the start whose subsystem isn't part of this version. They do no harm.
#pragma once

namespace kelvo {

// Start-up calls. Each leaves its subsystem's state as it stands at start.
void ReadGraphicsKeys();

}  // namespace kelvo
