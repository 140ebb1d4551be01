// Settings at start-up, loading a set, saving it under another name.
#include "calib/calibration_set.h"

#include "calib/last_set.h"
#include "calib/run_fixture.h"
#include "camera/turn_on.h"
#include "config/frame_rate_table_write.h"
#include "display/units.h"
#include "head/camera_head.h"
#include "head/head_transaction.h"
#include "head/video_settings.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/memory.h"
#include "platform/menu.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "resources/ids.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "support/calibration_fixture.h"
#include "support/full_disk.h"
#include "support/recording_board.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr uid_t kNobody = 65534;

// --- At start-up ----------------------------------------------------------------------------------------------------

class StartingSettings : public CalibrationTest {
  protected:
    void Read(std::string_view calibrationKeys)
    {
        PutSetup("ActiveCamera=2\n[Calibration]\n" + std::string(calibrationKeys));
        write::calSet.CalSettings = {};
        write::calSet.CalSettings2 = {};
        LoadCalibrationSettings();
    }
};

TEST_F(StartingSettings, AreTheDefaultsWhereTheFileSaysNothing)
{
    Read("");
    EXPECT_EQ(CalSettings.NumSources, 2);
    EXPECT_EQ(CalSettings.NumFrames, 30U);
    EXPECT_EQ(CalSettings.ChosenType, 2);
    EXPECT_EQ(CalSettings.NoiseFloor, 25);
    EXPECT_EQ(CalSettings.IntensityCold, 0);
    EXPECT_EQ(CalSettings.TemperatureCold, -999.0F);
    EXPECT_EQ(CalSettings.IntensityHot, 0);
    EXPECT_EQ(CalSettings.TemperatureHot, 999.0F);
    EXPECT_EQ(CalSettings.Factor, 1.0F);
    EXPECT_EQ(CalSettings.GainAcceptanceRange, 0.22F);
    EXPECT_EQ(CalSettings.PRSfile, "nearccw.prs");
    EXPECT_EQ(CalSettings.DecomFile, "");
    EXPECT_EQ(CalSettings.BadDetFile, "");
    EXPECT_EQ(CalSettings.GainFile, "");
    EXPECT_EQ(CalSettings.OffsetFile, "");
    EXPECT_EQ(CalSettings.CalFile, IniFilePath);
    EXPECT_EQ(CalSettings.MinOffset, 400);
    EXPECT_EQ(CalSettings.MaxOffset, 400);
    EXPECT_EQ(CalSettings.AllowedNoiseLevel, 9.0F);
    EXPECT_EQ(CalSettings.EmissivityCold, 1.0F);
    EXPECT_EQ(CalSettings.EmissivityHot, 1.0F);
    EXPECT_EQ(CalSettings.OpticsFile, "");
    EXPECT_EQ(ReplaceNoisy, 1);
}

TEST_F(StartingSettings, ComeFromTheirKeys)
{
    Read(
        "NumSources=1\nNumFrames=64\nCalType=1\nNoiseFloor=-3\nIntensityCold=3000\nTemperatureCold=20.5\n"
        "IntensityHot=9000\nTemperatureHot=25.25\nGainAcceptanceRange=0.5\nPRSfile=other.prs\nDecomFile=a.dcm\n"
        "BadDetFile=a.bad\nGainFile=a.gai\nOffsetFile=a.off\nCalFile=/sets/a.cal\nMinOffset=1\nMaxOffset=2\n"
        "AllowedNoiseLevel=3.5\nEmissivityCold=0.9\nEmissivityHot=0.8\nOpticsFile=lens.opt\n");
    EXPECT_EQ(CalSettings.NumSources, 1);
    EXPECT_EQ(CalSettings.NumFrames, 64U);
    EXPECT_EQ(CalSettings.ChosenType, 1);
    EXPECT_EQ(CalSettings.NoiseFloor, -3);
    EXPECT_EQ(CalSettings.IntensityCold, 3000);
    EXPECT_EQ(CalSettings.TemperatureCold, 20.5F);
    EXPECT_EQ(CalSettings.IntensityHot, 9000);
    EXPECT_EQ(CalSettings.TemperatureHot, 25.25F);
    EXPECT_EQ(CalSettings.GainAcceptanceRange, 0.5F);
    EXPECT_EQ(CalSettings.PRSfile, "other.prs");
    EXPECT_EQ(CalSettings.DecomFile, "a.dcm");
    EXPECT_EQ(CalSettings.BadDetFile, "a.bad");
    EXPECT_EQ(CalSettings.GainFile, "a.gai");
    EXPECT_EQ(CalSettings.OffsetFile, "a.off");
    EXPECT_EQ(CalSettings.CalFile, "/sets/a.cal");
    EXPECT_EQ(CalSettings.MinOffset, 1);
    EXPECT_EQ(CalSettings.MaxOffset, 2);
    EXPECT_EQ(CalSettings.AllowedNoiseLevel, 3.5F);
    EXPECT_EQ(CalSettings.EmissivityCold, 0.9F);
    EXPECT_EQ(CalSettings.EmissivityHot, 0.8F);
    EXPECT_EQ(CalSettings.OpticsFile, "lens.opt");
}

TEST_F(StartingSettings, ATextThatIsNoNumberLeavesTheValue)
{
    Read("MinOffset=many\nAllowedNoiseLevel=quiet\n");
    EXPECT_EQ(CalSettings.MinOffset, 400);
    EXPECT_EQ(CalSettings.AllowedNoiseLevel, 9.0F);
}

