// The display dialog, worked as an operator works it.
#include "display/display_dialog.h"

#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "imagefile/header.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/help.h"
#include "platform/menu.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/display_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "ui/docking.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace kelvo {
namespace {

using testing::SizeIs;

class DisplayDialogTest : public PictureTest {
  protected:
    void SetUp() override
    {
        DockPanel();
        View(2, 1, {8000, 9000});
        write::display.Contrast = write::display.ResetContrast = 30;
        write::display.Brightness = write::display.ResetBrightness = 600;
        BuildDisplayLut(Contrast, Brightness);
    }

    // Opens the dialog, works it and gives its result. What the work leaves open is closed by Cancel.
    int Run(std::function<void(HWND)> work)
    {
        op->Do([work = std::move(work)] { work(DialogInFront()); });
        op->Do([] {
            if (DialogInFront()) OperatePress(DialogInFront(), kIdCancel);
        });
        return DisplayDialog(hWndMain);
    }
};

TEST_F(DisplayDialogTest, OpensWithTheValuesInForce)
{
    write::display.ImageColor = kInvertedGray;
    Run([](HWND dialog) {
        EXPECT_EQ(DialogName(dialog), "DISPLAY");
        EXPECT_EQ(GetWindowText(dialog), "Display setup");
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1231));
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1230));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1238));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1250));
        EXPECT_EQ(GetScrollPos(dialog, 1242), 600);
        EXPECT_EQ(GetScrollMin(dialog, 1242), 1);
        EXPECT_EQ(GetScrollMax(dialog, 1242), 1000);
        EXPECT_EQ(GetDlgItemText(dialog, 1240), "600");
        EXPECT_EQ(GetScrollPos(dialog, 1246), 30);
        EXPECT_EQ(GetScrollMin(dialog, 1246), 1);
        EXPECT_EQ(GetScrollMax(dialog, 1246), 100);
        EXPECT_EQ(GetDlgItemText(dialog, 1244), "30");
        EXPECT_EQ(ListCount(dialog, kUnitList), 2);
        EXPECT_EQ(StatusText, " Display values affect the viewed image but not raw data");
        for (const int id : {1239, 1250, 1252, 1254}) EXPECT_FALSE(DlgItemEnabled(dialog, id)) << id;
    });
}

TEST_F(DisplayDialogTest, ATemperatureScaleShowsTheBarAsOn)
{
    write::display.TempScale = 1;
    write::display.GrayColorBar = 0;
    Run([](HWND dialog) {
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1250));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1252));
    });
    EXPECT_EQ(GrayColorBar, 1);
}

TEST_F(DisplayDialogTest, StandsAtTheRightEdgeOfThePicture)
{
    Run([](HWND dialog) {
        const Rect window = GetWindowRect(dialog);
        const Point corner = ClientToScreen(hWndMain, {ClientWidth, PanelHeight()});
        EXPECT_EQ(window.right, corner.x);
        EXPECT_EQ(window.top, corner.y);
    });
}

TEST_F(DisplayDialogTest, AScrollShowsAtOnceOnAStoredFrame)
{
    Run([](HWND dialog) {
        ASSERT_TRUE(OperateScroll(dialog, 1246, 100));
        ASSERT_TRUE(OperateScroll(dialog, 1242, 1000));
        EXPECT_EQ(GetDlgItemText(dialog, 1244), "100");
        EXPECT_EQ(GetDlgItemText(dialog, 1240), "1000");
        EXPECT_EQ(Brightness, 1000);
        EXPECT_EQ(Shown(0, PanelHeight()), 0xFFFFFFU);
        ASSERT_TRUE(OperateScroll(dialog, 1242, 1));
        EXPECT_EQ(Shown(0, PanelHeight()), 0U);
    });
}

