// What a run that doesn't come to its end leaves: the calibration that was in force, and what the CALIB dialog stored
// of it.
#include "calib/calibration_commands.h"
#include "calib/calibration_dialog.h"
#include "calib/calibration_set.h"
#include "calib/run_fixture.h"
#include "grabber/copm2.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "state/frame_state.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/video.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kReadError = "icp_read_area() Error";
constexpr const char* kTwoPointFailed = "Video Data Acquisition Failed, Hardware error!";
constexpr const char* kOnePointFailed = "Video Data Acquisition Failed, Hardware error";

// A set in force whose list of bad detectors is its own; the limits of the next run stand in kelvo.ini already.
class UndoneRun : public CalibrationRun {
  protected:
    void SetUp() override
    {
        CalibrationRun::SetUp();
        write::camera.ActiveConfig.BufferCapture = 1;
        std::string text(kCalText);
        text.replace(text.find("BadDetFile="), 11, "BadDetFile=warm.bad");
        text.replace(text.find("CalType=2"), 9,
                     "CalType=2\nNumFrames=2\nGainAcceptanceRange=0.220000\nMinOffset=400\nMaxOffset=400\n"
                     "AllowedNoiseLevel=9.000000");
        PutSet(InDirectory("warm.cal"), text);
        PutFile(InDirectory("warm.bad"), "   0,   1\n");
        PutFile(InDirectory("Perm.bad"), "   1,   3\n");
        ASSERT_EQ(LoadCalibration(hWndMain, InDirectory("warm.cal")), 1);
        ASSERT_THAT(op->Boxes(), IsEmpty());
    }
    // The CALIB dialog is in front: every choice of the set in force is made another one.
    void ChooseOthers(int type)
    {
        op->Do([type] {
            const HWND dialog = DialogInFront();
            ASSERT_TRUE(dialog);
            ASSERT_EQ(DialogName(dialog), "CALIB");
            OperateCheck(dialog, 1200, true);  // Perm.bad
            OperateCheck(dialog, 1208, false);
            OperateCheck(dialog, type == 1 ? 1214 : 1213, true);
            OperatePress(dialog, kIdOk);
            EXPECT_EQ(CalSettings.BadDetFile, DirectoryOf(IniFilePath) + "Perm.bad");
            EXPECT_EQ(ReplaceNoisy, 0);
            EXPECT_EQ(CalSettings.ChosenType, type);
        });
    }
    void ChooseNoReplacement(int type)
    {
        op->Do([type] {
            const HWND dialog = DialogInFront();
            OperateCheck(dialog, 1306, false);
            OperateCheck(dialog, type == 1 ? 1214 : 1213, true);
            OperatePress(dialog, kIdOk);
            EXPECT_EQ(SubstBadPixels, 0);
        });
    }
    // From the next read of the board on that many go well, and then none.
    static void FailReadsAfter(int reads)
    {
        recordingBoard.reads = 0;
        recordingBoard.onRead = [reads](std::int32_t n) {
            if (n > reads) recordingBoard.answers["icp_read_area"] = -1;
        };
    }
    static void MendBoard()
    {
        recordingBoard.answers.clear();
        recordingBoard.onRead = nullptr;
    }
};

// --- Given up at a source -------------------------------------------------------------------------------------------

