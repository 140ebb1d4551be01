// In place of the calibration runs until they are there.
#include "calib/calibration_run.h"
#include "pixel/coefficient_lists.h"
#include "platform/box.h"
#include "shell/status.h"
#include "shell/windows.h"

namespace kelvo {

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