TEST_F(DisplayDialogTest, AMapShowsAtOnceAndItsNumberWaitsForOk)
{
    const std::uint32_t gray = Shown(0, PanelHeight());
    const int result = Run([gray](HWND dialog) {
        ASSERT_TRUE(OperateCheck(dialog, 1231, true));
        EXPECT_EQ(ImageColor, kNormalGray);
        EXPECT_TRUE(GetMenuItem(hWndMain, 144)->checked);
        EXPECT_EQ(Shown(0, PanelHeight()), 0xFFFFFF - gray);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(ImageColor, kInvertedGray);
    EXPECT_EQ(IniKey("Display", "ImageColor"), "1231");
}

TEST_F(DisplayDialogTest, OkWritesOnlyWhatChanged)
{
    const int result = Run([](HWND dialog) {
        OperateScroll(dialog, 1246, 55);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(Contrast, 55);
    EXPECT_EQ(IniKey("Display", "Contrast"), "55");
    for (const char* key : {"ImageColor", "GrayScale", "GrayColorBar", "TempHisto", "Brightness"}) {
        EXPECT_EQ(IniKey("Display", key), "missing") << key;
    }
    EXPECT_EQ(op->Texts("status", "text").back().rfind("Viewing Image picture.img", 0), 0U);
}

TEST_F(DisplayDialogTest, CancelTakesAllBack)
{
    const std::uint32_t before = Shown(0, PanelHeight());
    const int result = Run([](HWND dialog) {
        OperateScroll(dialog, 1246, 100);
        OperateScroll(dialog, 1242, 1);
        OperateCheck(dialog, 1231, true);
        OperatePress(dialog, kIdCancel);
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Contrast, 30);
    EXPECT_EQ(Brightness, 600);
    EXPECT_EQ(ImageColor, kNormalGray);
    EXPECT_TRUE(GetMenuItem(hWndMain, 143)->checked);
    EXPECT_EQ(Shown(0, PanelHeight()), before);
    EXPECT_EQ(IniKey("Display", "Contrast"), "missing");
    EXPECT_EQ(StatusText.rfind("Viewing Image", 0), 0U);
}

TEST_F(DisplayDialogTest, TheTemperatureScaleThatResetTookAwayComesBack)
{
    for (const bool byCancel : {true, false}) {
        write::display.TempScale = 1;
        Run([&](HWND dialog) {
            OperatePress(dialog, 1248);
            EXPECT_EQ(TempScale, 0);
            byCancel ? static_cast<void>(OperatePress(dialog, kIdCancel)) : OperateClose(dialog);
        });
        EXPECT_EQ(TempScale, 1) << byCancel;
    }
}

TEST_F(DisplayDialogTest, ClosingTheWindowLeavesThePictureButNotTheValues)
{
    std::uint32_t changed = 0;
    const int result = Run([&](HWND dialog) {
        OperateScroll(dialog, 1246, 100);
        OperateCheck(dialog, 1231, true);
        changed = Shown(0, PanelHeight());
        SendMessage(dialog, WM_CLOSE, 0, 0);
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Shown(0, PanelHeight()), changed);
    EXPECT_EQ(Contrast, 30);
    EXPECT_EQ(Brightness, 600);
    EXPECT_EQ(ImageColor, kNormalGray);
    EXPECT_TRUE(GetMenuItem(hWndMain, 144)->checked);
    EXPECT_EQ(IniKey("Display", "Contrast"), "missing");
}

TEST_F(DisplayDialogTest, ResetReturnsToTheValuesReadAtStart)
{
    write::display.ResetContrast = 44;
    write::display.ResetBrightness = 333;
    write::display.ImageColor = kInvertedGray;
    Run([](HWND dialog) {
        ASSERT_TRUE(OperatePress(dialog, 1248));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1230));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1238));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1250));
        EXPECT_EQ(GetDlgItemText(dialog, 1244), "44");
        EXPECT_EQ(GetDlgItemText(dialog, 1240), "333");
        EXPECT_EQ(GetScrollPos(dialog, 1246), 44);
        EXPECT_EQ(FocusedDlgItem(dialog), 1246);
        EXPECT_EQ(Contrast, 44);
        EXPECT_TRUE(GetMenuItem(hWndMain, 143)->checked);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(ImageColor, kNormalGray);
    EXPECT_EQ(IniKey("Display", "ImageColor"), "1230");
    EXPECT_EQ(IniKey("Display", "Contrast"), "44");
    EXPECT_EQ(IniKey("Display", "Brightness"), "333");
}

TEST_F(DisplayDialogTest, AUnitIsTakenAtOnce)
{
    Run([](HWND dialog) {
        ASSERT_TRUE(OperatePick(dialog, kUnitList, 1));
        EXPECT_EQ(DisplayUnit, 1);
    });
    EXPECT_EQ(DisplayUnit, 1);
    EXPECT_EQ(ListSelection(hDlgPanel, kUnitList), 1);
}

TEST_F(DisplayDialogTest, TheBarIsWrittenAtOnceAndSurvivesCancel)
{
    write::display.GrayColorBar = 0;
    Run([](HWND dialog) {
        CheckDlgButton(dialog, 1252, true);
        SendMessage(dialog, WM_COMMAND, MakeLong(1252, kButtonClicked), 1);
        EXPECT_EQ(TempScale, 1);
        EXPECT_EQ(GrayColorBar, 1);  // a scale needs its bar
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 1250));
        EXPECT_EQ(IniKey("Display", "GrayColorBar"), "1");
        SendMessage(dialog, WM_COMMAND, MakeLong(1250, kButtonClicked), 1);
        EXPECT_EQ(GrayColorBar, 0);
        EXPECT_EQ(TempScale, 0);
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1252));
    });
    EXPECT_EQ(GrayColorBar, 0);
    EXPECT_EQ(IniKey("Display", "GrayColorBar"), "0");
}

