// The variables behind config/settings.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "config/settings.h"

namespace kelvo {

struct SettingsVariables {
    std::int16_t NumGrayLevels = 0;
    std::int32_t MultiFrame = 0;
};

namespace write {
extern SettingsVariables settings;
}

}  // namespace kelvo
