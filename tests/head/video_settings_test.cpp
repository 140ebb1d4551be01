// The keys of the video set-up, written and read.
#include "head/video_settings.h"

#include "head/camera_head_write.h"
#include "head/video_setup_fixture.h"
#include "platform/profile.h"
#include "state/camera_config_write.h"
#include "state/head_state_write.h"
#include "state/windows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;

class VideoSettings : public VideoSetUpTest {
  protected:
    std::string PutSet(std::string_view lines)
    {
        const std::string path = directory / "set.cal";
        PutFile(path, "[Setup]\n" + std::string(lines));
        ForgetProfile(path);
        return path;
    }
};

TEST_F(VideoSettings, AreWrittenToTheFileAndToTheCamerasSection)
{
    TurnOn(kInSbSection);
    const std::string file = directory / "set.cal";
    write::head.FrameRate = 48.828125F;
    write::head.IndexFrameRate = 7;
    write::head.IndexIntegrationTime = {21, 22, 23, 24};
    write::head.VideoGain = {1, 2, 3, 4};
    write::head.VideoOffset = {10, 20, 30, 40};
    write::registers.HeadTiming.AdDelay = 5;
    write::registers.HeadTiming.LineStartDelay = 6;
    write::registers.HeadTiming.FrameStartDelay = 7;
    write::registers.FpaSerialWord.DetBias = 8;
    write::registers.FpaSerialWord.PedBias = 2;
    write::registers.FpaSerialWord.ColGain = 6;
    write::registers.FpaSerialWord.FlipRows = 1;
    write::registers.FpaSerialWord.FlipCols = 0;
    write::registers.FpaSerialWord.FastFrame = 1;
    write::registers.FpaSerialWord.ColStart = 16;
    write::registers.FpaSerialWord.RowStart = 24;
    SaveVideoSettings(file);

    struct Row {
        const char* key;
        const char* value;
    };
    constexpr Row kSetup[] = {{"FrameRate", "48.828125"}, {"IndexFrameRate", "7"},  {"IntTime", "21"},
                              {"VideoGain1", "1"},        {"VideoGain4", "4"},      {"VideoOffset1", "10"},
                              {"VideoOffset4", "40"},     {"VideoGain5", "missing"}};
    for (const Row& row : kSetup) {
        EXPECT_EQ(GetPrivateProfileString("Setup", row.key, "missing", file), row.value) << row.key;
    }
    constexpr Row kCamera[] = {{"IndexFrameRate", "7"},
                               {"IndexIntegrationTime", "21,22,23,24"},
                               {"QVF1058_Gain0", "1"},
                               {"QVF1058_DAC0", "10"},
                               {"QVF1058_AdDelay", "5"},
                               {"QVF1058_LineStartDelay", "6"},
                               {"QVF1058_FrameStartDelay", "7"},
                               {"DetBias", "8"},
                               {"PedBias", "2"},
                               {"ColGain", "6"},
                               {"FlipRows", "1"},
                               {"FlipCols", "0"},
                               {"FastFrame", "1"},
                               {"ColStart", "16"},
                               {"RowStart", "24"},
                               {"Vactive", "256"},
                               {"Hactive", "320"},
                               {"fFrameRate", "48.828125"}};
    for (const Row& row : kCamera) EXPECT_EQ(CameraKey(row.key), row.value) << row.key;
}

TEST_F(VideoSettings, RegistersThatWereNeverReadKeepTheirKeys)
{
    PutSection("QVF1058_LineStartDelay=9\nDetBias=11\n");
    SaveVideoSettings(IniFilePath);
    EXPECT_EQ(CameraKey("QVF1058_LineStartDelay"), "9");
    EXPECT_EQ(CameraKey("DetBias"), "11");
    EXPECT_EQ(CameraKey("IndexFrameRate"), "10");
}

