// One text for all that a later version brings.
#pragma once

namespace kelvo {

// Tells the operator that the command isn't available in this version.
void TellNotAvailable();

}  // namespace kelvo
