#include "config/settings.h"

#include "config/frame_rate_table.h"
#include "config/settings_write.h"
#include "imagefile/header_write.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/camera_config_write.h"
#include "state/contrast_fit.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/state_registry.h"
#include "state/windows_write.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

namespace write {
SettingsVariables settings;
}

constinit const std::int16_t& NumGrayLevels = write::settings.NumGrayLevels;
constinit const std::int32_t& MultiFrame = write::settings.MultiFrame;

namespace {

std::int32_t XPGBoard = 0;     // read and stored; nothing depends on it
std::int32_t IrigAddress = 0;  // of the IRIG time reader; read only if IRIG is enabled

const StateNames kStateNames{
    Named("NumGrayLevels", NumGrayLevels),
    Named("XPGBoard", XPGBoard),
    Named("IrigAddress", IrigAddress),
    Named("MultiFrame", MultiFrame),
};

constexpr const char* kSetup = "Setup";
constexpr const char* kDisplay = "Display";

constexpr std::int32_t kStatusLineHeight = 60;  // of the client area, kept from the picture
constexpr std::size_t kLongestNoFile = 4;       // "none" and shorter name no configuration file

enum class When { kAlways, kFull, kFullWithIntInc, kUnity };

struct IntegerKey {
    const char* key;
    std::int32_t CameraConfig::*field;
    std::int32_t defaultValue;
    When when;
};

// In the record's order; DualCamera stands before the keys that it rules out.
constexpr IntegerKey kIntegerKeys[] = {
    {"Vtotal", &CameraConfig::Vtotal, 128, When::kAlways},
    {"Htotal", &CameraConfig::Htotal, 128, When::kAlways},
    {"Vactive", &CameraConfig::Vactive, 124, When::kAlways},
    {"Hactive", &CameraConfig::Hactive, 125, When::kAlways},
    {"Vroi", &CameraConfig::Vroi, 124, When::kFull},
    {"Hroi", &CameraConfig::Hroi, 125, When::kFull},
    {"DualCamera", &CameraConfig::DualCamera, 0, When::kFull},
    {"Vstart", &CameraConfig::Vstart, 0, When::kAlways},
    {"Hdelay", &CameraConfig::Hdelay, 0, When::kAlways},
    {"LogCamera", &CameraConfig::LogCamera, 2, When::kFull},
    {"IntDelay", &CameraConfig::IntDelay, 62, When::kFullWithIntInc},
    {"IntMinDuration", &CameraConfig::IntMinDuration, 2, When::kFullWithIntInc},
    {"IntMaxDuration", &CameraConfig::IntMaxDuration, 126, When::kFullWithIntInc},
    {"IntDivisor", &CameraConfig::IntDivisor, 128, When::kFullWithIntInc},
    {"IntOffset", &CameraConfig::IntOffset, 0, When::kFullWithIntInc},
    {"IntMaxDuration2", &CameraConfig::IntMaxDuration2, 0, When::kAlways},
    {"IntDivisor2", &CameraConfig::IntDivisor2, 0, When::kAlways},
    {"IntOffset2", &CameraConfig::IntOffset2, 0, When::kAlways},
    {"UnityGain", &CameraConfig::UnityGain, -16384, When::kUnity},
    {"UnityOffset", &CameraConfig::UnityOffset, -4096, When::kUnity},
    {"ZeroOffset", &CameraConfig::ZeroOffset, 0, When::kUnity},
    {"NumOutputs", &CameraConfig::NumOutputs, 1, When::kFull},
    {"Xzoom", &CameraConfig::Xzoom, 3, When::kFull},
    {"Yzoom", &CameraConfig::Yzoom, 3, When::kFull},
    {"Xwindow", &CameraConfig::Xwindow, 450, When::kFull},
    {"YWindow", &CameraConfig::YWindow, 350, When::kFull},
    {"Xoffset", &CameraConfig::Xoffset, 0, When::kFull},
    {"Yoffset", &CameraConfig::Yoffset, 0, When::kFull},
    {"DecomScheme", &CameraConfig::DecomScheme, 0, When::kAlways},
    {"OscilliscopeRes", &CameraConfig::OscilliscopeRes, 1, When::kFull},
    {"BufferCapture", &CameraConfig::BufferCapture, 0, When::kFull},
    {"SyncDisplay", &CameraConfig::SyncDisplay, 0, When::kFull},
    {"SignalMultiplier", &CameraConfig::SignalMultiplier, 2, When::kAlways},
    {"NumChannels", &CameraConfig::NumChannels, 1, When::kFull},
    {"JambSyncEnable", &CameraConfig::JambSyncEnable, 0, When::kAlways},
    {"JambAddress", &CameraConfig::JambAddress, 0, When::kAlways},
    {"RAM0Value", &CameraConfig::RAM0Value, -1, When::kAlways},
    {"RAM0JambValue", &CameraConfig::RAM0JambValue, -1, When::kAlways},
};

// Numbers kept as texts and scanned: what doesn't scan leaves the variable as it was.
struct DecimalTextKey {
    const char* key;
    std::int32_t CameraConfig::*field;
    const char* defaultText;
};
constexpr DecimalTextKey kDecimalTextKeys[] = {
    {"Idelay", &CameraConfig::Idelay, "0"},
    {"CalDelay", &CameraConfig::CalDelay, "0"},
    {"ADduration", &CameraConfig::ADduration, "2"},
};

struct HexTextKey {
    const char* key;
    std::uint16_t CameraConfig::*field;
    const char* defaultText;
};
constexpr HexTextKey kHexTextKeys[] = {
    {"Sync1", &CameraConfig::Sync1, "0x0080"},
    {"Sync2", &CameraConfig::Sync2, "0x0000"},
    {"Sync3", &CameraConfig::Sync3, "0x0000"},
};

constexpr const char* kDefaultVoltsPerCount =
    "-0.000400,-0.000311,-0.000282,-0.000246,-0.000236,-0.000210,-0.000197,-0.000179,"
    "-0.000173,-0.000159,-0.000151,-0.000140,-0.000137,-0.000128,-0.000123,-0.000113";

// One section of camera.ini.
class CameraSection {
  public:
    explicit CameraSection(std::int32_t number, std::string_view file = CameraFilePath)
        : name_(Format("Camera.%d", number)), file_(file)
    {
    }
    std::string Text(const char* key, const char* defaultText) const
    {
        return GetPrivateProfileString(name_, key, defaultText, file_);
    }
    std::int32_t Integer(const char* key, std::int32_t defaultValue) const
    {
        return GetPrivateProfileInt(name_, key, defaultValue, file_);
    }
    bool Has(const char* key) const { return HasProfileKey(name_, key, file_); }

