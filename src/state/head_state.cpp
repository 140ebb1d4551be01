#include "state/head_state.h"

#include "state/state_registry.h"

namespace kelvo {

std::int32_t FirstSetupPending = 0;
float FrameRate = 0;
std::array<std::int32_t, 4> VideoGain{};
std::array<std::int32_t, 4> VideoOffset{};
float VoltsLow = 0;
float VoltsHigh = 0;
std::int32_t IntegrationSetting = 0;
double IntegrationMsecInForce = 0;

namespace {

const StateNames kStateNames{
    Named("FrameRate", FrameRate), Named("VideoGain", VideoGain), Named("VideoOffset", VideoOffset),
    Named("VoltsLow", VoltsLow),   Named("VoltsHigh", VoltsHigh),
};

}  // namespace

}  // namespace kelvo
