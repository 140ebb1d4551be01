#include "state/head_state.h"

#include "state/head_state_write.h"
#include "state/state_registry.h"

namespace kelvo {

namespace write {
HeadStateVariables head;
}

constinit const std::int32_t& FirstSetupPending = write::head.FirstSetupPending;
constinit const std::int32_t& VideoSetupMissing = write::head.VideoSetupMissing;
constinit const std::int32_t& IndexFrameRate = write::head.IndexFrameRate;
constinit const float& FrameRate = write::head.FrameRate;
constinit const std::array<std::int32_t, 4>& IndexIntegrationTime = write::head.IndexIntegrationTime;
constinit const std::int32_t& IntegrationSlot = write::head.IntegrationSlot;
constinit const std::array<float, 4>& IntegrationTime = write::head.IntegrationTime;
constinit const std::int32_t& IntegrationSetting = write::head.IntegrationSetting;
constinit const double& IntegrationMsecInForce = write::head.IntegrationMsecInForce;
constinit const std::array<std::int32_t, 4>& VideoGain = write::head.VideoGain;
constinit const std::array<std::int32_t, 4>& VideoOffset = write::head.VideoOffset;
constinit const float& VoltsLow = write::head.VoltsLow;
constinit const float& VoltsHigh = write::head.VoltsHigh;

void ResetHeadState()
{
    write::head = {};
}

namespace {

const StateNames kStateNames{
    Named("IndexFrameRate", IndexFrameRate),
    Named("FrameRate", FrameRate),
    Named("VideoGain", VideoGain),
    Named("VideoOffset", VideoOffset),
    Named("VoltsLow", VoltsLow),
    Named("VoltsHigh", VoltsHigh),
    Named("FirstSetupPending", FirstSetupPending),
    Named("VideoSetupMissing", VideoSetupMissing),
    Named("IntegrationSlot", IntegrationSlot),
    Named("IntegrationSetting", IntegrationSetting),
    Named("IntegrationMsecInForce", IntegrationMsecInForce),
};

}  // namespace

}  // namespace kelvo
