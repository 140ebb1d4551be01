// The lists of the set in force, read again from their files into lists that stand.
#pragma once

#include "state/cal_settings.h"
#include "state/camera_config.h"

#include <cstdint>
#include <span>

namespace kelvo {

// Reads Vroi x Hroi entries of settings.GainFile or OffsetFile. 1; 0, the list unchanged, after a box: memory is
// refused, the file can't be opened ("Failure to open offset file!", for gains too) or is short, or the list is smaller
// than the frame.
int ReloadGains(std::span<float> list, const CameraConfig& config, const CalSettingsRecord& settings);
int ReloadOffsets(std::span<std::int16_t> list, const CameraConfig& config, const CalSettingsRecord& settings);

}  // namespace kelvo
