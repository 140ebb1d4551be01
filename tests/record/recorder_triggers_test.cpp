// What triggers the recorder from outside the program: pulses at the board's input, the signal of another application.
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/memory.h"
#include "platform/signal_socket.h"
#include "platform/window.h"
#include "record/external_signal.h"
#include "record/recorder_fixture.h"
#include "state/windows.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RecorderTriggers : public RecorderTest {
  protected:
    // Two frames from the trigger frame on, three before it, three times.
    RecorderSettings ThreeEvents(RecordTrigger trigger) const
    {
        RecorderSettings settings = Settings();
        settings.trigger = trigger;
        settings.preTriggerFrames = 3;
        settings.length = RecordLength::kFrames;
        settings.frames = 2;
        settings.events = 3;
        return settings;
    }
};

TEST_F(RecorderTriggers, PulsesAtTheBoardsInputAreEvents)
{
    PulseSimTrigger();  // nobody listens
    Start(ThreeEvents(RecordTrigger::kBoardInput));
    EXPECT_TRUE(ReadSimLines().triggerOn);
    GoToFrame(10);
    EXPECT_EQ(CurrentRecorderStatus().state, RecorderState::kArmed);
    PulseSimTrigger();
    GoToFrame(11);
    PulseSimTrigger();  // within the event: no other
    GoToFrame(20);
    PulseSimTrigger();
    GoToFrame(30);
    EXPECT_EQ(CurrentRecorderStatus().state, RecorderState::kArmed);
    SetSimTriggerPeriod(100'000);  // the first one comes behind frame 40
    GoToFrame(60);
    TendRecorder();
    EXPECT_FALSE(RecorderRuns());
    EXPECT_EQ(CurrentRecorderStatus().end, RecorderEnd::kComplete);
    EXPECT_THAT(NumbersOf(Out("event001.seq")), ElementsAre(8, 9, 10, 11, 12));
    EXPECT_THAT(NumbersOf(Out("event002.seq")), ElementsAre(18, 19, 20, 21, 22));
    EXPECT_THAT(NumbersOf(Out("event003.seq")), ElementsAre(38, 39, 40, 41, 42));
    std::vector<std::uint32_t> pulses;
    std::vector<std::int64_t> triggerFrames;
    for (const FrameRecord& record : ReadFramesFile(Out("event001.seq.frames")).records) {
        pulses.push_back(record.triggers);
        if ((record.flags & kTriggerFrame) != 0) triggerFrames.push_back(record.number);
    }
    EXPECT_THAT(pulses, ElementsAre(0, 0, 0, 1, 2));
    EXPECT_THAT(triggerFrames, ElementsAre(11));
    ExpectBalance(CurrentRecorderStatus().counts);
}

TEST_F(RecorderTriggers, APulseBeforeTheFirstFrameOfTheRunIsATrigger)
{
    GoToFrame(5);
    RecorderSettings settings = ThreeEvents(RecordTrigger::kBoardInput);
    settings.events = 1;
    Start(settings);
    PulseSimTrigger();
    GoToFrame(10);
    EXPECT_THAT(NumbersOf(Out("event001.seq")), ElementsAre(6, 7));
}

TEST_F(RecorderTriggers, TheInputIsOnOnlyWhileARunListens)
{
    EXPECT_FALSE(ReadSimLines().triggerOn);
    Start(ThreeEvents(RecordTrigger::kButton));
    EXPECT_FALSE(ReadSimLines().triggerOn);
    PulseSimTrigger();
    GoToFrame(10);
    StopRecorder();
    EXPECT_THAT(FilesOut(), IsEmpty());
    Start(ThreeEvents(RecordTrigger::kBoardInput));
    EXPECT_TRUE(ReadSimLines().triggerOn);
    StopRecorder();
    EXPECT_FALSE(ReadSimLines().triggerOn);

    FailAllocation(1);
    std::string why;
    while (!StartRecorder(ThreeEvents(RecordTrigger::kBoardInput), why)) {
        EXPECT_FALSE(ReadSimLines().triggerOn);
        static int refused = 1;
        ASSERT_LT(refused, 20);
        FailAllocation(++refused);
    }
    FailAllocation(0);
}

// As the main window hands it on.
LRESULT HandOn(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (message != ExternalSignalMessage) return DefWindowProc(window, message, wParam, lParam);
    StopExternalThread(ExternalThread);
    SignalRecorder();
    StartExternalThread(window);
    return 0;
}

TEST_F(RecorderTriggers, TheSignalOfAnotherApplicationIsAnEvent)
{
    setenv("XDG_RUNTIME_DIR", directory.Path().c_str(), 1);
    std::filesystem::permissions(directory.Path(), std::filesystem::perms::owner_all);
    WindowClass listener;
    listener.name = "LISTENER";
    listener.procedure = HandOn;
    ASSERT_TRUE(RegisterWindowClass(listener));
    const HWND window = CreateMainWindow("LISTENER", "listener");
    InitExternalSignal();
    ASSERT_TRUE(ExternalSignalCanCome());
    ASSERT_NE(StartExternalThread(window), 0);
    const auto signal = [] {
        ASSERT_TRUE(SendSignal(SignalSocketPath(DefaultDir)));
        for (int i = 0; i < 100; ++i) QCoreApplication::processEvents();
    };
    Start(ThreeEvents(RecordTrigger::kSignal));
    GoToFrame(10);
    signal();
    GoToFrame(20);
    EXPECT_THAT(NumbersOf(Out("event001.seq")), ElementsAre(8, 9, 10, 11, 12));
    signal();
    GoToFrame(30);
    EXPECT_THAT(NumbersOf(Out("event002.seq")), ElementsAre(18, 19, 20, 21, 22));
    StopRecorder();
    CloseExternalSignal();
}

}  // namespace
}  // namespace kelvo
