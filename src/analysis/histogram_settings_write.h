// The variables behind analysis/histogram_settings.h, for those who write them: tests/structure/state_writers.txt lists
// them.
#pragma once

#include "analysis/histogram_settings.h"

namespace kelvo {

struct HistogramVariables {
    HistSettingsRecord HistSettings;
    std::vector<std::int16_t> HistScratchFrame;
};

namespace write {
extern HistogramVariables histogram;
}

// As at the start of the program.
void ResetHistSettings();

}  // namespace kelvo