TEST_F(StartingSettings, OfTheSecondCameraAreReadOnlyWithDualCamera)
{
    const char* const keys =
        "NumFrames=64\nNumSources2=1\nNumFrames2=7\nCalType2=1\nNoiseFloor2=8\nGainAcceptanceRange2=0.75\nPRSfile2=b."
        "prs\n"
        "BadDetFile2=b.bad\nDecomFile2=b.dcm\nGainFile2=b.gai\nOffsetFile2=b.off\nAllowedNoiseLevel2=4.5\nMinOffset2="
        "11\n"
        "MaxOffset2=12\nEmissivityCold2=0.7\nEmissivityHot2=0.6\nOpticsFile2=b.opt\nCalFile2=/never/read.cal\n";
    Read(keys);
    EXPECT_EQ(CalSettings2.NumFrames, 30U);
    write::camera.ActiveConfig.DualCamera = 1;
    Read(keys);
    write::camera.ActiveConfig.DualCamera = 0;
    EXPECT_EQ(CalSettings.NumFrames, 64U);
    EXPECT_EQ(CalSettings2.NumSources, 1);
    EXPECT_EQ(CalSettings2.NumFrames, 7U);
    EXPECT_EQ(CalSettings2.ChosenType, 1);
    EXPECT_EQ(CalSettings2.NoiseFloor, 8);
    EXPECT_EQ(CalSettings2.GainAcceptanceRange, 0.75F);
    EXPECT_EQ(CalSettings2.PRSfile, "b.prs");
    EXPECT_EQ(CalSettings2.BadDetFile, "b.bad");
    EXPECT_EQ(CalSettings2.DecomFile, "b.dcm");
    EXPECT_EQ(CalSettings2.GainFile, "b.gai");
    EXPECT_EQ(CalSettings2.OffsetFile, "b.off");
    EXPECT_EQ(CalSettings2.AllowedNoiseLevel, 4.5F);
    EXPECT_EQ(CalSettings2.MinOffset, 11);
    EXPECT_EQ(CalSettings2.MaxOffset, 12);
    EXPECT_EQ(CalSettings2.EmissivityCold, 0.7F);
    EXPECT_EQ(CalSettings2.EmissivityHot, 0.6F);
    EXPECT_EQ(CalSettings2.OpticsFile, "b.opt");
    EXPECT_EQ(CalSettings2.CalFile, IniFilePath);
}

TEST_F(StartingSettings, EveryStartIsUncalibrated)
{
    write::cal.CalType = 2;
    write::calSet.CalDone = 1;
    Read("");
    EXPECT_EQ(CalType, 0);
    EXPECT_EQ(CalDone, 0);
}

// --- Loading --------------------------------------------------------------------------------------------------------

class LoadingASet : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        calPath = InDirectory("warm.cal");
        PutSet(calPath);
    }
    int Load() { return LoadCalibration(hWndMain, calPath); }
    std::string IniFile() const
    {
        FlushProfiles();
        return FileContents(IniFilePath);
    }
    std::vector<std::string> BoxTexts() const
    {
        std::vector<std::string> texts;
        for (const auto& box : op->Boxes()) texts.push_back(box.text);
        return texts;
    }

    std::string calPath;
};

TEST_F(LoadingASet, InstallsItsLists)
{
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(CalType, 2);
    EXPECT_THAT(GainList, ElementsAre(1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F));
    EXPECT_THAT(OffsetList, ElementsAre(100, 101, 102, 103, 104, 105, 106, 107));
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7)) << "the image's own orientation replaces the .dcm";
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(LoadingASet, TakesItsParameters)
{
    write::head.FirstSetupPending = 1;
    write::display.DisplayLow = 55;
    write::display.MirrorVert = 1;
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(IntensityCold, 3000);
    EXPECT_EQ(IntensityHot, 9000);
    EXPECT_EQ(TemperatureCold, 20.5F);
    EXPECT_EQ(TemperatureHot, 25.0F);
    EXPECT_EQ(CalSettings.IntensityCold, 3000);
    EXPECT_EQ(CalSettings.TemperatureHot, 25.0F);
    EXPECT_EQ(CalSettings.CalFile, calPath);
    EXPECT_EQ(CalSettings.GainFile, InDirectory("warm.gai"));
    EXPECT_EQ(CalSettings.OffsetFile, InDirectory("warm.off"));
    EXPECT_EQ(CalSettings.DecomFile, InDirectory("warm.dcm"));
    EXPECT_EQ(MirrorVert, 0);
    EXPECT_EQ(DisplayLow, 0);
    EXPECT_EQ(DisplayHigh, 16383);  // |16384 (2 x 8192 - 1) / 16384|
    EXPECT_EQ(DisplayUnit, kUnitCelsius);
    EXPECT_EQ(FirstSetupPending, 0);
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
}

TEST_F(LoadingASet, TellsItsSteps)
{
    EXPECT_EQ(Load(), 1);
    std::vector<std::string> steps = op->Texts("status", "text");
    std::erase_if(steps, [](const std::string& text) { return text.starts_with("  "); });  // the head's own
    EXPECT_THAT(steps, testing::IsSupersetOf({"Loading video parameters from calibration file...",
                                              "Loading decommutation list...", "Loading gain list...",
                                              "Downloading Gains...", "Loading offset list...",
                                              "Downloading Offsets...", "Resetting display & calibration parameters...",
                                              "Re-starting image...", "Setting up image display..."}));
    std::vector<std::size_t> places;
    for (const char* text :
         {"Loading video parameters from calibration file...", "Loading decommutation list...", "Loading gain list...",
          "Loading offset list...", "Resetting display & calibration parameters...", "Re-starting image...",
          "Setting Image orientation", "Setting up image display..."}) {
        places.push_back(static_cast<std::size_t>(std::ranges::find(steps, text) - steps.begin()));
    }
    EXPECT_TRUE(std::ranges::is_sorted(places));
    EXPECT_EQ(StatusText, " Use Alt + underlined menu item or trackball to select menu item");
}

