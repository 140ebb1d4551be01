// The variables behind state/cal_state.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "state/cal_state.h"

namespace kelvo {

struct CalStateVariables {
    std::int32_t CalType = 0;
    std::vector<std::uint32_t> DecomList;
    std::vector<std::int16_t> OffsetList;
    std::vector<float> GainList;
    std::int32_t IntensityCold = 0;
    std::int32_t IntensityHot = 0;
    float TemperatureCold = -999.0F;
    float TemperatureHot = -999.0F;
    std::uint32_t CalibrationListsVersion = 0;
};

namespace write {
extern CalStateVariables cal;
}

// The next value of CalibrationListsVersion: whoever writes a list calls it. CalType is seen without it.
void CalibrationListsChanged();

// As at the start of the program.
void ResetCalState();

}  // namespace kelvo
