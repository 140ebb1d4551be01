// The dialogs that wait for a source.
#include "calib/source_dialogs.h"

#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/help.h"
#include "platform/qt_dialog.h"
#include "platform/window.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/calibration_fixture.h"
#include "ui/status.h"

#include <QLineEdit>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string SelectedTextOf(HWND dialog, int edit)
{
    const auto* const line = qobject_cast<const QLineEdit*>(ControlOf(dialog, edit));
    return line ? line->selectedText().toStdString() : "no edit";
}

class SourceDialog : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        write::cal.TemperatureCold = -999.0F;
        write::cal.TemperatureHot = -999.0F;
        result = -5;
    }
    void Cold(std::function<void(HWND)> work, std::function<void(HWND)> then = nullptr)
    {
        Work([this] { result = ColdSourceDialog(hWndMain, "1 Point Update"); }, std::move(work), std::move(then));
    }
    void Hot(std::function<void(HWND)> work, std::function<void(HWND)> then = nullptr)
    {
        Work([this] { result = HotSourceDialog(hWndMain); }, std::move(work), std::move(then));
    }
    // The same in either dialog.
    void InBoth(const std::function<void(HWND)>& work)
    {
        Cold(work);
        Hot(work);
    }
    static void TypeAndOk(HWND dialog, int edit, const char* text)
    {
        OperateText(dialog, edit, text);
        OperatePress(dialog, kIdOk);
    }

    int result = 0;
};

TEST_F(SourceDialog, TheColdOneAsksForTheLowSource)
{
    Cold([](HWND dialog) {
        EXPECT_EQ(DialogName(dialog), "CAL_COLD");
        EXPECT_EQ(GetWindowText(dialog), "1 Point Update");
        EXPECT_EQ(StatusText, " Press OK when LOW flux source is in front of camera");
        EXPECT_EQ(GetDlgItemText(dialog, 1224), "");
        EXPECT_EQ(GetDlgItemText(dialog, 1225), "1.0000");
        OperatePress(dialog, kIdHelp);
        EXPECT_EQ(CurrentHelpContext(), 1045);
        OperatePress(dialog, kIdCancel);
    });
    EXPECT_EQ(result, 0);
    EXPECT_THAT(op->Texts("beep", "sound"), ElementsAre("default"));
    EXPECT_EQ(StatusText, " Press OK when LOW flux source is in front of camera") << "Cancel says nothing here";
}

