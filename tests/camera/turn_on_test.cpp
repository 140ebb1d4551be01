// The camera's main switch, worked as an operator works it.
#include "camera/turn_on.h"

#include "head/section_check.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/menu.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/qt_dialog.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "resources/menu.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "support/head_fixture.h"
#include "support/name_file.h"
#include "support/recording_board.h"
#include "ui/status.h"

#include <QPushButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::size_t kTurnOnFrames = 19;  // of an InSb head
constexpr std::size_t kTurnOffFrames = 10;

constexpr const char* kStartHint = " Use Alt + underlined menu item or trackball to select menu item";
constexpr const char* kChooseHint = " Choose one of the Kelvo turn-on procedures or Cancel";
constexpr const char* kGoingOnHint = " Choose OK to continue with Kelvo turn-on procedure";

class TurnOnTest : public HeadTest {
  protected:
    void SetUp() override
    {
        HeadTest::SetUp();
        RegisterQuietBoard();
        WritePrivateProfileString("Board", "Board", "recording", DefaultDir + "/platform.ini");
        SetMenu(hWndMain, MainMenu());
        write::camera.numBufFrames = 0;
        PutSection(std::string(kInSbSection) + "numBufFrames=0\n");
        IdentifyAsInSb();
        head->AnswerTo(kFrameSize, Answer(kFrameSize.begin(), kFrameSize.end()));
    }

    // A whole set of this camera, every list of zeros, and no bad detectors.
    static void PutCalibration(const std::string& calPath)
    {
        PutFile(calPath,
                "[Setup]\nActiveCamera=2\n[Calibration]\nDriverNumber=2\nGainFile=zero.gai\nOffsetFile=zero.off\n"
                "DecomFile=zero.dcm\nBadDetFile=\n");
        constexpr std::size_t kPixels = 320 * 256;
        PutFile(DefaultDir + "/zero.gai", std::string(kPixels * 4, '\0'));
        PutFile(DefaultDir + "/zero.off", std::string(kPixels * 2, '\0'));
        PutFile(DefaultDir + "/zero.dcm", std::string(kPixels * 4, '\0'));
    }

    void FailHead() { head->AnswerTo(kFrameSize, kRefusal); }
    static std::string TurnOnItem() { return GetMenuItem(hWndMain, kCmdTurnOn)->text; }
    std::vector<std::string> StatusTexts() const { return op->Texts("status", "text"); }

    // The path that TurnCameraOn took from its argument: of a file that isn't there the box names it. Empty: none.
    std::string CalibrationTaken(const char* argument)
    {
        const std::size_t before = op->Boxes().size();
        const int result = TurnCameraOn(argument, 1);
        EXPECT_EQ(CameraOn, 1) << "on, whatever becomes of the calibration";
        const auto boxes = op->Boxes();
        EXPECT_EQ(result, boxes.size() == before ? 1 : 0);
        if (boxes.size() == before) return {};
        const std::string text = boxes.back().text;
        const std::string words = "Failed to get ActiveCamera from calibration file:\n";
        EXPECT_THAT(text, HasSubstr(words));
        return text.substr(words.size());
    }

    static constexpr CommFrame kFrameSize = {0x50, 0x01, 0x40, 0x50};
};

using TurningOn = TurnOnTest;

TEST_F(TurningOn, ProgramsTheHeadAndStartsLiveVideo)
{
    write::cal.CalType = 2;
    EXPECT_EQ(TurnCameraOn("", 1), 1);
    EXPECT_EQ(CameraOn, 1);
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_EQ(GrabberPresent, 1);
    EXPECT_EQ(CalType, 0);
    EXPECT_EQ(TurnOnItem(), "&Turn Vantir off");
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_EQ(CommPortOpen, 1) << "the link stays open";
    EXPECT_THAT(head->Taken(), SizeIs(kTurnOnFrames));
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("init", "grab"));
    EXPECT_THAT(StatusTexts(),
                ElementsAre("1 Ch. 14-bit QVF119/125 InSb Camera Head found", "Freeze image...", "Set Matrox sync...",
                            "Set LUT bar at side of image...", kStartHint, "  Setting Camera Head timing",
                            "  Initializing Camera Head DACs", "  Enabling Camera Head biases and DACs",
                            "  Turning on Camera Head clocks", "  Setting Camera Head FPA serial command word"));
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(TurningOn, ACameraThatIsOnIsFrozenBeforeTheHeadIsAsked)
{
    TurnCameraOn("", 1);
    TakeBoardCalls();
    EXPECT_EQ(TurnCameraOn("", 1), 1);
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("freeze", "init", "grab"));
}

