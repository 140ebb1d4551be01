#include "config/settings.h"

#include "config/settings_fixture.h"
#include "imagefile/header.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows_write.h"
#include "support/state_value.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>

namespace kelvo {
namespace {

using Integer = std::int32_t CameraConfig::*;

struct IntegerDefault {
    const char* key;
    Integer field;
    std::int32_t value;
};

// What a camera section without keys gives.
constexpr std::array kIntegers{
    IntegerDefault{"Vtotal", &CameraConfig::Vtotal, 128},
    IntegerDefault{"Htotal", &CameraConfig::Htotal, 128},
    IntegerDefault{"Vactive", &CameraConfig::Vactive, 124},
    IntegerDefault{"Hactive", &CameraConfig::Hactive, 125},
    IntegerDefault{"Vroi", &CameraConfig::Vroi, 124},
    IntegerDefault{"Hroi", &CameraConfig::Hroi, 125},
    IntegerDefault{"DualCamera", &CameraConfig::DualCamera, 0},
    IntegerDefault{"Vstart", &CameraConfig::Vstart, 0},
    IntegerDefault{"Hdelay", &CameraConfig::Hdelay, 0},
    IntegerDefault{"Idelay", &CameraConfig::Idelay, 0},
    IntegerDefault{"CalDelay", &CameraConfig::CalDelay, 0},
    IntegerDefault{"LogCamera", &CameraConfig::LogCamera, 2},
    IntegerDefault{"IntDelay", &CameraConfig::IntDelay, 62},
    IntegerDefault{"IntMinDuration", &CameraConfig::IntMinDuration, 2},
    IntegerDefault{"IntMaxDuration", &CameraConfig::IntMaxDuration, 126},
    IntegerDefault{"IntDivisor", &CameraConfig::IntDivisor, 128},
    IntegerDefault{"IntOffset", &CameraConfig::IntOffset, 0},
    IntegerDefault{"IntInc", &CameraConfig::IntInc, 1},
    IntegerDefault{"IntMaxDuration2", &CameraConfig::IntMaxDuration2, 0},
    IntegerDefault{"IntDivisor2", &CameraConfig::IntDivisor2, 0},
    IntegerDefault{"IntOffset2", &CameraConfig::IntOffset2, 0},
    IntegerDefault{"UnityGain", &CameraConfig::UnityGain, -16384},
    IntegerDefault{"UnityOffset", &CameraConfig::UnityOffset, -4096},
    IntegerDefault{"ZeroOffset", &CameraConfig::ZeroOffset, 0},
    IntegerDefault{"NumOutputs", &CameraConfig::NumOutputs, 1},
    IntegerDefault{"Xzoom", &CameraConfig::Xzoom, 3},
    IntegerDefault{"Yzoom", &CameraConfig::Yzoom, 3},
    IntegerDefault{"Xwindow", &CameraConfig::Xwindow, 450},
    IntegerDefault{"YWindow", &CameraConfig::YWindow, 350},
    IntegerDefault{"Xoffset", &CameraConfig::Xoffset, 0},
    IntegerDefault{"Yoffset", &CameraConfig::Yoffset, 0},
    IntegerDefault{"DecomScheme", &CameraConfig::DecomScheme, 0},
    IntegerDefault{"OscilliscopeRes", &CameraConfig::OscilliscopeRes, 1},
    IntegerDefault{"BufferCapture", &CameraConfig::BufferCapture, 0},
    IntegerDefault{"SyncDisplay", &CameraConfig::SyncDisplay, 0},
    IntegerDefault{"SignalMultiplier", &CameraConfig::SignalMultiplier, 2},
    IntegerDefault{"ADduration", &CameraConfig::ADduration, 2},
    IntegerDefault{"NumChannels", &CameraConfig::NumChannels, 1},
    IntegerDefault{"JambSyncEnable", &CameraConfig::JambSyncEnable, 0},
    IntegerDefault{"JambAddress", &CameraConfig::JambAddress, 0},
    IntegerDefault{"RAM0Value", &CameraConfig::RAM0Value, -1},
    IntegerDefault{"RAM0JambValue", &CameraConfig::RAM0JambValue, -1},
};

// Read in the partial read too.
constexpr std::array kAlwaysRead{
    &CameraConfig::Vtotal,           &CameraConfig::Htotal,     &CameraConfig::Vactive,
    &CameraConfig::Hactive,          &CameraConfig::Vstart,     &CameraConfig::Hdelay,
    &CameraConfig::Idelay,           &CameraConfig::CalDelay,   &CameraConfig::IntMaxDuration2,
    &CameraConfig::IntDivisor2,      &CameraConfig::IntOffset2, &CameraConfig::UnityGain,
    &CameraConfig::UnityOffset,      &CameraConfig::ZeroOffset, &CameraConfig::DecomScheme,
    &CameraConfig::SignalMultiplier, &CameraConfig::ADduration, &CameraConfig::JambAddress,
    &CameraConfig::JambSyncEnable,   &CameraConfig::RAM0Value,  &CameraConfig::RAM0JambValue,
};

constexpr std::array<Integer, 5> kIntKeys{&CameraConfig::IntDelay, &CameraConfig::IntMinDuration,
                                          &CameraConfig::IntMaxDuration, &CameraConfig::IntDivisor,
                                          &CameraConfig::IntOffset};

class CameraSettings : public SettingsTest {
  protected:
    // Reads Camera.2 with these lines into a record of 555s.
    CameraConfig Read(const std::string& lines, int full = 1)
    {
        PutCameraIni("[Camera.2]\n" + lines);
        CameraConfig record;
        for (const auto& each : kIntegers) record.*each.field = kOld;
        record.Sync1 = record.Sync2 = record.Sync3 = kOld;
        record.fPitch = kOld;
        record.Preconnect = record.TimingFile = record.Description = "old";
        ReadCameraConfig(2, full, record);
        return record;
    }
    static constexpr std::int32_t kOld = 555;
};

TEST_F(CameraSettings, MissingKeysGiveTheDefaults)
{
    const CameraConfig record = Read("");
    for (const auto& each : kIntegers) EXPECT_EQ(record.*each.field, each.value) << each.key;
    EXPECT_EQ(record.Description, "N/A");
    EXPECT_EQ(record.TimingFile, "");
    EXPECT_EQ(record.Preconnect, "");
    EXPECT_EQ(record.Sync1, 0x80);
    EXPECT_EQ(record.Sync2, 0);
    EXPECT_EQ(record.Sync3, 0);
    EXPECT_EQ(record.fPitch, 50.0F);
}

TEST_F(CameraSettings, AMissingFileGivesTheDefaults)
{
    CameraConfig record;
    ReadCameraConfig(2, 1, record);
    EXPECT_EQ(record.Hroi, 125);
    EXPECT_EQ(record.Vroi, 124);
    EXPECT_EQ(nCommPort, 2);
}

// A value of its own for each key, except where one rules others out or limits them.
std::int32_t DistinctValue(const IntegerDefault& each)
{
    if (each.field == &CameraConfig::DualCamera) return 0;
    if (each.field == &CameraConfig::NumOutputs) return 9000;
    return 1000 + static_cast<std::int32_t>(&each - kIntegers.data());
}

TEST_F(CameraSettings, EachKeyFeedsTheFieldOfItsName)
{
    std::string lines =
        "Description=InSb 320\nTimingFile=t.tim\nPreconnect=p.bat\nfPitch=30.5\n"
        "Sync1=0x1234\nSync2=abcd\nSync3=0xFFFF\nTimingFileFrameRate=0\n";
    for (const auto& each : kIntegers) lines += Format("%s=%d\n", each.key, DistinctValue(each));
    const CameraConfig record = Read(lines);
    for (const auto& each : kIntegers) EXPECT_EQ(record.*each.field, DistinctValue(each)) << each.key;
    EXPECT_EQ(record.Description, "InSb 320");
    EXPECT_EQ(record.TimingFile, "t.tim");
    EXPECT_EQ(record.Preconnect, "p.bat");
    EXPECT_EQ(record.fPitch, 30.5F);
    EXPECT_EQ(record.Sync1, 0x1234);
    EXPECT_EQ(record.Sync2, 0xABCD);
    EXPECT_EQ(record.Sync3, 0xFFFF);
}

TEST_F(CameraSettings, TheNumberChoosesTheSection)
{
    PutCameraIni("[Camera.1]\nHroi=640\n[Camera.12]\nHroi=64\n");
    CameraConfig record;
    ReadCameraConfig(1, 1, record);
    EXPECT_EQ(record.Hroi, 640);
    ReadCameraConfig(12, 1, record);
    EXPECT_EQ(record.Hroi, 64);
    ReadCameraConfig(2, 1, record);
    EXPECT_EQ(record.Hroi, 125);
}

TEST_F(CameraSettings, ChannelsAreLimitedToTheOutputs)
{
    EXPECT_EQ(Read("NumChannels=4\nNumOutputs=2\n").NumChannels, 2);
    EXPECT_EQ(Read("NumChannels=2\nNumOutputs=4\n").NumChannels, 2);
    EXPECT_EQ(Read("NumChannels=4\n").NumChannels, 1);
    EXPECT_EQ(Read("NumChannels=1\nNumOutputs=-3\n").NumChannels, -3);
}

TEST_F(CameraSettings, WithoutAnIncrementTheFiveIntegrationKeysKeepTheOldRecord)
{
    const std::string keys = "IntDelay=1\nIntMinDuration=2\nIntMaxDuration=3\nIntDivisor=4\nIntOffset=5\n";
    const CameraConfig without = Read("IntInc=0\n" + keys);
    for (const Integer field : kIntKeys) EXPECT_EQ(without.*field, kOld);
    EXPECT_EQ(without.IntInc, 0);
    const CameraConfig with = Read(keys + "IntInc=-2\n");
    EXPECT_EQ(with.IntDelay, 1);
    EXPECT_EQ(with.IntOffset, 5);
    EXPECT_EQ(with.IntInc, -2);
}

TEST_F(CameraSettings, TheIncrementIsSixteenBitsWide)
{
    EXPECT_EQ(Read("IntInc=40000\n").IntInc, 40000 - 65536);
    const CameraConfig wrapped = Read("IntInc=65536\nIntDelay=9\n");
    EXPECT_EQ(wrapped.IntInc, 0);
    EXPECT_EQ(wrapped.IntDelay, kOld);
}

TEST_F(CameraSettings, ADualCameraKeepsTheUnityKeys)
{
    const CameraConfig dual = Read("DualCamera=1\nUnityGain=1\nUnityOffset=2\nZeroOffset=3\n");
    EXPECT_EQ(dual.UnityGain, kOld);
    EXPECT_EQ(dual.UnityOffset, kOld);
    EXPECT_EQ(dual.ZeroOffset, kOld);
    EXPECT_EQ(dual.DualCamera, 1);
}

TEST_F(CameraSettings, ThePartialReadTakesOnlyItsKeys)
{
    std::string lines;
    for (const auto& each : kIntegers) lines += Format("%s=7\n", each.key);
    CameraConfig record = Read(lines + "Preconnect=p\nSync1=0x7\nfPitch=7\nDescription=d\nTimingFileFrameRate=5\n", 0);
    for (const auto& each : kIntegers) {
        const bool always = std::find(kAlwaysRead.begin(), kAlwaysRead.end(), each.field) != kAlwaysRead.end();
        EXPECT_EQ(record.*each.field, always ? 7 : kOld) << each.key;
    }
    EXPECT_EQ(record.Preconnect, "old");
    EXPECT_EQ(record.Sync1, 7);
    EXPECT_EQ(record.fPitch, 7.0F);
    EXPECT_EQ(record.Description, "d");
    EXPECT_EQ(record.TimingFile, "");
}

TEST_F(CameraSettings, ThePartialReadTakesTheUnityKeysOfADualCameraToo)
{
    PutCameraIni("[Camera.2]\nUnityGain=9\n");
    CameraConfig record;
    record.DualCamera = 1;
    ReadCameraConfig(2, 0, record);
    EXPECT_EQ(record.UnityGain, 9);
}

TEST_F(CameraSettings, IntegersAreReadAsTheProfileReadsThem)
{
    const CameraConfig record = Read("Hroi=0x140\nVroi=256rows\nHdelay=abc\nVstart=-3\nLogCamera=\n");
    EXPECT_EQ(record.Hroi, 320);
    EXPECT_EQ(record.Vroi, 256);
    EXPECT_EQ(record.Hdelay, 0);
    EXPECT_EQ(record.Vstart, -3);
    EXPECT_EQ(record.LogCamera, 0);
}

TEST_F(CameraSettings, MalformedScannedNumbersKeepTheOldValue)
{
    write::camera.VoltsOffset = 1.5F;
    write::camera.ADoffset = 2.5F;
    const CameraConfig record = Read(
        "Sync1=xyz\nSync2=\nSync3=0x1FFFF\nfPitch=wide\nIdelay=none\nCalDelay=\nADduration=-\nIntInc=one\n"
        "Volts/Offset=\nA/Doffset=high\n");
    EXPECT_EQ(record.Sync1, kOld);
    EXPECT_EQ(record.Sync2, kOld);
    EXPECT_EQ(record.Sync3, 0xFFFF);
    EXPECT_EQ(record.fPitch, static_cast<float>(kOld));
    EXPECT_EQ(record.Idelay, kOld);
    EXPECT_EQ(record.CalDelay, kOld);
    EXPECT_EQ(record.ADduration, kOld);
    EXPECT_EQ(record.IntInc, kOld);
    EXPECT_EQ(VoltsOffset, 1.5F);
    EXPECT_EQ(ADoffset, 2.5F);
}

TEST_F(CameraSettings, LongTextsAreWhole)
{
    const std::string text(5000, 'd');
    const CameraConfig record = Read("Description=" + text + "\nPreconnect=" + text + "\n");
    EXPECT_EQ(record.Description, text);
    EXPECT_EQ(record.Preconnect, text);
    EXPECT_EQ(record.Vtotal, 128);
}

TEST_F(CameraSettings, ValuesBesideTheRecordHaveTheirDefaults)
{
    Read("");
    EXPECT_EQ(nCommPort, 2);
    EXPECT_EQ(numBufFrames, 8);
    EXPECT_EQ(VoltsOffset, 0.1F);
    EXPECT_EQ(ADoffset, 8200.0F);
    EXPECT_EQ(IndexFrameRate, 3);
    EXPECT_THAT(VoltsPerCountVsGain,
                ::testing::ElementsAre(-0.000400F, -0.000311F, -0.000282F, -0.000246F, -0.000236F, -0.000210F,
                                       -0.000197F, -0.000179F, -0.000173F, -0.000159F, -0.000151F, -0.000140F,
                                       -0.000137F, -0.000128F, -0.000123F, -0.000113F));
}

TEST_F(CameraSettings, ValuesBesideTheRecordAreRead)
{
    Read("nCommPort=4\nnumBufFrames=0\nVolts/Offset=0.25\nA/Doffset=-8000\nIndexFrameRate=-7\n");
    EXPECT_EQ(nCommPort, 4);
    EXPECT_EQ(numBufFrames, 0);
    EXPECT_EQ(VoltsOffset, 0.25F);
    EXPECT_EQ(ADoffset, -8000.0F);
    EXPECT_EQ(IndexFrameRate, -7);
}

TEST_F(CameraSettings, VoltsPerCountEndAtTheFirstThatDoesNotScan)
{
    Read("");
    Read("VoltsPerCountVsGain=1.5, 2.5,,4\n");
    EXPECT_EQ(VoltsPerCountVsGain[0], 1.5F);
    EXPECT_EQ(VoltsPerCountVsGain[1], 2.5F);
    EXPECT_EQ(VoltsPerCountVsGain[2], -0.000282F);
    EXPECT_EQ(VoltsPerCountVsGain[3], -0.000246F);
    Read("VoltsPerCountVsGain=9 ,8\n");  // a blank before the comma isn't expected
    EXPECT_EQ(VoltsPerCountVsGain[0], 9.0F);
    EXPECT_EQ(VoltsPerCountVsGain[1], 2.5F);
    Read("VoltsPerCountVsGain=1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17\n");
    EXPECT_EQ(VoltsPerCountVsGain[15], 16.0F);
}

TEST_F(CameraSettings, AShortCnfFileDoesNotChangeThePath)
{
    write::windows.CnfFilePath = "before";
    Read("cnfFile=abc\n");
    EXPECT_EQ(CnfFilePath, "before");
    Read("");  // "none"
    EXPECT_EQ(CnfFilePath, "before");
    Read("cnfFile=a.cn\n");  // 4 characters
    EXPECT_EQ(CnfFilePath, "before");
    Read("cnfFile=a.cnf\n");
    EXPECT_EQ(CnfFilePath, directory / "a.cnf");
}

TEST_F(CameraSettings, TheViewIsTheClientAreaLessTheStatusRows)
{
    Read("");
    EXPECT_EQ(ViewWidth, 1280);
    EXPECT_EQ(ViewHeight, 880);
}

TEST_F(CameraSettings, ReadingClearsThePan)
{
    write::display.Xpan = 5;
    write::display.Ypan = -6;
    Read("Xpan=9\nYpan=9\n");
    EXPECT_EQ(Xpan, 0);
    EXPECT_EQ(Ypan, 0);
}

TEST_F(CameraSettings, TheTimingFileFollowsTheFrameRate)
{
    struct Case {
        const char* key;
        float frameRate;
        const char* file;
    };
    const std::string files = "TimingFile=slow\nHighFrameRateTimingFile=fast\n";
    for (const Case& each :
         {Case{"", 0.0F, "fast"}, Case{"TimingFileFrameRate=0\n", 0.0F, "slow"},
          Case{"TimingFileFrameRate=60\n", 0.0F, "slow"}, Case{"TimingFileFrameRate=60\n", 60.0F, "slow"},
          Case{"TimingFileFrameRate=60\n", 60.5F, "fast"}, Case{"TimingFileFrameRate=-2\n", -1.5F, "fast"}}) {
        write::head.FrameRate = each.frameRate;
        EXPECT_EQ(Read(files + each.key).TimingFile, each.file) << each.key << each.frameRate;
        EXPECT_EQ(FrameRate, each.frameRate);
    }
    write::head.FrameRate = 0;
    EXPECT_EQ(Read("TimingFile=slow\n").TimingFile, "");
}

class SetupSettings : public SettingsTest {
  protected:
    // By value: the record's fields are not aligned.
    static std::int32_t SpiffIdentity() { return SpiffHeader.SpiffHeaderIdentity; }
};

TEST_F(SetupSettings, MissingKeysGiveTheDefaults)
{
    PutKelvoIni("[Setup]\nIrigEnable=1\nIrigAddress=5\n");
    ReadSetupKeys();
    PutKelvoIni("");
    ReadSetupKeys();
    ReadNumGrayLevels();
    EXPECT_EQ(StateNumber("XPGBoard"), 0);
    EXPECT_EQ(ActiveCamera, 2);
    EXPECT_EQ(MultiFrame, 0);
    EXPECT_EQ(ByteSwap, 0xFFFFU);
    EXPECT_EQ(IrigEnable, 0);
    EXPECT_EQ(StateNumber("IrigAddress"), 5);
    EXPECT_EQ(SpiffIdentity(), 18290);
    EXPECT_EQ(NumGrayLevels, 256);
}

TEST_F(SetupSettings, KeysAreRead)
{
    PutKelvoIni(
        "[Setup]\nXPGBoard=1\nActiveCamera=7\nByteSwap=0x0\nIrigEnable=2\nSpiffHeaderIdentity=70000\n"
        "NumGrayLevels=65537\nMultiFrame=9\n[Save]\nMultiFrame=1\n");
    ReadSetupKeys();
    ReadNumGrayLevels();
    EXPECT_EQ(StateNumber("XPGBoard"), 1);
    EXPECT_EQ(ActiveCamera, 7);
    EXPECT_EQ(ActiveCameraSection(), "Camera.7");
    EXPECT_EQ(MultiFrame, 1);
    EXPECT_EQ(ByteSwap, 0U);
    EXPECT_EQ(IrigEnable, 2);
    EXPECT_EQ(StateNumber("IrigAddress"), 736);
    EXPECT_EQ(SpiffIdentity(), 70000);
    EXPECT_EQ(NumGrayLevels, 1);
}

TEST_F(SetupSettings, ByteSwapIsHexadecimalAndKeepsItsValueWhereItDoesNotScan)
{
    PutKelvoIni("[Setup]\nByteSwap=10\n");
    ReadSetupKeys();
    EXPECT_EQ(ByteSwap, 16U);
    PutKelvoIni("[Setup]\nByteSwap=yes\n");
    ReadSetupKeys();
    EXPECT_EQ(ByteSwap, 16U);
}

TEST_F(SetupSettings, ReadingClearsTheCameraAndTheView)
{
    write::frames.CameraOn = 1;
    write::frames.ViewingFile = 1;
    ReadSetupKeys();
    EXPECT_EQ(CameraOn, 0);
    EXPECT_EQ(ViewingFile, 0);
}

TEST_F(SetupSettings, TheEarlierIrigKeyIsTakenOverOnceAndDoesNotComeBack)
{
    PutKelvoIni("[Setup]\nIRIGTime=3\nIrigAddress=800\nActiveCamera=1\n");
    ReadSetupKeys();
    EXPECT_EQ(IrigEnable, 3);
    EXPECT_EQ(StateNumber("IrigAddress"), 800);
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(IniFilePath), "[Setup]\nIrigAddress=800\nActiveCamera=1\nIrigEnable=1\n");
    ReadSetupKeys();
    EXPECT_EQ(IrigEnable, 1);
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(IniFilePath), "[Setup]\nIrigAddress=800\nActiveCamera=1\nIrigEnable=1\n");
}

