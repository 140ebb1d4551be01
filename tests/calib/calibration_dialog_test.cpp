// The CALIB dialog, worked as an operator works it.
#include "calib/calibration_dialog.h"

#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/help.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/cal_settings_write.h"
#include "state/cal_state.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/calibration_fixture.h"
#include "support/name_file.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kHint = " Enter your choices & then OK to do new calibration, or load a previous calib";
constexpr const char* kOff = "Warning: Bad Pixel Substitution is OFF";

class CalibDialog : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        write::frames.GrabberPresent = 0;
        write::display.SubstBadPixels = 1;
        write::calSet.ReplaceNoisy = 1;
    }
    void Run(std::function<void(HWND)> work, std::function<void(HWND)> then = nullptr)
    {
        Work([this] { result = RunCalibrationDialog(hWndMain); }, std::move(work), std::move(then));
    }
    static int FileRadio(HWND dialog)
    {
        for (int id = 1200; id <= 1203; ++id) {
            if (IsDlgButtonChecked(dialog, id)) return id;
        }
        return 0;
    }
    static void ExpectLimitsEnabled(HWND dialog, bool enabled)
    {
        for (const int id : {1208, 1220, 1205, 1206}) EXPECT_EQ(DlgItemEnabled(dialog, id), enabled) << id;
    }
    static void ExpectNoiseEnabled(HWND dialog, bool enabled)
    {
        for (const int id : {1210, 1211}) EXPECT_EQ(DlgItemEnabled(dialog, id), enabled) << id;
    }

    int result = -5;
};

TEST_F(CalibDialog, IsRefusedWithoutACamera)
{
    write::frames.CameraOn = 0;
    EXPECT_EQ(RunCalibrationDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Camera must be turned on before calibrating");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo Message");
}

TEST_F(CalibDialog, OpensWithWhatIsInForce)
{
    write::calSet.CalSettings.NumFrames = 64;
    write::calSet.CalSettings.AllowedNoiseLevel = 4.5F;
    write::calSet.CalSettings.GainAcceptanceRange = 0.35F;
    write::calSet.CalSettings.MaxOffset = 500;
    write::calSet.CalSettings.MinOffset = 300;
    write::calSet.CalSettings.ChosenType = 1;
    Run([](HWND dialog) {
        EXPECT_EQ(DialogName(dialog), "CALIB");
        EXPECT_EQ(GetWindowText(dialog), "Calibration");
        EXPECT_EQ(FileRadio(dialog), 1202);
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1306));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1208));
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1213));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1214));
        EXPECT_EQ(GetDlgItemText(dialog, 1216), "64");
        EXPECT_EQ(GetDlgItemText(dialog, 1211), "4.50");
        EXPECT_EQ(GetDlgItemText(dialog, 1220), "0.350");
        EXPECT_EQ(GetDlgItemText(dialog, 1206), "500");
        EXPECT_EQ(GetDlgItemText(dialog, 1205), "300");
        ExpectLimitsEnabled(dialog, true);
        ExpectNoiseEnabled(dialog, true);
        EXPECT_EQ(StatusText, kHint);
        OperatePress(dialog, kIdHelp);
        EXPECT_EQ(CurrentHelpContext(), 320);
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(CalSettings.ChosenType, 1);
    EXPECT_THAT(op->Texts("beep", "sound"), IsEmpty());
}

TEST_F(CalibDialog, ItsControlsBearTheirTexts)
{
    struct Row {
        int id;
        const char* text;
    };
    constexpr Row kRows[] = {{1200, "&Permanent file"},
                             {1201, "&Most recent file"},
                             {1202, "&Determine new file"},
                             {1203, "&User's file"},
                             {1306, "&Replace bad pixels"},
                             {1208, "R&eplace noisy pixels"},
                             {1210, "&Allowed pixel noise level::"},
                             {1213, "&2 point calibration"},
                             {1214, "&1 point calibration"},
                             {1222, "&Load previous calibration..."},
                             {1, "&Ok"},
                             {2, "&Cancel"},
                             {9, "Help"}};
    Run([&](HWND dialog) {
        for (const Row& row : kRows) EXPECT_EQ(GetDlgItemText(dialog, row.id), row.text);
    });
}