TEST_F(TurningOn, AHeadThatFailsLeavesTheCameraOff)
{
    FailHead();
    EXPECT_EQ(TurnCameraOn("", 1), 0);
    EXPECT_EQ(CameraOn, 0);
    EXPECT_THAT(TakeBoardCalls(), IsEmpty());
    EXPECT_EQ(CurrentPointer(), Pointer::kHourglass);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to communicate with camera head!");
    EXPECT_EQ(LiveVideo, 0);
}

// The section is read at each turn-on: what was made for the frames of an earlier one goes, as after a change of
// camera.
TEST_F(TurningOn, AFrameSizeThatChangedInTheFileDropsTheListsOfTheOldOne)
{
    write::camera.ActiveConfig.Hroi = 640;
    write::camera.ActiveConfig.Vroi = 512;
    write::cal.DecomList.assign(640 * 512, 7);
    write::cal.GainList.assign(640 * 512, 1.0F);
    PutFile(DefaultDir + "/DECOM.TMP", "of 640 x 512");
    EXPECT_EQ(TurnCameraOn("", 1), 1);
    EXPECT_EQ(ActiveConfig.Hroi, 320);
    EXPECT_THAT(GainList, IsEmpty());
    EXPECT_THAT(DecomList, IsEmpty());
    EXPECT_FALSE(FileExists(DefaultDir + "/DECOM.TMP"));
    EXPECT_THAT(RawFrame, SizeIs(320 * 256));
}

TEST_F(TurningOn, APortThatChangedInTheFileIsTheOneThatIsAsked)
{
    TurnCameraOn("", 1);
    head->Taken();
    ASSERT_EQ(CommPortOpen, 1);
    WritePrivateProfileString("Camera.2", "nCommPort", "5", CameraFilePath);
    EXPECT_EQ(TurnCameraOn("", 1), 0) << "no head is wired to that port";
    EXPECT_THAT(head->Taken(), IsEmpty()) << "the old one hears nothing";
    EXPECT_EQ(CommPortOpen, 0);
}

TEST_F(TurningOn, ABoardThatFailsIsNoticedLater)
{
    recordingBoard.answers["itx_load_cnf"] = -1;
    EXPECT_EQ(TurnCameraOn("", 1), 1);
    EXPECT_EQ(CameraOn, 1);
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("grab"));
}

TEST_F(TurningOn, ASectionWhoseSizeChangedOnDiskTakesNothingOfTheOldSizeAlong)
{
    write::camera.ActiveConfig.Hroi = 8;
    write::camera.ActiveConfig.Vroi = 8;
    write::cal.OffsetList.assign(64, 1);
    write::cal.GainList.assign(64, 1);
    write::cal.DecomList.assign(64, 0);
    ASSERT_EQ(TurnCameraOn("", 1), 1);
    ASSERT_NE(ActiveConfig.Hroi, 8) << "as the section says";
    EXPECT_THAT(OffsetList, IsEmpty());
    EXPECT_THAT(GainList, IsEmpty());
    EXPECT_THAT(DecomList, IsEmpty());
    EXPECT_THAT(RawFrame, SizeIs(static_cast<std::size_t>(ActiveConfig.Hroi * ActiveConfig.Vroi)));
}

