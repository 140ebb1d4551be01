// The programming sequence of turn-on.
#pragma once

#include <cstdint>

namespace kelvo {

// Programs the head from the camera section. 1, or 0 at the first failure that counts;
// the head then stays as it is, partly programmed.
std::int32_t LoadCameraHead();

}  // namespace kelvo