TEST_F(SetupSettings, AnEarlierIrigKeyOfZeroChangesNothing)
{
    PutKelvoIni("[Setup]\nIRIGTime=0\n");
    ReadSetupKeys();
    EXPECT_EQ(IrigEnable, 0);
    EXPECT_FALSE(ProfilesPending());
}

TEST_F(SetupSettings, TheExitWritesContrastBrightnessZoomAndOffsetsAlone)
{
    PutKelvoIni("; mine\n[Display]\nContrast=1\nImageColor=1231\n");
    PutCameraIni("[Camera.3]\nHroi=64\n\n[Camera.4]\nXzoom=9\n");
    write::camera.ActiveCamera = 3;
    write::display.Contrast = 76;
    write::display.Brightness = 837;
    write::camera.ActiveConfig.Xzoom = 4;
    write::camera.ActiveConfig.Yzoom = 5;
    write::camera.ActiveConfig.Xoffset = -6;
    write::camera.ActiveConfig.Yoffset = 7;
    SaveDisplayState();
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(IniFilePath), "; mine\n[Display]\nContrast=76\nImageColor=1231\nBrightness=837\n");
    EXPECT_EQ(FileContents(CameraFilePath),
              "[Camera.3]\nHroi=64\nXzoom=4\nXoffset=-6\nYzoom=5\nYoffset=7\n\n[Camera.4]\nXzoom=9\n");
}

}  // namespace
}  // namespace kelvo
