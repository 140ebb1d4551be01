// The variables behind config/display_settings.h, for those who write them: tests/structure/state_writers.txt lists
// them.
#pragma once

#include "config/display_settings.h"

namespace kelvo {

struct OpticsVariables {
    std::string OpticsFile;
};

namespace write {
extern OpticsVariables optics;
}

}  // namespace kelvo
