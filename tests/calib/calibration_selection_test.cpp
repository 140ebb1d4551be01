// Choosing the .cal file to load or to save as.
#include "calib/calibration_selection.h"

#include "platform/dialog.h"
#include "platform/directory.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/cal_settings.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/windows.h"
#include "support/calibration_fixture.h"
#include "support/name_file.h"
#include "ui/file_lists.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;

class Selection : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        write::camera.ActiveConfig.Description = "InSb of the bench";
        PutSet(InDirectory("warm.cal"));
        PutSet(InDirectory("other.cal"), "[Calibration]\nDriverNumber=3\n");
        PutSet(InDirectory("plain.cal"), "[Setup]\nActiveCamera=2\n");
    }
    int Open(std::initializer_list<std::string> names) { return Choose(ChooseCalibrationToOpen, names); }
    int Save(std::initializer_list<std::string> names) { return Choose(ChooseCalibrationToSave, names); }

    // Each name is tried while the dialog is open; what stays open is cancelled.
    int Choose(int (*choose)(HWND), std::initializer_list<std::string> names)
    {
        int result = -1;
        Work([&] { result = choose(hWndMain); },
             [names = std::vector<std::string>(names)](HWND dialog) {
                 for (const std::string& name : names) {
                     if (DialogInFront() != dialog) return;
                     OperateText(dialog, kNameToFile, name);
                     OperatePress(dialog, kIdOk);
                 }
             });
        return result;
    }
    static std::vector<std::string> Items(HWND dialog, int id)
    {
        std::vector<std::string> items;
        for (int i = 0; i < ListCount(dialog, id); ++i) items.push_back(ListItemText(dialog, id, i));
        return items;
    }
};

TEST_F(Selection, ToOpenShowsTheSetsBesideTheSettings)
{
    std::filesystem::create_directories(InDirectory("older"));
    write::camera.ActiveConfig.Description = "320 x 256";
    const std::string before = CurrentDirectory();
    Work([] { EXPECT_EQ(ChooseCalibrationToOpen(hWndMain), 0); },
         [this](HWND dialog) {
             EXPECT_EQ(DialogName(dialog), "CAL_OPEN");
             EXPECT_EQ(GetWindowText(dialog), "Load Calibration");
             EXPECT_EQ(GetDlgItemText(dialog, kNameToFile), "*.cal");
             EXPECT_EQ(GetDlgItemText(dialog, kDirectoryOfFiles), directory.Path());
             EXPECT_THAT(Items(dialog, kFilesThatFit), ElementsAre("other.cal", "plain.cal", "warm.cal"));
             EXPECT_THAT(Items(dialog, kDirectoriesBelow), Contains("[older]"));
             EXPECT_EQ(GetDlgItemText(dialog, 1608), "320 x 256");
             EXPECT_TRUE(IsDlgButtonChecked(dialog, 1472));
             EXPECT_FALSE(IsDlgButtonChecked(dialog, 1484));
         });
    EXPECT_EQ(CurrentDirectory(), before);
}

TEST_F(Selection, TheOtherRadioListsEveryFile)
{
    Work([] { ChooseCalibrationToOpen(hWndMain); },
         [](HWND dialog) {
             OperateCheck(dialog, 1484, true);
             EXPECT_EQ(GetDlgItemText(dialog, kNameToFile), "*.*");
             EXPECT_THAT(Items(dialog, kFilesThatFit), IsSupersetOf({"warm.cal", "warm.gai", "warm.off"}));
             OperateCheck(dialog, 1472, true);
             EXPECT_THAT(Items(dialog, kFilesThatFit), ElementsAre("other.cal", "plain.cal", "warm.cal"));
         });
}

TEST_F(Selection, APatternOrADirectoryInTheNameIsListed)
{
    std::filesystem::create_directories(InDirectory("older"));
    PutSet(InDirectory("older/winter.cal"));
    Work([] { EXPECT_EQ(ChooseCalibrationToOpen(hWndMain), 1); },
         [this](HWND dialog) {
             NameFile("w*.cal");
             EXPECT_THAT(Items(dialog, kFilesThatFit), ElementsAre("warm.cal"));
             NameFile("older");
             EXPECT_THAT(Items(dialog, kFilesThatFit), ElementsAre("winter.cal"));
             EXPECT_EQ(GetDlgItemText(dialog, kDirectoryOfFiles), InDirectory("older"));
             NameFile("../w*");
             EXPECT_THAT(Items(dialog, kFilesThatFit), Contains("warm.gai"));
             NameFile("older/winter.cal");
         });
    EXPECT_EQ(FilePathBuf, InDirectory("older/winter.cal")) << "whole, though the directory has changed back";
}

TEST_F(Selection, ADoubleClickOnAFileMeansOk)
{
    Work([] { EXPECT_EQ(ChooseCalibrationToOpen(hWndMain), 1); },
         [](HWND dialog) {
             OperatePick(dialog, kFilesThatFit, 2);
             EXPECT_EQ(GetDlgItemText(dialog, kNameToFile), "warm.cal");
             SendMessage(dialog, WM_COMMAND, MakeLong(kFilesThatFit, kDoubleClicked), 0);
         });
    EXPECT_EQ(FilePathBuf, InDirectory("warm.cal"));
}

