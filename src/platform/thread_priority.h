// Who may not come late.
#pragma once

namespace kelvo {

// The calling thread goes before all ordinary ones of the machine from now on: for one that works a little at each
// frame and waits in between. False where the user may not (RLIMIT_RTPRIO, or the capability for it): then it stays an
// ordinary one.
bool RaiseThreadPriority();

}  // namespace kelvo
