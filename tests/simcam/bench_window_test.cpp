// The bench window, worked as an operator works it, in front of a small simulated camera.
#include "simcam/bench_window.h"

#include "grabber/copm2.h"
#include "platform/clock.h"
#include "platform/dialog_fixture.h"
#include "platform/faults.h"
#include "platform/help.h"
#include "platform/qt_dialog.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "simcam/sim_camera.h"
#include "state/windows_write.h"
#include "support/temp_directory.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

namespace kelvo {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class Bench : public DialogFixture {
  protected:
    void SetUp() override
    {
        DialogFixture::SetUp();
        write::windows.hWndMain = mainWindow;
        SetDefaultDir(directory.Path());
    }
    void TearDown() override
    {
        CloseBenchWindow();
        DialogFixture::TearDown();
    }

    // A camera of 16 x 8 detectors.
    void Connect()
    {
        PutFile(directory / "camera.cnf",
                "[Head]\nModel=InSb\nClock=48000000\n[Array]\nColumns=16\nRows=8\n"
                "[Bench]\nSource=scene\nLowDegrees=20\nHighDegrees=40\n");
        std::string error;
        camera = OpenSimCamera(directory / "camera.cnf", error);
        ASSERT_NE(camera, nullptr) << error;
    }

    void Open()
    {
        Connect();
        OpenBenchWindow(mainWindow);
        ASSERT_NE(BenchWindow(), nullptr);
    }

    // Pixel clock 48 MHz / 6 = 8 MHz; 64 x 80 units of 16 pixels: 10.24 ms; 10 lines of 320 and 80 pixels: 0.41 ms.
    void TurnOn() const
    {
        for (const WireFrame& frame : {WireFrame{0x50, 0, 0, 2}, WireFrame{0x50, 1, 64, 80}, WireFrame{0x50, 3, 12, 20},
                                       WireFrame{0x90, 0x30, 0, 0}}) {
            AnswerSimFrame(*camera, frame);
        }
    }

    // Three frames of 16 x 8 samples of two bytes.
    void LoadRecording()
    {
        PutFile(directory / "walk.raw", std::string(768, '\1'));
        ASSERT_TRUE(OperateText(BenchWindow(), kBenchColumns, "16"));
        ASSERT_TRUE(OperateText(BenchWindow(), kBenchRows, "8"));
        op->Do([this] { EXPECT_TRUE(ChooseFiles({directory / "walk.raw"})); });
        ASSERT_TRUE(OperatePress(BenchWindow(), kBenchLoad));
    }

    static std::string Text(int id) { return GetDlgItemText(BenchWindow(), id); }

    TempDirectory directory;
    std::shared_ptr<SimCamera> camera;
};

TEST_F(Bench, WithoutASimulatedCameraABoxTellsSo)
{
    OpenBenchWindow(mainWindow);
    EXPECT_EQ(BenchWindow(), nullptr);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "No simulated camera is connected.\nThe ports in platform.ini tell what is.");
    EXPECT_EQ(op->Boxes()[0].icon, "information");
    EXPECT_EQ(PutBenchSource("low", 20.0), "no simulated camera");
    EXPECT_THAT(BenchTruth(0, 0), IsEmpty());
}

TEST_F(Bench, AWindowThatCannotBeMadeIsTold)
{
    Connect();
    SetFault("load dialog BENCH", true);
    OpenBenchWindow(mainWindow);
    EXPECT_EQ(BenchWindow(), nullptr);
    EXPECT_EQ(op->Boxes().at(0).text, "Unable to display dialog");
}

TEST_F(Bench, OpensWithWhatStandsInFront)
{
    Open();
    EXPECT_EQ(DialogName(BenchWindow()), "BENCH");
    EXPECT_TRUE(IsDlgButtonChecked(BenchWindow(), kBenchScene));
    EXPECT_FALSE(IsDlgButtonChecked(BenchWindow(), kBenchLow));
    EXPECT_EQ(Text(kBenchLowDegrees), "20");
    EXPECT_EQ(Text(kBenchHighDegrees), "40");
    EXPECT_EQ(Text(kBenchRate), "-");
    EXPECT_EQ(Text(kBenchClocks), "off");
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kScene) << "opening puts nothing in front of the camera";
}

