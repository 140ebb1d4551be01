// The advanced video set-up, worked as an operator works it, on top of the oscilloscope dialog.
#include "head/advanced_dialog_write.h"
#include "head/camera_head_write.h"
#include "head/head_settings.h"
#include "head/scope_frame.h"
#include "head/video_setup_fixture.h"
#include "pixel/decommutation.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "state/cal_state_write.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;

constexpr int kAdvancedButton = 1020;
constexpr int kFieldIds[] = {1375, 1374, 314, 316, 9101, 9110, 9108, 9109};

class AdvancedVideo : public VideoSetUpTest {
  protected:
    void SetUp() override
    {
        VideoSetUpTest::SetUp();
        TurnOn(kInSbSection);
        PutSetup("AdvancedDiagnostics=1\n");
    }

    // Opens both dialogs and works the advanced one.
    int Advanced(std::initializer_list<Step> steps)
    {
        op->Do([] { OperatePress(DialogInFront(), kAdvancedButton); });
        for (const Step& step : steps) {
            op->Do([step] { step(DialogInFront()); });
        }
        return Run({[](HWND dialog) {
            if (DialogName(dialog) == "ADVANCED") OperatePress(dialog, kIdCancel);
        }});
    }
    static Step Type(int id, const char* text)
    {
        return [=](HWND dialog) { EXPECT_TRUE(OperateText(dialog, id, text)) << id; };
    }
    static void Expire(HWND dialog) { SendMessage(dialog, WM_TIMER, 42, 0); }
};

// --- The window -----------------------------------------------------------------------------------------------------

TEST(WindowFromRectangle, RoundsItsSidesUpToEightAndKeepsItsCorner)
{
    EXPECT_EQ(WindowFromRectangle(0, 0, 320, 256), (HeadWindow{0, 0, 319, 255}));
    EXPECT_EQ(WindowFromRectangle(5, 3, 321, 249), (HeadWindow{5, 3, 5 + 328 - 1, 3 + 256 - 1}));
    EXPECT_EQ(WindowFromRectangle(16, 8, 8, 8), (HeadWindow{16, 8, 16 + 128 - 1, 15})) << "at least 128 across";
    EXPECT_EQ(WindowFromRectangle(0, 0, 128, 1), (HeadWindow{0, 0, 127, 7})) << "and 8 down";
    EXPECT_EQ(WindowFromRectangle(0, 0, 129, 9), (HeadWindow{0, 0, 135, 15}));
}

// --- Opening --------------------------------------------------------------------------------------------------------

TEST_F(AdvancedVideo, OpensWithTheRecords)
{
    write::registers.HeadTiming.AdDelay = 2;
    Advanced({[](HWND dialog) {
        ASSERT_EQ(DialogName(dialog), "ADVANCED");
        EXPECT_EQ(GetWindowText(dialog), "Advanced video setup");
        struct Row {
            int id;
            const char* text;
        };
        constexpr Row kRows[] = {{1375, "0"}, {1374, "0"},  {314, "320"}, {316, "256"}, {9101, "15"},
                                 {9102, "2"}, {9110, "15"}, {9108, "3"},  {9109, "4"}};
        for (const Row& row : kRows) EXPECT_EQ(GetDlgItemText(dialog, row.id), row.text) << row.id;
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 9107));
        for (const int id : {9104, 9105, 9111, 9112, 9114}) EXPECT_FALSE(IsDlgButtonChecked(dialog, id)) << id;
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 9113));
        EXPECT_FALSE(DlgItemEnabled(dialog, 9103));
        EXPECT_FALSE(TimerIsSet(dialog, 42));
    }});
}

TEST_F(AdvancedVideo, ItsControlsBearTheirTexts)
{
    struct Row {
        int id;
        const char* text;
    };
    constexpr Row kRows[] = {
        {9104, "F&PA test mode"},       {9105, "&Timing test mode"}, {9106, "A/D pixel &order = 1,2"},
        {9107, "Fa&st frame transfer"}, {9111, "F&lip columns"},     {9112, "Flip ro&ws"},
        {9113, "&Edit dialog"},         {9114, "&Superframe mode"},  {9103, "Calibrate &voltage..."}};
    Advanced({[&](HWND dialog) {
        for (const Row& row : kRows) EXPECT_EQ(GetDlgItemText(dialog, row.id), row.text);
    }});
}