TEST_F(SourceDialog, TheHotOneAsksForTheHighSource)
{
    write::cal.TemperatureHot = 25.25F;
    write::calSet.CalSettings.EmissivityHot = 0.95F;
    Hot([](HWND dialog) {
        EXPECT_EQ(DialogName(dialog), "CAL_HOT");
        EXPECT_EQ(GetWindowText(dialog), "2 Point Calibration");
        EXPECT_EQ(StatusText, " Press OK when HIGH flux source is in front of camera");
        EXPECT_EQ(GetDlgItemText(dialog, 1226), "  25.25");
        EXPECT_EQ(GetDlgItemText(dialog, 1227), "0.9500");
        OperatePress(dialog, kIdHelp);
        EXPECT_EQ(CurrentHelpContext(), 1044);
        OperatePress(dialog, kIdCancel);
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(StatusText, " Use Alt + underlined menu item or trackball to select menu item");
    EXPECT_THAT(op->Texts("beep", "sound"), IsEmpty());
}

TEST_F(SourceDialog, AnEmissivityOutOfRangeIsNotShown)
{
    write::calSet.CalSettings.EmissivityCold = 0.0F;
    Cold([](HWND dialog) { EXPECT_EQ(GetDlgItemText(dialog, 1225), ""); });
    write::calSet.CalSettings.EmissivityCold = 1.5F;
    Cold([](HWND dialog) { EXPECT_EQ(GetDlgItemText(dialog, 1225), ""); });
}

TEST_F(SourceDialog, OkTakesTemperatureAndEmissivity)
{
    Cold([](HWND dialog) {
        OperateText(dialog, 1225, "0.5");
        TypeAndOk(dialog, 1224, "20.5");
    });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(TemperatureCold, 20.5F);
    EXPECT_EQ(CalSettings.EmissivityCold, 0.5F);
}

TEST_F(SourceDialog, AnEmptyTemperatureIsNotGivenAndAnEmptyEmissivityStays)
{
    write::cal.TemperatureCold = 20.0F;
    write::calSet.CalSettings.EmissivityCold = 0.75F;
    Cold([](HWND dialog) {
        OperateText(dialog, 1225, "");
        TypeAndOk(dialog, 1224, "");
    });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(TemperatureCold, -999.0F);
    EXPECT_EQ(CalSettings.EmissivityCold, 0.75F);
}

TEST_F(SourceDialog, TemperaturesFromMinus274To2500AreTaken)
{
    for (const char* text : {"-274.0", "2500.0"}) {
        Cold([text](HWND dialog) { TypeAndOk(dialog, 1224, text); });
        EXPECT_EQ(result, 1) << text;
    }
    EXPECT_EQ(TemperatureCold, 2500.0F);
}

TEST_F(SourceDialog, OtherTemperaturesBeepAndStay)
{
    for (const char* text : {"-274.1", "2500.1", "cold", "nan", "inf", " "}) {
        Cold([text](HWND dialog) { TypeAndOk(dialog, 1224, text); },
             [](HWND dialog) {
                 ASSERT_TRUE(dialog);
                 EXPECT_EQ(FocusedDlgItem(dialog), 1224);
             });
        EXPECT_EQ(result, 0) << text;
        EXPECT_EQ(TemperatureCold, -999.0F) << text;
    }
    EXPECT_THAT(op->Texts("beep", "sound"), SizeIs(12)) << "at opening, and at the refusal";
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(SourceDialog, AnEmissivityOutOfRangeBeepsAndIsSetToOne)
{
    for (const char* text : {"0", "-0.5", "1.01", "black", "nan"}) {
        Hot([text](HWND dialog) { TypeAndOk(dialog, 1227, text); },
            [](HWND dialog) {
                ASSERT_TRUE(dialog);
                EXPECT_EQ(GetDlgItemText(dialog, 1227), "1.0");
                EXPECT_EQ(SelectedTextOf(dialog, 1227), "1.0") << "what is typed next replaces it";
            });
        EXPECT_EQ(result, 0) << text;
    }
    EXPECT_THAT(op->Texts("beep", "sound"), SizeIs(5));
    Hot([](HWND dialog) { TypeAndOk(dialog, 1227, "1"); });
    EXPECT_EQ(result, 1);
}

// The calibration in force reads degrees by these temperatures while the dialog stands.
TEST_F(SourceDialog, NothingIsTakenBeforeAllFieldsAreRight)
{
    write::cal.TemperatureCold = 20.0F;
    write::cal.TemperatureHot = 25.0F;
    write::calSet.CalSettings.EmissivityCold = 0.5F;
    write::calSet.CalSettings.EmissivityHot = 0.75F;
    const auto expectUnchanged = [] {
        EXPECT_EQ(TemperatureCold, 20.0F);
        EXPECT_EQ(TemperatureHot, 25.0F);
        EXPECT_EQ(CalSettings.EmissivityCold, 0.5F);
        EXPECT_EQ(CalSettings.EmissivityHot, 0.75F);
    };
    Cold(
        [](HWND dialog) {
            OperateText(dialog, 1225, "7");
            TypeAndOk(dialog, 1224, "100");
        },
        [&](HWND dialog) {
            ASSERT_TRUE(dialog);
            expectUnchanged();
            OperateText(dialog, 1225, "0.9");
            TypeAndOk(dialog, 1224, "-300");
            expectUnchanged();
            OperatePress(dialog, kIdCancel);
        });
    EXPECT_EQ(result, 0);
    expectUnchanged();
    Hot(
        [](HWND dialog) {
            OperateText(dialog, 1227, "7");
            TypeAndOk(dialog, 1226, "100");
        },
        [&](HWND dialog) {
            ASSERT_TRUE(dialog);
            expectUnchanged();
            OperatePress(dialog, kIdCancel);
        });
    EXPECT_EQ(result, 0);
    expectUnchanged();
}

TEST_F(SourceDialog, AHighSourceThatIsNotHotterIsAskedAbout)
{
    write::cal.TemperatureCold = 20.0F;
    op->Answer({Button::kCancel, Button::kOk});
    Hot([](HWND dialog) { TypeAndOk(dialog, 1226, "20.0"); },
        [](HWND dialog) {
            ASSERT_TRUE(dialog) << "Cancel stays";
            EXPECT_EQ(TemperatureHot, -999.0F);
            TypeAndOk(dialog, 1226, "19.0");
        });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(TemperatureHot, 19.0F);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text, "High temperature is <= Low temperature");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("ok", "cancel"));
    EXPECT_EQ(op->Boxes()[0].defaultButton, "cancel");
}

TEST_F(SourceDialog, AHotterOneAndOneThatIsNotGivenAreNotAskedAbout)
{
    write::cal.TemperatureCold = 20.0F;
    for (const char* text : {"20.01", ""}) {
        Hot([text](HWND dialog) { TypeAndOk(dialog, 1226, text); });
        EXPECT_EQ(result, 1) << text;
        EXPECT_EQ(StatusText, "  Getting high flux calibration data...");
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(TemperatureHot, -999.0F);
}

TEST_F(SourceDialog, TheirControlsBearTheirTexts)
{
    Cold([](HWND dialog) {
        EXPECT_EQ(GetDlgItemText(dialog, 1), "&Ok");
        EXPECT_EQ(GetDlgItemText(dialog, 2), "&Cancel");
    });
}

TEST_F(SourceDialog, OneThatCantBeOpenedIsTold)
{
    SetFault("load dialog CAL_COLD", true);
    SetFault("load dialog CAL_HOT", true);
    EXPECT_EQ(ColdSourceDialog(hWndMain, "1 Point Update"), 0);
    EXPECT_EQ(HotSourceDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    for (const auto& box : op->Boxes()) {
        EXPECT_EQ(box.text, "Unable to display dialog");
        EXPECT_EQ(box.caption, "System Error");
    }
}

// --- The live picture, and the bench ---

TEST_F(SourceDialog, WithoutLiveVideoThereAreNoFigures)
{
    Cold([](HWND dialog) {
        for (const int id : {kSourceMean, kSourceDeviation, kSourceSaturated, kSourceSteady}) {
            EXPECT_EQ(GetDlgItemText(dialog, id), "-") << id;
        }
    });
}

TEST_F(SourceDialog, TheLivePictureTellsOfTheSource)
{
    write::frames.LiveVideo = 1;
    write::frames.RawFrame = {0, 0, 0, 16383};
    InBoth([](HWND dialog) {
        EXPECT_EQ(GetDlgItemText(dialog, kSourceMean), "4095.8 counts");
        EXPECT_EQ(GetDlgItemText(dialog, kSourceDeviation), "8191.5 counts");
        EXPECT_EQ(GetDlgItemText(dialog, kSourceSaturated), "100.00 %");
        EXPECT_EQ(GetDlgItemText(dialog, kSourceSteady), "not steady: the mean still moves");
    });
}

TEST_F(SourceDialog, TheFiguresFollowThePictureUntilItIsSteady)
{
    write::frames.LiveVideo = 1;
    write::frames.RawFrame = {1000, 1000};
    Cold([](HWND dialog) {
        write::frames.RawFrame = {2000, 2002};
        for (int quarter = 0; quarter < 4; ++quarter) SendMessage(dialog, WM_TIMER, 1, 0);
        EXPECT_EQ(GetDlgItemText(dialog, kSourceMean), "2001.0 counts");
        EXPECT_EQ(GetDlgItemText(dialog, kSourceSteady), "not steady: the mean still moves");
        AdvanceVirtualClock(1'000'000);
        SendMessage(dialog, WM_TIMER, 1, 0);
        AdvanceVirtualClock(1'000'000);
        SendMessage(dialog, WM_TIMER, 1, 0);
        EXPECT_EQ(GetDlgItemText(dialog, kSourceSteady), "steady");
        write::frames.LiveVideo = 0;
        SendMessage(dialog, WM_TIMER, 1, 0);
        EXPECT_EQ(GetDlgItemText(dialog, kSourceSteady), "-") << "frozen";
    });
}

TEST_F(SourceDialog, TheBenchIsOfferedWhereThereIsOne)
{
    static HWND opened = nullptr;
    const auto isVisible = [](HWND dialog) { return ControlOf(dialog, kSourceBench)->isVisible(); };
    Cold([&](HWND dialog) { EXPECT_FALSE(isVisible(dialog)) << "none is set"; });
    SetSourceBench({[] { return false; }, [](HWND owner) { opened = owner; }});
    Cold([&](HWND dialog) { EXPECT_FALSE(isVisible(dialog)); });
    SetSourceBench({[] { return true; }, [](HWND owner) { opened = owner; }});
    InBoth([&](HWND dialog) {
        EXPECT_TRUE(isVisible(dialog));
        OperatePress(dialog, kSourceBench);
        EXPECT_EQ(opened, dialog);
    });
    SetSourceBench({});
}

}  // namespace
}  // namespace kelvo
