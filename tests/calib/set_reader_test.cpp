// A set read as a value: what it gives, and that nothing else is different afterwards.
#include "calib/set_reader.h"

#include "calib/calibration_set.h"
#include "calib/last_set.h"
#include "head/camera_head.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "support/calibration_fixture.h"
#include "support/recording_board.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iomanip>
#include <map>
#include <sstream>
#include <tuple>
#include <utility>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

template <typename Value>
void Put(std::ostream& out, const Value& value)
{
    if constexpr (std::is_same_v<Value, std::string>) {
        out << std::quoted(value) << ' ';
    } else if constexpr (requires { value.begin(); }) {
        for (const auto& entry : value) Put(out, +entry);
        out << "; ";
    } else {
        out << std::setprecision(17) << +value << ' ';
    }
}

template <typename... Values>
std::string AsText(const Values&... values)
{
    std::ostringstream out;
    (Put(out, values), ...);
    return out.str();
}

std::string RecordAsText(const CalSettingsRecord& r)
{
    return AsText(r.NumSources, r.NumFrames, r.ChosenType, r.NoiseFloor, r.IntensityCold, r.TemperatureCold,
                  r.IntensityHot, r.TemperatureHot, r.Factor, r.GainAcceptanceRange, r.PRSfile, r.DecomFile,
                  r.BadDetFile, r.GainFile, r.OffsetFile, r.CalFile, r.MinOffset, r.MaxOffset, r.AllowedNoiseLevel,
                  r.EmissivityCold, r.EmissivityHot, r.OpticsFile);
}

std::string CalibrationAsText()
{
    return RecordAsText(CalSettings) + RecordAsText(CalSettings2) +
           AsText(CalType, CalDone, ReplaceNoisy, BadDetCount, DecomList, OffsetList, GainList, CalibrationListsVersion,
                  IntensityCold, IntensityHot, TemperatureCold, TemperatureHot);
}

std::string PictureAsText()
{
    return AsText(Contrast, Brightness, ImageColor, GrayScale, MirrorHoriz, MirrorVert, RotateCCW, SubstBadPixels,
                  DisplayLow, DisplayHigh, DisplayUnit, Xzoom, Yzoom, Xpan, Ypan, Xoffset, Yoffset, DisplayLut,
                  ViewScaleGain, ViewScaleOffset, FirstSetupPending, CameraOn, LiveVideo, ViewingFile, DisplayEnabled,
                  GrabberPresent, RawFrame, LiveFrame, ImageBuffer, LoadName, CurrentFrame, LastFrame);
}

std::string HeadAsText()
{
    return AsText(FrameRate, IndexFrameRate, IndexIntegrationTime, IntegrationSetting, IntegrationMsecInForce,
                  VideoGain, VideoOffset, VoltsLow, VoltsHigh);
}

class ReadingASet : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        calPath = InDirectory("warm.cal");
        PutSet(calPath);
        // A calibration in force that differs from the set in all that it could change.
        write::cal.GainList.assign(8, 9.0F);
        write::cal.OffsetList.assign(8, 9);
        write::cal.DecomList = {1, 0, 3, 2, 5, 4, 7, 6};
        write::cal.CalType = 1;
        write::calSet.CalSettings.CalFile = "/former.cal";
        write::calSet.CalSettings.GainFile = "/former.gai";
        write::cal.TemperatureCold = 1.0F;
        write::cal.IntensityHot = 77;
        write::display.MirrorVert = 1;
        write::display.DisplayLow = 55;
        write::display.DisplayUnit = 3;
        write::head.FirstSetupPending = 1;
        write::frames.LiveVideo = 1;
        FlushProfiles();
        head->Taken();
        TakeBoardCalls();
    }

    std::map<std::string, std::string> Files() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(directory.Path())) {
            if (!entry.is_regular_file()) continue;
            const auto written = entry.last_write_time().time_since_epoch().count();
            files[entry.path().string()] = std::to_string(written) + '\n' + FileContents(entry.path().string());
        }
        return files;
    }
    auto Everything() const
    {
        return std::tuple(CalibrationAsText(), PictureAsText(), HeadAsText(), StatusText, FilePathBuf, Files(),
                          ProfilesPending(), CurrentPointer());
    }
    std::size_t LinesTold() const
    {
        return op->Boxes().size() + op->Texts("status", "text").size() + op->Texts("beep", "sound").size() +
               op->Texts("dialog", "name").size();
    }

    // Reads the set and holds everything there is against what was before.
    CalibrationSet Read()
    {
        const auto before = Everything();
        const std::size_t linesBefore = LinesTold();
        CalibrationSet set = ReadSet(calPath);
        EXPECT_EQ(Everything(), before);
        EXPECT_EQ(LinesTold(), linesBefore);
        EXPECT_THAT(head->Taken(), IsEmpty());
        EXPECT_THAT(TakeBoardCalls(), IsEmpty());
        return set;
    }
    void PutText(std::string_view what, std::string_view instead)
    {
        std::string text(kCalText);
        text.replace(text.find(what), what.size(), instead);
        PutFile(calPath, text);
        ForgetProfile(calPath);
    }

    std::string calPath;
};

