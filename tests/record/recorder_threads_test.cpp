// The recorder with its threads, in real time.
#include "platform/clock.h"
#include "record/recorder_fixture.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

class RecorderInRealTime : public RecorderTest {
  protected:
    void SetUp() override
    {
        ResetClock();
        RecorderTest::SetUp();
    }
    static bool WaitFor(RecorderState state)
    {
        for (int i = 0; i < 500 && CurrentRecorderStatus().state != state; ++i) DelayMs(10);
        return CurrentRecorderStatus().state == state;
    }
};

// Whatever the machine's load: each frame is in the file or told as missing.
TEST_F(RecorderInRealTime, EveryFrameIsRecordedOrToldWhileTheOperatorWorks)
{
    Start(Settings());
    for (int i = 0; i < 30; ++i) {
        DelayMs(10);
        MarkRecorder();
        TendRecorder();
        ExpectBalance(CurrentRecorderStatus().counts);
    }
    StopRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    ExpectBalance(status.counts);
    EXPECT_EQ(status.counts.waiting, 0);
    const FramesFile journal = ReadFramesFile(Out("event001.seq.frames"));
    ASSERT_TRUE(journal.closing);
    ASSERT_FALSE(journal.records.empty());
    std::int64_t missing = 0;
    for (const FrameGap& gap : GapsOf(journal.records)) missing += gap.lostByBoard + gap.lostByRing;
    const auto frames = static_cast<std::int64_t>(journal.records.size());
    EXPECT_EQ(journal.records.back().number - journal.records.front().number + 1, frames + missing);
    EXPECT_EQ(status.frames, frames);
    EXPECT_EQ(status.counts.recorded, frames);
    EXPECT_EQ(HeaderNumbersOf(Out("event001.seq")), NumbersOf(Out("event001.seq")));
}

TEST_F(RecorderInRealTime, ATriggerTakesWhatCameBeforeIt)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    settings.preTriggerFrames = 5;
    settings.length = RecordLength::kFrames;
    settings.frames = 3;
    Start(settings);
    for (int i = 0; i < 500 && CurrentRecorderStatus().preTriggerWaiting < 5; ++i) DelayMs(10);
    const std::int64_t askedNs = TickUs() * 1000;
    TriggerRecorder();
    ASSERT_TRUE(WaitFor(RecorderState::kIdle));
    TendRecorder();
    EXPECT_EQ(CurrentRecorderStatus().end, RecorderEnd::kComplete);
    const FramesFile journal = ReadFramesFile(Out("event001.seq.frames"));
    ASSERT_EQ(journal.records.size(), 8U);
    EXPECT_LT(journal.records[4].monotonicNs, askedNs);
    EXPECT_GE(journal.records[5].monotonicNs, askedNs);
    EXPECT_EQ(journal.records[5].flags, static_cast<std::uint32_t>(kTriggerFrame));
}

}  // namespace
}  // namespace kelvo