TEST_F(AdvancedVideo, TheSetUpsTickRestsMeanwhile)
{
    HWND setUp = nullptr;
    op->Do([&] { setUp = DialogInFront(); });
    Advanced({[&](HWND) { EXPECT_FALSE(TimerIsSet(setUp, 1)); }, Press(kIdCancel),
              [&](HWND dialog) {
                  EXPECT_EQ(dialog, setUp);
                  EXPECT_TRUE(TimerIsSet(setUp, 1));
              }});
}

TEST_F(AdvancedVideo, FieldsAreDisabledUntilTheDialogIsEdited)
{
    PutSetup("");
    Advanced({[](HWND dialog) {
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 9113));
        for (const int id : kFieldIds) EXPECT_FALSE(DlgItemEnabled(dialog, id)) << id;
        for (const int id : {9102, 9104, 9105, 9107, 9111, 9112, 9114}) EXPECT_FALSE(DlgItemEnabled(dialog, id)) << id;
        OperateCheck(dialog, 9113, true);
        for (const int id : kFieldIds) EXPECT_TRUE(DlgItemEnabled(dialog, id)) << id;
        OperateCheck(dialog, 9113, false);
        EXPECT_FALSE(DlgItemEnabled(dialog, 314));
    }});
}

TEST_F(AdvancedVideo, ADialogThatCantBeMadeIsTold)
{
    SetFault("load dialog ADVANCED", true);
    Advanced({});
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
}

// --- Check boxes ----------------------------------------------------------------------------------------------------

TEST_F(AdvancedVideo, ACheckBoxIsSentAtOnce)
{
    Advanced({[&](HWND dialog) {
        head->Taken();
        // Biases of the InSb section: DetBias 15, PedBias 3, ColGain 4 (mirrored 1), FastFrame 1.
        OperateCheck(dialog, 9111, true);
        EXPECT_EQ(FpaSerialWord.FlipCols, 1);
        EXPECT_THAT(head->Taken(), Contains(CommFrame{0x60, 0x00, 0x7E, 0x4A}));
        OperateCheck(dialog, 9112, true);
        EXPECT_EQ(FpaSerialWord.FlipRows, 1);
        EXPECT_THAT(head->Taken(), Contains(CommFrame{0x60, 0x00, 0x7E, 0x4E}));
        OperateCheck(dialog, 9104, true);
        EXPECT_EQ(FpaSerialWord.SerialBitsB, 1);
        EXPECT_THAT(head->Taken(), Contains(CommFrame{0x60, 0x00, 0x7E, 0x5E}));
        OperateCheck(dialog, 9105, true);
        EXPECT_EQ(HeadTiming.TimingTestMode, 1);
        OperateCheck(dialog, 9114, true);
        EXPECT_EQ(HeadTiming.SuperframeMode, 1);
        head->Taken();
        OperateCheck(dialog, 9107, false);
        EXPECT_THAT(head->Taken(), IsEmpty()) << "no action";
        EXPECT_EQ(FpaSerialWord.FastFrame, 1);
    }});
    EXPECT_EQ(FpaSerialWord.FlipCols, 0) << "cancelled";
    EXPECT_EQ(HeadTiming.SuperframeMode, 0);
}

TEST_F(AdvancedVideo, APixelOrderOfOneDisablesItsBox)
{
    write::pixelOrder.AdPixelOrder = 1;
    Advanced({[](HWND dialog) {
        EXPECT_FALSE(DlgItemEnabled(dialog, 9106));
        EXPECT_EQ(AdPixelOrder, 1);
    }});
}

TEST_F(AdvancedVideo, ThePixelOrderIsSentAsAGain)
{
    write::pixelOrder.AdPixelOrder = 12;
    Advanced({[&](HWND dialog) {
        EXPECT_TRUE(DlgItemEnabled(dialog, 9106));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 9106));
        head->Taken();
        OperateCheck(dialog, 9106, false);
        EXPECT_EQ(AdPixelOrder, 21);
        EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x60, 0x3C, 0x00, 0x00}));  // 21 passes, limited to 15
        OperateCheck(dialog, 9106, true);
        EXPECT_EQ(AdPixelOrder, 12);
        EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x60, 0x34, 0x00, 0x00}));  // index 12: code 13
    }});
}

TEST_F(AdvancedVideo, APixelOrderIsShownAsStored)
{
    for (const auto& [order, checked, after] : {std::tuple{21, false, 21}, {12, true, 12}, {7, true, 12}}) {
        write::pixelOrder.AdPixelOrder = order;
        Advanced({[&](HWND dialog) { EXPECT_EQ(IsDlgButtonChecked(dialog, 9106), checked); }});
        EXPECT_EQ(AdPixelOrder, after);
    }
}

