// The calibration set's record and the unity coefficients, until their modules are linked.
#include "calib/cal_settings.h"
#include "calib/cal_state.h"
#include "config/frame_rate_table.h"
#include "display/display_state.h"
#include "head/video_setup.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"

#include <cstring>

namespace kelvo {

CalSettingsRecord CalSettings;
CalSettingsRecord CalSettings2;
std::int32_t ReplaceNoisy = 0;
std::int32_t CalDone = 0;
std::int32_t BadDetCount = 0;

int ResetUnityGainOffset(const CameraConfig& config)
{
    CalType = 0;
    DisplayLow = 0;
    DisplayHigh = 16383;
    const auto table = BuildDecomList(config, FrameRateRowAt(IndexFrameRate).ReadoutShift);
    if (!table) return 0;
    DecomList = *table;
    const auto count = static_cast<std::int32_t>(table->size());
    FillCoefficients(kOffsetKind, 0, count, 2.0 * config.UnityOffset);
    return FillCoefficients(kGainKind, 0, count, 1);
}

}  // namespace kelvo
