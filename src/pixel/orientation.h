// The complete rebuild of the table in force: readout order, substitution, orientation.
#pragma once

#include "config/camera_config.h"
#include "platform/types.h"

#include <cstdint>
#include <string_view>

namespace kelvo {

// Builds, substitutes, reorders, installs, writes DECOM.TMP, sets the check of "Replace bad pixels". 1; 0 after a box,
// the table in force unchanged.
std::int32_t SetImageOrientation(std::int32_t substitute, std::int32_t mirrorHoriz, std::int32_t mirrorVert,
                                 std::int32_t rotateCcw, std::string_view badDetFile, const CameraConfig& config,
                                 std::int32_t readoutShift);

// Prepares the table for a calibration run: unity coefficients, plain order. Non-zero where the unity download
// succeeded.
std::int32_t SetCommutationOrder();

// F9: bad pixels are replaced, or not.
void ToggleBadPixelReplacement(HWND window);

}  // namespace kelvo
