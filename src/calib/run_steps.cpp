#include "calib/run_steps.h"

#include "display/unit_list.h"
#include "display/units.h"
#include "head/video_settings.h"
#include "pixel/coefficient_lists.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/status.h"
#include "video/video.h"

namespace kelvo {

void TellStep(std::string_view text)
{
    StatusMessage(text, kLeftAligned);
}

bool EnsureLiveVideo()
{
    if (!LiveVideo) ToggleLiveVideo();
    return LiveVideo != 0;
}

std::int32_t DownloadGains(std::span<const float> gainList)
{
    TellStep("Downloading Gains...");
    if (DownloadCoefficients(kGainKind, BytesOf(gainList))) return 1;
    MessageBox(hWndMain, "Hardware Timeout Error, Download of Gain Coefficients", kMessageCaption);
    return 0;
}

std::int32_t DownloadOffsets(std::span<const std::int16_t> offsetList)
{
    TellStep("Downloading Offsets...");
    if (DownloadCoefficients(kOffsetKind, BytesOf(offsetList))) return 1;
    MessageBox(hWndMain, "Hardware Timeout Error, Download of Offset Coefficients", kMessageCaption);
    return 0;
}

bool SaveOffsets(std::string_view path, std::span<const std::int16_t> offsets)
{
    // Two offsets a word: an odd last one isn't stored.
    return SaveList(path, BytesOf(offsets), offsets.size() / 2) != 0;
}

bool SaveGains(std::string_view path, std::span<const float> gains)
{
    return SaveList(path, BytesOf(gains), gains.size()) != 0;
}

void SaveNoise(const std::string& path, std::span<const std::int16_t> noiseList)
{
    TellStep("Saving pixel noise file...");
    const auto* const bytes = reinterpret_cast<const char*>(noiseList.data());
    if (ReplaceFile(path, {bytes, noiseList.size_bytes()})) return;
    MessageBeep(Sound::kExclamation);
    MessageBox(hWndMain, path, "Noise File Storage Failure");
}

void WriteCalKey(const char* key, std::string_view value)
{
    WritePrivateProfileString("Calibration", key, value, IniFilePath);
}

void WriteCalFileKey(const char* key, std::string_view path)
{
    std::string name;
    std::string extension;
    SplitPath(path, nullptr, nullptr, &name, &extension);
    WriteCalKey(key, name + extension);
}

bool AcceptOffsetRange(HWND window)
{
    return MessageBox(window, "Some OFFSET coefficients out of range!\nDo you wish to continue ?",
                      "Warning!  Continue?", BoxIcon::kQuestion, BoxButtons::kYesNo) == Button::kYes;
}

void ShowDegrees()
{
    SetDisplayUnit(kUnitCelsius);
    StatusString(kIdleHint, kLeftAligned);
}

}  // namespace kelvo
