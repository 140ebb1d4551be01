#include "state/cal_state.h"

namespace kelvo {

std::int32_t CalType = 0;
std::vector<std::uint32_t> DecomList;
std::vector<std::int16_t> OffsetList;
std::vector<float> GainList;
std::int32_t IntensityCold = 0;
std::int32_t IntensityHot = 0;
float TemperatureCold = -999.0F;
float TemperatureHot = -999.0F;
std::uint32_t CalibrationListsVersion = 0;

void CalibrationListsChanged()
{
    ++CalibrationListsVersion;
}

}  // namespace kelvo
