// The line to a head inside the program: whole frames of four bytes go to the head, and what it answers waits until it
// is read or purged.
#pragma once

#include "platform/serial.h"
#include "wirehead/head_registers.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace kelvo {

// answer: what the head says to a frame, at once and on the calling thread; nothing, or a part of an answer, is a head
// that doesn't answer well.
HeadLine LineToHead(std::function<std::vector<std::uint8_t>(const WireFrame& frame)> answer);

}  // namespace kelvo