  private:
    std::string name_;
    std::string file_;
};

std::int32_t SetupInteger(const char* key, std::int32_t defaultValue)
{
    return GetPrivateProfileInt(kSetup, key, defaultValue, IniFilePath);
}

void ReadByteSwap()
{
    write::file.ByteSwap =
        ScanHex(GetPrivateProfileString(kSetup, "ByteSwap", "0xffff", IniFilePath)).value_or(ByteSwap);
}

void ReadIrigKeys()
{
    if (const std::int32_t earlier = SetupInteger("IRIGTime", 0); earlier != 0) {
        write::file.IrigEnable = earlier;
        DeleteProfileKey(kSetup, "IRIGTime", IniFilePath);
        WritePrivateProfileString(kSetup, "IrigEnable", "1", IniFilePath);
    } else {
        write::file.IrigEnable = SetupInteger("IrigEnable", 0);
    }
    if (IrigEnable != 0) IrigAddress = SetupInteger("IrigAddress", 736);
}

void ReadCnfFile(const CameraSection& section)
{
    const std::string name = section.Text("cnfFile", "none");
    if (name.size() > kLongestNoFile) write::windows.CnfFilePath = DefaultDir + '/' + name;
}

void MeasureView()
{
    write::windows.ViewWidth = ClientWidth;
    write::windows.ViewHeight = ClientHeight - kStatusLineHeight;
}

bool Applies(When when, int full, const CameraConfig& record)
{
    switch (when) {
        case When::kAlways:
            return true;
        case When::kFull:
            return full != 0;
        case When::kFullWithIntInc:
            return full != 0 && record.IntInc != 0;
        case When::kUnity:
            return full == 0 || record.DualCamera == 0;
    }
    return false;
}

void ReadIntegers(const CameraSection& section, int full, CameraConfig& record)
{
    for (const IntegerKey& each : kIntegerKeys) {
        if (Applies(each.when, full, record)) record.*each.field = section.Integer(each.key, each.defaultValue);
    }
}

// The increment is a signed 16-bit value in the head.
void ReadIntInc(const CameraSection& section, CameraConfig& record)
{
    if (const auto value = ScanDecimal(section.Text("IntInc", "1"))) record.IntInc = static_cast<std::int16_t>(*value);
}

void ReadScannedTexts(const CameraSection& section, CameraConfig& record)
{
    for (const DecimalTextKey& each : kDecimalTextKeys) {
        auto& field = record.*each.field;
        field = ScanDecimal(section.Text(each.key, each.defaultText)).value_or(field);
    }
    for (const HexTextKey& each : kHexTextKeys) {
        auto& field = record.*each.field;
        field = static_cast<std::uint16_t>(ScanHex(section.Text(each.key, each.defaultText)).value_or(field));
    }
    record.fPitch = ScanFloat(section.Text("fPitch", "50.0")).value_or(record.fPitch);
}

// Numbers divided by commas; the first that doesn't scan, or isn't followed by a comma, ends the reading, and the
// gains behind it keep their values.
void ReadVoltsPerCount(const CameraSection& section)
{
    const std::string text = section.Text("VoltsPerCountVsGain", kDefaultVoltsPerCount);
    std::string_view rest = text;
    for (float& volts : write::camera.VoltsPerCountVsGain) {
        const auto value = TakeFloat(rest);
        if (!value) return;
        volts = *value;
        if (!rest.starts_with(',')) return;
        rest.remove_prefix(1);
    }
}

void ReadValuesBesideTheRecord(const CameraSection& section)
{
    write::camera.numBufFrames = section.Integer("numBufFrames", 8);
    write::camera.VoltsOffset = ScanFloat(section.Text("Volts/Offset", "0.1")).value_or(VoltsOffset);
    write::camera.ADoffset = ScanFloat(section.Text("A/Doffset", "8200.0")).value_or(ADoffset);
    ReadVoltsPerCount(section);
}

void LimitChannels(CameraConfig& record)
{
    if (record.NumOutputs < record.NumChannels) record.NumChannels = record.NumOutputs;
}

// A camera that runs faster than its plain timing file allows has a second one.
void ReadTimingFile(const CameraSection& section, CameraConfig& record)
{
    const std::int32_t timingFileFrameRate = section.Integer("TimingFileFrameRate", -1);
    write::head.IndexFrameRate = section.Integer("IndexFrameRate", 3);
    ScanFrameRate(FrameRateRowAt(IndexFrameRate), write::head.FrameRate);
    const bool fast = static_cast<float>(timingFileFrameRate) < FrameRate;
    record.TimingFile = section.Text(fast ? "HighFrameRateTimingFile" : "TimingFile", "");
}

void WriteInteger(const std::string& section, const char* key, std::int32_t value, const std::string& file)
{
    WritePrivateProfileString(section, key, Format("%i", value), file);
}

}  // namespace