TEST_F(TurningOn, ACalibrationThatIsThereIsLoaded)
{
    PutCalibration(DefaultDir + "/Last.cal");
    EXPECT_EQ(TurnCameraOn("AUTOSTART last", 1), 1);
    EXPECT_THAT(StatusTexts(), Contains("Loading previous calibration..."));
    EXPECT_EQ(StatusText, kStartHint);
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(TurningOn, ACalibrationThatIsMissingLeavesTheCameraOn)
{
    EXPECT_EQ(CalibrationTaken("nowhere"), DefaultDir + "/nowhere.cal");
    EXPECT_EQ(op->Boxes().back().caption, "Kelvo message");
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_EQ(TurnOnItem(), "&Turn Vantir off");
    EXPECT_EQ(LiveVideo, 1);
}

TEST_F(TurningOn, TheArgumentNamesAFileAndTheWord)
{
    PutFile(DefaultDir + "/Warm.CAL", "");
    const std::pair<const char*, std::string> cases[] = {
        {"", ""},
        {"AUTOSTART", ""},
        {"autostart", ""},
        {"abc", ""},  // too short for a name
        {"last", DefaultDir + "/last.cal"},
        {"AUTOSTART last.cal", DefaultDir + "/last.cal"},
        {"last.cal AUTOSTART", DefaultDir + "/last.cal"},
        {"last.cal autostart and more", DefaultDir + "/last.cal"},
        {"warm.cal", DefaultDir + "/Warm.CAL"},  // the name that the file has
        {"picture.img", ""},                     // no calibration
        {"/d/picture.seq", ""},
        {"d:\\sets\\one.cal", "/sets/one.cal"},
        {"/sets/one", "/sets/one.cal"},
        {"\\one.cal", DefaultDir + "/one.cal"},                 // a directory of one character is none
        {"c:\\kelvo\\\xE4.cal", DefaultDir + "/\xC3\xA4.cal"},  // the box as UTF-8
    };
    for (const auto& [argument, path] : cases) EXPECT_EQ(CalibrationTaken(argument), path) << argument;
}

TEST_F(TurningOn, ANullArgumentIsNone)
{
    EXPECT_EQ(TurnCameraOn(nullptr, 1), 1);
}

// --- The section's check --------------------------------------------------------------------------------------------

TEST_F(TurningOn, ASectionOfDefaultsPasses)
{
    PutSection("");
    EXPECT_EQ(WhyCameraCantRun(), std::nullopt);
}

TEST_F(TurningOn, ASectionThatCantRunIsNamedWithItsKey)
{
    const std::pair<const char*, const char*> cases[] = {
        {"Hroi=0\n", "Hroi=0 must lie between 1 and 1024."},
        {"Vroi=-4\n", "Vroi=-4 must lie between 1 and 1024."},
        {"Hactive=1025\n", "Hactive=1025 must lie between 1 and 1024."},
        {"Vactive=text\n", "Vactive=0 must lie between 1 and 1024."},
        {"QVF1058_MasterClockFrequency=0\n", "QVF1058_MasterClockFrequency=0 must lie between 1 and 2147483647."},
        {"QVF1058_MasterClockMinIndex=-1\n", "QVF1058_MasterClockMinIndex=-1 must lie between 0 and 255."},
        {"QVF1058_MasterClockMaxIndex=256\n", "QVF1058_MasterClockMaxIndex=256 must lie between 0 and 255."},
        {"IndexFrameRate=254\n", "IndexFrameRate=254 must lie between -2 and 253."},
        {"IndexFrameRate=-3\n", "IndexFrameRate=-3 must lie between -2 and 253."},
        {"DecomScheme=4\nHroi=1\n", "DecomScheme=4 needs Hroi to be at least 2."},
        {"DecomScheme=5\nHroi=1\n", "DecomScheme=5 needs Hroi to be at least 2."},
        {"DecomScheme=7\nHroi=3\n", "DecomScheme=7 needs Hroi to be at least 4."},
        {"CalDelay=12\nHroi=4\nVroi=3\n", "CalDelay=12 must be less than 12, the pixels of a frame."},
    };
    for (const auto& [lines, reason] : cases) {
        PutSection(lines);
        EXPECT_EQ(TurnCameraOn("", 1), 0) << lines;
        EXPECT_EQ(op->Boxes().back().text,
                  "The camera can't be turned on with these settings.\nCamera.2: " + std::string(reason));
        EXPECT_EQ(op->Boxes().back().caption, "Kelvo configuration warning");
    }
    EXPECT_THAT(op->Boxes(), SizeIs(std::size(cases)));
    EXPECT_THAT(head->Taken(), IsEmpty());
    EXPECT_EQ(CameraOn, 0);
}

TEST_F(TurningOn, ValuesAtTheEndsOfTheirRangesPass)
{
    for (const char* lines :
         {"Hroi=1024\nVroi=1024\nHactive=1024\nVactive=1024\n", "Hroi=1\nVroi=1\n", "DecomScheme=4\nHroi=2\n",
          "DecomScheme=7\nHroi=4\n", "DecomScheme=1\nHroi=1\n", "CalDelay=11\nHroi=4\nVroi=3\n", "CalDelay=x\n",
          "IndexFrameRate=-2\n", "IndexFrameRate=253\n", "QVF1058_MasterClockFrequency=1\n"}) {
        PutSection(lines);
        EXPECT_EQ(WhyCameraCantRun(), std::nullopt) << lines;
    }
}

// --- The dialog -----------------------------------------------------------------------------------------------------

class TurnOnChoice : public TurnOnTest {
  protected:
    // Opens the dialog and works it, one step each time it waits; what is left open is cancelled.
    int Run(std::initializer_list<std::function<void(HWND)>> steps)
    {
        for (const auto& step : steps) {
            op->Do([step] { step(DialogInFront()); });
        }
        op->Do([] {
            if (FileDialogInFront()) CancelFileDialog();
        });
        op->Do([] {
            if (DialogInFront()) OperatePress(DialogInFront(), kIdCancel);
        });
        return TurnOnDialog(hWndMain);
    }

    static std::function<void(HWND)> Press(int id)
    {
        return [id](HWND dialog) { EXPECT_TRUE(OperatePress(dialog, id)) << id; };
    }
    static std::function<void(HWND)> StillOpen()
    {
        return [](HWND dialog) {
            ASSERT_NE(dialog, nullptr);
            EXPECT_EQ(DialogName(dialog), "CLOCK_ON");
        };
    }
};

TEST_F(TurnOnChoice, OpensWithTheLastCalibrationReady)
{
    PutFile(DefaultDir + "/last.cal", "");
    const int result = Run({[](HWND dialog) {
        EXPECT_EQ(DialogName(dialog), "CLOCK_ON");
        EXPECT_EQ(GetWindowText(dialog), "Turn on Vantir?");
        EXPECT_EQ(FocusedDlgItem(dialog), 1072);
        EXPECT_EQ(GetDlgItemText(dialog, 1070), "&Vantir Video Setup");
        EXPECT_EQ(GetDlgItemText(dialog, 1072), "&Autoload Last Calibration");
        EXPECT_EQ(GetDlgItemText(dialog, 1074), "Autoload &Selected Calibration");
        EXPECT_EQ(GetDlgItemText(dialog, 2), "&Cancel");
        EXPECT_EQ(StatusText, kChooseHint);
    }});
    EXPECT_EQ(result, 0);
    EXPECT_EQ(CameraOn, 0);
    EXPECT_THAT(head->Taken(), IsEmpty());
}

TEST_F(TurnOnChoice, TheVideoSetUpComesWithoutACalibration)
{
    write::head.FirstSetupPending = 0;
    EXPECT_EQ(Run({Press(1070)}), 1);
    EXPECT_EQ(FirstSetupPending, 1);
    EXPECT_EQ(CameraOn, 1);
    EXPECT_EQ(TurnOnItem(), "&Turn Vantir off");
    EXPECT_THAT(StatusTexts(), Contains(kGoingOnHint));
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(TurnOnChoice, AHeadThatFailsCanBeTriedAgain)
{
    write::head.FirstSetupPending = 0;
    FailHead();
    const int result = Run({Press(1070), StillOpen(), [this](HWND dialog) {
                                head->AnswerTo(kFrameSize, Answer(kFrameSize.begin(), kFrameSize.end()));
                                OperatePress(dialog, 1070);
                            }});
    EXPECT_EQ(result, 1);
    const auto boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(2));
    EXPECT_EQ(boxes[0].text, "Unable to communicate with camera head!");
    EXPECT_EQ(boxes[1].text, "Unable to turn camera head on!");
    EXPECT_EQ(boxes[1].caption, "Camera Head Error!");
}

TEST_F(TurnOnChoice, TheLastCalibrationIsLoaded)
{
    PutCalibration(DefaultDir + "/last.cal");
    EXPECT_EQ(Run({Press(1072)}), 0) << "nothing is left to set up";
    EXPECT_EQ(CameraOn, 1);
    EXPECT_EQ(TurnOnItem(), "&Turn Vantir off");
    EXPECT_EQ(StatusText, kStartHint);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(TurnOnChoice, WithoutALastCalibrationTheVideoSetupIsOffered)
{
    Run({[](HWND dialog) {
        EXPECT_FALSE(DlgItemEnabled(dialog, 1072));
        EXPECT_THAT(ControlOf(dialog, 1072)->toolTip().toStdString(), HasSubstr("no last calibration"));
        EXPECT_EQ(FocusedDlgItem(dialog), 1070);
        EXPECT_TRUE(qobject_cast<QPushButton*>(ControlOf(dialog, 1070))->isDefault());
    }});
    PutFile(DefaultDir + "/LAST.cal", "");
    Run({[](HWND dialog) {
        EXPECT_TRUE(DlgItemEnabled(dialog, 1072));
        EXPECT_EQ(ControlOf(dialog, 1072)->toolTip(), QString());
        EXPECT_EQ(FocusedDlgItem(dialog), 1072);
    }});
}

TEST_F(TurnOnChoice, ALastCalibrationThatCantBeLoadedLeavesTheDialogOpen)
{
    PutFile(DefaultDir + "/last.cal", "[Setup]\n");
    EXPECT_EQ(Run({Press(1072), StillOpen()}), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1)) << "the calibration's own box only";
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr(DefaultDir + "/last.cal"));
    EXPECT_EQ(CameraOn, 1);
}

