#include "head/head_settings.h"

#include "platform/profile.h"
#include "platform/text.h"
#include "state/head_state.h"
#include "state/windows.h"

namespace kelvo {

namespace {

template <typename Record>
struct ByteKey {
    const char* key;
    std::uint8_t Record::*field;
    std::int32_t defaultValue;
};

constexpr ByteKey<HeadTimingRecord> kTimingKeys[] = {
    {"QVF1058_MasterClockMinIndex", &HeadTimingRecord::MasterClockMinIndex, 2},
    {"QVF1058_MasterClockMaxIndex", &HeadTimingRecord::MasterClockMaxIndex, 63},
    {"QVF1058_ExtraTimingRows", &HeadTimingRecord::ExtraTimingRows, 0},
    {"QVF1058_ExtraTimingCols", &HeadTimingRecord::ExtraTimingCols, 0},
    {"QVF1058_AdDelay", &HeadTimingRecord::AdDelay, 0},
};

constexpr std::int32_t kInSbStartDelay = 15;
constexpr std::int32_t kHgCdTeStartDelay = 3;

constexpr ByteKey<FpaSerialWordRecord> kSerialWordKeys[] = {
    {"QVF1058_SerialReg", &FpaSerialWordRecord::SerialReg, 0x60},
    {"DetBias", &FpaSerialWordRecord::DetBias, 15},
    {"PedBias", &FpaSerialWordRecord::PedBias, 3},
    {"ColGain", &FpaSerialWordRecord::ColGain, 4},
    {"FlipCols", &FpaSerialWordRecord::FlipCols, 0},
    {"FlipRows", &FpaSerialWordRecord::FlipRows, 0},
    {"FastFrame", &FpaSerialWordRecord::FastFrame, 1},
};

std::uint8_t HeadByteKey(const char* key, std::int32_t defaultValue)
{
    return static_cast<std::uint8_t>(HeadKey(key, defaultValue));
}

// The last pixel of a window that starts at start. Wraps as the 32-bit fields do.
std::int32_t WindowEnd(std::int32_t size, std::int32_t start)
{
    return static_cast<std::int32_t>(std::int64_t{size} - 1 + start);
}

}  // namespace

std::int32_t HeadKey(const char* key, std::int32_t defaultValue)
{
    return GetPrivateProfileInt(ActiveCameraSection(), key, defaultValue, CameraFilePath);
}

void WriteHeadKey(const char* key, std::int32_t value)
{
    WritePrivateProfileString(ActiveCameraSection(), key, Format("%d", value), CameraFilePath);
}

std::int32_t DacRegister()
{
    return HeadKey("QVF1058_DACReg", 112);
}

std::int32_t GainRegister()
{
    return HeadKey("QVF1058_GainReg", 96);
}

std::int32_t BiasEnableRegister()
{
    return HeadKey("QVF1058_BiasEnableReg", 128);
}

std::int32_t DacSetting(std::size_t dac)
{
    return HeadKey(Format("QVF1058_DAC%zu", dac).c_str(), 128);
}

void ReadTimingKeys(HeadTimingRecord& timing, const CameraConfig& config)
{
    for (const auto& each : kTimingKeys) timing.*each.field = HeadByteKey(each.key, each.defaultValue);
    const std::int32_t startDelay = timing.HeadModel == kHgCdTeHead ? kHgCdTeStartDelay : kInSbStartDelay;
    timing.LineStartDelay = HeadByteKey("QVF1058_LineStartDelay", startDelay);
    timing.FrameStartDelay = HeadByteKey("QVF1058_FrameStartDelay", startDelay);
    timing.MasterClockFrequency = HeadKey("QVF1058_MasterClockFrequency", 48000000);
    timing.MasterClockIndex =
        static_cast<std::uint8_t>(static_cast<std::uint32_t>(IndexFrameRate) + timing.MasterClockMinIndex);
    timing.TimingRows = static_cast<std::int16_t>(std::int64_t{config.Vactive} + timing.ExtraTimingRows);
    timing.TimingCols = static_cast<std::int16_t>(std::int64_t{config.Hactive} + timing.ExtraTimingCols);
}

void ReadSerialWordKeys(FpaSerialWordRecord& word, const CameraConfig& config)
{
    for (const auto& each : kSerialWordKeys) word.*each.field = HeadByteKey(each.key, each.defaultValue);
    word.SerialBitsB = 0;  // the test mode is no setting: it ends with the camera's next start
    word.ColStart = HeadKey("ColStart", 0);
    word.RowStart = HeadKey("RowStart", 0);
    word.ColEnd = WindowEnd(config.Hactive, word.ColStart);
    word.RowEnd = WindowEnd(config.Vactive, word.RowStart);
}

}  // namespace kelvo
