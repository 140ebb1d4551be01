// When the simulated video has its vertical blanks: at multiples of the frame period, counted from a start. A change of
// period goes on from the phase reached, so that the count never falls back. Times are on the TickUs scale.
#pragma once

#include <cstdint>

namespace kelvo {

struct FrameClock {
    std::int64_t anchorUs = 0;
    double anchorFrames = 0;  // frames and their fraction at anchorUs
    double periodUs = 0;      // 0: no blanks
};

// A clock that counts from 0 at nowUs.
FrameClock StartFrameClock(std::int64_t nowUs, double periodUs);
void SetFramePeriod(FrameClock& clock, std::int64_t nowUs, double periodUs);

// Blanks from the start to nowUs, which isn't before the last change of period.
std::int64_t BlanksBy(const FrameClock& clock, std::int64_t nowUs);
// When blank k (from 1) comes, rounded up to a microsecond. The clock has a period.
std::int64_t BlankUs(const FrameClock& clock, std::int64_t k);

}  // namespace kelvo