TEST_F(Selection, ToOpenGivesTheWholePath)
{
    const std::string before = CurrentDirectory();
    EXPECT_EQ(Open({"warm.cal"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("warm.cal"));
    EXPECT_EQ(CurrentDirectory(), before);
}

TEST_F(Selection, ASetOfAnotherCameraIsToldAndTheSelectionStays)
{
    EXPECT_EQ(Open({"other.cal", "plain.cal", "warm.cal"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("warm.cal"));
    ASSERT_THAT(op->Boxes(), SizeIs(2)) << "one names another camera, one names none";
    for (const auto& box : op->Boxes()) {
        EXPECT_EQ(box.text, "The calibration file selected is not for this camera");
        EXPECT_EQ(box.caption, "Kelvo message");
    }
    EXPECT_THAT(op->Texts("beep", "sound"), SizeIs(2));
    EXPECT_THAT(op->Texts("dialog", "name"), ElementsAre("CAL_OPEN")) << "it never closed in between";
}

TEST_F(Selection, AFileThatIsNotThereKeepsItOpen)
{
    EXPECT_EQ(Open({"none.cal"}), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failed to open file: none.cal");
    EXPECT_THAT(op->Texts("beep", "sound"), SizeIs(1));
}

// Whose set it is isn't known then; a disk that fails but once gives it at the second reading.
TEST_F(Selection, AFileThatCantBeReadIsToldAsThatAndTheSelectionStays)
{
    Work([] { EXPECT_EQ(ChooseCalibrationToOpen(hWndMain), 1); },
         [](HWND dialog) {
             OperateText(dialog, kNameToFile, "warm.cal");
             SetFault("disk read", true);
             OperatePress(dialog, kIdOk);
             SetFault("disk read", false);
             ASSERT_EQ(DialogInFront(), dialog);
             OperatePress(dialog, kIdOk);
         });
    EXPECT_EQ(FilePathBuf, InDirectory("warm.cal"));
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failed to read file: warm.cal");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(op->Texts("beep", "sound"), SizeIs(1));
}

TEST_F(Selection, AFileThatCantBeReadOnceIsNoSetOfAnotherCamera)
{
    for (int n = 1; n < 20; ++n) {
        ForgetProfiles();
        SetFaultOnce("disk read", n);
        EXPECT_EQ(Open({"warm.cal"}), 1) << n;
        if (QuestionsUntilFault("disk read") != 0) break;
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_NE(QuestionsUntilFault("disk read"), 0) << "all readings have failed by then";
}

TEST_F(Selection, AnEmptyNameDoesNothing)
{
    EXPECT_EQ(Open({""}), 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(Selection, OneThatIsCancelledGivesTheStatusLineBack)
{
    StatusMessage("what stood there", 2);
    EXPECT_EQ(Open({}), 0);
    EXPECT_EQ(StatusText, "what stood there");
    EXPECT_EQ(StatusAlign, 2);
    EXPECT_EQ(op->Texts("status", "text").back(), "what stood there");
    EXPECT_THAT(op->Texts("status", "text"), testing::Contains(" Choose .CAL file to load for calibration"));
}

TEST_F(Selection, ToSaveWantsACalibration)
{
    write::cal.CalType = 0;
    EXPECT_EQ(ChooseCalibrationToSave(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "A calibration must be loaded\nin order to save it.");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo Message");
}

TEST_F(Selection, ToSaveAddsTheEndingToANameWithoutAPoint)
{
    write::cal.CalType = 2;
    EXPECT_EQ(Save({"cool"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("cool.cal"));
    EXPECT_THAT(op->Texts("dialog", "text"), ElementsAre("Save Calibration"));
}

TEST_F(Selection, ToSaveTakesNoOtherEnding)
{
    write::cal.CalType = 2;
    EXPECT_EQ(Save({"cool.gai", "warm.img", "cool.CAL"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("cool.CAL"));
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text, "The name of a calibration ends in .cal:\n" + InDirectory("cool.gai"));
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(op->Boxes()[1].text, "The name of a calibration ends in .cal:\n" + InDirectory("warm.img"));
}

TEST_F(Selection, ToSaveWantsADirectoryThatIsThere)
{
    write::cal.CalType = 2;
    EXPECT_EQ(Save({"no such place/cool"}), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, InDirectory("no such place/cool.cal") + "\nPath does not exist.");
}

TEST_F(Selection, ToSaveAsksBeforeASetIsReplaced)
{
    write::cal.CalType = 1;
    op->Answer({Button::kCancel, Button::kOk});
    EXPECT_EQ(Save({"warm.cal", "other"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("other.cal"));
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text, "File already exists, replace it?");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("ok", "cancel"));
    EXPECT_EQ(op->Boxes()[0].defaultButton, "cancel");
    EXPECT_THAT(op->Texts("dialog", "name"), ElementsAre("CAL_SAVE")) << "Cancel returns to it";
}

TEST_F(Selection, OneThatCantBeOpenedIsTold)
{
    write::cal.CalType = 2;
    SetFault("load dialog CAL_OPEN", true);
    SetFault("load dialog CAL_SAVE", true);
    EXPECT_EQ(ChooseCalibrationToOpen(hWndMain), 0);
    EXPECT_EQ(ChooseCalibrationToSave(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    for (const auto& box : op->Boxes()) {
        EXPECT_EQ(box.text, "Unable to display dialog");
        EXPECT_EQ(box.caption, "System Error");
    }
}

}  // namespace
}  // namespace kelvo
