// The configuration dialog, worked as an operator works it. The set-up that it starts again is a fake here that writes
// down when it is called; scripts run the true one.
#include "camera/configuration_dialog.h"

#include "imagefile/header_write.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/help.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "support/shipped_file.h"
#include "ui/docking.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct SetUpRun {
    std::vector<std::string> steps;
    int variablesReady = 1;
    int hardwareReady = 1;
    std::string cameraInFile;
    std::string monitorInFile;
    Pointer pointer = Pointer::kArrow;
    std::int64_t endedMs = 0;
};
SetUpRun setUp;

std::string SetupKey(const char* key)
{
    return GetPrivateProfileString("Setup", key, "missing", IniFilePath);
}

int InitialSetup()
{
    setUp.steps.emplace_back("variables");
    setUp.cameraInFile = SetupKey("ActiveCamera");
    setUp.monitorInFile = SetupKey("MonitorSetup");
    setUp.pointer = CurrentPointer();
    return setUp.variablesReady;
}

int InitializeHardware()
{
    setUp.steps.emplace_back("hardware");
    setUp.endedMs = TickMs();
    return setUp.hardwareReady;
}

class ConfigurationDialogTest : public PictureTest {
  protected:
    void SetUp() override
    {
        setUp = {};
        SetRestart({InitialSetup, InitializeHardware});
        DockPanel();
        write::file.ByteSwap = 0xFFFF;
        write::camera.ActiveConfig.NumOutputs = 4;
        write::camera.ActiveConfig.NumChannels = 2;
        write::camera.ActiveConfig.Xoffset = 8;
        write::camera.ActiveConfig.Yoffset = 9;
        write::display.Xpan = 5;
        write::display.Ypan = -6;
        PutKey("Camera.1", "Description", "Large one");
        PutKey("Camera.1", "Xzoom", "2");
        PutKey("Camera.1", "Yzoom", "4");
        PutKey("Camera.1", "Xoffset", "12");
        PutKey("Camera.1", "Yoffset", "16");
        PutKey("Camera.2", "Description", "Small one");
        PutKey("Camera.2", "Xoffset", "8");
        PutKey("Camera.2", "Yoffset", "9");
        WritePrivateProfileString("Setup", "ActiveCamera", "2", IniFilePath);
    }

    static void PutKey(const char* section, const char* key, const char* value)
    {
        WritePrivateProfileString(section, key, value, CameraFilePath);
    }
    static std::string KeyOf(const char* section, const char* key)
    {
        return GetPrivateProfileString(section, key, "missing", CameraFilePath);
    }

    // Opens the dialog and works it, one step after the other. What the work leaves open is closed by Cancel.
    void Run(std::function<void(HWND)> work, std::function<void(HWND)> then = nullptr)
    {
        const auto ended = std::make_shared<bool>(false);
        op->Do([work = std::move(work)] { work(DialogInFront()); });
        if (then) op->Do([then = std::move(then)] { then(DialogInFront()); });
        op->Do([ended] {
            if (!*ended && DialogInFront()) OperatePress(DialogInFront(), kIdCancel);
        });
        ConfigurationDialog(hWndMain);
        *ended = true;
    }
    // What was posted arrives while a box is open.
    static void TakePosted() { MessageBox(hWndMain, "turn of the loop", "test"); }

    static std::vector<int> Checked(HWND dialog, int first, int last)
    {
        std::vector<int> checked;
        for (int id = first; id <= last; ++id) {
            if (IsDlgButtonChecked(dialog, id)) checked.push_back(id);
        }
        return checked;
    }
};