// The comparison itself must see a change.
TEST_F(ReadingASet, IsSeenToChangeNothing)
{
    const auto before = Everything();
    write::cal.GainList[7] = 8.0F;
    EXPECT_NE(Everything(), before);
    write::cal.GainList[7] = 9.0F;
    EXPECT_EQ(Everything(), before);
    PutFile(InDirectory("new file"), "");
    EXPECT_NE(Everything(), before);
    std::filesystem::remove(InDirectory("new file"));
    WritePrivateProfileString("Setup", "Mark", "pending", IniFilePath);
    EXPECT_NE(Everything(), before);
    ForgetProfile(IniFilePath);
    ASSERT_EQ(LoadCalibration(hWndMain, calPath), 1);
    FlushProfiles();
    EXPECT_NE(CalibrationAsText(), std::get<0>(before));
    EXPECT_NE(PictureAsText(), std::get<1>(before));
    EXPECT_NE(HeadAsText(), std::get<2>(before));
    EXPECT_NE(Files(), std::get<5>(before));
}

TEST_F(ReadingASet, GivesItsListsAndNumbers)
{
    const CalibrationSet set = Read();
    EXPECT_EQ(set.calPath, calPath);
    EXPECT_EQ(set.camera, 2);
    EXPECT_EQ(set.decom.read, ListRead::kComplete);
    EXPECT_EQ(set.decom.name, "warm.dcm");
    EXPECT_EQ(set.decom.path, InDirectory("warm.dcm"));
    EXPECT_THAT(set.decom.entries, ElementsAre(7, 6, 5, 4, 3, 2, 1, 0));
    EXPECT_EQ(set.gains.read, ListRead::kComplete);
    EXPECT_EQ(set.gains.path, InDirectory("warm.gai"));
    EXPECT_THAT(set.gains.entries, ElementsAre(1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F));
    EXPECT_EQ(set.offsets.read, ListRead::kComplete);
    EXPECT_EQ(set.offsets.path, InDirectory("warm.off"));
    EXPECT_THAT(set.offsets.entries, ElementsAre(100, 101, 102, 103, 104, 105, 106, 107));
    EXPECT_FALSE(set.memoryRefused);
    EXPECT_EQ(set.type, 2);
    EXPECT_EQ(set.videoGain1, 6);
    EXPECT_EQ(set.videoOffset1, 170);
    EXPECT_EQ(set.videoOffset2, 171);
    EXPECT_EQ(set.integrationTimes, "21,22,23,24");
    EXPECT_THAT(set.driverNumber, Optional(std::string("2")));
    EXPECT_THAT(set.calFile, Optional(std::string("C:\\KELVO\\warm.cal")));
    EXPECT_THAT(set.badDetFile, Optional(std::string()));
    EXPECT_THAT(set.temperatureCold.value, Optional(20.5F));
    EXPECT_THAT(set.temperatureCold.text, Optional(std::string("20.500000")));
    EXPECT_THAT(set.temperatureHot.value, Optional(25.0F));
    EXPECT_THAT(set.intensityCold.value, Optional(3000));
    EXPECT_THAT(set.intensityHot.value, Optional(9000));
    EXPECT_THAT(set.mirrorVert.value, Optional(0));
    EXPECT_EQ(set.substBadPixels.text, std::nullopt) << "section Display doesn't count here";
}

