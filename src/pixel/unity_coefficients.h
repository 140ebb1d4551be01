// The state in which no detector is corrected: the plain table, gain 1, one offset for all. A calibration starts from
// it.
#pragma once

#include "state/camera_config.h"

#include <cstdint>

namespace kelvo {

// CalType 0, the full range of 14 bits (0 to 0x3FFF), the table of the readout order alone, gain 1 and an offset of
// twice UnityOffset, with its sign, in the active tables. 1, or 0 where the table or the gains failed. Each failure is
// told: "Hardware Timeout Error, Download of Decommutation List", "Error, Download of Gain Coefficients", "Error,
// Download of Offset Coefficients".
int ResetUnityGainOffset(const CameraConfig& config);

// Builds the table of the readout order, turned as the flags say, installs it and keeps it as DECOM.TMP. Each step
// shows its text on the status line where tellSteps is set. False after a box where it couldn't be built or installed;
// a DECOM.TMP that couldn't be written is told and changes nothing.
bool InstallDecommutation(const CameraConfig& config, std::int32_t mirrorHoriz, std::int32_t mirrorVert,
                          std::int32_t rotateCcw, bool tellSteps);

}  // namespace kelvo