TEST_F(Bench, EachButtonPutsItsSourceInFront)
{
    Open();
    LoadRecording();
    const std::pair<int, SimSource> buttons[] = {{kBenchLow, SimSource::kLow},
                                                 {kBenchHigh, SimSource::kHigh},
                                                 {kBenchRaw, SimSource::kRaw},
                                                 {kBenchVolts, SimSource::kVolts},
                                                 {kBenchScene, SimSource::kScene}};
    for (const auto& [button, source] : buttons) {
        ASSERT_TRUE(OperateCheck(BenchWindow(), button, true));
        EXPECT_EQ(SimSourceInFront(*camera), source);
    }
}

TEST_F(Bench, ATypedTemperatureIsTheSourcesOwn)
{
    Open();
    ASSERT_TRUE(OperateText(BenchWindow(), kBenchLowDegrees, "15"));
    ASSERT_TRUE(OperateText(BenchWindow(), kBenchHighDegrees, "-12"));
    EXPECT_EQ(SimSourceDegrees(*camera, SimSource::kLow), 15);
    EXPECT_EQ(SimSourceDegrees(*camera, SimSource::kHigh), -12);
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kScene) << "a temperature moves no source";
    EXPECT_EQ(GetScrollMin(BenchWindow(), kBenchLowDegrees), -40);
    EXPECT_EQ(GetScrollMax(BenchWindow(), kBenchLowDegrees), 150);
}

TEST_F(Bench, ATypedVoltageStandsAtTheInputs)
{
    Open();
    EXPECT_EQ(Text(kBenchInputVolts), "0.000");
    ASSERT_TRUE(OperateText(BenchWindow(), kBenchInputVolts, "-0.25"));
    EXPECT_EQ(SimInputVolts(*camera), -0.25);
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kScene) << "a voltage moves no source";
    ASSERT_TRUE(OperateText(BenchWindow(), kBenchInputVolts, "-"));
    EXPECT_EQ(SimInputVolts(*camera), -0.25) << "half typed";
    EXPECT_EQ(PutBenchSource("volts", 0.3), "");
    EXPECT_TRUE(IsDlgButtonChecked(BenchWindow(), kBenchVolts));
    EXPECT_FALSE(IsDlgButtonChecked(BenchWindow(), kBenchScene));
    EXPECT_EQ(SimInputVolts(*camera), 0.3);
    EXPECT_EQ(PutBenchSource("volts", 5.5), "5.5 volts are outside -5 to 5");
}

TEST_F(Bench, OnceASecondItShowsWhatTheCameraDoes)
{
    Open();
    TurnOn();
    EXPECT_EQ(Text(kBenchClocks), "off");
    op->Do([] { DelayMs(1000); });
    op->Do([] { PostQuitMessage(0); });  // once the timer has been served
    RunMessageLoop(mainWindow);
    EXPECT_EQ(Text(kBenchClocks), "on");
    EXPECT_EQ(Text(kBenchRate), "97.66 Hz");
    EXPECT_EQ(Text(kBenchIntegration), "0.410 ms");
}

TEST_F(Bench, WhatAScriptPutsInFrontShowsAtOnce)
{
    Open();
    EXPECT_EQ(PutBenchSource("high", 35.4), "");
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kHigh);
    EXPECT_EQ(SimSourceDegrees(*camera, SimSource::kHigh), 35.4);
    EXPECT_TRUE(IsDlgButtonChecked(BenchWindow(), kBenchHigh));
    EXPECT_EQ(Text(kBenchHighDegrees), "35");
    SendMessage(BenchWindow(), WM_TIMER, 1, 0);
    EXPECT_EQ(SimSourceDegrees(*camera, SimSource::kHigh), 35.4) << "showing it rounds nothing away";
}