TEST_F(CalibDialog, OpensWithItsLimitsDisabledWhereNothingIsReplaced)
{
    write::display.SubstBadPixels = 0;
    Run([](HWND dialog) {
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1306));
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1208));
        ExpectLimitsEnabled(dialog, false);
        ExpectNoiseEnabled(dialog, false);
        EXPECT_EQ(StatusText, kOff);
    });
    EXPECT_THAT(op->Texts("beep", "sound"), SizeIs(1));
}

TEST_F(CalibDialog, TurningReplacementOffAndOnTakesTheRestAlong)
{
    PutFile(InDirectory("Last.bad"), "");
    write::calSet.ReplaceNoisy = 0;
    Run([](HWND dialog) {
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1208)) << "as the flag says";
        ExpectNoiseEnabled(dialog, false);
        OperateCheck(dialog, 1201, true);
        EXPECT_EQ(FileRadio(dialog), 1201);
        OperateCheck(dialog, 1306, false);
        EXPECT_EQ(FileRadio(dialog), 1202);
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1208));
        ExpectLimitsEnabled(dialog, false);
        EXPECT_EQ(StatusText, kOff);
        OperateCheck(dialog, 1306, true);
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1208));
        ExpectLimitsEnabled(dialog, true);
        ExpectNoiseEnabled(dialog, true);
        EXPECT_EQ(StatusText, kHint);
        OperateCheck(dialog, 1208, false);
        ExpectNoiseEnabled(dialog, false);
    });
    EXPECT_EQ(SubstBadPixels, 1) << "Cancel keeps the flag";
}

TEST_F(CalibDialog, TheFileRadiosActOnlyWhereBadPixelsAreReplaced)
{
    write::display.SubstBadPixels = 0;
    PutFile(InDirectory("Perm.bad"), "");
    PutFile(InDirectory("Last.bad"), "");
    Run([](HWND dialog) {
        for (const int id : {1200, 1201, 1203}) {
            EXPECT_FALSE(DlgItemEnabled(dialog, id)) << id;
            SendMessage(dialog, WM_COMMAND, MakeLong(id, kButtonClicked), 1);
            EXPECT_EQ(FileRadio(dialog), 1202) << id;
            EXPECT_EQ(StatusText,
                      id == 1203 ? "Wanring: Bad pixel substitution is OFF" : "Warning: Bad pixel substitution is OFF");
        }
    });
    EXPECT_THAT(op->Texts("beep", "sound"), SizeIs(4)) << "at opening, and at each";
}

TEST_F(CalibDialog, WhatDependsOnTheReplacementIsGrayWithoutIt)
{
    Run([](HWND dialog) {
        constexpr int kDepend[] = {1200, 1201, 1202, 1203, 1208, 1220, 1206, 1205, 20432, 20433, 20434};
        for (const bool on : {false, true}) {
            OperateCheck(dialog, 1306, on);
            for (const int id : kDepend) EXPECT_EQ(DlgItemEnabled(dialog, id), on) << id;
        }
    });
}

TEST_F(CalibDialog, ItsFieldsHaveUnits)
{
    Run([](HWND dialog) {
        EXPECT_EQ(GetDlgItemText(dialog, 20431), "counts");
        EXPECT_EQ(GetDlgItemText(dialog, 20432), "of the mean response");
        EXPECT_EQ(GetDlgItemText(dialog, 20433), "counts above the mean");
        EXPECT_EQ(GetDlgItemText(dialog, 20434), "counts below the mean");
    });
}

