#include "head/video_settings.h"

#include "head/camera_head.h"
#include "head/head_settings.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/head_state_write.h"
#include "state/state_registry.h"
#include "state/windows.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace kelvo {

namespace {

const StateNames kStateNames{
    Named("IntegrationTime", IntegrationTime),
};

constexpr std::int32_t kDefaultFrameRateRow = 10;
constexpr std::int32_t kDefaultIntegration = 10;
constexpr std::int32_t kDefaultGain = 0;
constexpr std::int32_t kDefaultOffset = 128;
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

// What both sources have in common once their keys are read.
void TakeOver()
{
    write::head.IntegrationSetting = IndexIntegrationTime.at(SlotInUse());
    SetFrameRate(0);
    SetVoltsRange(VideoGain[0], VideoOffset[0]);
}

// Old sets kept the row under the name of the rate.
std::int32_t FrameRateRowOf(std::string_view file)
{
    const char* key = HasProfileKey("Setup", "IndexFrameRate", file) ? "IndexFrameRate" : "FrameRate";
    return GetPrivateProfileInt("Setup", key, kDefaultFrameRateRow, file);
}

// In doubles, rounded to single once, when it is stored.
float VoltsAt(std::int32_t counts, std::size_t gain, std::int32_t offset)
{
    const double zero = (static_cast<double>(offset) - kVoltsOffsetZero) * static_cast<double>(VoltsOffset);
    const double aboveZero = static_cast<double>(counts) - static_cast<double>(ADoffset);
    return static_cast<float>(aboveZero * static_cast<double>(VoltsPerCountVsGain.at(gain)) - zero);
}

void WriteSetupKeys(std::string_view file)
{
    const auto write = [&](std::string_view key, const std::string& value) {
        WritePrivateProfileString("Setup", key, value, file);
    };
    write("FrameRate", Format("%f", static_cast<double>(FrameRate)));
    write("IndexFrameRate", Format("%d", IndexFrameRate));
    write("IntTime", Format("%d", IndexIntegrationTime.front()));
    for (std::size_t channel = 0; channel < VideoGain.size(); ++channel) {
        write(Format("VideoGain%zu", channel + 1), Format("%d", VideoGain.at(channel)));
        write(Format("VideoOffset%zu", channel + 1), Format("%d", VideoOffset.at(channel)));
    }
}

void WriteChoiceKeys()
{
    const auto& index = IndexIntegrationTime;
    WriteHeadKey("IndexFrameRate", IndexFrameRate);
    WritePrivateProfileString(ActiveCameraSection(), "IndexIntegrationTime",
                              Format("%d,%d,%d,%d", index[0], index[1], index[2], index[3]), CameraFilePath);
    WriteHeadKey("QVF1058_Gain0", VideoGain[0]);
    WriteHeadKey("QVF1058_DAC0", VideoOffset[0]);
    WritePrivateProfileString(ActiveCameraSection(), "fFrameRate", Format("%f", static_cast<double>(FrameRate)),
                              CameraFilePath);
}

void WriteTimingKeys()
{
    WriteHeadKey("QVF1058_AdDelay", HeadTiming.AdDelay);
    WriteHeadKey("QVF1058_LineStartDelay", HeadTiming.LineStartDelay);
    WriteHeadKey("QVF1058_FrameStartDelay", HeadTiming.FrameStartDelay);
}

void WriteFocalPlaneKeys()
{
    WriteHeadKey("DetBias", FpaSerialWord.DetBias);
    WriteHeadKey("PedBias", FpaSerialWord.PedBias);
    WriteHeadKey("ColGain", FpaSerialWord.ColGain);
    WriteHeadKey("FlipRows", FpaSerialWord.FlipRows);
    WriteHeadKey("FlipCols", FpaSerialWord.FlipCols);
    WriteHeadKey("FastFrame", FpaSerialWord.FastFrame);
    WriteHeadKey("ColStart", FpaSerialWord.ColStart);
    WriteHeadKey("RowStart", FpaSerialWord.RowStart);
}

// A record that no turn-on has filled holds nothing worth keeping: it would overwrite the operator's keys.
bool TimingIsRead()
{
    return HeadTiming.TimingCols != 0;
}

bool SerialWordIsRead()
{
    return FpaSerialWord.ColEnd != 0;
}

}  // namespace

void TakeIntegrationIndexes(std::string_view text)
{
    if (ScanNumbers(text, write::head.IndexIntegrationTime) < IndexIntegrationTime.size()) {
        write::head.IndexIntegrationTime.fill(write::head.IndexIntegrationTime.front());
    }
    write::head.IntegrationSetting = IndexIntegrationTime.at(SlotInUse());
    UpdateIntegrationInForce();
}

void SetIntegration(std::int32_t index)
{
    write::head.IndexIntegrationTime.at(SlotInUse()) = index;
    SetIntegrationIndex(index, IntegrationSlot);
    UpdateIntegrationTime();
}

void UpdateIntegrationTime()
{
    const std::size_t slot = SlotInUse();
    write::head.IntegrationTime.at(slot) =
        static_cast<float>(IntegrationTimeMsec(FrameRate, IndexIntegrationTime.at(slot)));
}

void SetVoltsRange(std::int32_t gain, std::int32_t offset)
{
    const auto index = static_cast<std::size_t>(std::clamp(gain, 0, 15));
    write::head.VoltsLow = VoltsAt(DisplayLow, index, offset);
    write::head.VoltsHigh = VoltsAt(DisplayHigh, index, offset);
}

void LoadVideoSettings()
{
    write::head.IndexFrameRate = HeadKey("IndexFrameRate", kDefaultFrameRateRow);
    TakeIntegrationIndexes(
        GetPrivateProfileString(ActiveCameraSection(), "IndexIntegrationTime", "10", CameraFilePath));
    write::head.VideoGain[0] = HeadKey("QVF1058_Gain0", kDefaultGain);
    write::head.VideoOffset[0] = HeadKey("QVF1058_DAC0", kDefaultOffset);
    TakeOver();
}

void LoadVideoSettings(std::string_view file)
{
    write::head.IndexFrameRate = FrameRateRowOf(file);
    write::head.IndexIntegrationTime.fill(GetPrivateProfileInt("Setup", "IntTime", kDefaultIntegration, file));
    write::head.VideoGain[0] = GetPrivateProfileInt("Setup", "VideoGain1", kDefaultGain, file);
    write::head.VideoOffset[0] = GetPrivateProfileInt("Setup", "VideoOffset1", kDefaultOffset, file);
    TakeOver();
}

void SaveVideoSettings(std::string_view file)
{
    WriteSetupKeys(file);
    WriteChoiceKeys();
    if (TimingIsRead()) WriteTimingKeys();
    if (SerialWordIsRead()) WriteFocalPlaneKeys();
    WriteHeadKey("Vactive", ActiveConfig.Vactive);
    WriteHeadKey("Hactive", ActiveConfig.Hactive);
}

}  // namespace kelvo
