// The detectors of the simulated array: each one's response, dark current, offset and noise, drawn once from the seed.
#pragma once

#include "simcam/sim_physics.h"
#include "simcam/sim_settings.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvo {

enum class DetectorKind : std::uint8_t { kGood, kDead, kWeak, kStrong, kOffsetBad, kHot, kNoisy, kBlinking };

// A blinking detector stands on one of two levels, and may change it every so many frames.
struct Blinker {
    std::uint32_t detector = 0;
    float shift = 0;               // counts at gain code 0, while it is on
    std::int64_t dwellFrames = 1;  // above 0
};

// Parallel lists, one entry a detector, row by row from the top left of the array.
struct DetectorArray {
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    double meanResponse = 0;  // electrons per second for a photon radiance of 1
    double fullWellElectrons = 0;
    std::vector<float> response;
    std::vector<float> dark;
    std::vector<float> offset;
    std::vector<float> noise;
    std::vector<float> drift;  // counts a minute at gain code 0; empty while nothing drifts
    std::vector<DetectorKind> kind;
    std::vector<Blinker> blinkers;

    DetectorView Part(std::size_t first, std::size_t count) const;
};

// Draws the array. Good detectors: a response of 1 +- GainSpread (within 15 %), offsets and column offsets; drawn again
// until the sum of all stays within 280 counts of the mean at the low source, gain code 0 and the working integration
// time. The part BadFraction of the detectors is bad: dead, weak, strong, offset, hot, noisy or blinking.
DetectorArray DrawDetectors(const SimSettings& settings);

// True while a blinker is on its second level: it draws its level anew after each dwellFrames.
bool BlinkerIsOn(const Blinker& blinker, std::uint64_t seed, std::int64_t frame);

}  // namespace kelvo