TEST_F(CalibDialog, StoredListsAreTakenWhereTheyCanBeOpened)
{
    PutFile(InDirectory("Perm.bad"), "");
    PutFile(InDirectory("LAST.BAD"), "");
    for (const auto& [radio, file] : {std::pair{1200, "Perm.bad"}, {1201, "Last.bad"}}) {
        Run([radio = radio](HWND dialog) {
            OperateCheck(dialog, radio, true);
            EXPECT_EQ(FileRadio(dialog), radio);
            OperatePress(dialog, kIdOk);
        });
        EXPECT_EQ(result, 1);
        EXPECT_EQ(CalSettings.BadDetFile, InDirectory(file));
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(CalibDialog, StoredListsThatCantBeOpenedAreTold)
{
    Run([](HWND dialog) { OperateCheck(dialog, 1200, true); },
        [](HWND dialog) {
            EXPECT_EQ(FileRadio(dialog), 1202);
            OperateCheck(dialog, 1201, true);
            EXPECT_EQ(FileRadio(dialog), 1202);
        });
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text, "Can't open permanent bad detector file!");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(op->Boxes()[1].text, "Can't open last bad detector file (try determining new file).");
}

TEST_F(CalibDialog, StoredListsThatCantBeClosedAreTold)
{
    PutFile(InDirectory("Perm.bad"), "");
    PutFile(InDirectory("Last.bad"), "");
    SetFault("close bad detector file", true);
    Run([](HWND dialog) {
        OperateCheck(dialog, 1200, true);
        OperateCheck(dialog, 1201, true);
    });
    SetFault("close bad detector file", false);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to close `perm.bad' file.");
    EXPECT_EQ(op->Boxes()[1].text, "Unable to close `last.bad' file.");
}

TEST_F(CalibDialog, TheUsersFileIsAskedFor)
{
    PutFile(InDirectory("mine.bad"), "");
    const std::string path = InDirectory("mine.bad");
    op->Do([] { OperateCheck(DialogInFront(), 1203, true); });
    op->Do([path] {
        ASSERT_TRUE(FileDialogInFront());
        EXPECT_EQ(FileDialogInFront()->title, "Select bad detector file");
        ChooseFiles({path});
    });
    op->Do([] {
        EXPECT_EQ(FileRadio(DialogInFront()), 1203);
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(RunCalibrationDialog(hWndMain), 1);
    EXPECT_EQ(CalSettings.BadDetFile, path);
}

TEST_F(CalibDialog, ACancelledFileSelectionGoesBackToANewFile)
{
    op->Do([] { OperateCheck(DialogInFront(), 1203, true); });
    op->Do([] { CancelFileDialog(); });
    op->Do([] {
        EXPECT_EQ(FileRadio(DialogInFront()), 1202);
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(RunCalibrationDialog(hWndMain), 1);
    EXPECT_EQ(CalSettings.BadDetFile, "");
}

// Below the mean a distance is meant, whatever its sign; a bound above it may lie below the mean as well.
TEST_F(CalibDialog, OnlyTheOffsetBelowTheMeanLosesItsSign)
{
    Run([](HWND dialog) {
        OperateText(dialog, 1205, "-350");
        OperateText(dialog, 1206, "-450");
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(CalSettings.MinOffset, 350);
    EXPECT_EQ(CalSettings.MaxOffset, -450);
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "MinOffset"), "350");
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "MaxOffset"), "-450");
}

TEST_F(CalibDialog, OkStoresAndWritesWhatWasEntered)
{
    Run([](HWND dialog) {
        OperateCheck(dialog, 1214, true);
        OperateCheck(dialog, 1208, false);
        OperateText(dialog, 1216, "48");
        OperateText(dialog, 1220, "0.5");
        OperateText(dialog, 1205, "-350");
        OperateText(dialog, 1206, "450");
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(CalSettings.ChosenType, 1);
    EXPECT_EQ(CalSettings.NumSources, 1);
    EXPECT_EQ(ReplaceNoisy, 0);
    EXPECT_EQ(CalSettings.NumFrames, 48U);
    EXPECT_EQ(CalSettings.GainAcceptanceRange, 0.5F);
    EXPECT_EQ(CalSettings.MinOffset, 350) << "its magnitude";
    EXPECT_EQ(CalSettings.MaxOffset, 450);
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "NumFrames"), "48");
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "GainAcceptanceRange"), "0.500000");
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "MinOffset"), "350");
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "MaxOffset"), "450");
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "AllowedNoiseLevel"), "9.000000");
    EXPECT_EQ(KeyOf(IniFilePath, "Display", "SubstBadPixels"), "1");
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "SubstBadPixels"), "missing");
    EXPECT_EQ(StatusText, " Use Alt + underlined menu item or trackball to select menu item");
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(CalibDialog, OkStoresThatNothingIsReplaced)
{
    Run([](HWND dialog) {
        OperateCheck(dialog, 1306, false);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(SubstBadPixels, 0);
    EXPECT_EQ(ReplaceNoisy, 0);
    EXPECT_EQ(KeyOf(IniFilePath, "Display", "SubstBadPixels"), "0");
}

struct Entry {
    const char* name;
    int edit;
    const char* text;
    const char* message;  // null: it passes
    const char* shownAgain;
};

class CalibEntry : public CalibDialog, public testing::WithParamInterface<Entry> {};

TEST_P(CalibEntry, IsHeldAgainstItsLimits)
{
    const Entry entry = GetParam();
    Run(
        [entry](HWND dialog) {
            OperateCheck(dialog, 1214, true);
            OperateText(dialog, entry.edit, entry.text);
            OperatePress(dialog, kIdOk);
        },
        [entry](HWND dialog) {
            if (!entry.message) return;
            ASSERT_TRUE(dialog) << "it stays open";
            EXPECT_EQ(GetDlgItemText(dialog, entry.edit), entry.shownAgain);
            EXPECT_EQ(FocusedDlgItem(dialog), entry.edit);
            EXPECT_EQ(CalSettings.ChosenType, 1) << "stored before the checks";
        });
    EXPECT_EQ(result, entry.message ? 0 : 1);
    if (!entry.message) {
        EXPECT_THAT(op->Boxes(), IsEmpty());
        return;
    }
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, entry.message);
    EXPECT_EQ(op->Boxes()[0].caption, "Data Entry Error!");
    EXPECT_THAT(op->Texts("beep", "sound"), testing::Not(IsEmpty()));
    EXPECT_EQ(KeyOf(IniFilePath, "Calibration", "NumFrames"), "missing");
}

constexpr const char* kBelow = "Invalid offset acceptance value below mean.";
constexpr const char* kAbove = "Invalid offset acceptance level above mean.";
constexpr const char* kNoise = "Allowed noise level must be between 0.0 & 2047.0";
constexpr const char* kGain = "Allowed gain acceptance value must be between 0.0 & 1.0";
constexpr const char* kFrames = "Allowed number of frames must be between 1 & 999";

INSTANTIATE_TEST_SUITE_P(
    Fields, CalibEntry,
    testing::Values(
        Entry{"BelowNoNumber", 1205, "few", kBelow, "400"}, Entry{"BelowEmpty", 1205, "", kBelow, "400"},
        Entry{"BelowSmallest", 1205, "-2147483648", kBelow, "400"}, Entry{"BelowZero", 1205, "0", nullptr, ""},
        Entry{"AboveNoNumber", 1206, "x", kAbove, "400"}, Entry{"AboveLarge", 1206, "99999", nullptr, ""},
        Entry{"NoiseNegative", 1211, "-0.01", kNoise, "9.00"}, Entry{"NoiseTooLarge", 1211, "2047.1", kNoise, "9.00"},
        Entry{"NoiseNotANumber", 1211, "nan", kNoise, "9.00"}, Entry{"NoiseLargest", 1211, "2047.0", nullptr, ""},
        Entry{"NoiseZero", 1211, "0.0", nullptr, ""}, Entry{"GainNegative", 1220, "-1", kGain, "0.220"},
        Entry{"GainTooLarge", 1220, "1.61", kGain, "0.220"}, Entry{"GainBeyondItsWords", 1220, "1.6", nullptr, ""},
        Entry{"GainZero", 1220, "0", nullptr, ""}, Entry{"FramesNegative", 1216, "-1", kFrames, "30"},
        Entry{"FramesTooMany", 1216, "1000", kFrames, "30"}, Entry{"FramesNoNumber", 1216, "all", kFrames, "30"},
        Entry{"FramesMost", 1216, "999", nullptr, ""}, Entry{"FramesNonePasses", 1216, "0", nullptr, ""}),
    [](const auto& entry) { return std::string(entry.param.name); });

TEST_F(CalibDialog, TheFirstFieldThatFailsIsTheOneThatIsTold)
{
    Run([](HWND dialog) {
        for (const int edit : {1205, 1206, 1211, 1220, 1216}) OperateText(dialog, edit, "x");
        OperatePress(dialog, kIdOk);
    });
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, kBelow);
    EXPECT_EQ(CalSettings.MinOffset, 400);
}