TEST_F(LoadingASet, MakesItsSettingsThoseOfTheMachine)
{
    EXPECT_EQ(KeyOf(IniFilePath, "Setup", "Mark"), "of the machine");
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(KeyOf(IniFilePath, "Setup", "Mark"), "of the set");
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "GainFile"), "warm.gai");
    EXPECT_EQ(FileContents(calPath), kCalText) << "the set itself stays as it was";
}

TEST_F(LoadingASet, WhatWasPendingForTheFormerSettingsIsNotWrittenIntoTheNewOnes)
{
    WritePrivateProfileString("Setup", "Mark", "pending", IniFilePath);
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(KeyOf(IniFilePath, "Setup", "Mark"), "of the set");
}

TEST_F(LoadingASet, SetsTheHeadAsItWasAtTheCalibration)
{
    head->Taken();
    EXPECT_EQ(Load(), 1);
    const Frames loading = head->Taken();
    EXPECT_EQ(IndexFrameRate, 5);
    EXPECT_THAT(IndexIntegrationTime, ElementsAre(21, 22, 23, 24));
    EXPECT_EQ(VideoGain[0], 6);
    EXPECT_EQ(VideoOffset[0], 170);
    EXPECT_EQ(VideoOffset[1], 171);
    EXPECT_EQ(KeyOf(CameraFilePath, "Camera.2", "QVF1058_Gain0"), "6");
    EXPECT_EQ(KeyOf(CameraFilePath, "Camera.2", "QVF1058_DAC0"), "170");
    EXPECT_EQ(KeyOf(CameraFilePath, "Camera.2", "IndexFrameRate"), "5");
    ASSERT_TRUE(LinkIsReady());
    SetFrameRateIndex(5);
    SetIntegrationIndex(21, 0);
    SetVideoGain(6);
    SetVideoOffset(170);
    EXPECT_EQ(loading, head->Taken());
    EXPECT_THAT(loading, testing::Not(IsEmpty()));
}

// The row of the set asks for the rate of an external clock.
class LoadingASetWithAnExternalClock : public LoadingASet {
  protected:
    void SetUp() override
    {
        LoadingASet::SetUp();
        write::rates.FrameRateTable.resize(6);
        write::rates.FrameRateTable[5].Mode = 'E';
        std::ranges::copy(std::string_view("Generator 1"), write::rates.FrameRateTable[5].RateText.begin());
    }
    int Answer(const std::string& rate, int button)
    {
        op->Do([=] {
            const HWND dialog = DialogInFront();
            EXPECT_EQ(DialogName(dialog), "FRAMERATE");
            EXPECT_EQ(GetDlgItemText(dialog, 1644), "Generator 1");
            EXPECT_TRUE(OperateText(dialog, 624, rate));
            EXPECT_TRUE(OperatePress(dialog, button));
        });
        return Load();
    }
};

TEST_F(LoadingASetWithAnExternalClock, TakesTheRateThatTheOperatorTells)
{
    EXPECT_EQ(Answer("59.94", 6), 1);
    EXPECT_EQ(FrameRate, 59.94F) << "not what the head's own clock would give";
    EXPECT_EQ(IndexFrameRate, 5);
    EXPECT_EQ(IntegrationTime[0], static_cast<float>(IntegrationTimeMsec(59.94F, 21)));
    EXPECT_EQ(CalType, 2);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(LoadingASetWithAnExternalClock, WithoutARateNothingIsLoaded)
{
    write::cal.GainList = {9, 9, 9, 9, 9, 9, 9, 9};
    head->Taken();
    EXPECT_EQ(Answer("59.94", 7), 0);
    EXPECT_THAT(head->Taken(), IsEmpty());
    EXPECT_THAT(GainList, testing::Each(9.0F));
    EXPECT_EQ(CalType, 0);
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(LoadingASetWithAnExternalClock, AnotherRowAsksNothing)
{
    write::rates.FrameRateTable[5].Mode = 'i';
    EXPECT_EQ(Load(), 1);
    EXPECT_THAT(op->Texts("dialog", "name"), IsEmpty());
}

TEST_F(LoadingASet, FewerThanFourIntegrationTimesCountTheFirstForAll)
{
    PutFile(calPath, "[Setup]\nActiveCamera=2\nIntTime=31,32\n[Calibration]\nGainFile=warm.gai\nOffsetFile=warm.off\n");
    Load();
    EXPECT_THAT(IndexIntegrationTime, ElementsAre(31, 31, 31, 31));
}

TEST_F(LoadingASet, AnOldSetTellsItsFrameRateRowUnderFrameRateAndHasDefaults)
{
    PutFile(calPath,
            "[Setup]\nActiveCamera=2\nFrameRate=7\n[Calibration]\nDecomFile=warm.dcm\nGainFile=warm.gai\n"
            "OffsetFile=warm.off\n");
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(IndexFrameRate, 7);
    EXPECT_EQ(VideoGain[0], 128);
    EXPECT_EQ(VideoOffset[0], 128);
    EXPECT_EQ(VideoOffset[1], 128);
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(TemperatureCold, -999.0F);
    EXPECT_EQ(TemperatureHot, 999.0F);
    EXPECT_EQ(IntensityCold, 0);
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "TemperatureHot"), "999.0");
    EXPECT_EQ(CalSettings.CalFile, InDirectory("kelvo.ini")) << "a set that doesn't name itself";
}

TEST_F(LoadingASet, AFileWithoutActiveCameraIsRefusedBeforeAnythingChanges)
{
    PutFile(calPath, "[Calibration]\nDriverNumber=2\n");
    const std::string before = IniFile();
    EXPECT_EQ(Load(), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failed to get ActiveCamera from calibration file:\n" + calPath);
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(IniFile(), before);
    EXPECT_EQ(CalType, 0);
}

TEST_F(LoadingASet, AMissingFileIsRefusedInTheSameWords)
{
    const std::string before = IniFile();
    EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("none.cal")), 0);
    EXPECT_THAT(BoxTexts(),
                ElementsAre("Failed to get ActiveCamera from calibration file:\n" + InDirectory("none.cal")));
    EXPECT_EQ(IniFile(), before);
}

