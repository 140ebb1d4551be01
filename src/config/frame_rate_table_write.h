// The variables behind config/frame_rate_table.h, for those who write them: tests/structure/state_writers.txt lists
// them.
#pragma once

#include "config/frame_rate_table.h"

namespace kelvo {

struct FrameRateVariables {
    std::vector<FrameRateRow> FrameRateTable;
};

namespace write {
extern FrameRateVariables rates;
}

}  // namespace kelvo
