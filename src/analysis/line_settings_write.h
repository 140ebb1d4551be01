// The variables behind analysis/line_settings.h, for those who write them: tests/structure/state_writers.txt lists
// them.
#pragma once

#include "analysis/line_settings.h"

namespace kelvo {

struct LineVariables {
    LinePlotSettings LineSettings;
    std::vector<std::int16_t> LineScratchFrame;
};

namespace write {
extern LineVariables line;
}

}  // namespace kelvo
