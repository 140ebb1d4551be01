// The variables behind state/cal_settings.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "state/cal_settings.h"

namespace kelvo {

struct CalSettingsVariables {
    CalSettingsRecord CalSettings;
    CalSettingsRecord CalSettings2;
    std::int32_t ReplaceNoisy = 1;
    std::int32_t CalDone = 0;
    std::int32_t BadDetCount = 0;
};

namespace write {
extern CalSettingsVariables calSet;
}

// As at the start of the program.
void ResetCalSettings();

}  // namespace kelvo