TEST_F(VideoSettings, AreReadFromASet)
{
    write::camera.VoltsOffset = 0.5F;
    write::camera.ADoffset = 1000;
    write::camera.VoltsPerCountVsGain[3] = 0.125F;
    write::head.FrameRate = 12;
    LoadVideoSettings(PutSet("FrameRate=48.828125\nIndexFrameRate=5\nIntTime=33\nVideoGain1=3\nVideoOffset1=138\n"));
    EXPECT_EQ(IndexFrameRate, 5);
    EXPECT_THAT(IndexIntegrationTime, Each(33));
    EXPECT_EQ(IntegrationSetting, 33);
    EXPECT_EQ(VideoGain[0], 3);
    EXPECT_EQ(VideoOffset[0], 138);
    EXPECT_EQ(FrameRate, 0.0F);
    EXPECT_EQ(VoltsLow, -130.0F);  // (0 - 1000) / 8 - 10 / 2
    EXPECT_EQ(VoltsHigh, 1917.875F);
}

TEST_F(VideoSettings, ASetWithoutKeysHasDefaults)
{
    LoadVideoSettings(PutSet(""));
    EXPECT_EQ(IndexFrameRate, 10);
    EXPECT_THAT(IndexIntegrationTime, Each(10));
    EXPECT_EQ(VideoGain[0], 0);
    EXPECT_EQ(VideoOffset[0], 128);
}

TEST_F(VideoSettings, AnOldSetKeepsItsRowUnderFrameRate)
{
    LoadVideoSettings(PutSet("FrameRate=6\n"));
    EXPECT_EQ(IndexFrameRate, 6);
}

TEST_F(VideoSettings, WhatIsWrittenIsReadAgain)
{
    TurnOn(kInSbSection);
    write::head.IndexFrameRate = 12;
    write::head.IndexIntegrationTime = {40, 41, 42, 43};
    write::head.VideoGain[0] = 9;
    write::head.VideoOffset[0] = 77;
    SaveVideoSettings(IniFilePath);
    write::head.IndexFrameRate = 0;
    write::head.IndexIntegrationTime.fill(0);
    write::head.VideoGain.fill(0);
    write::head.VideoOffset.fill(0);
    LoadVideoSettings();
    EXPECT_EQ(IndexFrameRate, 12);
    EXPECT_THAT(IndexIntegrationTime, ElementsAre(40, 41, 42, 43));
    EXPECT_EQ(VideoGain[0], 9);
    EXPECT_EQ(VideoOffset[0], 77);
}

TEST_F(VideoSettings, VoltsOfAGainBeyondTheTableAreThoseAtItsEnds)
{
    write::camera.VoltsPerCountVsGain.fill(0);
    write::camera.VoltsPerCountVsGain[0] = 1;
    write::camera.VoltsPerCountVsGain[15] = 2;
    write::camera.ADoffset = 0;
    write::camera.VoltsOffset = 0;
    SetVoltsRange(-3, 128);
    EXPECT_EQ(VoltsHigh, 16383.0F);
    SetVoltsRange(99, 128);
    EXPECT_EQ(VoltsHigh, 32766.0F);
}

// Held against a wider type, in which all products are exact and all sums nearly so.
TEST_F(VideoSettings, VoltsAreRoundedOnce)
{
    constexpr std::array kGains = {-0.000400F, -0.000311F, -0.000197F, -0.000113F, 0.00061035F};
    write::camera.ADoffset = 8200.3F;
    write::camera.VoltsOffset = 0.0123F;
    for (const float gain : kGains) {
        write::camera.VoltsPerCountVsGain[2] = gain;
        for (std::int32_t offset = 0; offset <= 255; ++offset) {
            const auto volts = [&](std::int32_t counts) {
                const long double zero = static_cast<long double>(offset - 128) * 0.0123F;
                const long double product = (static_cast<long double>(counts) - 8200.3F) * gain;
                return static_cast<float>(product - zero);
            };
            SetVoltsRange(2, offset);
            ASSERT_EQ(VoltsLow, volts(0)) << gain << ", " << offset;
            ASSERT_EQ(VoltsHigh, volts(16383)) << gain << ", " << offset;
        }
    }
}

}  // namespace
}  // namespace kelvo
