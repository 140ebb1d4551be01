// What the operator is asked, and what stands on the disk, where the program ends while something records.
#include "grabber/recording.h"
#include "imagefile/recovery.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/window.h"
#include "record/recorder_fixture.h"
#include "record/what_records.h"
#include "resources/ids.h"
#include "resources/menu.h"
#include "script/script.h"
#include "shell/commands.h"
#include "shell/main_window.h"
#include "shell/panel.h"
#include "shell/shutdown.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows_write.h"

#include <QGuiApplication>
#include <QSessionManager>

#include <gmock/gmock.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EndWhileRecording : public RecorderTest {
  protected:
    void SetUp() override
    {
        RegisterWindowClass({"KELVO", MainWndProc, {}, false, 0});
        write::windows.hWndMain = CreateMainWindow("KELVO", "Kelvo");
        SetMenu(hWndMain, MainMenu());
        RecorderTest::SetUp();
        RecorderSettings settings = Settings();
        settings.length = RecordLength::kUntilStopped;
        Start(settings);
        GoToFrame(5);
    }

    // As `kelvo recover --dry-run` finds it.
    void ExpectWhole(std::int64_t atLeast) const
    {
        EXPECT_FALSE(RecordingRuns());
        EXPECT_FALSE(SomethingRecords());
        const RecoveryReport report = RecoverSequence(Out("event001.seq"), true);
        EXPECT_EQ(report.outcome, Recovery::kClean) << report.why;
        EXPECT_TRUE(report.wasClosed);
        EXPECT_GE(report.frames, atLeast);
    }
    void ExpectGoesOn()
    {
        ASSERT_TRUE(RecorderRuns());
        const std::int64_t frames = CurrentRecorderStatus().frames;
        AdvanceVirtualClock(100'000);
        EXPECT_EQ(CurrentRecorderStatus().frames, frames + 10);
        ExpectBalance(CurrentCaptureCounts());
    }
};

constexpr const char* kQuestion = "A recording is running.\nStop it and quit?";

TEST_F(EndWhileRecording, ClosingTheWindowAsksAndCancelLeavesAllAsItWas)
{
    op.Answer({Button::kCancel});
    SendMessage(hWndMain, WM_CLOSE, 0, 0);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, kQuestion);
    EXPECT_EQ(op.Boxes()[0].caption, "QVF Vantir");
    EXPECT_THAT(op.Boxes()[0].buttons, ElementsAre("ok", "cancel"));
    EXPECT_EQ(op.Boxes()[0].defaultButton, "cancel");
    EXPECT_TRUE(hWndMain);
    EXPECT_EQ(LiveVideo, 1);
    ExpectGoesOn();
}

TEST_F(EndWhileRecording, OkStopsItAndQuits)
{
    op.Answer({Button::kOk});
    SendMessage(hWndMain, WM_CLOSE, 0, 0);
    ExpectWhole(5);
    RunMessageLoop(hWndMain);  // returns: the program has ended
}

TEST_F(EndWhileRecording, TheExitCommandAsksTheOneQuestion)
{
    op.Answer({Button::kCancel, Button::kOk});
    EXPECT_EQ(RunCommand(hWndMain, kCmdExit), 0);
    ExpectGoesOn();
    EXPECT_EQ(RunCommand(hWndMain, kCmdExit), 1);
    ASSERT_EQ(op.Boxes().size(), 2U);
    EXPECT_EQ(op.Boxes()[0].text, kQuestion);
    EXPECT_EQ(op.Boxes()[1].text, kQuestion);
    ExpectWhole(15);
}

TEST_F(EndWhileRecording, ClosedUnaskedItStopsWithoutAQuestion)
{
    SendMessage(hWndMain, WM_CLOSE, kCloseUnasked, 0);
    EXPECT_THAT(op.Boxes(), IsEmpty());
    ExpectWhole(5);
}

TEST_F(EndWhileRecording, OneThatHasEndedByItselfIsNotAskedAbout)
{
    StopRecorder();
    SendMessage(hWndMain, WM_CLOSE, 0, 0);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(EndWhileRecording, ASignalStopsItAndQuitsWithoutAQuestion)
{
    ShutDownWhenAsked();
    std::raise(SIGTERM);
    RunMessageLoop(hWndMain);
    EXPECT_THAT(op.Boxes(), IsEmpty());
    ExpectWhole(5);
}

TEST_F(EndWhileRecording, TheSessionsEndStopsItAndTheProgramLivesOn)
{
    ShutDownWhenAsked();
    alignas(QSessionManager) std::array<std::byte, sizeof(QSessionManager)> nobody{};
    qGuiApp->commitDataRequest(*reinterpret_cast<QSessionManager*>(nobody.data()));  // NOLINT
    EXPECT_THAT(op.Boxes(), IsEmpty());
    ExpectWhole(5);
    EXPECT_TRUE(hWndMain);
    EXPECT_EQ(LiveVideo, 1);
}

// ---- What the operator can do meanwhile

TEST_F(EndWhileRecording, FreezeZoomPanAndColoursActOnTheDisplayAlone)
{
    const auto run = [this](int command) {
        SCOPED_TRACE(command);
        RunCommand(hWndMain, command);
        ExpectGoesOn();
    };
    run(kCmdFreeze);
    EXPECT_EQ(LiveVideo, 0);
    for (const int command : {kCmdZoomIn, kCmdPanRight, kCmdInvertedGray}) run(command);
    EXPECT_EQ(Xzoom, 2);
    EXPECT_EQ(LiveVideo, 0);
    run(kCmdFreeze);
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_THAT(op.Boxes(), IsEmpty());
    StopRecorder();
    EXPECT_EQ(CurrentRecorderStatus().lostByBoard, 0);
    EXPECT_EQ(CurrentRecorderStatus().lostByRing, 0);
}

TEST_F(EndWhileRecording, KeysOfCommandsThatNeedTheBoardSayWhy)
{
    for (const int command : {kCmdSaveImage, kCmdVideoSetup, kCmdTurnOn, kCmdHostRamCapture, kCmdUpdateCalibration}) {
        const std::size_t boxes = op.Boxes().size();
        RunCommand(hWndMain, command);
        ASSERT_EQ(op.Boxes().size(), boxes + 1) << command;
        EXPECT_EQ(op.Boxes().back().text, "Not while a recording runs.");
    }
    ExpectGoesOn();
}

TEST_F(EndWhileRecording, TheirButtonsInThePanelAreGreyAndSayWhy)
{
    StopRecorder();
    CreateDockedPanel("PANEL", hWndMain, PanelProc);
    constexpr int kTriggeredSave = 1016;
    const auto tips = [] {
        std::vector<std::string> all;
        for (const int id :
             {kCmdSaveImage, kCmdVideoSetup, kTriggeredSave, kCmdLoadImage, kCmdLoadNext, kCmdHistogram}) {
            all.push_back((DlgItemEnabled(hDlgPanel, id) ? "+" : "-") + DlgItemTip(hDlgPanel, id));
        }
        return all;
    };
    const std::vector<std::string> before = tips();
    EXPECT_EQ(before[0], "+Save image (F3)");
    RecorderSettings settings = Settings();
    settings.namePattern = "next{n:03}";
    Start(settings);
    const std::vector<std::string> meanwhile = tips();
    for (const std::size_t grey : {0U, 1U, 2U}) EXPECT_EQ(meanwhile[grey], "-Not while a recording runs");
    for (const std::size_t others : {3U, 4U, 5U}) EXPECT_EQ(meanwhile[others], before[others]);
    StopRecorder();
    EXPECT_EQ(tips(), before);
}

}  // namespace
}  // namespace kelvo