// --- Number fields --------------------------------------------------------------------------------------------------

TEST_F(AdvancedVideo, AChangedNumberArmsTheTimer)
{
    for (const int id : {1375, 1374, 314, 316, 9101, 9102, 9110, 9108, 9109}) {
        Advanced({[id](HWND dialog) {
            EXPECT_FALSE(TimerIsSet(dialog, 42));
            OperateText(dialog, id, "3");
            EXPECT_TRUE(TimerIsSet(dialog, 42)) << id;
        }});
    }
}

TEST_F(AdvancedVideo, LevelsAreTakenOverWhenTheTimerExpires)
{
    Advanced({Type(9110, "6"), Type(9108, "1"), Type(9109, "3"), Type(9101, "9"), [&](HWND dialog) {
                  head->Taken();
                  Expire(dialog);
                  EXPECT_FALSE(TimerIsSet(dialog, 42));
                  EXPECT_EQ(FpaSerialWord.DetBias, 6);
                  EXPECT_EQ(FpaSerialWord.PedBias, 1);
                  EXPECT_EQ(FpaSerialWord.ColGain, 3);
                  EXPECT_EQ(HeadTiming.FrameStartDelay, 9);
                  EXPECT_EQ(HeadTiming.LineStartDelay, 9);
                  // DetBias 6 mirrored is 6 again, ColGain 3 is 6: 6 x 8 + 1 x 2 + (6 >> 2); 6 x 64 + FastFrame.
                  EXPECT_THAT(head->Taken(),
                              IsSupersetOf({CommFrame{0x50, 0x05, 0x00, 0x99}, CommFrame{0x60, 0x00, 0x33, 0x82}}));
                  Expire(dialog);
                  EXPECT_THAT(head->Taken(), IsEmpty()) << "nothing changed";
              }});
    EXPECT_EQ(FpaSerialWord.DetBias, 15) << "cancelled";
    EXPECT_EQ(HeadTiming.LineStartDelay, 15);
}

// The field shows the frame's delay alone; applied, it holds for the line as well, also where the number stayed.
TEST_F(AdvancedVideo, TheDelaySetsBothWhereTheyDiffered)
{
    write::registers.HeadTiming.LineStartDelay = 3;
    LoadHeadTiming(write::registers.HeadTiming);
    Advanced({Type(9101, "15"), [&](HWND dialog) {
                  head->Taken();
                  EXPECT_EQ(HeadTiming.FrameStartDelay, 15);
                  Expire(dialog);
                  EXPECT_EQ(HeadTiming.FrameStartDelay, 15);
                  EXPECT_EQ(HeadTiming.LineStartDelay, 15);
                  EXPECT_THAT(head->Taken(), Contains(CommFrame{0x50, 0x05, 0x00, 0xFF}));
                  Expire(dialog);
                  EXPECT_THAT(head->Taken(), IsEmpty()) << "nothing changed";
              }});
    EXPECT_EQ(HeadTiming.LineStartDelay, 3) << "cancelled";
    Advanced({Type(9110, "6"), [](HWND dialog) {
                  Expire(dialog);
                  EXPECT_EQ(HeadTiming.LineStartDelay, 15) << "with any field";
              }});
    Advanced({Type(9101, "7"), [](HWND dialog) {
                  Expire(dialog);
                  EXPECT_EQ(HeadTiming.FrameStartDelay, 7);
                  EXPECT_EQ(HeadTiming.LineStartDelay, 7);
              }});
}

// The test mode is a matter of one session at the camera: no turn-on and no other camera begins in it.
TEST_F(AdvancedVideo, TheTestModeEndsWhenTheSerialWordIsReadAnew)
{
    Advanced({[](HWND dialog) {
                  OperateCheck(dialog, 9104, true);
                  OperatePress(dialog, kIdOk);
              },
              Press(kIdOk)});
    ASSERT_EQ(FpaSerialWord.SerialBitsB, 1);
    ReadSerialWordKeys(write::registers.FpaSerialWord, ActiveConfig);
    EXPECT_EQ(FpaSerialWord.SerialBitsB, 0);
}

TEST_F(AdvancedVideo, TheConverterDelayIsShownOnly)
{
    Advanced({Type(9102, "7"), [&](HWND dialog) {
                  head->Taken();
                  Expire(dialog);
                  EXPECT_THAT(head->Taken(), IsEmpty());
                  EXPECT_EQ(HeadTiming.AdDelay, 0);
              }});
}