TEST_F(LoadingASet, ASetOfAnotherCameraIsRefusedBeforeAnythingChanges)
{
    PutFile(calPath, "[Setup]\nActiveCamera=3\n");
    const std::string before = IniFile();
    EXPECT_EQ(Load(), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text,
              "Can not load previous calibration\nCurrent camera driver is different from calibration requested");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(IniFile(), before);
}

TEST_F(LoadingASet, SettingsThatCantBeReplacedAreTold)
{
    std::filesystem::remove(IniFilePath);
    std::filesystem::create_directory(IniFilePath);
    ForgetProfile(IniFilePath);
    EXPECT_EQ(Load(), 0);
    EXPECT_THAT(BoxTexts(), Contains("Failed to save file: " + IniFilePath));
    EXPECT_EQ(CalType, 0);
}

TEST_F(LoadingASet, TheSettingsThemselvesAreTheSetOfTheLastLoad)
{
    ASSERT_EQ(Load(), 1);
    write::cal.GainList.assign(8, 9.0F);
    EXPECT_EQ(LoadCalibration(hWndMain, IniFilePath), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(GainList[7], 2.75F);
    EXPECT_EQ(KeyOf(IniFilePath, "Setup", "Mark"), "of the set");
}

TEST_F(LoadingASet, OfAnotherOneInBetweenLeavesNothingOfIt)
{
    PutFile(InDirectory("other.cal"),
            "[Setup]\nActiveCamera=2\nIndexFrameRate=2\nVideoGain1=3\n[Calibration]\nGainFile=warm.gai\n"
            "OffsetFile=warm.off\nDecomFile=warm.dcm\nCalType=1\nTemperatureCold=1.0\n[Display]\nMirrorVert=1\n");
    ASSERT_EQ(LoadCalibration(hWndMain, InDirectory("other.cal")), 1);
    EXPECT_EQ(CalType, 1);
    EXPECT_EQ(MirrorVert, 1);
    ASSERT_EQ(Load(), 1);
    FlushProfiles();
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(MirrorVert, 0);
    EXPECT_EQ(IndexFrameRate, 5);
    EXPECT_EQ(VideoGain[0], 6);
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "TemperatureCold"), "20.500000");
    EXPECT_EQ(KeyOf(CameraFilePath, "Camera.2", "IndexFrameRate"), "5");
}

TEST_F(LoadingASet, MemoryThatIsRefusedStopsIt)
{
    FailAllocation(1);
    EXPECT_EQ(Load(), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failure to allocate memory!");
    EXPECT_EQ(op->Boxes()[0].caption, "Memory Error");
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
}

// The table in force while the orientation can't be set: what the .dcm gave.
class LoadingATable : public LoadingASet {
  protected:
    void SetUp() override
    {
        LoadingASet::SetUp();
        write::frames.CameraOn = 0;
    }
};

TEST_F(LoadingATable, InstallsTheDcm)
{
    EXPECT_EQ(Load(), 1);
    EXPECT_THAT(DecomList, ElementsAre(7, 6, 5, 4, 3, 2, 1, 0));
    EXPECT_THAT(BoxTexts(), ElementsAre("Camera should be on."));
}

TEST_F(LoadingATable, AMissingDcmDoesNotStopTheLoadAndTheTableIsRebuilt)
{
    std::filesystem::remove(InDirectory("warm.dcm"));
    EXPECT_EQ(Load(), 1);
    EXPECT_THAT(BoxTexts(), ElementsAre("Failed to open file: " + InDirectory("warm.dcm"), "Camera should be on."));
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
    EXPECT_EQ(CalType, 2);
}

TEST_F(LoadingATable, AShortDcmDoesNotStopTheLoadAndTheTableIsRebuilt)
{
    PutTable(InDirectory("warm.dcm"), {7, 6, 5});
    EXPECT_EQ(Load(), 1);
    EXPECT_THAT(BoxTexts(), ElementsAre("Failed to read file: " + InDirectory("warm.dcm"), "Camera should be on."));
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
}

TEST_F(LoadingATable, ADcmWithEntriesOutsideTheFrameCountsAsAFailedRead)
{
    for (const std::uint32_t outside : {8U, 0xFFFFFFFFU}) {
        PutTable(InDirectory("warm.dcm"), {7, 6, 5, 4, 3, 2, 1, outside});
        EXPECT_EQ(Load(), 1);
        EXPECT_THAT(BoxTexts(), Contains("Failed to read file: " + InDirectory("warm.dcm")));
        EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7)) << outside;
    }
}

TEST_F(LoadingATable, AnInstallThatFailsIsToldInTheWordsOfTheGains)
{
    write::cal.DecomList.clear();
    FailAllocation(2);  // the working list, then the table
    EXPECT_EQ(Load(), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Hardware Timeout Error, Download of Gain Coefficients");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
}

// Whatever stops a load, the calibration in force stays, and with it what names its files.
class BrokenLoad : public CalibrationRun {
  protected:
    void SetUp() override
    {
        CalibrationRun::SetUp();
        PutSet(InDirectory("warm.cal"));
        ASSERT_EQ(LoadCalibration(hWndMain, InDirectory("warm.cal")), 1);
        std::string text(kCalText);
        for (std::size_t at = 0; (at = text.find("warm.", at)) != std::string::npos;) text.replace(at, 5, "cold.");
        for (const auto& [old, other] : {std::pair{"VideoGain1=6", "VideoGain1=3"},
                                         {"CalType=2", "CalType=1"},
                                         {"IndexFrameRate=5", "IndexFrameRate=4"},
                                         {"MirrorVert=0", "MirrorVert=1"},
                                         {"of the set", "of another set"}}) {
            text.replace(text.find(old), std::string_view(old).size(), other);
        }
        PutSet(InDirectory("cold.cal"), text);
        PutGains(InDirectory("cold.gai"), {9, 9, 9, 9, 9, 9, 9, 9});
        PutOffsets(InDirectory("cold.off"), {9, 9, 9, 9, 9, 9, 9, 9});
        head->Taken();
        before = Everything();
    }
    void ExpectNothingChanged(const char* what)
    {
        SCOPED_TRACE(what);
        EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("cold.cal")), 0);
        EXPECT_EQ(Everything(), before);
        EXPECT_THAT(head->Taken(), IsEmpty());
        EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    }

    std::string before;
};

