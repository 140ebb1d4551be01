// The complete rebuild of the table in force.
#include "calib/orientation.h"

#include "pixel/decommutation.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/shown.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class TableInForce : public testing::Test {
  protected:
    TableInForce()
    {
        SetDefaultDir(directory.Path());
        write::camera.ActiveConfig.DecomScheme = 2;
        write::camera.ActiveConfig.Vroi = 2;
        write::camera.ActiveConfig.Hroi = 2;
        write::camera.ActiveConfig.UnityOffset = 8192;
        write::frames.CameraOn = 1;
        write::cal.CalType = 2;
        write::display.SubstBadPixels = 1;
        write::calSet.CalSettings.PRSfile = directory / "right.prs";
        write::calSet.CalSettings.BadDetFile = badFile;
        write::calSet.CalSettings.CalFile = directory / "run.cal";
        write::calSet.CalSettings.DecomFile = directory / "run.dcm";
        PutFile(CalSettings.PRSfile, "header\n0,1\n0,-1\n");
        PutFile(badFile, "   0,   0\n");
    }
    ~TableInForce() override { FlushProfiles(); }

    std::int32_t Set(std::int32_t substitute, std::int32_t rows, std::int32_t columns, std::int32_t left)
    {
        return SetImageOrientation(substitute, rows, columns, left, badFile, ActiveConfig, 0);
    }
    static DecomTable Stored(const std::string& path)
    {
        const std::string bytes = FileContents(path);
        DecomTable table(bytes.size() / 4);
        std::memcpy(table.data(), bytes.data(), table.size() * 4);
        return table;
    }
    DecomTable Temp() const { return Stored(directory / "DECOM.TMP"); }
    std::vector<std::string> Statuses() const { return op.Texts("status", "text"); }
    static std::string Key(const std::string& file)
    {
        return GetPrivateProfileString("Display", "SubstBadPixels", "missing", file);
    }

    TestOperator op;
    TempDirectory directory;
    std::string badFile = directory / "run.bad";
};

TEST_F(TableInForce, SubstitutionTravelsWithItsPixelThroughTheOrientation)
{
    EXPECT_EQ(Set(1, 1, 0, 0), 1);
    EXPECT_THAT(DecomList, ElementsAre(2, 3, 1, 1));  // replaced {1, 1, 2, 3}, then the rows exchanged
    EXPECT_THAT(Temp(), ElementsAre(2, 3, 1, 1));
    EXPECT_THAT(Statuses(), ElementsAre("Loading bad pixel substitution file", "Calculating pixel substitution",
                                        "Setting Image orientation"));
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(TableInForce, ReplacesNothingWithoutFlagCalibrationOrList)
{
    EXPECT_EQ(Set(0, 0, 0, 0), 1);
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3));
    write::cal.CalType = 0;
    EXPECT_EQ(Set(1, 0, 0, 0), 1);
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3));
    write::cal.CalType = 1;
    EXPECT_EQ(SetImageOrientation(1, 0, 0, 0, "", ActiveConfig, 0), 1);
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(Set(1, 0, 0, 0), 1);
    EXPECT_THAT(DecomList, ElementsAre(1, 1, 2, 3));
}

TEST_F(TableInForce, NeedsTheCamera)
{
    write::frames.CameraOn = 0;
    EXPECT_EQ(Set(1, 0, 0, 0), 0);
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_EQ(op.Boxes()[0].text, "Camera should be on.");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_FALSE(std::filesystem::exists(directory / "DECOM.TMP"));
}

TEST_F(TableInForce, StaysWhereAStepOfTheRebuildFails)
{
    write::cal.DecomList = {3, 3, 3, 3};
    for (const int allocation : {1, 2, 5}) {  // the table, the map, the scratch table behind the two of the pattern
        FailAllocation(allocation);
        EXPECT_EQ(Set(1, 1, 0, 0), 0) << allocation;
    }
    write::calSet.CalSettings.PRSfile = directory / "missing.prs";
    EXPECT_EQ(Set(1, 0, 0, 0), 0);
    std::filesystem::remove(badFile);
    EXPECT_EQ(Set(1, 0, 0, 0), 0);
    EXPECT_THAT(DecomList, Each(3U));
    EXPECT_FALSE(std::filesystem::exists(directory / "DECOM.TMP"));
    std::vector<std::string> texts;
    for (const auto& box : op.Boxes()) texts.push_back(box.text);
    EXPECT_THAT(texts, ElementsAre("Failure to Lock Decommuation list in Memory", "Failure to allocate memory",
                                   "Failure to allocate and lock Temporary memory!",
                                   "ReplaceBadDet(): Unable to open pixel replacement (.prs) file.",
                                   "Could not open file " + badFile));
}

