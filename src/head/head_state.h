// What the camera head was last set to, as file headers and units read it. Written by the head protocol and the video
// set-up.
#pragma once

#include <array>
#include <cstdint>

namespace kelvo {

extern float FrameRate;                          // Hz; 0 until the head's timing is set
extern std::array<std::int32_t, 4> VideoGain;    // index, by output
extern std::array<std::int32_t, 4> VideoOffset;  // counts of DAC 0, 0 to 255, by output
extern float VoltsLow;                           // volts at DisplayLow and DisplayHigh
extern float VoltsHigh;
// The integration index that the head was last given for the slot in use.
extern std::int32_t IntegrationSetting;

// The integration time in milliseconds at a frame rate (Hz, above 0) and index; -1 for an index beyond the table. 0
// until a head is known and its frame size is set. The head reports no time: this follows from its registers, and is
// part of the head protocol (camera_head.cpp). File headers ask for it through this declaration.
double IntegrationTimeMsec(float frameRate, std::int32_t index);

}  // namespace kelvo
