// Tests that repeat a kill or a race many times (ctest label "long"): a tenth of the rounds while one works and on each
// change, all of them with KELVO_LONG=full in the environment (./test.sh long).
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace kelvo {

// What chance must have brought in all rounds needn't come in a tenth of them.
inline bool AllRounds()
{
    const char* const wanted = std::getenv("KELVO_LONG");
    return wanted && std::string_view(wanted) == "full";
}

inline int Rounds(int all)
{
    return AllRounds() ? all : std::max(all / 10, 1);
}

}  // namespace kelvo
