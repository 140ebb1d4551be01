// What the camera head was last set to, as file headers and units read it. Written by the head protocol and the video
// set-up.
#pragma once

#include <array>
#include <cstdint>

namespace kelvo {

// 1: the next calibration starts from a clean state. Set by the turn-on dialog's video set-up button.
extern const std::int32_t& FirstSetupPending;

extern const float& FrameRate;                          // Hz; 0 until the head's timing is set
extern const std::array<std::int32_t, 4>& VideoGain;    // index, by output
extern const std::array<std::int32_t, 4>& VideoOffset;  // counts of DAC 0, 0 to 255, by output
extern const float& VoltsLow;                           // volts at DisplayLow and DisplayHigh
extern const float& VoltsHigh;
// The integration index that the head was last given for the slot in use, and its time in milliseconds at FrameRate: -1
// for an index beyond the head's table, 0 without a frame rate or until a head is known and its frame size is set.
extern const std::int32_t& IntegrationSetting;
extern const double& IntegrationMsecInForce;

}  // namespace kelvo