TEST_F(ConfigurationDialogTest, OpensWithTheValuesInForce)
{
    Run([](HWND dialog) {
        EXPECT_EQ(DialogName(dialog), "INITIAL");
        EXPECT_EQ(GetWindowText(dialog), "Vantir Setup");
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1616));
        EXPECT_THAT(Checked(dialog, 1046, 1048), ElementsAre(1047));
        EXPECT_THAT(Checked(dialog, 1260, 1267), ElementsAre(1262));
        EXPECT_THAT(Checked(dialog, 1271, 1278), ElementsAre(1273));
        EXPECT_EQ(GetDlgItemText(dialog, 1293), "8");
        EXPECT_EQ(GetDlgItemText(dialog, 1294), "9");
        EXPECT_EQ(GetDlgItemText(dialog, 1290), "5");
        EXPECT_EQ(GetDlgItemText(dialog, 1291), "-6");
        EXPECT_EQ(StatusText, " Enter parameters to be stored for this and subsequent sessions");
    });
    EXPECT_EQ(StatusText, " Use Alt + underlined menu item or trackball to select menu item");
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ConfigurationDialogTest, ItsControlsBearTheirTexts)
{
    struct Row {
        int id;
        const char* text;
    };
    constexpr Row kRows[] = {{1616, "&Enable byteswap"},
                             {1046, "Show &1 channel"},
                             {1047, "Show 2 channels"},
                             {1048, "Show 4 channels"},
                             {1260, "1x"},
                             {1267, "8x"},
                             {1271, "1y"},
                             {1278, "8y"},
                             {1, "&Ok"},
                             {2, "&Cancel"},
                             {9, "Help"}};
    Run([&](HWND dialog) {
        for (const Row& row : kRows) EXPECT_EQ(GetDlgItemText(dialog, row.id), row.text);
    });
}

