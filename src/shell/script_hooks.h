// What a script reaches beyond windows and state: the frame on view, the bench, the simulated head.
#pragma once

namespace kelvo {

// Before a script starts.
void ConnectScripts();

}  // namespace kelvo
