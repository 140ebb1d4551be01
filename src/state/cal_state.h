// The live calibration: what the frame path and the units read of it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

extern const std::int32_t&
    CalType;  // 0 none, 1 offsets only, 2 gains and offsets. The lists below may stand without it

// One image pixel's raw index each, image order, Vroi x Hroi. Offsets (counts) and gains (1.0: the array's mean
// response) in readout order. Empty before a table was built or coefficients were installed.
extern const std::vector<std::uint32_t>& DecomList;
extern const std::vector<std::int16_t>& OffsetList;
extern const std::vector<float>& GainList;

// The calibration pair of the set in force: counts and °C. -10000 and -999.0 mark none. The source dialogs take the
// temperatures here, before the run that they belong to has come to its end: until then CalType is 0.
extern const std::int32_t& IntensityCold;
extern const std::int32_t& IntensityHot;
extern const float& TemperatureCold;
extern const float& TemperatureHot;

// Counts the changes of DecomList, OffsetList and GainList: whoever keeps something made from a list compares.
extern const std::uint32_t& CalibrationListsVersion;

}  // namespace kelvo
