// The oscilloscope dialog, worked as an operator works it.
#include "head/video_setup_dialog.h"

#include "camera/turn_on.h"
#include "display/display_pipeline.h"
#include "grabber/host_frames_write.h"
#include "head/camera_head.h"
#include "head/scope_frame.h"
#include "head/video_settings.h"
#include "head/video_setup_fixture.h"
#include "pixel/unity_coefficients.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/paint.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "state/buffer_state.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "support/full_disk.h"
#include "support/recording_board.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/video.h"

#include <Qt>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace kelvo {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* kStartHint = " Use Alt + underlined menu item or trackball to select menu item";
constexpr const char* kScopeHint = " Use video oscilloscope to set up Kelvo video parameters";

class VideoSetUpDialog : public VideoSetUpTest {
  protected:
    void SetUp() override
    {
        VideoSetUpTest::SetUp();
        TurnOn(kInSbSection);
    }
};

// The colours that the plot shows, as many of each as there are, of a capture at single resolution.
std::vector<std::uint32_t> PlotPixels(HWND dialog)
{
    DeviceBitmap picture;
    EXPECT_TRUE(CaptureWindowPixels(DlgItemWindow(dialog, 620), true, picture));
    for (auto& pixel : picture.pixels) pixel &= 0xFFFFFF;
    return picture.pixels;
}

// --- Opening --------------------------------------------------------------------------------------------------------

