// The variables behind head/comm_link.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "head/comm_link.h"

namespace kelvo {

struct LinkVariables {
    std::int32_t CommPortOpen = 0;
    std::int32_t CommEchoMode = 0;
};

namespace write {
extern LinkVariables link;
}

}  // namespace kelvo