TEST_F(Bench, ScriptsAreToldWhatIsWrong)
{
    Connect();
    EXPECT_EQ(PutBenchSource("warm", std::nullopt), "no source \"warm\": low, high, scene, raw or volts");
    EXPECT_EQ(PutBenchSource("low", 151.0), "151 degrees Celsius is outside -40 to 150");
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kScene);
    EXPECT_EQ(SimSourceDegrees(*camera, SimSource::kLow), 20);
    EXPECT_EQ(PutBenchSource("low", std::nullopt), "");
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kLow);
}

TEST_F(Bench, TruthTellsOfADetectorOnTheArrayOnly)
{
    Connect();
    EXPECT_THAT(BenchTruth(15, 7), Contains(Pair("gain", testing::Gt(0.0))));
    EXPECT_THAT(BenchTruth(16, 7), IsEmpty());
    EXPECT_THAT(BenchTruth(-1, 0), IsEmpty());
}

TEST_F(Bench, RecordedFramesCanBeChosenOnceThereAreSome)
{
    Open();
    EXPECT_EQ(Text(kBenchFile), "Nothing is loaded yet.");
    EXPECT_FALSE(DlgItemEnabled(BenchWindow(), kBenchRaw));
    EXPECT_EQ(PutBenchSource("raw", std::nullopt), "no recorded frames are loaded");
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kScene);
    LoadRecording();
    EXPECT_TRUE(DlgItemEnabled(BenchWindow(), kBenchRaw));
    EXPECT_EQ(PutBenchSource("low", std::nullopt), "");
    EXPECT_EQ(PutBenchSource("raw", std::nullopt), "");
    // The frames belong to the camera, not to the window.
    CloseBenchWindow();
    OpenBenchWindow(mainWindow);
    EXPECT_EQ(Text(kBenchFile), "walk.raw");
    EXPECT_TRUE(IsDlgButtonChecked(BenchWindow(), kBenchRaw));
}

TEST_F(Bench, HelpShowsItsPage)
{
    Open();
    ASSERT_TRUE(OperatePress(BenchWindow(), kIdHelp));
    EXPECT_EQ(CurrentHelpContext(), kHelpBench);
}

TEST_F(Bench, RecordedFramesComeFromAFile)
{
    Open();
    LoadRecording();
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kRaw);
    EXPECT_TRUE(IsDlgButtonChecked(BenchWindow(), kBenchRaw));
    EXPECT_EQ(Text(kBenchFile), "walk.raw");
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(Bench, AFileThatHoldsNoFramesIsToldAndChangesNothing)
{
    Open();
    PutFile(directory / "torn.raw", "abc");
    ASSERT_TRUE(OperateText(BenchWindow(), kBenchColumns, "16"));
    ASSERT_TRUE(OperateText(BenchWindow(), kBenchRows, "8"));
    op->Do([this] { EXPECT_TRUE(ChooseFiles({directory / "torn.raw"})); });
    ASSERT_TRUE(OperatePress(BenchWindow(), kBenchLoad));
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("Unable to load the recorded frames\n"));
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kScene);
    EXPECT_EQ(Text(kBenchFile), "Nothing is loaded yet.");
}

TEST_F(Bench, ACancelledSelectionChangesNothing)
{
    Open();
    op->Do([] { EXPECT_TRUE(CancelFileDialog()); });
    ASSERT_TRUE(OperatePress(BenchWindow(), kBenchLoad));
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kScene);
}

