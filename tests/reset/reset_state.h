// The variables of src/state as before any setting was read.
#pragma once

namespace kelvo {

void ResetState();

}  // namespace kelvo