void ReadSetupKeys()
{
    XPGBoard = SetupInteger("XPGBoard", 0);
    write::camera.ActiveCamera = SetupInteger("ActiveCamera", 2);
    write::settings.MultiFrame = GetPrivateProfileInt("Save", "MultiFrame", 0, IniFilePath);
    ReadByteSwap();
    write::frames.CameraOn = 0;
    write::frames.ViewingFile = 0;
    ReadIrigKeys();
    write::file.SpiffHeader.SpiffHeaderIdentity = SetupInteger("SpiffHeaderIdentity", 18290);
}

void ReadNumGrayLevels()
{
    write::settings.NumGrayLevels = static_cast<std::int16_t>(SetupInteger("NumGrayLevels", 256));
}

void ReadCameraConfig(std::int32_t number, int full, CameraConfig& record)
{
    const CameraSection section(number);
    record.Description = section.Text("Description", "N/A");
    write::display.Xpan = 0;
    write::display.Ypan = 0;
    write::camera.nCommPort = section.Integer("nCommPort", 2);
    ReadCnfFile(section);
    MeasureView();
    if (full != 0) ReadIntInc(section, record);  // first: it decides about other keys
    ReadIntegers(section, full, record);
    ReadScannedTexts(section, record);
    if (full != 0) record.Preconnect = section.Text("Preconnect", "");
    ReadValuesBesideTheRecord(section);
    LimitChannels(record);
    ReadTimingFile(section, record);
}

std::optional<CameraConfig> CameraRecordOf(std::int32_t number, std::string_view cameraFile)
{
    const CameraSection section(number, cameraFile);
    if (!section.Has("Vroi") || !section.Has("Hroi")) return std::nullopt;
    CameraConfig record;
    record.Description = section.Text("Description", "N/A");
    ReadIntInc(section, record);
    ReadIntegers(section, 1, record);
    ReadScannedTexts(section, record);
    record.Preconnect = section.Text("Preconnect", "");
    LimitChannels(record);
    return record;
}

void SaveDisplayState()
{
    const ContrastPair levels = ContrastToStore();
    WriteInteger(kDisplay, "Contrast", levels.contrast, IniFilePath);
    WriteInteger(kDisplay, "Brightness", levels.brightness, IniFilePath);
    const std::string camera = ActiveCameraSection();
    WriteInteger(camera, "Xzoom", Xzoom, CameraFilePath);
    WriteInteger(camera, "Xoffset", Xoffset, CameraFilePath);
    WriteInteger(camera, "Yzoom", Yzoom, CameraFilePath);
    WriteInteger(camera, "Yoffset", Yoffset, CameraFilePath);
}

void ResetSettings()
{
    XPGBoard = 0;
    IrigAddress = 0;
    write::settings.NumGrayLevels = 0;
    write::settings.MultiFrame = 0;
}

}  // namespace kelvo
