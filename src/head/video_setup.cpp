#include "head/video_setup.h"

#include "config/camera_config.h"
#include "display/display_state.h"
#include "grabber/frame_state.h"
#include "head/camera_head.h"
#include "head/head_settings.h"
#include "head/head_state.h"
#include "head/head_transaction.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "shell/windows.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::int32_t kVoltsOffsetZero = 128;  // the offset at which it adds nothing

// Numbers parted by commas; how many were there.
std::size_t ScanNumbers(std::string_view text, std::array<std::int32_t, 4>& numbers)
{
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::size_t comma = text.find(',');
        const auto number = ScanDecimal(text.substr(0, comma));
        if (!number) return i;
        numbers.at(i) = *number;
        if (comma == std::string_view::npos) return i + 1;
        text.remove_prefix(comma + 1);
    }
    return numbers.size();
}

void ReadIntegrationIndexes()
{
    const std::string text =
        GetPrivateProfileString(ActiveCameraSection(), "IndexIntegrationTime", "10", CameraFilePath);
    if (ScanNumbers(text, IndexIntegrationTime) < IndexIntegrationTime.size()) {
        IndexIntegrationTime.fill(IndexIntegrationTime.front());
    }
    IntegrationSetting = IndexIntegrationTime.at(static_cast<std::size_t>(IntegrationSlot));
}

float VoltsAt(std::int32_t counts)
{
    const auto gain = static_cast<std::size_t>(std::clamp(VideoGain[0], 0, 15));
    const float offset = static_cast<float>(std::int64_t{VideoOffset[0]} - kVoltsOffsetZero) * VoltsOffset;
    return (static_cast<float>(counts) - ADoffset) * VoltsPerCountVsGain.at(gain) - offset;
}

void SendVideoSettings()
{
    SetIntegrationIndex(IndexIntegrationTime.at(static_cast<std::size_t>(IntegrationSlot)), IntegrationSlot);
    SetVideoOffset(VideoOffset[0]);
    SetVideoGain(VideoGain[0]);
}

void RestartGrab()
{
    LiveVideo = 0;
    ToggleFreeze(LiveVideo);
}

}  // namespace

void LoadVideoSettings()
{
    IndexFrameRate = HeadKey("IndexFrameRate", 10);
    ReadIntegrationIndexes();
    VideoGain[0] = HeadKey("QVF1058_Gain0", 0);
    VideoOffset[0] = HeadKey("QVF1058_DAC0", 128);
    FrameRate = 0;
    VoltsLow = VoltsAt(DisplayLow);
    VoltsHigh = VoltsAt(DisplayHigh);
}

int VideoSetupDialog(HWND /*parent*/)
{
    if (LinkIsReady()) SendVideoSettings();
    CloseLinkAfterUse();
    if (CameraOn && !ViewingFile) RestartGrab();
    return 1;
}

}  // namespace kelvo
