// The calibration in force where its files couldn't be written: what they would hold. CalSettings names the files as if
// they stood, but what stands there is another calibration. Until a save has written this one, an update goes on from
// here, and nothing of it goes into those files.
#pragma once

#include "pixel/bad_pixels.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

struct UnsavedSet {
    std::vector<float> gains;  // readout order, 0: a rejected detector
    std::vector<std::int16_t> offsets;
    std::string noise;       // the bytes of a .noi; empty: not measured
    BadDetMap badDetectors;  // empty: the set has no list
};

// Null where the files of the calibration in force stand.
const UnsavedSet* SetWithoutFiles();

void KeepUnsavedSet(UnsavedSet set);
// Its files stand now, or another calibration is in force.
void ForgetUnsavedSet();

}  // namespace kelvo
