// The variables behind state/contrast_fit.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "state/contrast_fit.h"

namespace kelvo {

struct ContrastFitVariables {
    std::optional<OwnFit> LastOwnFit;
};

namespace write {
extern ContrastFitVariables contrastFit;
}

// As at the start of the program.
void ResetContrastFit();

}  // namespace kelvo
