// The variables behind shell/start_options.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "shell/start_options.h"

namespace kelvo {

struct StartOptionVariables {
    StartOptions startOptions;
};

namespace write {
extern StartOptionVariables options;
}

}  // namespace kelvo