TEST_F(TableInForce, AFailedInstallationIsToldAndTheRebuildGoesOn)
{
    FailAllocation(2);
    EXPECT_EQ(Set(0, 0, 0, 0), 1);
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_EQ(op.Boxes()[0].text, "Hardware Timeout Error, Download of Decommutation List");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(Temp(), ElementsAre(0, 1, 2, 3));
}

TEST_F(TableInForce, CalibrationRunsTakePlainOrderAndUnityCoefficients)
{
    write::display.MirrorHoriz = 1;
    write::display.MirrorVert = 1;
    write::display.RotateCCW = 1;
    EXPECT_NE(SetCommutationOrder(), 0);
    EXPECT_EQ(CalType, 0);
    EXPECT_EQ(DisplayLow, 0);
    EXPECT_EQ(DisplayHigh, 16383);
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(Temp(), ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(GainList, Each(1.0F));
    EXPECT_THAT(OffsetList, Each(16384));
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_THAT(Statuses(), testing::Contains("Setting pixel commutation order..."));
}

TEST_F(TableInForce, CalibrationRunsGoOnWhereOnlyTheRebuildFails)
{
    write::frames.CameraOn = 0;
    EXPECT_NE(SetCommutationOrder(), 0);
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_EQ(op.Boxes()[0].text, "Camera should be on.");
}

TEST_F(TableInForce, CalibrationRunsNeedTheUnityDownload)
{
    FailAllocation(1);
    EXPECT_EQ(SetCommutationOrder(), 0);
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_THAT(Statuses(), testing::Not(testing::Contains("Setting pixel commutation order...")));
}

TEST_F(TableInForce, TheToggleRebuildsAndKeepsTheSetUpToDate)
{
    PutFile(CalSettings.CalFile, "[Display]\nSubstBadPixels=1\n");
    ToggleBadPixelReplacement(nullptr);
    EXPECT_EQ(SubstBadPixels, 0);
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(Stored(CalSettings.DecomFile), ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(Key(IniFilePath), "0");
    EXPECT_EQ(Key(CalSettings.CalFile), "0");
    ToggleBadPixelReplacement(nullptr);
    EXPECT_EQ(SubstBadPixels, 1);
    EXPECT_THAT(DecomList, ElementsAre(1, 1, 2, 3));
    EXPECT_THAT(Stored(CalSettings.DecomFile), ElementsAre(1, 1, 2, 3));
    EXPECT_EQ(Key(IniFilePath), "1");
    EXPECT_EQ(Key(CalSettings.CalFile), "1");
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
}

TEST_F(TableInForce, TheToggleKeepsTheFlagWhereTheRebuildFails)
{
    write::frames.CameraOn = 0;
    ToggleBadPixelReplacement(nullptr);
    EXPECT_EQ(SubstBadPixels, 1);
    EXPECT_EQ(Key(IniFilePath), "1");
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_EQ(op.Boxes()[0].text, "Camera should be on.");
    EXPECT_FALSE(std::filesystem::exists(CalSettings.DecomFile));
}

TEST_F(TableInForce, TheToggleWithoutACalibrationOnlyKeepsTheFlag)
{
    write::cal.CalType = 0;
    PutFile(CalSettings.DecomFile, "kept");
    ToggleBadPixelReplacement(nullptr);
    EXPECT_EQ(SubstBadPixels, 0);
    EXPECT_EQ(Key(IniFilePath), "0");
    EXPECT_EQ(FileContents(CalSettings.DecomFile), "kept");
    EXPECT_EQ(Key(CalSettings.CalFile), "missing");
    EXPECT_THAT(DecomList, IsEmpty());
}

TEST_F(TableInForce, TheToggleDoesNothingWithTwoCameras)
{
    write::camera.ActiveConfig.DualCamera = 1;
    ToggleBadPixelReplacement(nullptr);
    EXPECT_EQ(SubstBadPixels, 1);
    EXPECT_EQ(Key(IniFilePath), "missing");
}

}  // namespace
}  // namespace kelvo