// Live video without a word would be a black picture.
TEST_F(TurnOnChoice, ACameraThatIsNotSetUpSaysWhatToDo)
{
    EXPECT_EQ(TurnCameraOn("", 1), 1);
    StatusString(kIdleHint, kLeftAligned);
    EXPECT_EQ(StatusText, " The camera is not set up: Ctrl+V");
    write::cal.CalType = 1;
    StatusString(kIdleHint, kLeftAligned);
    EXPECT_EQ(StatusText, kStartHint);
    write::cal.CalType = 0;
    write::head.VideoSetupMissing = 0;
    StatusString(kIdleHint, kLeftAligned);
    EXPECT_EQ(StatusText, kStartHint);
    EXPECT_EQ(SetupHint(), "");
}

TEST_F(TurnOnChoice, AHeadThatFailsIsSilentOnTheWayToACalibration)
{
    PutFile(DefaultDir + "/last.cal", "");
    head->AnswerTo({0x70, 0x01, 0xA0, 0x00}, kRefusal);  // a DAC: no box of the head's either
    EXPECT_EQ(Run({Press(1072), StillOpen()}), 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(CameraOn, 0);
}

TEST_F(TurnOnChoice, ASelectedCalibrationIsLoaded)
{
    const std::string set = directory / "set.cal";
    PutCalibration(set);
    EXPECT_EQ(Run({Press(1074),
                   [&](HWND) {
                       EXPECT_EQ(DialogName(DialogInFront()), "CAL_OPEN");
                       EXPECT_EQ(StatusText, " Choose .CAL file to load for calibration");
                       NameFile(set);
                   }}),
              0);
    EXPECT_EQ(CameraOn, 1);
    EXPECT_EQ(FilePathBuf, set);
    EXPECT_EQ(StatusText, kStartHint);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(TurnOnChoice, ACancelledSelectionEndsTheChoice)
{
    EXPECT_EQ(Run({Press(1074), [](HWND) { CancelNaming(); }}), 0);
    EXPECT_EQ(CameraOn, 0);
    EXPECT_EQ(StatusText, kStartHint);
    EXPECT_THAT(head->Taken(), IsEmpty());
}

TEST_F(TurnOnChoice, ACalibrationOfAnotherCameraIsRefused)
{
    const std::string set = directory / "set.cal";
    PutFile(set, "[Calibration]\nDriverNumber=1\n");
    EXPECT_EQ(Run({Press(1074), [&](HWND) { NameFile(set); },
                   [](HWND) {
                       EXPECT_EQ(DialogName(DialogInFront()), "CAL_OPEN") << "the selection stays";
                       CancelNaming();
                   }}),
              0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "The calibration file selected is not for this camera");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(CameraOn, 0);
}

TEST_F(TurnOnChoice, ClosingTheWindowChoosesNothing)
{
    EXPECT_EQ(Run({[](HWND dialog) { SendMessage(dialog, WM_CLOSE, 0, 0); }}), 0);
    EXPECT_EQ(CameraOn, 0);
}

TEST_F(TurnOnChoice, ADialogThatCantBeMadeIsTold)
{
    SetFault("load dialog CLOCK_ON", true);
    EXPECT_EQ(TurnOnDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
    EXPECT_EQ(op->Boxes()[0].caption, "System Error");
    EXPECT_EQ(op->Boxes()[0].icon, "stop");
    EXPECT_EQ(CameraOn, 0);
}

// --- Turning off ----------------------------------------------------------------------------------------------------

class TurningOff : public TurnOnTest {
  protected:
    void SetUp() override
    {
        TurnOnTest::SetUp();
        ASSERT_EQ(TurnCameraOn("", 1), 1);
        head->Taken();
        TakeBoardCalls();
        write::cal.CalType = 2;
        write::display.DisplayLut.assign(16, 1);
        op = nullptr;
        op = std::make_unique<TestOperator>();
    }
};

TEST_F(TurningOff, NoChangesNothing)
{
    op->Answer({Button::kNo});
    EXPECT_EQ(TurnOnDialog(hWndMain), 0);
    const auto boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(1));
    EXPECT_EQ(boxes[0].text, "Do you wish to turn the Vantir camera OFF?");
    EXPECT_EQ(boxes[0].caption, "Turn off camera?");
    EXPECT_THAT(boxes[0].buttons, ElementsAre("yes", "no"));
    EXPECT_THAT(StatusTexts(),
                ElementsAre(" Choose Yes to shut camera off & put electronics in a safe state", kStartHint));
    EXPECT_EQ(CameraOn, 1);
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(TurnOnItem(), "&Turn Vantir off");
    EXPECT_THAT(head->Taken(), IsEmpty());
    EXPECT_THAT(TakeBoardCalls(), IsEmpty());
}

TEST_F(TurningOff, YesTakesTheHeadToItsSafeState)
{
    op->Answer({Button::kYes});
    EXPECT_EQ(TurnOnDialog(hWndMain), 0);
    EXPECT_EQ(CameraOn, 0);
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_EQ(CalType, 0);
    EXPECT_EQ(GrabberPresent, 0);
    EXPECT_THAT(DisplayLut, IsEmpty());
    EXPECT_EQ(TurnOnItem(), "&Turn Vantir on");
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("freeze"));
    EXPECT_THAT(head->Taken(), SizeIs(kTurnOffFrames));
    EXPECT_THAT(StatusTexts(),
                ElementsAre(" Choose Yes to shut camera off & put electronics in a safe state",
                            "Turning camera head electronics off", "Wait - Closing Frame Grabber", kStartHint));
}

TEST_F(TurningOff, AClosedLinkIsOpenedAndStaysOpen)
{
    CloseCommLink();
    op->Answer({Button::kYes});
    TurnOnDialog(hWndMain);
    EXPECT_THAT(head->Taken(), SizeIs(kTurnOffFrames));
    EXPECT_EQ(CommPortOpen, 1);
}

TEST_F(TurningOff, AHeadThatCantBeReachedLeavesTheCameraOffAllTheSame)
{
    CloseCommLink();
    SetFault("serial open", true);
    op->Answer({Button::kYes, Button::kOk, Button::kOk});
    TurnOnDialog(hWndMain);
    EXPECT_EQ(CameraOn, 0);
    EXPECT_EQ(GrabberPresent, 0);
    EXPECT_THAT(op->Boxes(), SizeIs(3));
}

TEST_F(TurningOff, TheCameraCanBeTurnedOnAgain)
{
    op->Answer({Button::kYes});
    TurnOnDialog(hWndMain);
    TakeBoardCalls();
    head->Taken();
    EXPECT_EQ(TurnCameraOn("", 1), 1);
    EXPECT_EQ(GrabberPresent, 1);
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_THAT(head->Taken(), SizeIs(kTurnOnFrames)) << "all is sent again";
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("init", "grab"));
}

}  // namespace
}  // namespace kelvo