TEST_F(CalibDialog, AFrameCountOfOneClearsReplaceNoisyWhateverTheBoxSays)
{
    Run([](HWND dialog) {
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1208));
        OperateText(dialog, 1216, "1");
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(ReplaceNoisy, 0);
}

TEST_F(CalibDialog, ABoardWithoutFramesInMemoryIsSlowerAndTold)
{
    write::frames.GrabberPresent = 1;
    write::camera.ActiveConfig.BufferCapture = 0;
    Run([](HWND dialog) { OperatePress(dialog, kIdOk); });
    EXPECT_EQ(result, 1);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Camera driver with image buffer board option calibrates faster!");
    EXPECT_EQ(op->Boxes()[0].caption, "Camera driver warning!");
    write::camera.ActiveConfig.BufferCapture = 1;
    Run([](HWND dialog) { OperatePress(dialog, kIdOk); });
    EXPECT_THAT(op->Boxes(), SizeIs(1));
}

TEST_F(CalibDialog, APreviousCalibrationIsLoadedFromWithin)
{
    PutSet(InDirectory("warm.cal"));
    op->Do([] { OperatePress(DialogInFront(), 1222); });
    op->Do([this] { NameFile(InDirectory("warm.cal")); });
    EXPECT_EQ(RunCalibrationDialog(hWndMain), 0) << "no run starts";
    EXPECT_EQ(CalType, 2);
    EXPECT_FALSE(DialogInFront());
}

TEST_F(CalibDialog, ALoadThatFailsOrIsCancelledStays)
{
    PutSet(InDirectory("warm.cal"));
    std::filesystem::remove(InDirectory("warm.gai"));
    op->Do([] { OperatePress(DialogInFront(), 1222); });
    op->Do([] { CancelNaming(); });
    op->Do([] { OperatePress(DialogInFront(), 1222); });
    op->Do([this] { NameFile(InDirectory("warm.cal")); });
    op->Do([] {
        ASSERT_TRUE(DialogInFront());
        EXPECT_EQ(StatusText, kHint) << "not what the load was at when it ended";
        OperatePress(DialogInFront(), kIdCancel);
    });
    EXPECT_EQ(RunCalibrationDialog(hWndMain), 0);
    EXPECT_EQ(CalType, 0);
    EXPECT_THAT(op->Boxes(), SizeIs(1));
}

TEST_F(CalibDialog, OneThatCantBeOpenedIsTold)
{
    SetFault("load dialog CALIB", true);
    EXPECT_EQ(RunCalibrationDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
    EXPECT_EQ(op->Boxes()[0].caption, "System Error");
}

}  // namespace
}  // namespace kelvo