TEST_F(VideoSetUpDialog, OpensWithWhatIsInForce)
{
    const int result = Run({[](HWND dialog) {
        EXPECT_EQ(DialogName(dialog), "QVF1058");
        EXPECT_EQ(GetWindowText(dialog), "Signal (Counts) vs Pixel Number");
        EXPECT_EQ(GetScrollPos(dialog, 651), 95) << "255 - 160";
        EXPECT_EQ(GetScrollPos(dialog, 660), 11) << "15 - 4";
        EXPECT_EQ(GetDlgItemText(dialog, 641), "160");
        EXPECT_EQ(GetDlgItemText(dialog, 655), "4");
        EXPECT_EQ(GetDlgItemText(dialog, 1375), "0");
        EXPECT_EQ(GetDlgItemText(dialog, 1377), "81920");
        EXPECT_EQ(GetDlgItemText(dialog, 602), "16383");
        EXPECT_EQ(GetDlgItemText(dialog, 607), "8191");
        EXPECT_EQ(GetDlgItemText(dialog, 612), "0");
        EXPECT_EQ(ListItemText(dialog, 1256, ListSelection(dialog, 1256)), "Signal (Counts)");
        EXPECT_EQ(FocusedDlgItem(dialog), kIdOk);
        EXPECT_EQ(StatusText, kStartHint);
        EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
        EXPECT_TRUE(TimerIsSet(dialog, 1));
        EXPECT_EQ(PeriodicUpdates, 0);
        EXPECT_THAT(OscFrame, SizeIs(81920));
    }});
    EXPECT_EQ(result, 0);
    EXPECT_THAT(StatusTexts(), IsSupersetOf({kScopeHint, "Set valid units"}));
    EXPECT_EQ(PeriodicUpdates, 1);
    EXPECT_THAT(OscFrame, IsEmpty());
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(VideoSetUpDialog, ListsAFrameRateForEachClockIndex)
{
    // 48 MHz over 2 (row + 2) + 2 and over 81920 pixels: rows 0 to 61.
    Run({[](HWND dialog) {
        ASSERT_EQ(ListCount(dialog, 624), 62);
        EXPECT_EQ(ListItemText(dialog, 624, 0), "97.7");   // 8 MHz: 97.656
        EXPECT_EQ(ListItemText(dialog, 624, 3), "48.8");   // 4 MHz: 48.828
        EXPECT_EQ(ListItemText(dialog, 624, 61), "4.58");  // 375 kHz: 4.5776
        EXPECT_EQ(ListSelection(dialog, 624), 3);
    }});
    EXPECT_EQ(IndexFrameRate, 3);
    EXPECT_FLOAT_EQ(FrameRate, 48.828125F);
}

TEST_F(VideoSetUpDialog, SendsIntegrationOffsetAndGainAtOpening)
{
    Frames sent;
    Run({[&](HWND) { sent = head->Taken(); }});
    EXPECT_THAT(sent, ElementsAre(kIntegrationTenFrame, kOffset160Frame, kGainFourFrame));
}

TEST_F(VideoSetUpDialog, TheLinkIsOpenedAndClosedUnlessItStaysOpen)
{
    CloseCommLink();
    Run({});
    EXPECT_EQ(CommPortOpen, 0);
    PutSetup("CommPortAlwaysOpen=1\n");
    Run({});
    EXPECT_EQ(CommPortOpen, 1);
}

TEST_F(VideoSetUpDialog, ALinkThatCantBeOpenedLeavesTheDialogAway)
{
    CloseCommLink();
    SetFault("serial open", true);
    EXPECT_EQ(VideoSetupDialog(hWndMain), 0);
    EXPECT_THAT(op->Boxes(), SizeIs(2)) << "the link's own";
    EXPECT_EQ(PeriodicUpdates, 1);
    EXPECT_EQ(LiveVideo, 1);
}

TEST_F(VideoSetUpDialog, ADialogThatCantBeMadeIsTold)
{
    SetFault("load dialog QVF1058", true);
    EXPECT_EQ(VideoSetupDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
    EXPECT_EQ(op->Boxes()[0].caption, "System Error");
    EXPECT_EQ(PeriodicUpdates, 1);
}

TEST_F(VideoSetUpDialog, RefusedMemoryForThePlotEndsIt)
{
    FailAllocation(1);
    EXPECT_EQ(VideoSetupDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failure to allocate global graphics memory!");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
}

TEST_F(VideoSetUpDialog, RefusedMemoryForTheFrameEndsIt)
{
    FailAllocation(2);
    EXPECT_EQ(VideoSetupDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failure to allocate global video memory!");
}

TEST_F(VideoSetUpDialog, ResetsTheStoreOfHostFrames)
{
    write::hostFrames.HostFrameNext = 5;
    Run({});
    EXPECT_EQ(HostFrameNext, 0);
}

TEST_F(VideoSetUpDialog, TheGrabStartsAgainAfterwards)
{
    TakeBoardCalls();
    Run({});
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("grab", "grab")) << "at Cancel, and after the dialog";
    EXPECT_EQ(LiveVideo, 1);
}

TEST_F(VideoSetUpDialog, ShowsItsHelpPage)
{
    Run({Press(kIdHelp)});
    EXPECT_THAT(op->Texts("help", "context"), SizeIs(1));
}

// --- First set-up ---------------------------------------------------------------------------------------------------

TEST_F(VideoSetUpDialog, TheFirstSetUpStartsFromAPlainTableAndUnity)
{
    write::head.FirstSetupPending = 1;
    write::cal.CalType = 2;
    write::cal.DecomList = {1, 2, 3};
    write::camera.ActiveConfig.UnityOffset = 8192;
    write::display.DisplayLow = 5;
    write::display.DisplayHigh = 9;
    Run({});
    EXPECT_EQ(FirstSetupPending, 0);
    EXPECT_EQ(CalType, 0);
    EXPECT_EQ(DisplayLow, 0);
    EXPECT_EQ(DisplayHigh, 0x3FFF);
    ASSERT_THAT(DecomList, SizeIs(81920));
    EXPECT_EQ(DecomList[0], 0U);
    EXPECT_EQ(DecomList[81919], 81919U);
    EXPECT_THAT(GainList, Each(1.0F));
    EXPECT_THAT(OffsetList, Each(16384));
    EXPECT_TRUE(FileExists(DefaultDir + "/DECOM.TMP"));
    EXPECT_EQ(DisplayUnit, 0);
    std::vector<std::string> steps;
    for (const std::string& text : StatusTexts()) {
        if (text != kStartHint) steps.push_back(text);
    }
    const std::vector<std::string> expected = {kScopeHint,
                                               "Initialize decommutation array",
                                               "Reorder decommutation memory",
                                               "Download decommutation memory to RAM",
                                               "Set unity gain and offset",
                                               "Start acquiring data",
                                               "Set valid units"};
    ASSERT_GE(steps.size(), expected.size());
    EXPECT_TRUE(std::equal(expected.rbegin(), expected.rend(), steps.rbegin()));
}

TEST_F(VideoSetUpDialog, ALaterSetUpLeavesTheCalibrationAlone)
{
    write::cal.CalType = 1;
    Run({});
    EXPECT_EQ(CalType, 1);
    EXPECT_THAT(StatusTexts(), Not(Contains("Initialize decommutation array")));
}

TEST_F(VideoSetUpDialog, ATableThatCantBeBuiltEndsTheFirstSetUp)
{
    write::head.FirstSetupPending = 1;
    FailAllocation(3);  // after plot and frame
    EXPECT_EQ(VideoSetupDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failure to Lock Decommuation list in Memory");
    EXPECT_EQ(FirstSetupPending, 1) << "still to be done";
}

TEST_F(VideoSetUpDialog, ATableThatCantBeInstalledEndsTheFirstSetUp)
{
    write::head.FirstSetupPending = 1;
    write::cal.DecomList.clear();
    FailAllocation(4);  // the table in force
    EXPECT_EQ(VideoSetupDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Hardware Timeout Error, Download of Decommutation List");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(StatusTexts(), Contains("Decommutation download to RAM failed"));
    EXPECT_EQ(FirstSetupPending, 1);
}

TEST_F(VideoSetUpDialog, AFailedUnityIsToldAndTheDialogStays)
{
    write::head.FirstSetupPending = 1;
    write::cal.DecomList.clear();
    write::cal.GainList.clear();
    FailAllocation(7);  // plot, frame, table, its installation, the plain table and its installation; the gains
    bool stays = false;
    Run({[&](HWND dialog) { stays = dialog != nullptr; }});
    EXPECT_TRUE(stays);
    const auto boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(2));
    EXPECT_EQ(boxes[0].text, "Error, Download of Gain Coefficients");
    EXPECT_EQ(boxes[1].text, "Unable to Set UnityGain and Offset!");
    EXPECT_EQ(FirstSetupPending, 0);
}

// --- The plot -------------------------------------------------------------------------------------------------------

TEST_F(VideoSetUpDialog, AFrameOfOneCountIsALineAtItsHeight)
{
    SetBoardFrames({{8192}});  // the middle of the range
    write::cal.DecomList.clear();
    Run({Tick(), [](HWND dialog) {
             const std::vector<std::uint32_t> pixels = PlotPixels(dialog);
             const Rect area = GetClientRect(DlgItemWindow(dialog, 620));
             const auto width = static_cast<std::size_t>(area.Width());
             const std::size_t columns = width / 16 * 16;
             const auto height = static_cast<std::size_t>(area.Height());
             ASSERT_EQ(pixels.size(), width * height);
             const std::size_t row = (16383 - 8192) * (height - 1) / 16383;
             for (std::size_t y = 0; y < height; ++y) {
                 const auto line = pixels.begin() + static_cast<std::ptrdiff_t>(y * width);
                 const auto dots = std::count(line, line + static_cast<std::ptrdiff_t>(width), 0U);
                 EXPECT_EQ(static_cast<std::size_t>(dots), y == row ? columns : 0) << y;
             }
             EXPECT_EQ(pixels[0], 0xFFFFFFU) << "white without a calibration";
         }});
}

TEST_F(VideoSetUpDialog, ACalibrationTurnsThePaperGreen)
{
    Run({[](HWND dialog) {
        write::cal.CalType = 1;
        write::cal.OffsetList.assign(81920, 0);
        CalibrationListsChanged();
        SendMessage(dialog, WM_TIMER, 1, 0);
        EXPECT_EQ(PlotPixels(dialog)[0], 0x00FF00U);
    }});
}

TEST_F(VideoSetUpDialog, MarksStandOutsideThePlotOnBothSides)
{
    Run({Tick(), [](HWND dialog) {
             for (const auto& [id, length] : {std::pair{621, 3}, {622, 4}}) {
                 DeviceBitmap strip;
                 ASSERT_TRUE(CaptureWindowPixels(DlgItemWindow(dialog, id), true, strip));
                 EXPECT_EQ(strip.width, length);
                 const auto black = std::ranges::count(strip.pixels, 0U, [](auto pixel) { return pixel & 0xFFFFFF; });
                 EXPECT_EQ(black, 11 * length);
                 EXPECT_EQ(strip.pixels.front() & 0xFFFFFF, 0U);
                 EXPECT_EQ(strip.pixels.back() & 0xFFFFFF, 0U);
             }
         }});
}

TEST_F(VideoSetUpDialog, AFailedReadEndsItAndRestoresTheHead)
{
    Frames sent;
    const int result = Run({[&](HWND dialog) {
        OperateScroll(dialog, 651, 0);
        OperatePick(dialog, 624, 7);
        SetBoardFrames({});
        head->Taken();
        SendMessage(dialog, WM_TIMER, 1, 0);
        sent = head->Taken();
    }});
    EXPECT_EQ(result, 0);
    const auto boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(2));
    EXPECT_EQ(boxes[0].text, "Timeout waiting for vertical blank!");
    EXPECT_EQ(boxes[1].text, "Bad status on GetVideoData().  Error reading image processor!");
    EXPECT_EQ(boxes[1].caption, "Kelvo message");
    EXPECT_THAT(sent,
                ElementsAre(CommFrame{0x50, 0x00, 0x00, 0x05}, kIntegrationTenFrame, kGainFourFrame, kOffset160Frame));
    EXPECT_EQ(IndexFrameRate, 3);
    EXPECT_EQ(StatusText, kStartHint);
}

// --- Frame rate and integration -------------------------------------------------------------------------------------

// The gain and no other frame.
TEST_F(VideoSetUpDialog, AHeadThatMissedSomethingIsToldOnceWhicheverWayItEnds)
{
    for (const int way : {kIdOk, kIdCancel}) {
        const std::size_t before = op->Boxes().size();
        Run({[&](HWND dialog) {
            head->AnswerAll(kSilence);
            OperateScroll(dialog, 660, 3);
            OperateScroll(dialog, 660, 5);
            head->AnswerAll({0x60, 0, 0, 0});
            EXPECT_EQ(op->Boxes().size(), before) << "not at each move of a bar";
            OperatePress(dialog, way);
        }});
        ASSERT_EQ(op->Boxes().size(), before + 1);
        EXPECT_EQ(op->Boxes().back().text,
                  "The camera head didn't answer to all that was sent.\n"
                  "Frame rate, integration time, gain or offset may not be as they are set.");
        EXPECT_EQ(op->Boxes().back().caption, "Camera Head Error!");
    }
    Run({Press(kIdOk)});
    EXPECT_EQ(op->Boxes().size(), 2U) << "each dialog by itself";
}

TEST_F(VideoSetUpDialog, AnotherFrameRateKeepsTheIntegrationIndexAndChangesItsTime)
{
    Frames sent;
    Run({[&](HWND dialog) {
        head->Taken();
        const float before = IntegrationTime[0];
        ASSERT_TRUE(OperatePick(dialog, 624, 9));  // 48 MHz / 24 = 2 MHz: half of row 3's
        sent = head->Taken();
        EXPECT_EQ(IndexIntegrationTime[0], 10);
        EXPECT_EQ(ListSelection(dialog, 626), 10);
        EXPECT_NEAR(IntegrationTime[0], 2 * before, 0.001 * before);
        OperatePress(dialog, kIdOk);
    }});
    EXPECT_THAT(sent, ElementsAre(CommFrame{0x50, 0x00, 0x00, 0x0B}, kIntegrationTenFrame));
    EXPECT_EQ(IndexFrameRate, 9);
    EXPECT_FLOAT_EQ(FrameRate, 24.4140625F);
    EXPECT_EQ(SetupKey("IndexFrameRate"), "9");
}

TEST_F(VideoSetUpDialog, AnIntegrationTimeIsSentAtOnce)
{
    Frames sent;
    Run({[&](HWND dialog) {
        head->Taken();
        ASSERT_TRUE(OperatePick(dialog, 626, 0));  // the longest
        sent = head->Taken();
        EXPECT_EQ(IndexIntegrationTime[0], 0);
        // 2 + 63 x 4 lines and 2 x 159 columns of 256 x 320 at 48.828 Hz.
        EXPECT_NEAR(IntegrationTime[0], (254 * 320 + 2 * 159) * 1000.0 / (81920 * 48.828125), 0.001);
        OperatePress(dialog, kIdOk);
    }});
    EXPECT_THAT(sent, ElementsAre(CommFrame{0x50, 0x03, 0x00, 0x50}));  // 254 + 2 wraps, (318 + 3) / 4 = 80
    EXPECT_EQ(SetupKey("IntTime"), "0");
    EXPECT_EQ(CameraKey("IndexIntegrationTime"), "0,11,12,13");
}

TEST_F(VideoSetUpDialog, PageKeysMoveTheFrameRateFourRows)
{
    Run({[](HWND dialog) {
        Key(dialog, 624, Qt::Key_PageDown);
        EXPECT_EQ(ListSelection(dialog, 624), 7);
        EXPECT_EQ(IndexFrameRate, 7);
        Key(dialog, 624, Qt::Key_PageUp);
        Key(dialog, 624, Qt::Key_PageUp);
        EXPECT_EQ(IndexFrameRate, 0) << "not below the first";
        OperatePick(dialog, 624, 59);
        Key(dialog, 624, Qt::Key_PageDown);
        EXPECT_EQ(IndexFrameRate, 60) << "two rows before the end of 62";
    }});
}

TEST_F(VideoSetUpDialog, PageKeysMoveTheIntegrationFourRows)
{
    Run({[](HWND dialog) {
        Key(dialog, 626, Qt::Key_PageDown);
        EXPECT_EQ(IndexIntegrationTime[0], 14);
        EXPECT_EQ(ListSelection(dialog, 626), 14);
        Key(dialog, 626, Qt::Key_PageUp);
        EXPECT_EQ(IndexIntegrationTime[0], 10);
        const int count = ListCount(dialog, 626);
        OperatePick(dialog, 626, count - 4);
        Key(dialog, 626, Qt::Key_PageDown);
        EXPECT_EQ(IndexIntegrationTime[0], count - 2);
    }});
}

TEST_F(VideoSetUpDialog, ListsWithoutASelectionAreTold)
{
    Run({[&](HWND dialog) {
        head->Taken();
        ListClear(dialog, 624);
        ListClear(dialog, 626);
        SendMessage(dialog, WM_COMMAND, MakeLong(624, kSelectionChanged), 1);
        SendMessage(dialog, WM_COMMAND, MakeLong(626, kSelectionChanged), 1);
        EXPECT_THAT(head->Taken(), IsEmpty());
        EXPECT_EQ(IndexFrameRate, 3) << "the row stays";
        EXPECT_EQ(IndexIntegrationTime[0], 10);
    }});
    const auto boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(3));
    EXPECT_EQ(boxes[0].text, "Error getting frame rate ComboBox value!");
    EXPECT_EQ(boxes[1].text, "Error setting frame rate listbox value!");
    EXPECT_EQ(boxes[2].text, "Error getting integration ComboBox value!");
}

TEST_F(VideoSetUpTest, OnTheHgCdTeHeadTheIntegrationBoxHoldsOneEntryAndIsDisabled)
{
    TurnOnHgCdTe(kHgCdTeSection);
    write::head.IndexIntegrationTime[0] = 10;
    Run({[](HWND dialog) {
        EXPECT_EQ(ListCount(dialog, 626), 1);
        EXPECT_EQ(ListSelection(dialog, 626), 0);
        EXPECT_FALSE(DlgItemEnabled(dialog, 626));
        EXPECT_EQ(IndexIntegrationTime[0], 0);
    }});
}

TEST_F(VideoSetUpDialog, ArrowsAndEndsMoveTheListsAndPagesStopAtTheirEnds)
{
    Run({[](HWND dialog) {
        Key(dialog, 624, Qt::Key_Down);
        EXPECT_EQ(IndexFrameRate, 4);
        Key(dialog, 624, Qt::Key_Up);
        EXPECT_EQ(IndexFrameRate, 3);
        Key(dialog, 624, Qt::Key_End);
        EXPECT_EQ(IndexFrameRate, 61);
        Key(dialog, 624, Qt::Key_Home);
        EXPECT_EQ(IndexFrameRate, 0);
        Key(dialog, 626, Qt::Key_Down);
        EXPECT_EQ(IndexIntegrationTime[0], 11);
        Key(dialog, 626, Qt::Key_Home);
        Key(dialog, 626, Qt::Key_PageUp);
        EXPECT_EQ(IndexIntegrationTime[0], 0);
    }});
}

// --- Offset and gain ------------------------------------------------------------------------------------------------

// A line is one step, a page a sixteenth of the range, at least two; the bars stand upright with the most at the top.
TEST_F(VideoSetUpDialog, KeysMoveTheBars)
{
    Run({[&](HWND dialog) {
        struct Stroke {
            int bar;
            int key;
            const char* shown;
        };
        constexpr Stroke kStrokes[] = {
            {651, Qt::Key_Up, "161"},    {651, Qt::Key_Down, "160"},     {651, Qt::Key_PageUp, "176"},
            {651, Qt::Key_Home, "255"},  {651, Qt::Key_PageDown, "239"}, {651, Qt::Key_End, "0"},
            {651, Qt::Key_Right, "0"},   {651, Qt::Key_Left, "1"},       {660, Qt::Key_Up, "5"},
            {660, Qt::Key_PageUp, "7"},  {660, Qt::Key_PageDown, "5"},   {660, Qt::Key_Home, "15"},
            {660, Qt::Key_PageUp, "15"}, {660, Qt::Key_End, "0"}};
        for (const Stroke& stroke : kStrokes) {
            head->Taken();
            Key(dialog, stroke.bar, stroke.key);
            EXPECT_EQ(GetDlgItemText(dialog, stroke.bar == 651 ? 641 : 655), stroke.shown);
            EXPECT_THAT(head->Taken(), SizeIs(1)) << "sent once, " << stroke.shown;
        }
    }});
}

TEST_F(VideoSetUpDialog, AFullOffsetBarGives255)
{
    Run({[&](HWND dialog) {
        head->Taken();
        ASSERT_TRUE(OperateScroll(dialog, 651, 0));
        EXPECT_EQ(GetDlgItemText(dialog, 641), "255");
        EXPECT_THAT(head->Taken(), Contains(CommFrame{0x70, 0x01, 0xFF, 0x00}));
        ASSERT_TRUE(OperateScroll(dialog, 651, 255));
        EXPECT_EQ(GetDlgItemText(dialog, 641), "0");
        EXPECT_THAT(head->Taken(), Contains(CommFrame{0x70, 0x01, 0x00, 0x00}));
    }});
}

TEST_F(VideoSetUpDialog, TheGainBarGoesTo15)
{
    Run({[&](HWND dialog) {
        head->Taken();
        ASSERT_TRUE(OperateScroll(dialog, 660, 0));
        EXPECT_EQ(GetDlgItemText(dialog, 655), "15");
        EXPECT_THAT(head->Taken(), Contains(CommFrame{0x60, 0x3C, 0x00, 0x00}));
    }});
}

TEST_F(VideoSetUpDialog, WithOneChannelOneBarDrivesAllFourCopies)
{
    write::head.VideoGain = {4, 1, 2, 3};
    write::head.VideoOffset = {160, 1, 2, 3};
    const int result = Run({[](HWND dialog) {
        OperateScroll(dialog, 651, 55);
        OperateScroll(dialog, 660, 6);
        EXPECT_THAT(VideoOffset, ElementsAre(160, 1, 2, 3)) << "stored at OK only";
        OperatePress(dialog, kIdOk);
    }});
    EXPECT_EQ(result, 1);
    EXPECT_THAT(VideoOffset, ElementsAre(200, 200, 200, 200));
    EXPECT_THAT(VideoGain, ElementsAre(9, 9, 9, 9));
    EXPECT_EQ(SetupKey("VideoGain4"), "9");
    EXPECT_EQ(SetupKey("VideoOffset1"), "200");
    EXPECT_EQ(CameraKey("QVF1058_DAC0"), "200");
}

TEST_F(VideoSetUpDialog, WithTwoChannelsABarDrivesItsOwn)
{
    write::head.VideoOffset = {160, 70, 2, 3};
    write::camera.ActiveConfig.NumChannels = 2;
    Run({[](HWND dialog) {
        OperateScroll(dialog, 651, 55);
        OperatePress(dialog, kIdOk);
    }});
    EXPECT_THAT(VideoOffset, ElementsAre(200, 70, 160, 160)) << "outputs without bars took the first one's at opening";
}

TEST_F(VideoSetUpDialog, CancelSendsWhatWasThereAndKeepsNothing)
{
    Frames sent;
    const int result = Run({[&](HWND dialog) {
        OperateScroll(dialog, 651, 0);
        OperateScroll(dialog, 660, 0);
        OperatePick(dialog, 624, 9);
        OperatePick(dialog, 626, 20);
        head->Taken();
        OperatePress(dialog, kIdCancel);
        sent = head->Taken();
    }});
    EXPECT_EQ(result, 0);
    EXPECT_THAT(sent,
                ElementsAre(CommFrame{0x50, 0x00, 0x00, 0x05}, kIntegrationTenFrame, kGainFourFrame, kOffset160Frame));
    EXPECT_EQ(IndexFrameRate, 3);
    EXPECT_EQ(IndexIntegrationTime[0], 10);
    EXPECT_EQ(VideoGain[0], 4);
    EXPECT_EQ(VideoOffset[0], 160);
    EXPECT_EQ(SetupKey("VideoGain1"), "missing");
    EXPECT_EQ(CameraKey("QVF1058_DAC0"), "160");
    EXPECT_EQ(CameraKey("IndexFrameRate"), "3");
    EXPECT_NEAR(IntegrationTime[0], IntegrationTimeMsec(48.828125F, 10), 0.001);
}

TEST_F(VideoSetUpDialog, TheSystemsCloseSendsNothing)
{
    Frames sent;
    const int result = Run({[&](HWND dialog) {
        OperateScroll(dialog, 651, 0);
        head->Taken();
        SendMessage(dialog, WM_CLOSE, 0, 0);
        sent = head->Taken();
    }});
    EXPECT_EQ(result, 0);
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_EQ(VideoOffset[0], 160);
}

// --- Units ----------------------------------------------------------------------------------------------------------

TEST_F(VideoSetUpDialog, VoltsFollowGainAndOffset)
{
    write::camera.ADoffset = 1000;
    write::camera.VoltsOffset = 0.5F;
    write::camera.VoltsPerCountVsGain[4] = 0.125F;
    write::camera.VoltsPerCountVsGain[15] = 0.25F;
    Run({[](HWND dialog) {
        OperatePick(dialog, 1256, 1);
        EXPECT_EQ(DisplayUnit, 1);
        EXPECT_EQ(GetWindowText(dialog), "Signal (V) vs Pixel Number");
        EXPECT_EQ(GetDlgItemText(dialog, 602), "1906.875");  // (16383 - 1000) / 8 - 32 / 2
        EXPECT_EQ(GetDlgItemText(dialog, 612), "-141.000");  // -1000 / 8 - 16
        OperateScroll(dialog, 651, 127);                     // offset 128 adds nothing
        EXPECT_EQ(GetDlgItemText(dialog, 602), "1922.875");
        EXPECT_EQ(GetDlgItemText(dialog, 612), "-125.000");
        OperateScroll(dialog, 660, 0);  // gain 15
        EXPECT_EQ(GetDlgItemText(dialog, 612), "-250.000");
        OperatePress(dialog, kIdCancel);
    }});
    EXPECT_EQ(VoltsLow, -141.0F) << "of the gain and offset that are in force again";
}

TEST_F(VideoSetUpDialog, CountsStayWhateverTheGain)
{
    Run({[](HWND dialog) {
        SetDlgItemText(dialog, 602, "untouched");
        OperateScroll(dialog, 660, 3);
        EXPECT_EQ(GetDlgItemText(dialog, 602), "untouched");
    }});
}

// --- Unity ----------------------------------------------------------------------------------------------------------

TEST_F(VideoSetUpDialog, UnityTakesTheCalibrationAway)
{
    Run({[](HWND dialog) {
        write::cal.CalType = 2;
        TakeBoardCalls();
        ASSERT_TRUE(OperatePress(dialog, 670));
        EXPECT_EQ(CalType, 0);
        EXPECT_THAT(TakeBoardCalls(), ElementsAre("grab"));
        EXPECT_EQ(FocusedDlgItem(dialog), kIdOk);
        EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
        EXPECT_EQ(StatusText, kStartHint);
    }});
    EXPECT_THAT(StatusTexts(), Contains("Setting Unity Gain & Unity Offset"));
    EXPECT_THAT(GainList, Each(1.0F));
}

// The range may have been another one: what is bright in the new range is bright in the picture at once.
TEST_F(VideoSetUpDialog, UnityShowsThePictureInTheFullRange)
{
    Run({[](HWND dialog) {
        write::display.DisplayHigh = 4000;
        BuildDisplayLut(1, 580);  // contrast 1: as wide as the range
        ASSERT_EQ(DisplayLut.at(4000), 255);
        ASSERT_TRUE(OperatePress(dialog, 670));
        EXPECT_EQ(DisplayLut.at(16383), 255);
        EXPECT_LT(DisplayLut.at(4000), 128);
        EXPECT_EQ(Contrast, 1);
        EXPECT_EQ(Brightness, 580);
    }});
}

TEST_F(VideoSetUpDialog, UnityNeedsACamera)
{
    Run({[](HWND dialog) {
        write::frames.CameraOn = 0;
        write::cal.CalType = 2;
        OperatePress(dialog, 670);
        EXPECT_EQ(CalType, 2);
        write::frames.CameraOn = 1;
        write::cal.CalType = 0;
    }});
    EXPECT_THAT(StatusTexts(), Not(Contains("Setting Unity Gain & Unity Offset")));
}

TEST_F(VideoSetUpTest, TheUnityOffsetKeepsItsSign)
{
    TurnOn(kInSbSection);
    write::camera.ActiveConfig.UnityOffset = -4096;
    EXPECT_EQ(ResetUnityGainOffset(ActiveConfig), 1);
    ASSERT_THAT(OffsetList, SizeIs(81920));
    EXPECT_THAT(OffsetList, Each(-8192));
}

TEST_F(VideoSetUpTest, RefusedOffsetsAreToldAndUnityStands)
{
    TurnOn(kInSbSection);
    write::cal.OffsetList.clear();
    write::cal.GainList.assign(81920, 2.0F);
    FailAllocation(3);  // the table, its installation; the offsets
    EXPECT_EQ(ResetUnityGainOffset(ActiveConfig), 1);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Error, Download of Offset Coefficients");
    EXPECT_THAT(GainList, Each(1.0F));
}

TEST_F(VideoSetUpTest, ATableThatFailsMakesUnityFail)
{
    TurnOn(kInSbSection);
    FailAllocation(1);
    EXPECT_EQ(ResetUnityGainOffset(ActiveConfig), 0);
    EXPECT_THAT(op->Boxes(), SizeIs(1));
    FailAllocation(2);
    EXPECT_EQ(ResetUnityGainOffset(ActiveConfig), 0);
    EXPECT_EQ(op->Boxes().back().text, "Hardware Timeout Error, Download of Decommutation List");
}

// --- Paper and files ------------------------------------------------------------------------------------------------

TEST_F(VideoSetUpDialog, SaveWritesTheWindowAsABitmap)
{
    const std::string path = directory / "scope.bmp";
    std::size_t pixels = 0;
    Run({[&](HWND dialog) {
             DeviceBitmap picture;
             CaptureWindowPixels(dialog, false, picture);
             pixels = picture.pixels.size();
             OperatePress(dialog, 1606);
         },
         [&](HWND) { ChooseFiles({path}); }, [](HWND dialog) { EXPECT_TRUE(TimerIsSet(dialog, 1)); }});
    const auto bytes = ReadWholeFile(path, std::size_t{1} << 26);
    ASSERT_TRUE(bytes);
    EXPECT_THAT(*bytes, StartsWith("BM"));
    EXPECT_GE(bytes->size(), 3 * pixels) << "24 bits a pixel";
    EXPECT_GT(pixels, 512U * 320U);
}

TEST_F(VideoSetUpDialog, TheTickRestsWhileTheFileIsChosen)
{
    HWND setUp = nullptr;
    Run({[&](HWND dialog) {
             setUp = dialog;
             EXPECT_TRUE(TimerIsSet(setUp, 1));
             OperatePress(dialog, 1606);
         },
         [&](HWND) {
             ASSERT_TRUE(FileDialogInFront());
             EXPECT_FALSE(TimerIsSet(setUp, 1));
             CancelFileDialog();
         },
         [&](HWND) { EXPECT_TRUE(TimerIsSet(setUp, 1)); }});
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(VideoSetUpDialog, ABitmapThatCantBeWrittenIsToldAndTheFormerOneStands)
{
    const std::string path = directory / "scope.bmp";
    PutFile(path, "before");
    op->Answer({Button::kYes});  // written over
    std::optional<FullDisk> disk;
    Run({Press(1606),
         [&](HWND) {
             disk.emplace(500);
             ChooseFiles({path});
         },
         [&](HWND dialog) {
             disk.reset();
             EXPECT_TRUE(TimerIsSet(dialog, 1)) << "the scope goes on";
         }});
    const auto boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(2)) << "asked, and told";
    EXPECT_EQ(boxes[1].text, "Error opening file!");
    EXPECT_EQ(boxes[1].caption, "Error");
    EXPECT_EQ(ReadWholeFile(path, 100), "before");
}

TEST_F(VideoSetUpDialog, PrintGoesToTheFileThatTheMachineNames)
{
    const std::string path = directory / "scope.pdf";
    WritePrivateProfileString("Printer", "File", path, DefaultDir + "/platform.ini");
    Run({Press(339),
         [](HWND dialog) {
             EXPECT_EQ(DialogName(dialog), "DIBPRINT");
             EXPECT_TRUE(OperatePress(dialog, 1));
         },
         [](HWND dialog) { EXPECT_TRUE(TimerIsSet(dialog, 1)); }});
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_THAT(op->Texts("print", "text"), ElementsAre("Kelvo bitmap"));
    const auto page = ReadWholeFile(path, std::size_t{1} << 26);
    ASSERT_TRUE(page);
    EXPECT_THAT(*page, StartsWith("%PDF-"));
    EXPECT_THAT(*page, HasSubstr("/Image"));
    EXPECT_THAT(*page, Not(HasSubstr("DCTDecode"))) << "exact";
}

TEST_F(VideoSetUpDialog, PrintThatIsCancelledGoesBackToTheScope)
{
    Run({Press(339), [](HWND dialog) { EXPECT_TRUE(OperatePress(dialog, 2)); },
         [](HWND dialog) {
             EXPECT_EQ(DialogName(dialog), "QVF1058");
             EXPECT_TRUE(TimerIsSet(dialog, 1));
         }});
    EXPECT_THAT(op->Texts("print", "text"), IsEmpty());
}

}  // namespace
}  // namespace kelvo
