#include "state/cal_state.h"

#include "state/cal_state_write.h"
#include "state/state_registry.h"

namespace kelvo {

namespace write {
CalStateVariables cal;
}

constinit const std::int32_t& CalType = write::cal.CalType;
constinit const std::vector<std::uint32_t>& DecomList = write::cal.DecomList;
constinit const std::vector<std::int16_t>& OffsetList = write::cal.OffsetList;
constinit const std::vector<float>& GainList = write::cal.GainList;
constinit const std::int32_t& IntensityCold = write::cal.IntensityCold;
constinit const std::int32_t& IntensityHot = write::cal.IntensityHot;
constinit const float& TemperatureCold = write::cal.TemperatureCold;
constinit const float& TemperatureHot = write::cal.TemperatureHot;
constinit const std::uint32_t& CalibrationListsVersion = write::cal.CalibrationListsVersion;

void ResetCalState()
{
    write::cal = {};
}

namespace {

const StateNames kStateNames{
    Named("CalType", CalType),
    Named("IntensityCold", IntensityCold),
    Named("IntensityHot", IntensityHot),
    Named("TemperatureCold", TemperatureCold),
    Named("TemperatureHot", TemperatureHot),
    Digest("DecomList", DecomList),
    Digest("GainList", GainList),
    Digest("OffsetList", OffsetList),
};

}  // namespace

void CalibrationListsChanged()
{
    ++write::cal.CalibrationListsVersion;
}

}  // namespace kelvo
