// In place of the video set-up and the calibration runs until they are there.
#include "calib/cal_state.h"
#include "calib/calibration_run.h"
#include "config/camera_config.h"
#include "head/camera_head.h"
#include "head/external_clock_dialog.h"
#include "head/head_state.h"
#include "head/video_setup.h"
#include "pixel/coefficient_lists.h"
#include "platform/box.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "shell/status.h"
#include "shell/windows.h"

#include <string>

namespace kelvo {

[[gnu::weak]] void LoadVideoSettings(std::string_view file)
{
    const bool named = HasProfileKey("Setup", "IndexFrameRate", file);
    IndexFrameRate = GetPrivateProfileInt("Setup", named ? "IndexFrameRate" : "FrameRate", 10, file);
    IndexIntegrationTime.fill(GetPrivateProfileInt("Setup", "IntTime", 10, file));
    VideoGain.fill(GetPrivateProfileInt("Setup", "VideoGain1", 0, file));
    VideoOffset.fill(GetPrivateProfileInt("Setup", "VideoOffset1", 128, file));
    FrameRate = 0;
}

[[gnu::weak]] void SaveVideoSettings(std::string_view file)
{
    WritePrivateProfileString("Setup", "IndexFrameRate", Format("%d", IndexFrameRate), file);
    WritePrivateProfileString("Setup", "IntTime", Format("%d", IndexIntegrationTime[0]), file);
    WritePrivateProfileString("Setup", "VideoGain1", Format("%d", VideoGain[0]), file);
    WritePrivateProfileString(ActiveCameraSection(), "IndexFrameRate", Format("%d", IndexFrameRate), CameraFilePath);
}

[[gnu::weak]] int ResetUnityGainOffset(const CameraConfig&)
{
    return 1;
}

[[gnu::weak]] int ExternalClockDialog(HWND, std::string_view)
{
    return 1;
}

[[gnu::weak]] std::int32_t DownloadGains(std::span<const float> gainList)
{
    StatusMessage("Downloading Gains...", 0);
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(gainList.data());
    if (DownloadCoefficients(kGainKind, {bytes, gainList.size_bytes()})) return 1;
    MessageBox(hWndMain, "Hardware Timeout Error, Download of Gain Coefficients", kMessageCaption);
    return 0;
}

[[gnu::weak]] std::int32_t DownloadOffsets(std::span<const std::int16_t> offsetList)
{
    StatusMessage("Downloading Offsets...", 0);
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(offsetList.data());
    if (DownloadCoefficients(kOffsetKind, {bytes, offsetList.size_bytes()})) return 1;
    MessageBox(hWndMain, "Hardware Timeout Error, Download of Offset Coefficients", kMessageCaption);
    return 0;
}

}  // namespace kelvo
