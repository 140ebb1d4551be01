// The variables behind state/head_state.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "state/head_state.h"

namespace kelvo {

struct HeadStateVariables {
    std::int32_t FirstSetupPending = 0;
    std::int32_t VideoSetupMissing = 0;
    std::int32_t IndexFrameRate = 0;
    float FrameRate = 0;
    std::array<std::int32_t, 4> IndexIntegrationTime{};
    std::int32_t IntegrationSlot = 0;
    std::array<float, 4> IntegrationTime{};
    std::int32_t IntegrationSetting = 0;
    double IntegrationMsecInForce = 0;
    std::array<std::int32_t, 4> VideoGain{};
    std::array<std::int32_t, 4> VideoOffset{};
    float VoltsLow = 0;
    float VoltsHigh = 0;
};

namespace write {
extern HeadStateVariables head;
}

// As at the start of the program.
void ResetHeadState();

}  // namespace kelvo