TEST_F(BrokenLoad, WithoutGainsOrOffsetsLeavesAllAsItWas)
{
    for (const char* extension : {".gai", ".off"}) {
        const std::string path = InDirectory(std::string("cold") + extension);
        const std::string contents = FileContents(path);
        PutFile(path, contents.substr(0, contents.size() - 1));
        ExpectNothingChanged(extension);
        EXPECT_EQ(BoxTexts().back(), "Failed to read file: " + path);
        std::filesystem::remove(path);
        ExpectNothingChanged(extension);
        EXPECT_EQ(BoxTexts().back(), "Failed to open file: " + path);
        PutFile(path, contents);
    }
    EXPECT_THAT(op->Boxes(), SizeIs(4));
    std::filesystem::remove(InDirectory("cold.dcm"));
    EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("cold.cal")), 1) << "a table is made anew";
    EXPECT_EQ(CalType, 1);
    EXPECT_THAT(GainList, testing::Each(9.0F));
}

// Each request for memory in turn, up to the one with which the load comes to its end.
TEST_F(BrokenLoad, WithoutMemoryLeavesAllAsItWas)
{
    write::cal.OffsetList.clear();
    before = Everything();
    for (int n = 1;; ++n) {
        ASSERT_LT(n, 10);
        FailAllocation(n);
        const int loaded = LoadCalibration(hWndMain, InDirectory("cold.cal"));
        FailAllocation(0);
        if (loaded) {
            EXPECT_GT(n, 2);
            return;
        }
        EXPECT_EQ(Everything(), before) << n;
    }
}

TEST_F(BrokenLoad, OfSettingsThatCantBeReplacedLeavesAllAsItWas)
{
    std::filesystem::remove(DecomTempPath());
    before = Everything();
    const int status = [&] {
        const pid_t child = fork();
        if (child == 0) {
            LimitFiles(8);
            EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("cold.cal")), 0);
            EXPECT_THAT(BoxTexts(), ElementsAre("Failed to save file: " + IniFilePath));
            EXPECT_EQ(Everything(), before);
            _exit(HasFailure() ? 1 : 0);
        }
        int ended = 0;
        EXPECT_EQ(waitpid(child, &ended, 0), child);
        return ended;
    }();
    EXPECT_EQ(status, 0);
}

TEST_F(BrokenLoad, StillLeavesASetToSave)
{
    std::filesystem::remove(InDirectory("cold.off"));
    EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("cold.cal")), 0);
    EXPECT_EQ(SaveCalibrationAs(InDirectory("kept.cal")), 1);
    for (const char* extension : {".gai", ".off", ".dcm"}) {
        EXPECT_EQ(FileContents(SetFile(InDirectory("kept.cal"), extension)),
                  FileContents(SetFile(InDirectory("warm.cal"), extension)))
            << extension;
    }
    EXPECT_EQ(KeyOf(InDirectory("kept.cal"), "Setup", "Mark"), "of the set");
}

TEST_F(LoadingASet, AShortGainOrOffsetListStopsIt)
{
    PutGains(InDirectory("warm.gai"), {1.0F, 1.0F});
    EXPECT_EQ(Load(), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre("Failed to read file: " + InDirectory("warm.gai")));
    PutSet(calPath);
    PutOffsets(InDirectory("warm.off"), {1, 2, 3});
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(BoxTexts().back(), "Failed to read file: " + InDirectory("warm.off"));
}

TEST_F(LoadingASet, GainsAndOffsetsThatCantBeInstalledAreTold)
{
    write::cal.DecomList.assign(8, 0);
    write::cal.GainList.clear();
    FailAllocation(2);  // the working list, then the gains
    EXPECT_EQ(Load(), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre("Hardware Timeout Error, Download of Gain Coefficients"));
    write::cal.GainList.assign(8, 1.0F);
    write::cal.OffsetList.clear();
    FailAllocation(2);
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(BoxTexts().back(), "Hardware Timeout Error, Download of Offset Coefficients");
    EXPECT_THAT(op->Boxes(), SizeIs(2));
}

TEST_F(LoadingASet, AnOddFrameLosesItsLastOffset)
{
    write::camera.ActiveConfig.Hroi = 3;
    write::camera.ActiveConfig.Vroi = 1;
    write::cal.OffsetList.clear();
    write::cal.GainList.clear();
    write::cal.DecomList.clear();
    PutTable(InDirectory("warm.dcm"), {2, 1, 0});
    PutGains(InDirectory("warm.gai"), {1.0F, 2.0F, 3.0F});
    PutOffsets(InDirectory("warm.off"), {-5, 6, 7});
    EXPECT_EQ(Load(), 1);
    EXPECT_THAT(OffsetList, ElementsAre(-5, 6, 0));
}

TEST_F(LoadingASet, AnEmptyBadDetFileTurnsReplacementOff)
{
    write::calSet.CalSettings.BadDetFile = "/former.bad";
    write::display.SubstBadPixels = 1;
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(SubstBadPixels, 0);
    EXPECT_EQ(CalSettings.BadDetFile, "");
    EXPECT_FALSE(GetMenuItem(hWndMain, kCmdReplaceBadPixels)->checked);
}