TEST_F(Bench, PulsesTheTriggerInput)
{
    RegisterSimulatedBoard();
    Open();
    EXPECT_EQ(Text(kBenchTriggerPeriod), "none");
    EXPECT_EQ(Text(kBenchTriggersTaken), "0, input off");
    EXPECT_EQ(Text(kBenchSync), "low; pulses: 0");
    PutFile(directory / "platform.ini", "[Board]\nBoard=sim\n");
    ASSERT_EQ(itx_load_cnf(directory / "camera.cnf"), 0);
    amdig_trigen(1, 1);
    amdig_exsyncp(1, 1);
    ASSERT_TRUE(OperatePress(BenchWindow(), kBenchTrigger));
    ASSERT_TRUE(OperatePress(BenchWindow(), kBenchTrigger));
    EXPECT_EQ(Text(kBenchTriggersTaken), "2, input on");
    EXPECT_EQ(Text(kBenchSync), "high; pulses: 1");
    ASSERT_TRUE(OperateText(BenchWindow(), kBenchTriggerPeriod, "20"));
    EXPECT_EQ(ReadSimLines().triggerPeriodUs, 20'000);
    EXPECT_EQ(PulseBenchTrigger(0.0), "");
    EXPECT_EQ(ReadSimLines().triggerPeriodUs, 0);
    EXPECT_EQ(PulseBenchTrigger({}), "");
    EXPECT_EQ(ReadSimLines().triggers, 3);
}

TEST_F(Bench, RefusesAPeriodThatIsNone)
{
    EXPECT_EQ(PulseBenchTrigger({}), "no simulated camera");
    EXPECT_THAT(BenchLines(), IsEmpty());
    Open();
    EXPECT_EQ(PulseBenchTrigger(-1.0), "a period of -1 ms is outside 0 to 60000");
    EXPECT_EQ(PulseBenchTrigger(60'001.0), "a period of 60001 ms is outside 0 to 60000");
    EXPECT_EQ(BenchLines().at(2), std::make_pair(std::string("trigger_period"), 0.0));
}

TEST_F(Bench, StaysUsableWhileADialogIsOpen)
{
    Open();
    Then([] {
        ASSERT_EQ(DialogName(DialogInFront()), "DISPLAY");
        EXPECT_TRUE(BenchWindow()->widget->isEnabled());
        EXPECT_FALSE(BenchWindow()->widget->isModal());
        EXPECT_EQ(BenchWindow()->widget->parentWidget(), nullptr) << "a child of the main window would be blocked";
        EXPECT_TRUE(OperateCheck(BenchWindow(), kBenchHigh, true));
        EndDialog(DialogInFront(), 1);
    });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 1);
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kHigh);
}

TEST_F(Bench, OpeningItAgainKeepsTheOneThatStands)
{
    Open();
    const HWND first = BenchWindow();
    OpenBenchWindow(mainWindow);
    EXPECT_EQ(BenchWindow(), first);
    EXPECT_THAT(TranscriptOf("dialog"), SizeIs(1));
    ASSERT_TRUE(OperatePress(BenchWindow(), kIdCancel));
    EXPECT_EQ(BenchWindow(), nullptr);
    OpenBenchWindow(mainWindow);
    EXPECT_NE(BenchWindow(), nullptr);
}

TEST_F(Bench, TheCloseButtonOfTheWindowClosesIt)
{
    Open();
    BenchWindow()->widget->close();
    EXPECT_EQ(BenchWindow(), nullptr);
    CloseBenchWindow();
}

TEST_F(Bench, ReturnInATemperatureKeepsTheWindowOpenAndEscapeClosesIt)
{
    Open();
    QWidget* edit = ControlOf(BenchWindow(), kBenchLowDegrees);
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent key(type, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
        QApplication::sendEvent(edit, &key);
    }
    EXPECT_NE(BenchWindow(), nullptr);
    EXPECT_FALSE(FileDialogInFront());
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(edit, &escape);
    EXPECT_EQ(BenchWindow(), nullptr);
}

TEST_F(Bench, TheKeyboardGoesThroughFromTopToBottom)
{
    Open();
    const int order[] = {kBenchLowDegrees, kBenchHighDegrees,   kBenchLoad, kBenchColumns, kBenchRows,
                         kBenchTrigger,    kBenchTriggerPeriod, kIdCancel,  kIdHelp};
    QWidget* widget = ControlOf(BenchWindow(), kBenchLow);
    std::size_t reached = 0;
    for (QWidget* next = widget->nextInFocusChain(); next != widget; next = next->nextInFocusChain()) {
        if (reached < std::size(order) && next == ControlOf(BenchWindow(), order[reached])) ++reached;
    }
    EXPECT_EQ(reached, std::size(order));
}

}  // namespace
}  // namespace kelvo
