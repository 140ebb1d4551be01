// What the camera head was last set to: frame rate, integration time, gain and offset, as headers, units and dialogs
// read it. The head reports none of it: it follows from what was sent.
#pragma once

#include <array>
#include <cstdint>

namespace kelvo {

// 1: the next calibration starts from a clean state.
extern const std::int32_t& FirstSetupPending;
// 1: since the camera was turned on no video set-up was accepted, and none is at work. A calibration in force makes up
// for it.
extern const std::int32_t& VideoSetupMissing;

extern const std::int32_t& IndexFrameRate;  // row of the frame rate table, as asked for; a key of the camera's section
extern const float& FrameRate;              // Hz; 0 until the head's timing is set

// Integration: the indexes chosen by slot (a key of the camera's section), the slot in use (0 to 3), and the times in
// milliseconds by slot as the video set-up last worked them out (-1: beyond the head's table).
extern const std::array<std::int32_t, 4>& IndexIntegrationTime;
extern const std::int32_t& IntegrationSlot;
extern const std::array<float, 4>& IntegrationTime;
// The index that the head was last given for the slot in use, and its time in milliseconds at FrameRate: -1 for an
// index beyond the head's table, 0 without a frame rate or until a head is known and its frame size is set.
extern const std::int32_t& IntegrationSetting;
extern const double& IntegrationMsecInForce;

extern const std::array<std::int32_t, 4>& VideoGain;    // index, by output
extern const std::array<std::int32_t, 4>& VideoOffset;  // counts of DAC 0, 0 to 255, by output
extern const float& VoltsLow;                           // volts at DisplayLow and DisplayHigh
extern const float& VoltsHigh;

}  // namespace kelvo
