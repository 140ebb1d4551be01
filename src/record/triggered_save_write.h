// The variables behind record/triggered_save.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "record/triggered_save.h"

namespace kelvo {

struct TriggeredSaveVariables {
    TriggerSettings triggerSettings;
    std::int32_t AcquisitionRunning = 0;
    std::int32_t TriggersLeft = 0;
    std::int32_t TrigFirstPass = 0;
};

namespace write {
extern TriggeredSaveVariables triggered;
}

}  // namespace kelvo
