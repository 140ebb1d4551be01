// The frame that the oscilloscope shows, shared by the set-up dialog, which reads it at each tick, and the advanced
// dialog, which may make the camera's frames larger meanwhile.
#pragma once

#include <cstdint>
#include <vector>

namespace kelvo {

extern const std::vector<std::int16_t>& OscFrame;  // Hroi x Vroi counts, image order; empty while no set-up is open
extern const std::int32_t& OscPixels;              // Hroi x Vroi

// OscPixels of the camera's size, and OscFrame at least as large. False after "Failure to allocate global video
// memory!"; then OscFrame is empty.
bool FitOscFrame();
void FreeOscFrame();

// No frame has come for the oscilloscope.
void ResetScopeFrame();

}  // namespace kelvo
