// Choosing the .cal file to load or to save as.
#include "calib/cal_settings.h"
#include "calib/cal_state.h"
#include "calib/calibration.h"
#include "calib/calibration_fixture.h"
#include "config/camera_config.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/profile.h"
#include "shell/status.h"
#include "shell/windows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class Selection : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        ActiveConfig.Description = "InSb of the bench";
        PutSet(InDirectory("warm.cal"));
        PutSet(InDirectory("other.cal"), "[Calibration]\nDriverNumber=3\n");
        PutSet(InDirectory("plain.cal"), "[Setup]\nActiveCamera=2\n");
    }
    int Open(std::initializer_list<std::string> choices) { return Choose(ChooseCalibrationToOpen, choices); }
    int Save(std::initializer_list<std::string> choices) { return Choose(ChooseCalibrationToSave, choices); }

    // Each choice is tried while the selection is open; what stays open is cancelled.
    int Choose(int (*choose)(HWND), std::initializer_list<std::string> choices)
    {
        for (const std::string& choice : choices) op->Do([choice] { ChooseFiles({choice}); });
        op->Do([] { CancelFileDialog(); });
        const int result = choose(hWndMain);
        op->Do([] {});
        return result;
    }
};

TEST_F(Selection, ToOpenShowsTheSetsBesideTheSettings)
{
    op->Do([this] {
        const auto front = FileDialogInFront();
        ASSERT_TRUE(front);
        EXPECT_EQ(front->title, "Load Calibration");
        EXPECT_THAT(front->filters, ElementsAre("*.cal", "*.*"));
        EXPECT_EQ(front->directory, directory.Path());
        EXPECT_EQ(front->note, "InSb of the bench") << "whose sets these are";
        CancelFileDialog();
    });
    EXPECT_EQ(ChooseCalibrationToOpen(hWndMain), 0);
}

TEST_F(Selection, ToOpenGivesTheWholePath)
{
    const std::string before = std::filesystem::current_path().string();
    EXPECT_EQ(Open({"warm.cal"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("warm.cal"));
    EXPECT_EQ(std::filesystem::current_path().string(), before);
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
    EXPECT_EQ(op->Texts("file", "title").size(), 1U) << "it never closed in between";
}

TEST_F(Selection, AFileThatIsNotThereKeepsItOpen)
{
    EXPECT_EQ(Open({"none.cal"}), 0);
    EXPECT_THAT(op->Boxes(), SizeIs(1));
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
    CalType = 0;
    EXPECT_EQ(ChooseCalibrationToSave(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "A calibration must be loaded\nin order to save it.");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo Message");
}

TEST_F(Selection, ToSaveAddsTheEndingToANameWithoutAPoint)
{
    CalType = 2;
    EXPECT_EQ(Save({"cool"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("cool.cal"));
    EXPECT_THAT(op->Texts("file", "title"), ElementsAre("Save Calibration"));
}

TEST_F(Selection, ToSaveTakesNoOtherEnding)
{
    CalType = 2;
    EXPECT_EQ(Save({"cool.gai", "warm.img", "cool.CAL"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("cool.CAL"));
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text, "The name of a calibration ends in .cal:\n" + InDirectory("cool.gai"));
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(op->Boxes()[1].text, "The name of a calibration ends in .cal:\n" + InDirectory("warm.img"));
}

TEST_F(Selection, AMissingOneIsNamed)
{
    EXPECT_EQ(Open({"none.cal"}), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_THAT(op->Boxes()[0].text, testing::StartsWith(InDirectory("none.cal") + "\nFile not found."));
    EXPECT_EQ(op->Boxes()[0].caption, "Load Calibration");
}

TEST_F(Selection, APatternListsAndADirectoryIsEntered)
{
    std::filesystem::create_directory(InDirectory("sets"));
    PutSet(InDirectory("sets/there.cal"));
    EXPECT_EQ(Open({"*.*", "sets", "there.cal"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("sets/there.cal"));
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(Selection, ToSaveAsksBeforeASetIsReplaced)
{
    CalType = 1;
    op->Answer({Button::kCancel, Button::kOk});
    EXPECT_EQ(Save({"warm.cal", "other"}), 1);
    EXPECT_EQ(FilePathBuf, InDirectory("other.cal"));
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text, "File already exists, replace it?");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("ok", "cancel"));
    EXPECT_EQ(op->Boxes()[0].defaultButton, "cancel");
    EXPECT_EQ(op->Texts("file", "title").size(), 1U) << "Cancel returns to the selection";
}

TEST_F(Selection, OneThatCantBeOpenedIsTold)
{
    CalType = 2;
    SetFault("file dialog", true);
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
