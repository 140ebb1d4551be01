// Which camera head answers at the port.
#pragma once

#include <cstdint>

namespace kelvo {

// 1 if a known head answered (HeadModel is set), else 0 after the message that tells why. A port that is wired to
// "none" gives 0 without a message; one that the machine doesn't have gives the link's boxes.
std::int32_t IdentifyCameraHead();

}  // namespace kelvo