TEST_F(DisplayDialogTest, TheSideHistogramNeverTurnsOn)
{
    write::display.TempHisto = 1;
    Run([](HWND dialog) {
        CheckDlgButton(dialog, 1254, true);
        SendMessage(dialog, WM_COMMAND, MakeLong(1254, kButtonClicked), 1);
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1254));
    });
    EXPECT_EQ(TempHisto, 0);
}

TEST_F(DisplayDialogTest, AScaleChoiceWaitsForOk)
{
    Run([](HWND dialog) {
        SendMessage(dialog, WM_COMMAND, MakeLong(1239, kButtonClicked), 1);
        EXPECT_EQ(GrayScale, kLinearScale);
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(GrayScale, kLogScale);
    EXPECT_EQ(IniKey("Display", "GrayScale"), "1239");
}

TEST_F(DisplayDialogTest, HelpShowsItsPage)
{
    Run([](HWND dialog) {
        OperatePress(dialog, kIdHelp);
        EXPECT_EQ(CurrentHelpContext(), 288);
    });
}

TEST_F(DisplayDialogTest, ADialogThatCantBeOpenedIsTold)
{
    SetFault("load dialog DISPLAY", true);
    EXPECT_EQ(DisplayDialog(hWndMain), -1);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
    EXPECT_EQ(op->Boxes()[0].caption, "System Error");
}

TEST_F(DisplayDialogTest, TogglingTheBarClearsAScaleWithoutIt)
{
    write::display.GrayColorBar = 1;
    write::display.TempScale = 1;
    ToggleColorBar();
    EXPECT_EQ(GrayColorBar, 0);
    EXPECT_EQ(TempScale, 0);
    write::display.TempScale = 1;
    ToggleColorBar();
    EXPECT_EQ(GrayColorBar, 1);
    EXPECT_EQ(TempScale, 1);
    EXPECT_EQ(IniKey("Display", "GrayColorBar"), "1");
}

}  // namespace
}  // namespace kelvo
