// Single deeds of calibration, of which both runs and the loading of a set are made: live video started, lists
// installed and saved, keys of a set written.
#pragma once

#include "platform/types.h"

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

// Names the step at hand on the status line.
void TellStep(std::string_view text);

// Live video runs when this returns true: it is started where the image is frozen or a file is on view.
bool EnsureLiveVideo();

// Makes a list (readout order, Vroi x Hroi) the one in force. 1, or 0 after "Hardware Timeout Error, Download of Gain
// Coefficients" or "... Offset Coefficients".
std::int32_t DownloadGains(std::span<const float> gainList);
std::int32_t DownloadOffsets(std::span<const std::int16_t> offsetList);

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

// Live video reads in degrees, and the status line is idle.
void ShowDegrees();

}  // namespace kelvo
