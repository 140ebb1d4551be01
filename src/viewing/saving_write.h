// The variables behind viewing/saving.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "viewing/saving.h"

namespace kelvo {

struct SavingVariables {
    std::int32_t FramesToAverageImage = 1;
    std::int32_t FramesToAverageSeq = 1;
    std::int32_t SeqNumber = 0;
    std::int32_t SeqNumberStart = 0;
};

namespace write {
extern SavingVariables saving;
}

}  // namespace kelvo