TEST_F(LoadingASet, ItsBadDetectorsAreReplacedAndTheFlagStays)
{
    std::string text(kCalText);
    text.replace(text.find("BadDetFile="), 11, "BadDetFile=D:\\OLD\\warm.bad");
    PutFile(calPath, text);
    PutFile(InDirectory("warm.bad"), "   0,   1\n");
    PutFile(InDirectory("nearccw.prs"), "row,col\n0,1\n");
    for (const std::int32_t flag : {1, 0}) {
        write::display.SubstBadPixels = flag;
        EXPECT_EQ(Load(), 1);
        EXPECT_EQ(SubstBadPixels, flag) << "section Display of a set doesn't count here";
        EXPECT_EQ(CalSettings.BadDetFile, InDirectory("warm.bad"));
        EXPECT_EQ(DecomList[1], flag ? 2U : 1U);
        EXPECT_EQ(GetMenuItem(hWndMain, kCmdReplaceBadPixels)->checked, flag == 1);
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(LoadingASet, AFlagInSectionCalibrationCounts)
{
    std::string text(kCalText);
    text.replace(text.find("BadDetFile="), 11, "SubstBadPixels=0\nBadDetFile=warm.bad");
    PutFile(calPath, text);
    PutFile(InDirectory("warm.bad"), "");
    write::display.SubstBadPixels = 1;
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(SubstBadPixels, 0);
}

TEST_F(LoadingASet, ItsOrientationIsTaken)
{
    std::string text(kCalText);
    text.replace(text.find("MirrorHoriz=0"), 13, "MirrorHoriz=1");
    PutFile(calPath, text);
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(MirrorHoriz, 1);
    EXPECT_THAT(DecomList, ElementsAre(4, 5, 6, 7, 0, 1, 2, 3)) << "the rows exchanged";
}

// A set as an old machine wrote it: CR LF, backslashes, drive letters, capital letters.
TEST_F(LoadingASet, WrittenOnAnOldMachineLoads)
{
    std::filesystem::create_directory(InDirectory("SETS"));
    std::string text(kCalText);
    for (const char* name : {"dcm", "gai", "off"}) {
        const std::string plain = "warm." + std::string(name);
        text.replace(text.find(plain), plain.size(), "D:\\CALS\\WARM." + std::string(name));
    }
    text.replace(text.find("BadDetFile="), 11, "BadDetFile=D:\\CALS\\WARM.BAD");
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) text.insert(at, "\r");
    PutSet(InDirectory("SETS/WARM.CAL"), text);
    for (const char* name : {"gai", "off", "dcm"}) {
        std::filesystem::rename(InDirectory("SETS/WARM." + std::string(name)),
                                InDirectory(std::string("SETS/Warm.") + (name[0] == 'g' ? "GAI" : name)));
    }
    PutFile(InDirectory("SETS/warm.Bad"), "   1,   3\r\n");
    PutFile(InDirectory("nearccw.prs"), "row,col\r\n0,1\r\n0,-1\r\n");
    write::display.SubstBadPixels = 1;
    EXPECT_EQ(LoadCalibration(hWndMain, "C:\\KELVO\\sets\\warm.cal"), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_THAT(GainList, ElementsAre(1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F));
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 6)) << "the last detector is bad";
    EXPECT_EQ(TemperatureCold, 20.5F);
}

TEST_F(LoadingASet, OfAnyBytesIsToldAndHarmsNothing)
{
    const std::string start = "[Setup]\nActiveCamera=2\n";
    for (const std::string& text :
         {std::string(), std::string("\0\0\0\0", 4), std::string(100000, '['), start + "[Calibration]\nGainFile=\n",
          start + "IntTime=,,,\n[Calibration]\nCalType=x\nGainFile=../../../etc/passwd\n",
          start + "[Calibration]\nGainFile=warm.gai\nOffsetFile=/\n", start + "[Calibration]\nGainFile=\xFF\xFE\n",
          start + "IndexFrameRate=-2147483648\nVideoGain1=99999999\nVideoOffset1=-5\n[Calibration]\nGainFile=" +
              std::string(5000, 'g') + "\n"}) {
        PutSetup("ActiveCamera=2\n");
        PutFile(calPath, text);
        ForgetProfile(calPath);
        const std::size_t before = op->Boxes().size();
        EXPECT_EQ(Load(), 0);
        EXPECT_GT(op->Boxes().size(), before);
        EXPECT_EQ(CalType, 0);
    }
}

TEST_F(LoadingASet, ListsOfAnyBytesAreTakenAsTheyAre)
{
    PutFile(InDirectory("warm.gai"), std::string(32, '\xFF'));  // not a number, each
    PutFile(InDirectory("warm.off"), std::string(4000, '\x80'));
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(GainList.size(), 8U);
    EXPECT_THAT(OffsetList, testing::Each(static_cast<std::int16_t>(0x8080)));
}

// --- Saving ---------------------------------------------------------------------------------------------------------

