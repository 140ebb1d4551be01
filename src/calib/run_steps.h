// Steps that both calibration runs share: capturing frames, keeping the settings with a set, ending.
#pragma once

#include "calib/last_set.h"
#include "platform/types.h"
#include "state/camera_config.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

template <typename Entry>
std::span<const std::uint8_t> BytesOf(std::span<const Entry> list)
{
    return {reinterpret_cast<const std::uint8_t*>(list.data()), list.size_bytes()};
}

// Live video runs when this returns true: it is started where the image is frozen or a file is on view.
bool StartLiveVideo();

// Lists of a set. SaveList tells what failed.
bool SaveOffsets(std::string_view path, std::span<const std::int16_t> offsets);
bool SaveGains(std::string_view path, std::span<const float> gains);
// The noise in 1/20 count. A file that can't be made is told with a beep, and the set goes without.
void SaveNoise(const std::string& path, std::span<const std::int16_t> noiseList);

// A key of section Calibration of kelvo.ini.
void WriteCalKey(const char* key, std::string_view value);
// The path's name and extension: a set may be moved as a whole.
void WriteCalFileKey(const char* key, std::string_view path);

// "Some OFFSET coefficients out of range!...": true to go on.
bool AcceptOffsetRange(HWND window);

// The settings as they stand, video set-up and camera included, become the .cal; then the files hold. Where anything
// failed the former files come back, the set in force has no files, and the operator is told.
void CompleteSet(HWND window, SetReplacement& files, const std::string& calPath, bool listsAreSaved);

// Live video reads in degrees, and the status line is idle.
void ShowDegrees();

}  // namespace kelvo
