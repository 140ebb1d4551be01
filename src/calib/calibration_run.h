// Two-point and one-point calibration: from sums of frames to the lists in force and their files.
#pragma once

#include "config/camera_config.h"
#include "platform/types.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

// 1; 0 on a failure (told in a box) or where the operator cancels.
int TwoPointCalibrate(HWND window, const CameraConfig& config, std::int32_t& doneFlag);
int OnePointCalibrate(HWND window);

// Each detector's offset, low mean - meanLow x gain, rounded half away from zero; rangeFlag: one doesn't fit 16 bits.
std::optional<std::vector<std::int16_t>> CalculateOffsets(std::span<const float> gainList,
                                                          std::span<const std::int16_t> lowMeans, float meanLow,
                                                          float& meanGain, float& meanOffset, std::int32_t& rangeFlag);
std::int32_t DownloadGains(std::span<const float> gainList);
std::int32_t DownloadOffsets(std::span<const std::int16_t> offsetList);

// The average of frames over the whole array, and each detector's standard deviation where noise isn't empty.
int GetCalibData(std::span<std::int16_t> frame, std::span<float> noise, std::uint32_t frameCount);

}  // namespace kelvo
