// "kelvo join IN... OUT": sequences put together, in the order in which they are named.
#pragma once

#include <span>
#include <string>

namespace kelvo {

// join IN... OUT: 0, or 2 with the reason on the error stream. Pieces of a run, cut at any frames and joined in order,
// are the run again, byte for byte, its journal too. OUT must not stand.
int JoinCommand(std::span<const std::string> arguments);

}  // namespace kelvo