TEST_F(ReadingASet, AGainOfZeroStaysZero)
{
    PutGains(InDirectory("warm.gai"), {1, 0, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(Read().gains.entries.at(1), 0.0F) << "only an installation makes it 0.1";
}

TEST_F(ReadingASet, SaysWhichListIsMissing)
{
    for (const char* extension : {".dcm", ".gai", ".off"}) {
        PutSet(calPath);
        std::filesystem::remove(SetFile(calPath, extension));
        const CalibrationSet set = Read();
        const std::string missing = extension;
        EXPECT_EQ(set.decom.read, missing == ".dcm" ? ListRead::kNotOpened : ListRead::kComplete);
        EXPECT_EQ(set.gains.read, missing == ".gai" ? ListRead::kNotOpened : ListRead::kComplete);
        EXPECT_EQ(set.offsets.read, missing == ".off" ? ListRead::kNotOpened : ListRead::kComplete);
        EXPECT_EQ(set.decom.entries.size(), missing == ".dcm" ? 0U : 8U);
        EXPECT_EQ(set.gains.entries.size(), missing == ".gai" ? 0U : 8U);
        EXPECT_EQ(set.offsets.entries.size(), missing == ".off" ? 0U : 8U);
    }
}

TEST_F(ReadingASet, SaysWhichListIsShort)
{
    PutTable(InDirectory("warm.dcm"), {7, 6, 5});
    EXPECT_EQ(Read().decom.read, ListRead::kNotRead);
    PutSet(calPath);
    PutGains(InDirectory("warm.gai"), {1.0F, 1.0F});
    EXPECT_EQ(Read().gains.read, ListRead::kNotRead);
    PutSet(calPath);
    PutOffsets(InDirectory("warm.off"), {1, 2, 3});
    const CalibrationSet set = Read();
    EXPECT_EQ(set.offsets.read, ListRead::kNotRead);
    EXPECT_THAT(set.offsets.entries, IsEmpty());
    EXPECT_EQ(set.gains.read, ListRead::kComplete);
}

TEST_F(ReadingASet, ATableThatPointsOutsideTheFrameIsNoTable)
{
    for (const std::uint32_t outside : {8U, 0xFFFFFFFFU}) {
        PutTable(InDirectory("warm.dcm"), {7, 6, 5, 4, 3, 2, 1, outside});
        const CalibrationSet set = Read();
        EXPECT_EQ(set.decom.read, ListRead::kNotRead);
        EXPECT_THAT(set.decom.entries, IsEmpty());
    }
}

TEST_F(ReadingASet, OfAnotherCameraGivesItAll)
{
    PutText("ActiveCamera=2", "ActiveCamera=3");
    const CalibrationSet set = Read();
    EXPECT_EQ(set.camera, 3);
    EXPECT_EQ(set.gains.entries.size(), 8U);
}

TEST_F(ReadingASet, WithoutACameraSaysSo)
{
    PutText("ActiveCamera=2\n", "");
    EXPECT_EQ(Read().camera, kCameraNotNamed);
}

TEST_F(ReadingASet, ThatIsNotThereGivesNoLists)
{
    calPath = InDirectory("none.cal");
    const CalibrationSet set = Read();
    EXPECT_EQ(set.camera, kCameraNotNamed);
    EXPECT_EQ(set.decom.read, ListRead::kNotOpened);
    EXPECT_EQ(set.gains.read, ListRead::kNotOpened);
    EXPECT_EQ(set.offsets.read, ListRead::kNotOpened);
    EXPECT_EQ(set.calFile, std::nullopt);
    EXPECT_EQ(set.temperatureCold.text, std::nullopt);
}

TEST_F(ReadingASet, TextsThatAreNoNumbersAreKept)
{
    PutText("TemperatureCold=20.500000", "TemperatureCold=warm");
    const CalibrationSet set = Read();
    EXPECT_THAT(set.temperatureCold.text, Optional(std::string("warm")));
    EXPECT_EQ(set.temperatureCold.value, std::nullopt);
}

TEST_F(ReadingASet, OfAnyBytesChangesNothing)
{
    const std::string start = "[Setup]\nActiveCamera=2\n";
    for (const std::string& text :
         {std::string(), std::string("\0\0\0\0", 4), std::string(100000, '['), start + "[Calibration]\nGainFile=\n",
          start + "IntTime=,,,\n[Calibration]\nCalType=x\nGainFile=../../../etc/passwd\n",
          start + "[Calibration]\nGainFile=warm.gai\nOffsetFile=/\n",
          start + "[Calibration]\nGainFile=" + std::string(5000, 'g') + "\n"}) {
        PutFile(calPath, text);
        ForgetProfile(calPath);
        EXPECT_NE(Read().offsets.read, ListRead::kComplete);
    }
}

TEST_F(ReadingASet, MemoryThatIsRefusedLeavesTheListsUnread)
{
    FailAllocation(1);
    const CalibrationSet set = Read();
    EXPECT_TRUE(set.memoryRefused);
    EXPECT_EQ(set.decom.read, ListRead::kNoList);
    EXPECT_THAT(set.gains.entries, IsEmpty());
    EXPECT_EQ(set.gains.path, InDirectory("warm.gai"));
    FailAllocation(0);
}

TEST_F(ReadingASet, TakesAsManyPixelsAsAreWanted)
{
    const CalibrationSet part = ReadSet(calPath, 3);
    EXPECT_THAT(part.gains.entries, ElementsAre(1.0F, 1.25F, 1.5F));
    EXPECT_THAT(part.offsets.entries, ElementsAre(100, 101, 0)) << "two a word: the odd one is in no file";
    EXPECT_EQ(part.decom.read, ListRead::kNotRead) << "7 lies outside of three pixels";
    const CalibrationSet more = ReadSet(calPath, 9);
    EXPECT_EQ(more.gains.read, ListRead::kNotRead);
    const CalibrationSet none = ReadSet(calPath, 0);
    EXPECT_EQ(none.gains.read, ListRead::kNoList);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ReadingASet, TwoAreHeldAtOnceAndNeitherIsInForce)
{
    PutSet(InDirectory("cold.cal"));
    PutFile(InDirectory("cold.cal"),
            "[Setup]\nActiveCamera=2\n[Calibration]\nCalType=1\nDecomFile=cold.dcm\nGainFile=cold.gai\n"
            "OffsetFile=cold.off\nTemperatureCold=-5.0\n");
    PutGains(InDirectory("cold.gai"), std::vector<float>(8, 4.0F));
    PutOffsets(InDirectory("cold.off"), std::vector<std::int16_t>(8, -4));
    const CalibrationSet warm = Read();
    const std::string warmPath = std::exchange(calPath, InDirectory("cold.cal"));
    const CalibrationSet cold = Read();
    EXPECT_THAT(warm.gains.entries, ElementsAre(1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F));
    EXPECT_THAT(cold.gains.entries, Each(4.0F));
    EXPECT_THAT(cold.offsets.entries, Each(-4));
    EXPECT_THAT(cold.temperatureCold.value, Optional(-5.0F));
    EXPECT_THAT(GainList, Each(9.0F));

    // Whichever is put in force, the other stays a value.
    EXPECT_EQ(PutInForce(hWndMain, cold), 1);
    EXPECT_THAT(GainList, Each(4.0F));
    EXPECT_EQ(CalType, 1);
    EXPECT_EQ(CalSettings.GainFile, InDirectory("cold.gai"));
    EXPECT_EQ(warm.gains.entries.at(7), 2.75F);
    EXPECT_EQ(PutInForce(hWndMain, warm), 1);
    EXPECT_EQ(GainList.at(7), 2.75F);
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(TemperatureCold, 20.5F);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

// The reasons stand in the value: what became of the files since then doesn't count, and nothing is read again.
TEST_F(ReadingASet, WhatItHoldsIsWhatIsPutInForce)
{
    const CalibrationSet whole = Read();
    for (const char* extension : {".gai", ".off", ".dcm"}) std::filesystem::remove(SetFile(calPath, extension));
    const CalibrationSet broken = Read();
    EXPECT_EQ(PutInForce(hWndMain, whole), 1);
    EXPECT_EQ(GainList.at(7), 2.75F);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    PutSet(calPath);
    EXPECT_EQ(PutInForce(hWndMain, broken), 0);
    ASSERT_EQ(op->Boxes().size(), 2U);
    EXPECT_EQ(op->Boxes()[0].text, "Failed to open file: " + InDirectory("warm.dcm"));
    EXPECT_EQ(op->Boxes()[1].text, "Failed to open file: " + InDirectory("warm.gai"));
}

}  // namespace
}  // namespace kelvo
