// The variables behind head/scope_frame.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "head/scope_frame.h"

namespace kelvo {

struct ScopeVariables {
    std::vector<std::int16_t> OscFrame;
    std::int32_t OscPixels = 0;
};

namespace write {
extern ScopeVariables scope;
}

}  // namespace kelvo
