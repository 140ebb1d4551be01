// What the camera head was last set to, as file headers and units read it. Written by the head protocol and the video
// set-up.
#pragma once

#include <array>
#include <cstdint>

namespace kelvo {

extern float FrameRate;                        // Hz; 0 until the head's timing is set
extern std::array<std::int16_t, 4> VideoGain;  // by output
extern std::array<std::int16_t, 4> VideoOffset;
extern float VoltsLow;  // volts at DisplayLow and DisplayHigh
extern float VoltsHigh;
extern std::int32_t IntegrationSetting;  // the active integration setting

// The integration time in milliseconds at a frame rate (Hz, above 0) and setting. 0 until the head's timing is built.
double IntegrationTimeMsec(float frameRate, std::int32_t setting);

}  // namespace kelvo