TEST_F(UndoneRun, ACancelAtTheFirstSourceLeavesAllAsItWas)
{
    for (const int type : {1, 2}) {
        SCOPED_TRACE(type);
        const std::string before = Everything();
        ChooseOthers(type);
        Press(kIdCancel);
        NewCalibration();
        EXPECT_EQ(Everything(), before);
        ChooseNoReplacement(type);
        Press(kIdCancel);
        NewCalibration();
        EXPECT_EQ(Everything(), before);
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(UndoneRun, ASourceDialogThatCantBeShownIsACancel)
{
    const std::string before = Everything();
    SetFault("load dialog CAL_COLD", true);
    ChooseOthers(1);
    NewCalibration();
    SetFault("load dialog CAL_COLD", false);
    EXPECT_THAT(BoxTexts(), ElementsAre("Unable to display dialog"));
    EXPECT_EQ(Everything(), before);
}

// The key that wasn't there is gone again.
TEST_F(UndoneRun, ACancelTakesTheKeyBackThatOkAdded)
{
    DeleteProfileKey("Display", "SubstBadPixels", IniFilePath);
    const std::string before = Everything();
    ChooseOthers(2);
    Press(kIdCancel);
    NewCalibration();
    EXPECT_EQ(Everything(), before);
}

TEST_F(UndoneRun, ACancelAtTheHighSourceTakesTheChoicesBackToo)
{
    const std::string list = CalSettings.BadDetFile;
    FlushProfiles();
    const std::string ini = FileContents(IniFilePath);
    ChooseNoReplacement(2);
    AtLow({kLow});
    op->Do([] {
        EXPECT_FALSE(GetMenuItem(hWndMain, kCmdReplaceBadPixels)->checked);
        OperatePress(DialogInFront(), kIdCancel);
    });
    NewCalibration();
    ExpectUnity();
    EXPECT_EQ(CalSettings.BadDetFile, list);
    EXPECT_EQ(SubstBadPixels, 1);
    EXPECT_EQ(ReplaceNoisy, 1);
    EXPECT_EQ(CalSettings.NumSources, 2);
    EXPECT_EQ(CalSettings.ChosenType, 2);
    EXPECT_TRUE(GetMenuItem(hWndMain, kCmdReplaceBadPixels)->checked);
    FlushProfiles();
    EXPECT_EQ(FileContents(IniFilePath), ini);
    EXPECT_EQ(FileContents(InDirectory("Perm.bad")), "   1,   3\n");
}

TEST_F(UndoneRun, ACalibrationThatIsNotAgreedToLeavesAllAsItWas)
{
    const std::string before = Everything();
    ChooseOthers(1);
    CalibrateByDialog([] { return false; });
    EXPECT_EQ(Everything(), before);
}

// --- A dialog that is cancelled after an Ok that was refused --------------------------------------------------------

TEST_F(UndoneRun, ACancelAfterARefusedOkLeavesAllAsItWas)
{
    const std::string before = Everything();
    op->Do([] {
        const HWND dialog = DialogInFront();
        OperateCheck(dialog, 1200, true);
        OperateCheck(dialog, 1208, false);
        OperateCheck(dialog, 1214, true);
        OperateText(dialog, 1216, "1000");
        OperatePress(dialog, kIdOk);
    });
    op->Do([] {
        EXPECT_EQ(CalSettings.ChosenType, 1) << "stored before the fields are looked at";
        OperatePress(DialogInFront(), kIdCancel);
    });
    EXPECT_EQ(RunCalibrationDialog(hWndMain), 0);
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(BoxTexts(), ElementsAre("Allowed number of frames must be between 1 & 999"));
}

TEST_F(UndoneRun, ALoadAfterARefusedOkTakesTheListOfTheSet)
{
    op->Do([] {
        const HWND dialog = DialogInFront();
        OperateCheck(dialog, 1200, true);
        OperateCheck(dialog, 1214, true);
        OperateText(dialog, 1216, "x");
        OperatePress(dialog, kIdOk);
    });
    op->Do([] { OperatePress(DialogInFront(), 1222); });
    op->Do([path = InDirectory("warm.cal")] {
        ASSERT_EQ(DialogName(DialogInFront()), "CAL_OPEN");
        OperateText(DialogInFront(), 1460, path);
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(RunCalibrationDialog(hWndMain), 0);
    EXPECT_FALSE(DialogInFront());
    EXPECT_EQ(CalSettings.BadDetFile, InDirectory("warm.bad"));
    EXPECT_EQ(CalSettings.ChosenType, 2);
    EXPECT_EQ(CalType, 2);
}

// --- No frames ------------------------------------------------------------------------------------------------------

TEST_F(UndoneRun, WithoutFramesOfTheLowSourceTheFormerCalibrationIsBack)
{
    const std::string before = Everything();
    for (const int reads : {0, 1}) {
        SCOPED_TRACE(reads);
        ChooseOthers(2);
        op->Do([reads] {
            SetBoardFrames({kLow});
            OperateText(DialogInFront(), 1224, "100");
            OperateText(DialogInFront(), 1225, "0.5");
            FailReadsAfter(reads);
            OperatePress(DialogInFront(), kIdOk);
        });
        NewCalibration();
        MendBoard();
        EXPECT_EQ(Everything(), before);
    }
    EXPECT_THAT(BoxTexts(), ElementsAre(kReadError, kTwoPointFailed, kReadError, kTwoPointFailed));
    EXPECT_EQ(op->Boxes()[1].caption, "Kelvo Calibration Error!");
}

// The frames of the low source would pass for those of the high one.
TEST_F(UndoneRun, WithoutFramesOfTheHighSourceTheFormerCalibrationIsBack)
{
    const std::string before = Everything();
    AtLow({kLow}, "20");
    AtHigh({kHigh}, "25", [] { FailReadsAfter(1); });
    EXPECT_EQ(TwoPoint(), 0);
    MendBoard();
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(BoxTexts(), ElementsAre(kReadError, kTwoPointFailed));
    EXPECT_FALSE(Stands("Last.cal"));
}

// Four host frames: the third batch fails after eight frames of the source.
TEST_F(UndoneRun, ALaterBatchThatFailsEndsTheRunToo)
{
    write::calSet.CalSettings.NumFrames = 12;
    const std::string before = Everything();
    AtLow({kLow});
    op->Do([] {
        SetBoardFrames({kHigh});
        FailReadsAfter(9);
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(TwoPoint(), 0);
    MendBoard();
    EXPECT_EQ(Everything(), before);
}

TEST_F(UndoneRun, AnUpdateWithoutFramesPutsTheFormerCalibrationBack)
{
    const std::string before = Everything();
    AtLow({kLow}, "100");
    FailReadsAfter(0);
    UpdateCalibration();
    MendBoard();
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(BoxTexts(), ElementsAre(kReadError, kOnePointFailed));
    EXPECT_EQ(op->Boxes()[1].caption, "GetCalibData Error");
}

TEST_F(UndoneRun, ANewOnePointRunWithoutFramesPutsTheFormerCalibrationBackFromMemory)
{
    const std::string before = Everything();
    std::filesystem::rename(InDirectory("warm.gai"), InDirectory("elsewhere.gai"));
    ChooseOthers(1);
    op->Do([] {
        FailReadsAfter(1);
        OperatePress(DialogInFront(), kIdOk);
    });
    NewCalibration();
    MendBoard();
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(BoxTexts(), ElementsAre(kReadError, kOnePointFailed));
}

// A board whose blanks run out hands out what was there before.
TEST_F(UndoneRun, FramesWithoutABlankAreNoneOfThisSource)
{
    const std::string before = Everything();
    op->Do([] {
        recordingBoard.answers["icp_wait_vb"] = kBoardTimeout;
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(TwoPoint(), 0);
    MendBoard();
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(BoxTexts(), ElementsAre(kTwoPointFailed));
}

TEST_F(UndoneRun, WithoutFramesAndWithoutAFormerCalibrationThePlainStateStands)
{
    write::cal.CalType = 0;
    AtLow({kLow});
    FailReadsAfter(0);
    EXPECT_EQ(TwoPoint(), 0);
    MendBoard();
    ExpectUnity();
}

// --- One point ------------------------------------------------------------------------------------------------------

TEST_F(UndoneRun, ACancelledNewOnePointRunReloadsNothing)
{
    SetBoardFrames({kHigh});
    RefreshLiveFrame();
    ToggleFreeze(write::frames.LiveVideo);
    WritePrivateProfileString("Setup", "Mark", "changed since", IniFilePath);
    std::filesystem::remove(InDirectory("warm.gai"));
    const std::string before = Everything();
    const Frame frozen = LiveFrame;
    const std::size_t told = op->Texts("status", "text").size();
    ChooseOthers(1);
    Press(kIdCancel);
    NewCalibration();
    EXPECT_EQ(Everything(), before);
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_EQ(LiveFrame, frozen);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    std::vector<std::string> texts = op->Texts("status", "text");
    texts.erase(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(told));
    EXPECT_THAT(texts, Not(Contains("Loading gain list...")));
}

// One that has begun its work and failed loads the former set as its files have it.
TEST_F(UndoneRun, ANewOnePointRunThatFailsLoadsTheFormerSetAgain)
{
    WritePrivateProfileString("Setup", "Mark", "changed since", IniFilePath);
    op->Do([] {
        OperateCheck(DialogInFront(), 1214, true);
        OperateText(DialogInFront(), 1205, "0");
        OperateText(DialogInFront(), 1206, "0");
        OperatePress(DialogInFront(), kIdOk);
    });
    AtLow({kLow});
    NewCalibration();
    EXPECT_THAT(BoxTexts(), ElementsAre("Failure to find good pixels!"));
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(CalSettings.CalFile, InDirectory("warm.cal"));
    EXPECT_EQ(CalSettings.BadDetFile, InDirectory("warm.bad"));
    EXPECT_EQ(KeyOf(IniFilePath, "Setup", "Mark"), "of the set");
    EXPECT_THAT(GainList, ElementsAre(1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F));
}

}  // namespace
}  // namespace kelvo