class SavingASet : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        from = InDirectory("warm.cal");
        to = InDirectory("kept.cal");
        std::string text(kCalText);
        text.replace(text.find("BadDetFile="), 11, "BadDetFile=warm.bad");
        PutSet(from, text);
        PutFile(InDirectory("warm.bad"), "");
        PutFile(InDirectory("nearccw.prs"), "row,col\n0,1\n");
        ASSERT_EQ(LoadCalibration(hWndMain, from), 1);
        record = CalSettings;
    }
    static bool RecordIs(const CalSettingsRecord& other)
    {
        return CalSettings.CalFile == other.CalFile && CalSettings.GainFile == other.GainFile &&
               CalSettings.OffsetFile == other.OffsetFile && CalSettings.DecomFile == other.DecomFile &&
               CalSettings.BadDetFile == other.BadDetFile;
    }
    std::vector<std::string> KeptFiles() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
            const std::string name = entry.path().filename().string();
            if (name.find("kept") != std::string::npos || name.find("journal") != std::string::npos)
                names.push_back(name);
        }
        std::ranges::sort(names);
        return names;
    }
    // The exit status is 0 where the save failed as it should, and after says that what is left is right.
    int SaveInAnotherProcess(const std::function<void()>& before,
                             const std::function<bool(bool refused)>& after = std::identity()) const
    {
        FlushProfiles();
        const pid_t child = fork();
        if (child == 0) {
            before();
            const bool refused = SaveCalibrationAs(to) == 0 && RecordIs(record);
            _exit(after(refused) ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return status;
    }

    // Seen by this process alone. False where it may not mount.
    static bool MountSmallDisk(const std::string& place, const char* size)
    {
        return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount("none", place.c_str(), "tmpfs", 0, size) == 0;
    }

    std::string from;
    std::string to;
    CalSettingsRecord record;
};

TEST_F(SavingASet, CopiesEveryFileByteForByte)
{
    PutFile(InDirectory("warm.bad"), "   0,   1\n");
    EXPECT_EQ(SaveCalibrationAs(to), 1);
    for (const char* extension : {".gai", ".off", ".dcm", ".bad", ".noi"}) {
        EXPECT_EQ(FileContents(SetFile(to, extension)), FileContents(SetFile(from, extension))) << extension;
        EXPECT_TRUE(std::filesystem::exists(SetFile(to, extension))) << extension;
    }
    // The .cal differs in the names alone.
    std::string expected = FileContents(from);
    for (const auto& [old, text] : {std::pair{"CalFile=C:\\KELVO\\warm.cal", "CalFile=" + to},
                                    {"=warm.gai", "=kept.gai"},
                                    {"=warm.off", "=kept.off"},
                                    {"=warm.dcm", "=kept.dcm"},
                                    {"=warm.bad", "=kept.bad"}}) {
        const std::string_view oldText = old;
        expected.replace(expected.find(oldText), oldText.size(), text);
    }
    EXPECT_EQ(FileContents(to), expected);
    EXPECT_THAT(KeptFiles(), ElementsAre("kept.bad", "kept.cal", "kept.dcm", "kept.gai", "kept.noi", "kept.off"));
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(SavingASet, MakesTheNewSetTheOneInForce)
{
    EXPECT_EQ(SaveCalibrationAs(to), 1);
    EXPECT_EQ(CalSettings.CalFile, to);
    EXPECT_EQ(CalSettings.GainFile, InDirectory("kept.gai"));
    EXPECT_EQ(CalSettings.OffsetFile, InDirectory("kept.off"));
    EXPECT_EQ(CalSettings.DecomFile, InDirectory("kept.dcm"));
    EXPECT_EQ(CalSettings.BadDetFile, InDirectory("kept.bad"));
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
}

TEST_F(SavingASet, WhatWasSavedLoads)
{
    ASSERT_EQ(SaveCalibrationAs(to), 1);
    write::cal.GainList.assign(8, 9.0F);
    write::cal.CalType = 0;
    EXPECT_EQ(LoadCalibration(hWndMain, to), 1);
    EXPECT_THAT(GainList, ElementsAre(1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F));
    EXPECT_EQ(CalSettings.CalFile, to);
    EXPECT_EQ(VideoGain[0], 6);
}

TEST_F(SavingASet, WithoutACalibrationIsRefused)
{
    write::cal.CalType = 0;
    EXPECT_EQ(SaveCalibrationAs(to), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Can not save a calibration that is not loaded");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo warning");
    EXPECT_THAT(KeptFiles(), IsEmpty());
}

TEST_F(SavingASet, UnderThePresentNameDoesNothingAndSucceeds)
{
    std::filesystem::remove(InDirectory("warm.gai"));  // a copy would fail
    EXPECT_EQ(SaveCalibrationAs(from), 1);
    std::string capitals = from;
    std::ranges::transform(capitals, capitals.begin(), [](char c) { return static_cast<char>(std::toupper(c)); });
    EXPECT_EQ(SaveCalibrationAs(capitals), 1);
    std::filesystem::create_symlink(from, InDirectory("other.cal"));
    EXPECT_EQ(SaveCalibrationAs(InDirectory("other.cal")), 1) << "the same file by another way";
    EXPECT_TRUE(RecordIs(record));
}

TEST_F(SavingASet, WhoseBadListNoLongerExistsSavesWithAnEmptyBadDetFile)
{
    std::filesystem::remove(InDirectory("warm.bad"));
    PutFile(InDirectory("kept.bad"), "   0,   0\n");  // of a set that had the name before
    EXPECT_EQ(SaveCalibrationAs(to), 1);
    EXPECT_EQ(KeyOf(to, "Calibration", "BadDetFile"), "");
    EXPECT_EQ(CalSettings.BadDetFile, "");
    EXPECT_FALSE(std::filesystem::exists(InDirectory("kept.bad")));
}

TEST_F(SavingASet, WithoutANoiseListNoneIsCopied)
{
    std::filesystem::remove(InDirectory("warm.noi"));
    EXPECT_EQ(SaveCalibrationAs(to), 1);
    EXPECT_THAT(KeptFiles(), ElementsAre("kept.bad", "kept.cal", "kept.dcm", "kept.gai", "kept.off"));
}

TEST_F(SavingASet, AListThatCantBeCopiedRemovesAllThatWasAndLeavesTheRecord)
{
    for (const char* extension : {".gai", ".off", ".dcm", ".cal"}) {
        const std::string missing = SetFile(from, extension);
        std::filesystem::rename(missing, InDirectory("elsewhere"));
        EXPECT_EQ(SaveCalibrationAs(to), 0) << extension;
        EXPECT_THAT(KeptFiles(), IsEmpty()) << extension;
        EXPECT_TRUE(RecordIs(record));
        std::filesystem::rename(InDirectory("elsewhere"), missing);
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
}

TEST_F(SavingASet, ThatFailsLeavesTheSetThatHadTheName)
{
    for (const std::string_view extension : kSetExtensions) PutFile(SetFile(to, extension), "former");
    std::filesystem::remove(InDirectory("warm.dcm"));
    EXPECT_EQ(SaveCalibrationAs(to), 0);
    for (const std::string_view extension : kSetExtensions) EXPECT_EQ(FileContents(SetFile(to, extension)), "former");
    EXPECT_THAT(KeptFiles(), SizeIs(6));
}

TEST_F(SavingASet, IntoADirectoryWithoutWritePermissionLeavesNothing)
{
    std::filesystem::create_directory(InDirectory("closed"));
    std::filesystem::permissions(InDirectory("closed"), std::filesystem::perms(0555));
    std::filesystem::permissions(directory.Path(), std::filesystem::perms(0777));
    to = InDirectory("closed/kept.cal");
    EXPECT_EQ(SaveInAnotherProcess([] {
                  if (geteuid() == 0 && setuid(kNobody) != 0) _exit(2);
              }),
              0);
    EXPECT_TRUE(std::filesystem::is_empty(InDirectory("closed")));
}

TEST_F(SavingASet, OnAFullDiskLeavesNothing)
{
    PutFile(InDirectory("warm.dcm"), std::string(100000, 'd'));
    EXPECT_EQ(SaveInAnotherProcess([] { LimitFiles(50000); }), 0);
    EXPECT_THAT(KeptFiles(), IsEmpty());
}

// The name of one of the lists would be written twice, once with the settings.
TEST_F(SavingASet, UnderAnotherEndingIsRefused)
{
    for (const char* name : {"kept.gai", "kept.dcm", "kept.txt", "kept", "warm.gai"}) {
        EXPECT_EQ(SaveCalibrationAs(InDirectory(name)), 0) << name;
        EXPECT_THAT(KeptFiles(), IsEmpty()) << name;
        EXPECT_TRUE(RecordIs(record));
    }
    EXPECT_EQ(FileContents(InDirectory("warm.gai")).size(), 32U);
    EXPECT_EQ(SaveCalibrationAs(InDirectory("kept.CAL")), 1);
}

// Whichever file of the new set meets a disk that takes nothing.
TEST_F(SavingASet, OnAFullDiskTakesBackWhatWasCopied)
{
    for (const char* extension : {".gai", ".off", ".bad", ".dcm", ".noi", ".cal"}) {
        std::filesystem::create_symlink("/dev/full", SetFile(to, extension));
        EXPECT_EQ(SaveCalibrationAs(to), 0) << extension;
        EXPECT_THAT(KeptFiles(), ElementsAre("kept" + std::string(extension))) << "the way to the device";
        EXPECT_TRUE(RecordIs(record)) << extension;
        EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
        std::filesystem::remove(SetFile(to, extension));
    }
    EXPECT_EQ(SaveCalibrationAs(to), 1);
}

// A disk of its own that is too small for one set, or for the copies of the set that had the name. Where none may be
// mounted, files that can't grow to the table's size fail the save at the same place.
TEST_F(SavingASet, OnASmallDiskLeavesWhatStood)
{
    const std::string disk = InDirectory("disk");
    std::filesystem::create_directory(disk);
    PutFile(InDirectory("warm.dcm"), std::string(30000, 'd'));
    to = disk + "/kept.cal";
    for (const bool former : {false, true}) {
        const int status = SaveInAnotherProcess(
            [&] {
                if (!MountSmallDisk(disk, former ? "size=56k" : "size=20k")) LimitFiles(20000);
                if (!former) return;
                for (const std::string_view extension : kSetExtensions) PutFile(SetFile(to, extension), "former");
            },
            [&](bool refused) {
                std::size_t files = 0;
                for (const auto& entry : std::filesystem::directory_iterator(disk)) {
                    if (FileContents(entry.path().string()) != "former") _exit(4);
                    ++files;
                }
                return refused && files == (former ? kSetExtensions.size() : 0);
            });
        EXPECT_EQ(status, 0) << former;
    }
}

TEST_F(SavingASet, KeepsTheLineEndsOfAnOldMachine)
{
    std::string text = FileContents(from);
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) text.insert(at, "\r");
    PutFile(from, text);
    EXPECT_EQ(SaveCalibrationAs(to), 1);
    const std::string saved = FileContents(to);
    EXPECT_THAT(saved, HasSubstr("\r\nGainFile=kept.gai\r\n"));
    EXPECT_THAT(saved, HasSubstr("\r\nCalFile=" + to + "\r\n"));
    EXPECT_EQ(std::ranges::count(saved, '\n'), std::ranges::count(text, '\n'));
    EXPECT_EQ(std::ranges::count(saved, '\r'), std::ranges::count(saved, '\n'));
}

TEST_F(SavingASet, IntoItsOwnDirectoryUnderANameInOtherCaseReplacesThatSet)
{
    PutSet(InDirectory("KEPT.CAL"));
    EXPECT_EQ(SaveCalibrationAs(to), 1);
    EXPECT_THAT(KeptFiles(), Contains("KEPT.CAL").Times(0)) << "the lists' own names may differ, the .cal is made anew";
    EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("kept.cal")), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(SavingASet, OntoADeviceIsRefused)
{
    EXPECT_EQ(SaveCalibrationAs("/dev/full"), 0);
    EXPECT_TRUE(RecordIs(record));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

}  // namespace
}  // namespace kelvo