TEST_F(AdvancedVideo, AHeadThatMissedSomethingIsToldOnceAndNotByTheSetUpAgain)
{
    for (const int way : {kIdOk, kIdCancel}) {
        const std::size_t before = op->Boxes().size();
        Advanced({[&](HWND dialog) {
            head->AnswerAll(kSilence);
            OperateCheck(dialog, 9111, !IsDlgButtonChecked(dialog, 9111));
            head->AnswerAll({0x60, 0, 0, 0});
            EXPECT_EQ(op->Boxes().size(), before);
            OperatePress(dialog, way);
        }});
        ASSERT_EQ(op->Boxes().size(), before + 1);
        EXPECT_EQ(op->Boxes().back().text,
                  "The camera head didn't answer to all that was sent.\n"
                  "Its window, delays or biases may not be as they are set.");
        EXPECT_EQ(op->Boxes().back().caption, "Camera Head Error!");
    }
}

TEST_F(AdvancedVideo, ANumberOutOfRangeReturnsToTheOldValue)
{
    struct Row {
        int id;
        const char* text;
        const char* old;
    };
    constexpr Row kRows[] = {{314, "7", "320"},    {314, "641", "320"}, {316, "7", "256"}, {316, "513", "256"},
                             {1375, "512", "0"},   {1374, "512", "0"},  {1374, "-1", "0"}, {9101, "16", "15"},
                             {9110, "16", "15"},   {9108, "4", "3"},    {9109, "8", "4"},  {314, "", "320"},
                             {314, "wide", "320"}, {314, "32x", "320"}};
    for (const Row& row : kRows) {
        Advanced({Type(row.id, row.text), [&](HWND dialog) {
                      head->Taken();
                      Expire(dialog);
                      EXPECT_EQ(GetDlgItemText(dialog, row.id), row.old) << row.id << " " << row.text;
                      EXPECT_EQ(FocusedDlgItem(dialog), row.id);
                      EXPECT_THAT(head->Taken(), IsEmpty());
                  }});
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(AdvancedVideo, AFieldHoldsFourCharacters)
{
    Advanced({[](HWND dialog) {
        OperateText(dialog, 314, "123456");
        EXPECT_EQ(GetDlgItemText(dialog, 314), "1234");
    }});
}

TEST_F(AdvancedVideo, WithOneBadFieldNothingIsTaken)
{
    Advanced({Type(9110, "6"), Type(9109, "9"), [](HWND dialog) {
                  EXPECT_EQ(ApplyAdvancedFields(dialog), 0);
                  EXPECT_EQ(FpaSerialWord.DetBias, 15);
                  EXPECT_EQ(GetDlgItemText(dialog, 9110), "6") << "what was typed stands";
              }});
}

TEST_F(AdvancedVideo, AWindowSetsFrameSizeTimingAndRegisters)
{
    Advanced({Type(314, "200"), Type(316, "100"), Type(1375, "16"), Type(1374, "24"), [&](HWND dialog) {
                  write::registers.HeadTiming.ExtraTimingCols = 12;
                  write::registers.HeadTiming.ExtraTimingRows = 4;
                  head->Taken();
                  Expire(dialog);
                  EXPECT_EQ(ActiveConfig.Hroi, 200);
                  EXPECT_EQ(ActiveConfig.Vroi, 100);
                  EXPECT_EQ(ActiveConfig.Hactive, 200);
                  EXPECT_EQ(ActiveConfig.Vactive, 104) << "a multiple of 8";
                  EXPECT_EQ(HeadTiming.TimingCols, 212);
                  EXPECT_EQ(HeadTiming.TimingRows, 108);
                  EXPECT_EQ(FpaSerialWord.ColStart, 16);
                  EXPECT_EQ(FpaSerialWord.ColEnd, 215);
                  EXPECT_EQ(FpaSerialWord.RowStart, 24);
                  EXPECT_EQ(FpaSerialWord.RowEnd, 127);
                  EXPECT_THAT(RawFrame, SizeIs(20000));
                  EXPECT_THAT(head->Taken(), Contains(CommFrame{0x50, 0x01, 27, 53}));
                  EXPECT_FLOAT_EQ(FrameRate, 4.0e6F / (212 * 108));
              }});
}

TEST_F(AdvancedVideo, ALargerFrameReallocatesOscFrameWithoutLosingTheDialog)
{
    const int result = Advanced({Type(314, "640"), Type(316, "512"),
                                 [](HWND dialog) {
                                     Expire(dialog);
                                     EXPECT_EQ(OscPixels, 640 * 512);
                                     EXPECT_GE(OscFrame.size(), 640U * 512U);
                                     EXPECT_EQ(DialogInFront(), dialog);
                                     OperatePress(dialog, kIdOk);
                                 },
                                 [](HWND dialog) {
                                     ASSERT_EQ(DialogName(dialog), "QVF1058");
                                     EXPECT_EQ(GetDlgItemText(dialog, 1377), "327680");
                                     SendMessage(dialog, WM_TIMER, 1, 0);
                                     EXPECT_EQ(DialogInFront(), dialog) << "a tick of the new size";
                                     OperatePress(dialog, kIdOk);
                                 }});
    EXPECT_EQ(result, 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

// --- Ok and Cancel --------------------------------------------------------------------------------------------------

TEST_F(AdvancedVideo, OkTakesWhatWasTypedAndKeepsTheWindow)
{
    Advanced({Type(314, "200"), Type(316, "100"), Type(9110, "6"),
              [&](HWND dialog) {
                  head->Taken();
                  OperatePress(dialog, kIdOk);
                  EXPECT_THAT(head->Taken(), Contains(CommFrame{0x50, 0x01, 26, 50})) << "before the timer";
              },
              Press(kIdOk)});
    struct Row {
        const char* key;
        const char* value;
    };
    constexpr Row kRows[] = {{"Hroi", "200"},   {"Vroi", "100"},   {"Hactive", "200"}, {"Vactive", "104"},
                             {"ColStart", "0"}, {"RowStart", "0"}, {"DetBias", "6"}};
    for (const Row& row : kRows) EXPECT_EQ(CameraKey(row.key), row.value) << row.key;
    EXPECT_EQ(IndexIntegrationTime[0], 10);
    EXPECT_EQ(SetupKey("IntTime"), "10");
}

TEST_F(AdvancedVideo, CancelRestoresBothRecordsTheFrameSizeAndTheHead)
{
    const std::string before = CameraKey("Hroi");
    Frames sent;
    Advanced({Type(314, "200"), Type(316, "100"), Type(9110, "6"), [&](HWND dialog) {
                  Expire(dialog);
                  head->Taken();
                  OperatePress(dialog, kIdCancel);
                  sent = head->Taken();
              }});
    EXPECT_EQ(ActiveConfig.Hroi, 320);
    EXPECT_EQ(ActiveConfig.Vroi, 256);
    EXPECT_EQ(ActiveConfig.Hactive, 320);
    EXPECT_EQ(HeadTiming.TimingCols, 320);
    EXPECT_EQ(FpaSerialWord.ColEnd, 319);
    EXPECT_EQ(FpaSerialWord.DetBias, 15);
    EXPECT_FLOAT_EQ(FrameRate, 48.828125F);
    EXPECT_THAT(RawFrame, SizeIs(81920));
    EXPECT_THAT(sent, IsSupersetOf({CommFrame{0x50, 0x01, 0x40, 0x50}, CommFrame{0x60, 0x00, 0x7E, 0x42}}));
    EXPECT_EQ(CameraKey("Hroi"), before) << "nothing is stored";
}

// What a frame of another size had no use for is in force again with the former size: tables, type, and DECOM.TMP.
TEST_F(AdvancedVideo, CancelBringsTheCalibrationBack)
{
    write::cal.CalType = 2;
    write::cal.DecomList.assign(81920, 7);
    write::cal.GainList.assign(81920, 1.25F);
    write::cal.OffsetList.assign(81920, -3);
    const std::uint32_t version = CalibrationListsVersion;
    Advanced({Type(314, "200"), [&](HWND dialog) {
                  Expire(dialog);
                  EXPECT_EQ(CalType, 0);
                  EXPECT_THAT(GainList, IsEmpty());
                  OperatePress(dialog, kIdCancel);
              }});
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(DecomList, std::vector<std::uint32_t>(81920, 7));
    EXPECT_EQ(GainList, std::vector<float>(81920, 1.25F));
    EXPECT_EQ(OffsetList, std::vector<std::int16_t>(81920, -3));
    EXPECT_NE(CalibrationListsVersion, version);
    const auto kept = ReadWholeFile(DecomTempPath(), 1 << 20);
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->substr(0, 8), std::string_view("\7\0\0\0\7\0\0\0", 8));
}

TEST_F(AdvancedVideo, OkOfAnotherSizeLeavesNoCalibration)
{
    write::cal.CalType = 2;
    Advanced({Type(314, "200"), Press(kIdOk)});
    EXPECT_EQ(CalType, 0);
    Advanced({Press(kIdCancel)});
    EXPECT_EQ(CalType, 0);
}

}  // namespace
}  // namespace kelvo
