#include "state/cal_state.h"

#include "state/state_registry.h"

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

namespace {

const StateNames kStateNames{
    Named("CalType", CalType),
    Named("IntensityCold", IntensityCold),
    Named("IntensityHot", IntensityHot),
    Named("TemperatureCold", TemperatureCold),
    Named("TemperatureHot", TemperatureHot),
};

}  // namespace

void CalibrationListsChanged()
{
    ++CalibrationListsVersion;
}

}  // namespace kelvo