TEST_F(ConfigurationDialogTest, TheByteSwapBoxIsTheReverseOfItsWords)
{
    write::file.ByteSwap = 0;
    Run([](HWND dialog) {
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1616));
        OperateCheck(dialog, 1616, false);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(ByteSwap, 0xFFFFU);
    EXPECT_EQ(SetupKey("ByteSwap"), "0xffff");
    Run([](HWND dialog) {
        OperateCheck(dialog, 1616, true);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(ByteSwap, 0U);
    EXPECT_EQ(SetupKey("ByteSwap"), "0x0");
}

TEST_F(ConfigurationDialogTest, AnUnchangedByteSwapIsNotWritten)
{
    Run([](HWND dialog) { OperatePress(dialog, kIdOk); });
    EXPECT_EQ(SetupKey("ByteSwap"), "missing");
}

TEST_F(ConfigurationDialogTest, WithOneOutputOnlyTheFirstChannelRadioCanBeChosen)
{
    write::camera.ActiveConfig.NumOutputs = 1;
    write::camera.ActiveConfig.NumChannels = 1;
    Run([](HWND dialog) {
        EXPECT_TRUE(DlgItemEnabled(dialog, 1046));
        EXPECT_FALSE(DlgItemEnabled(dialog, 1047));
        EXPECT_FALSE(DlgItemEnabled(dialog, 1048));
        EXPECT_THAT(Checked(dialog, 1046, 1048), ElementsAre(1046));
    });
}

TEST_F(ConfigurationDialogTest, TwoOutputsAllowTwoChannels)
{
    write::camera.ActiveConfig.NumOutputs = 2;
    Run([](HWND dialog) {
        EXPECT_TRUE(DlgItemEnabled(dialog, 1047));
        EXPECT_FALSE(DlgItemEnabled(dialog, 1048));
    });
}

TEST_F(ConfigurationDialogTest, FourChannelsCheckTheLastRadio)
{
    write::camera.ActiveConfig.NumChannels = 4;
    Run([](HWND dialog) {
        EXPECT_TRUE(DlgItemEnabled(dialog, 1048));
        EXPECT_THAT(Checked(dialog, 1046, 1048), ElementsAre(1048));
    });
}

TEST_F(ConfigurationDialogTest, ChannelsAreWrittenInEveryCase)
{
    Run([](HWND dialog) { OperatePress(dialog, kIdOk); });
    EXPECT_EQ(KeyOf("Camera.2", "NumChannels"), "2");
    Run([](HWND dialog) {
        OperateCheck(dialog, 1048, true);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(ActiveConfig.NumChannels, 4);
    EXPECT_EQ(KeyOf("Camera.2", "NumChannels"), "4");
}

TEST_F(ConfigurationDialogTest, ZoomsAreWrittenOnlyWhereTheyDifferFromTheKey)
{
    Run([](HWND dialog) {
        OperateCheck(dialog, 1267, true);  // 8x; the other stays at 3, the default of a missing key
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(Xzoom, 8);
    EXPECT_EQ(Yzoom, 3);
    EXPECT_EQ(KeyOf("Camera.2", "Xzoom"), "8");
    EXPECT_EQ(KeyOf("Camera.2", "Yzoom"), "missing");
}

TEST_F(ConfigurationDialogTest, AZoomWithoutARadioStays)
{
    write::camera.ActiveConfig.Xzoom = 16;
    write::camera.ActiveConfig.Yzoom = 9;
    Run([](HWND dialog) {
        EXPECT_THAT(Checked(dialog, 1260, 1267), IsEmpty());
        EXPECT_THAT(Checked(dialog, 1271, 1278), IsEmpty());
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(Xzoom, 16);
    EXPECT_EQ(Yzoom, 9);
}

TEST_F(ConfigurationDialogTest, AChosenCamerasZoomWithoutARadioStaysTheChosenOnes)
{
    PutKey("Camera.1", "Xzoom", "16");
    op->Answer({Button::kNo});
    Run([](HWND dialog) {
        OperatePick(dialog, 1598, 0);
        EXPECT_THAT(Checked(dialog, 1260, 1267), IsEmpty());
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(Xzoom, 16);
    EXPECT_EQ(Yzoom, 4);
    EXPECT_EQ(KeyOf("Camera.1", "Xzoom"), "16");
}

TEST_F(ConfigurationDialogTest, OffsetsAndPansAreTakenFromTheirEdits)
{
    View(2, 2, {1, 2, 3, 4});
    Run([](HWND dialog) {
        OperateText(dialog, 1293, "40");
        OperateText(dialog, 1290, "-3");
        OperateText(dialog, 1291, "7");
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(Xoffset, 40);
    EXPECT_EQ(Yoffset, 9);
    EXPECT_EQ(Xpan, -3);
    EXPECT_EQ(Ypan, 7);
    EXPECT_EQ(KeyOf("Camera.2", "Xoffset"), "40");
    EXPECT_EQ(KeyOf("Camera.2", "Xpan"), "-3");
    EXPECT_EQ(KeyOf("Camera.2", "Ypan"), "7");
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 313), "-3,7");  // the geometry follows
}

TEST_F(ConfigurationDialogTest, NonNumericTextInACornerOffsetKeepsTheStoredValue)
{
    for (const char* text : {"abc", "", "12x", "-5", "99999999999"}) {
        write::camera.ActiveConfig.Xoffset = 77;
        Run([text](HWND dialog) {
            OperateText(dialog, 1293, text);
            OperatePress(dialog, kIdOk);
        });
        EXPECT_EQ(Xoffset, 8) << text;
        EXPECT_EQ(KeyOf("Camera.2", "Xoffset"), "8") << text;
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ConfigurationDialogTest, PansHaveNoCheck)
{
    View(2, 2, {1, 2, 3, 4});
    Run([](HWND dialog) {
        OperateText(dialog, 1290, "abc");
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(Xpan, 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ConfigurationDialogTest, ListsFortyCamerasInTheOrderOfTheirSections)
{
    PutKey("Camera.40", "Description", "The last");
    PutKey("Camera.41", "Description", "One too many");
    Run([](HWND dialog) {
        ASSERT_EQ(ListCount(dialog, 1598), 40);
        EXPECT_EQ(ListItemText(dialog, 1598, 0), "Large one");
        EXPECT_EQ(ListItemText(dialog, 1598, 1), "Small one");
        EXPECT_EQ(ListItemText(dialog, 1598, 39), "The last");
        EXPECT_EQ(ListSelection(dialog, 1598), 1);
    });
}

TEST_F(ConfigurationDialogTest, SectionsWithoutADescriptionShowAsNoneAndCanBeChosen)
{
    op->Answer({Button::kNo});
    Run([](HWND dialog) {
        EXPECT_EQ(ListItemText(dialog, 1598, 6), "N/A");
        ASSERT_TRUE(OperatePick(dialog, 1598, 6));
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(ActiveCamera, 7);
    EXPECT_EQ(KeyOf("Camera.7", "NumChannels"), "2");
}

TEST_F(ConfigurationDialogTest, AnEntryThatDoesNotLandAtItsPlaceIsTold)
{
    SetFault("list Camera.40", true);
    Run([](HWND) {});
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to add Camera to list!");
    EXPECT_EQ(op->Boxes()[0].caption, "Camera.40");
}

TEST_F(ConfigurationDialogTest, AChosenCameraShowsItsZoomsAndOffsetsAndStoresNothing)
{
    Run(
        [](HWND dialog) {
            ASSERT_TRUE(OperatePick(dialog, 1598, 0));
            EXPECT_THAT(Checked(dialog, 1260, 1267), ElementsAre(1261));
            EXPECT_THAT(Checked(dialog, 1271, 1278), ElementsAre(1274));
            EXPECT_EQ(GetDlgItemText(dialog, 1293), "12");
            EXPECT_EQ(GetDlgItemText(dialog, 1294), "16");
            ASSERT_TRUE(OperatePick(dialog, 1598, 9));  // a section with no keys
            EXPECT_THAT(Checked(dialog, 1260, 1267), ElementsAre(1262));
            EXPECT_EQ(GetDlgItemText(dialog, 1293), "0");
        },
        [](HWND dialog) { OperatePress(dialog, kIdCancel); });
    EXPECT_EQ(ActiveCamera, 2);
    EXPECT_EQ(Xzoom, 3);
    EXPECT_EQ(Xoffset, 8);
    EXPECT_EQ(KeyOf("Camera.2", "NumChannels"), "missing");
}

TEST_F(ConfigurationDialogTest, AnsweringNoKeepsTheDialogOpenWithTheCameraChangedInMemoryAlone)
{
    op->Answer({Button::kNo});
    Run(
        [](HWND dialog) {
            OperatePick(dialog, 1598, 0);
            OperatePress(dialog, kIdOk);
        },
        [](HWND dialog) {
            ASSERT_TRUE(dialog);
            EXPECT_EQ(ListSelection(dialog, 1598), 0);
            EXPECT_EQ(ActiveCamera, 1);
            OperatePress(dialog, kIdOk);  // no change any more: nothing is asked
        });
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Kelvo must be re-initialized before changes are effective. Restart now?");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo configuration change");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("yes", "no"));
    EXPECT_EQ(ActiveCamera, 1);
    EXPECT_EQ(SetupKey("ActiveCamera"), "2");
    EXPECT_THAT(setUp.steps, IsEmpty());
    EXPECT_EQ(KeyOf("Camera.1", "NumChannels"), "2");  // the values went to the chosen section
}

TEST_F(ConfigurationDialogTest, AnsweringYesRunsTheSetUpAgain)
{
    op->Answer({Button::kYes});
    Run([](HWND dialog) {
        OperatePick(dialog, 1598, 0);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_THAT(setUp.steps, ElementsAre("variables", "hardware"));
    EXPECT_EQ(setUp.cameraInFile, "1");
    EXPECT_EQ(setUp.monitorInFile, "0");
    EXPECT_EQ(setUp.pointer, Pointer::kHourglass);
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_THAT(op->Boxes(), SizeIs(1));
    TakePosted();
    EXPECT_THAT(Commands(), ElementsAre(169));
    // A beep before the question; a missing start picture costs another one, and no pause.
    EXPECT_THAT(op->Texts("beep", "sound"), ElementsAre("default", "exclamation"));
    EXPECT_LT(TickMs() - setUp.endedMs, 1000);
}

TEST_F(ConfigurationDialogTest, TheStartPictureStandsForASecond)
{
    std::filesystem::copy_file(ShippedFile("kelvo220.bmp"), DefaultDir + "/kelvo220.bmp");
    op->Answer({Button::kYes});
    Run([](HWND dialog) {
        OperatePick(dialog, 1598, 0);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_GE(TickMs() - setUp.endedMs, 1000);
    EXPECT_THAT(op->Texts("beep", "sound"), ElementsAre("default"));
}

TEST_F(ConfigurationDialogTest, FailuresOfTheRestartLeaveTheSystemRunning)
{
    setUp.variablesReady = 0;
    setUp.hardwareReady = 0;
    op->Answer({Button::kYes});
    Run([](HWND dialog) {
        OperatePick(dialog, 1598, 0);
        OperatePress(dialog, kIdOk);
    });
    ASSERT_THAT(op->Boxes(), SizeIs(3));
    EXPECT_EQ(op->Boxes()[1].text, "Initialize Variables Failure");
    EXPECT_EQ(op->Boxes()[1].caption, "Recommend re-start!");
    EXPECT_EQ(op->Boxes()[2].text, "Initialize Hardware Failure");
    EXPECT_EQ(op->Boxes()[2].caption, "Recommend re-start!");
    EXPECT_THAT(setUp.steps, ElementsAre("variables", "hardware"));
    TakePosted();
    EXPECT_THAT(Commands(), IsEmpty());  // the camera isn't asked for
}

TEST_F(ConfigurationDialogTest, WithoutTheStartUpBehindItNothingIsSetUpAgain)
{
    SetRestart({});
    op->Answer({Button::kYes});
    Run([](HWND dialog) {
        OperatePick(dialog, 1598, 0);
        OperatePress(dialog, kIdOk);
    });
    ASSERT_THAT(op->Boxes(), SizeIs(3));
    EXPECT_EQ(op->Boxes()[1].text, "Initialize Variables Failure");
    EXPECT_EQ(op->Boxes()[2].text, "Initialize Hardware Failure");
    EXPECT_THAT(setUp.steps, IsEmpty());
    TakePosted();
    EXPECT_THAT(Commands(), IsEmpty());
}

TEST_F(ConfigurationDialogTest, AnActiveCameraBeyondTheListStaysUnlessAnotherIsChosen)
{
    write::camera.ActiveCamera = 99;
    Run([](HWND dialog) {
        EXPECT_EQ(ListSelection(dialog, 1598), -1);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(ActiveCamera, 99);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ConfigurationDialogTest, CancelAndCloseKeepEverything)
{
    for (const bool close : {false, true}) {
        Run([close](HWND dialog) {
            OperatePick(dialog, 1598, 0);
            OperateCheck(dialog, 1616, true);
            OperateText(dialog, 1290, "99");
            if (close) {
                SendMessage(dialog, WM_CLOSE, 0, 0);
            } else {
                OperatePress(dialog, kIdCancel);
            }
        });
        EXPECT_EQ(ActiveCamera, 2);
        EXPECT_EQ(ByteSwap, 0xFFFFU);
        EXPECT_EQ(Xpan, 5);
        EXPECT_EQ(KeyOf("Camera.1", "NumChannels"), "missing");
    }
}

TEST_F(ConfigurationDialogTest, StandsAtTheRightEdgeOfThePicture)
{
    Run([](HWND dialog) {
        const Rect window = GetWindowRect(dialog);
        const Point corner = ClientToScreen(hWndMain, {ClientWidth, PanelHeight()});
        EXPECT_EQ(window.right, corner.x);
        EXPECT_EQ(window.top, corner.y);
    });
}

TEST_F(ConfigurationDialogTest, HelpShowsItsPage)
{
    Run([](HWND dialog) {
        OperatePress(dialog, kIdHelp);
        EXPECT_EQ(CurrentHelpContext(), 291);
    });
}

TEST_F(ConfigurationDialogTest, ADialogThatCantBeOpenedIsTold)
{
    SetFault("load dialog INITIAL", true);
    ConfigurationDialog(hWndMain);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to dispay Initialization dialog");
    EXPECT_EQ(op->Boxes()[0].caption, "System Error");
    EXPECT_EQ(StatusText, " Use Alt + underlined menu item or trackball to select menu item");
}

}  // namespace
}  // namespace kelvo
