#include "grabber/recording.h"
#include "imagefile/crc32c.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/memory.h"
#include "record/event_files.h"
#include "record/recorder_fixture.h"
#include "record/recorder_run.h"
#include "record/trigger_watch.h"
#include "regions/region_list.h"
#include "state/cal_state_write.h"
#include "state/frame_state_write.h"
#include "support/full_disk.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <numeric>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::vector<std::int64_t> FromTo(std::int64_t first, std::int64_t last)
{
    std::vector<std::int64_t> numbers(static_cast<std::size_t>(last - first + 1));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

class Recorder : public RecorderTest {};

TEST_F(Recorder, RecordsEveryFrameUntilItIsStopped)
{
    Start(Settings());
    GoToFrame(20);
    EXPECT_EQ(CurrentRecorderStatus().state, RecorderState::kRecording);
    EXPECT_EQ(CurrentRecorderStatus().frames, 20);
    StopRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.state, RecorderState::kIdle);
    EXPECT_EQ(status.end, RecorderEnd::kStopped);
    EXPECT_EQ(status.verdict, "20 frames, none lost, 0.2 s");
    EXPECT_EQ(status.exitCode, 0);
    EXPECT_EQ(status.message, "");
    EXPECT_THAT(status.files, ElementsAre(Out("event001.seq")));
    EXPECT_THAT(FilesOut(), ElementsAre("event001.seq", "event001.seq.frames"));
    ExpectBalance(status.counts);
    EXPECT_EQ(status.counts.recorded, 20);
}

TEST_F(Recorder, TheFileIsWhatTheFormatSays)
{
    Start(Settings());
    GoToFrame(3);
    StopRecorder();
    const TakenApart file = TakeApart(Out("event001.seq"), kPixels);
    EXPECT_EQ(file.bytesBehind, 0U);
    EXPECT_EQ(file.header.ByteSwap, 0xFFFF);
    EXPECT_EQ(+file.header.FrameCount, 3U);
    EXPECT_EQ(file.header.ImageWidth, 320);
    EXPECT_EQ(file.header.ImageHeight, 256);
    EXPECT_EQ(file.header.SampleBytes, 2);
    EXPECT_EQ(file.header.HeaderVersion, 8);
    EXPECT_EQ(file.header.ImageHeaderDataOffset, 80);
    EXPECT_EQ(file.header.FramesAveraged, 1);
    EXPECT_EQ(file.header.IntensityCold, -10000) << "raw frames are marked as uncalibrated";
    ASSERT_THAT(file.frames, SizeIs(3));
    const FramesFile journal = ReadFramesFile(Out("event001.seq.frames"));
    ASSERT_THAT(journal.records, SizeIs(3));
    for (std::size_t i = 0; i < 3; ++i) {
        const auto number = static_cast<std::int64_t>(i) + 1;
        EXPECT_EQ(file.frames[i], Expected(number - 1, grabUs + number * 10'000)) << i;
        EXPECT_EQ(+file.frameHeaders[i].FrameNum, number - 1);
        EXPECT_EQ(+file.frameHeaders[i].AllFramesNum, number);
        EXPECT_EQ(+file.frameHeaders[i].FrameIntegrationMsec, 2.5F);
        EXPECT_EQ(journal.records[i].number, number);
        EXPECT_EQ(journal.records[i].monotonicNs, (grabUs + number * 10'000) * 1000);
        EXPECT_EQ(journal.records[i].utcNs, UtcNsAtTick(grabUs + number * 10'000));
        EXPECT_EQ(journal.records[i].integrationMs, 2.5F);
        EXPECT_EQ(journal.records[i].pixelCrc, Crc32cByTable(std::as_bytes(std::span(file.frames[i]))));
    }
    EXPECT_EQ(journal.head.columns, 320U);
    EXPECT_EQ(journal.head.pixelBytes, 2U * 320 * 256);
    EXPECT_EQ(journal.head.Text("Camera"), "InSb 320 x 256");
    EXPECT_EQ(journal.head.Text("Pixels"), "raw");
    EXPECT_THAT(journal.head.Text("Settings"), HasSubstr("NamePattern=event{n:03}\n"));
    EXPECT_THAT(journal.head.Text("Program"), HasSubstr("Kelvo "));
    ASSERT_TRUE(journal.closing);
    EXPECT_EQ(journal.closing->number, 3);
}

TEST_F(Recorder, StampsAFrameInLocalTimeInCsWords)
{
    const std::array<char, 30> text = FrameTimeText(1'795'357'615'123'999'999);
    const auto seconds = static_cast<std::time_t>(1'795'357'615);
    std::tm local{};
    localtime_r(&seconds, &local);
    char plain[32];
    asctime_r(&local, plain);
    const std::string expected = std::string(plain, 19) + ".123 " + std::string(plain + 20, 5);
    EXPECT_EQ(std::string(text.data()), expected);
    EXPECT_EQ(text.back(), '\0');
}

TEST_F(Recorder, AddsDataOffsetToRawFrames)
{
    RecorderSettings settings = Settings();
    std::optional<RunFiles> files = PrepareRunFiles(settings);
    ASSERT_TRUE(files);
    files->dataOffset = 100;
    files->offset.resize(4);
    FrameStamp stamp = {.number = 1, .monotonicNs = 1, .utcNs = 1};
    files->rawHeader.ImageWidth = 4;
    files->rawHeader.ImageHeight = 1;
    std::optional<EventFiles> event = EventFiles::Begin(*files, stamp);
    ASSERT_TRUE(event);
    const std::vector<std::int16_t> raw = {0, 1, -200, 32767};
    EXPECT_TRUE(event->Append(*files, {.number = 1}, raw));
    EXPECT_TRUE(event->Close(ClosingRecord(1, EndOfRecording::kStopped)));
    EXPECT_THAT(TakeApart(Out("event001.seq"), 4).frames.at(0), ElementsAre(100, 101, -100, -32669));
}

TEST_F(Recorder, StopsByItselfAfterSoManyFrames)
{
    RecorderSettings settings = Settings();
    settings.length = RecordLength::kFrames;
    settings.frames = 7;
    Start(settings);
    GoToFrame(12);
    EXPECT_FALSE(RecorderRuns());
    TendRecorder();
    EXPECT_EQ(CurrentRecorderStatus().end, RecorderEnd::kComplete);
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(1, 7));
    EXPECT_EQ(CurrentRecorderStatus().counts.passedOver, 5) << "after the end";
    EXPECT_FALSE(CaptureRuns());
    ExpectBalance(CurrentRecorderStatus().counts);
}

TEST_F(Recorder, StopsByItselfAfterATime)
{
    RecorderSettings settings = Settings();
    settings.length = RecordLength::kSeconds;
    settings.seconds = 0.3;
    Start(settings);
    GoToFrame(40);
    TendRecorder();
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(1, 30));
    EXPECT_EQ(CurrentRecorderStatus().verdict, "30 frames, none lost, 0.3 s");
}

TEST_F(Recorder, TakesTheFirstFrameOfEachInterval)
{
    RecorderSettings settings = Settings();
    settings.intervalSeconds = 0.045;
    Start(settings);
    GoToFrame(20);
    StopRecorder();
    // Ticks at 10, 55, 100, 145, 190 ms; a frame each 10 ms.
    EXPECT_THAT(NumbersOf(Out("event001.seq")), ElementsAre(1, 6, 10, 15, 19));
    const FramesFile journal = ReadFramesFile(Out("event001.seq.frames"));
    EXPECT_EQ(journal.records[1].passedOver, 4U);
    EXPECT_EQ(journal.records[1].lostByBoard, 0U);
    EXPECT_EQ(CurrentRecorderStatus().exitCode, 0);
    EXPECT_EQ(CurrentRecorderStatus().counts.passedOver, 15);
}

TEST_F(Recorder, BeginsAtAClockTime)
{
    const std::time_t now = WallClockSeconds();
    const std::time_t then = now + 2;
    std::tm local{};
    localtime_r(&then, &local);
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S", &local);
    RecorderSettings settings = Settings();
    settings.startTime = text;
    Start(settings);
    GoToFrame(10);
    EXPECT_EQ(CurrentRecorderStatus().state, RecorderState::kWaiting);
    EXPECT_THAT(FilesOut(), IsEmpty());
    GoToFrame(250);
    StopRecorder();
    const FramesFile journal = ReadFramesFile(Out("event001.seq.frames"));
    ASSERT_FALSE(journal.records.empty());
    EXPECT_GE(journal.records.front().utcNs, then * 1'000'000'000LL);
    EXPECT_LT(journal.records.front().utcNs, then * 1'000'000'000LL + 10'000'000);
}

TEST_F(Recorder, KeepsWhatCameBeforeTheTrigger)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    settings.preTriggerFrames = 100;
    settings.length = RecordLength::kFrames;
    settings.frames = 50;
    Start(settings);
    GoToFrame(499);
    EXPECT_EQ(CurrentRecorderStatus().state, RecorderState::kArmed);
    EXPECT_EQ(CurrentRecorderStatus().preTriggerWaiting, 100);
    EXPECT_THAT(FilesOut(), IsEmpty());
    TriggerRecorder();
    GoToFrame(600);
    TendRecorder();
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(400, 549));
    EXPECT_EQ(HeaderNumbersOf(Out("event001.seq")), FromTo(400, 549));
    const FramesFile journal = ReadFramesFile(Out("event001.seq.frames"));
    for (const FrameRecord& record : journal.records) {
        EXPECT_EQ((record.flags & kTriggerFrame) != 0, record.number == 500) << record.number;
    }
    EXPECT_THAT(GapsOf(journal.records), IsEmpty());
    EXPECT_EQ(CurrentRecorderStatus().verdict, "150 frames, none lost, 1.5 s");
    ExpectBalance(CurrentRecorderStatus().counts);
}

TEST_F(Recorder, SecondsBeforeTheTriggerAreFramesAtThePresentRate)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    settings.preTriggerSeconds = 0.105;
    settings.length = RecordLength::kFrames;
    settings.frames = 1;
    Start(settings);
    GoToFrame(30);
    TriggerRecorder();
    GoToFrame(32);
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(20, 31));
}

TEST_F(Recorder, ATriggerBeforeThePreTriggerIsFullTakesWhatThereIs)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    settings.preTriggerFrames = 100;
    settings.length = RecordLength::kFrames;
    settings.frames = 2;
    Start(settings);
    GoToFrame(3);
    TriggerRecorder();
    GoToFrame(10);
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(1, 5));
}

TEST_F(Recorder, ThreeEventsAreThreeFiles)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    settings.preTriggerFrames = 2;
    settings.length = RecordLength::kFrames;
    settings.frames = 4;
    settings.events = 3;
    Start(settings);
    for (const std::int64_t before : {9, 29, 31}) {  // the third within the frames of the second: ignored
        GoToFrame(before);
        TriggerRecorder();
    }
    GoToFrame(49);
    TriggerRecorder();
    GoToFrame(60);
    TendRecorder();
    EXPECT_FALSE(RecorderRuns());
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(8, 13));
    EXPECT_EQ(NumbersOf(Out("event002.seq")), FromTo(28, 33));
    EXPECT_EQ(NumbersOf(Out("event003.seq")), FromTo(48, 53));
    EXPECT_THAT(FilesOut(), SizeIs(6));
    EXPECT_EQ(CurrentRecorderStatus().verdict, "18 frames, none lost, 0.2 s");
}

TEST_F(Recorder, TheSignalStaysUntilTheNextArmingAndSeveralCountAsOne)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kSignal;
    settings.length = RecordLength::kFrames;
    settings.frames = 5;
    settings.events = 3;
    Start(settings);
    GoToFrame(9);
    TriggerRecorder();  // the button isn't the trigger
    GoToFrame(10);
    SignalRecorder();
    GoToFrame(12);
    SignalRecorder();
    SignalRecorder();
    GoToFrame(40);
    StopRecorder();
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(11, 15));
    EXPECT_EQ(NumbersOf(Out("event002.seq")), FromTo(16, 20));
    EXPECT_THAT(FilesOut(), SizeIs(4)) << "the two signals were one";
}

TEST_F(Recorder, TheMeanOfARectangleTriggersWhereItComesIntoTheWindow)
{
    // The rectangle's detectors by the table: image pixel i is detector 81919 - i.
    const auto meanOf = [this](std::int64_t number) {
        const std::vector<std::int16_t> frame = Expected(number - 1, grabUs + number * 10'000);
        double sum = 0;
        for (std::size_t row = 10; row <= 20; ++row) {
            for (std::size_t column = 30; column <= 50; ++column) sum += frame[kPixels - 1 - (row * 320 + column)];
        }
        return sum / (11.0 * 21.0);
    };
    // Integration, biases, gain and offset, so that the light counts.
    Send(*camera, {{0x50, 3, 244, 40},
                   {0x50, 5, 0, 0xFF},
                   {0x80, 3, 0, 0},
                   {0x60, 0, 0x7E, 0x42},
                   {0x60, 2, 0x01, 0xCA},
                   {0x60, 4, 0x80, 62},
                   {0x60, 0, 0, 0},
                   {0x70, 1, 128, 0}});
    ASSERT_EQ(SimFramePeriodUs(*camera), 10'000);
    ASSERT_TRUE(SetSimSourceDegrees(*camera, SimSource::kLow, 10));
    ASSERT_TRUE(SetSimSourceDegrees(*camera, SimSource::kHigh, 40));
    PutSimSource(*camera, SimSource::kLow);
    const double low = meanOf(1);
    PutSimSource(*camera, SimSource::kHigh);
    const double high = meanOf(1);
    ASSERT_GT(high, low + 100);
    PutSimSource(*camera, SimSource::kLow);

    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kMean;
    settings.meanLeft = 30;
    settings.meanRight = 50;
    settings.meanTop = 10;
    settings.meanBottom = 20;
    settings.meanLow = high - 50;
    settings.meanHigh = high + 50;
    settings.length = RecordLength::kFrames;
    settings.frames = 3;
    settings.events = 2;
    Start(settings);
    GoToFrame(10);
    EXPECT_NEAR(CurrentRecorderStatus().mean.value_or(0), meanOf(10), 1e-9);
    PutSimSource(*camera, SimSource::kHigh);
    GoToFrame(30);
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(11, 13));
    EXPECT_EQ(CurrentRecorderStatus().state, RecorderState::kArmed) << "it has to leave the window first";
    PutSimSource(*camera, SimSource::kLow);
    GoToFrame(40);
    PutSimSource(*camera, SimSource::kHigh);
    GoToFrame(50);
    EXPECT_EQ(NumbersOf(Out("event002.seq")), FromTo(41, 43));
}

TEST_F(Recorder, ARegionTriggersWithTheFirstFrameWhoseMeanPassesTheValue)
{
    // A calibrated frame that is the same but for its lift: detectors' noise would hide which frame is the first.
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kRegion;
    settings.region = "spot";
    settings.regionLevel = 100;
    std::string why;
    ASSERT_EQ(TriggerMean::Make(settings, why), std::nullopt);
    EXPECT_EQ(why, "There is no region spot.");
    Region spot;
    spot.name = "spot";
    spot.shape = RegionShape::kEllipse;
    spot.place = {100, 100, 102, 102};
    ASSERT_NE(AddRegion(spot, why), 0) << why;

    std::vector<std::int16_t> values(kPixels);
    const auto frameOf = [&values](int count) {
        std::ranges::fill(values, static_cast<std::int16_t>(count));
        CapturedFrame frame;
        frame.values = values;
        return frame;
    };
    // Which frames trigger, of these counts, armed once before the first.
    const auto triggers = [&](RegionPass pass, const std::vector<int>& counts) {
        settings.regionPass = pass;
        TriggerWatch watch(settings, TriggerMean::Make(settings, why));
        watch.Arm();
        std::vector<std::size_t> came;
        for (std::size_t i = 0; i < counts.size(); ++i) {
            if (watch.ComesWith(frameOf(counts[i]))) came.push_back(i);
        }
        return came;
    };
    EXPECT_THAT(triggers(RegionPass::kRising, {150, 120, 99, 100, 101, 99, 300, 98, 99}), ElementsAre(3, 6));
    EXPECT_THAT(triggers(RegionPass::kFalling, {50, 99, 100, 101, 100, 99, 300, 98}), ElementsAre(4, 7));

    // Armed again it begins anew: what passed meanwhile is no trigger.
    settings.regionPass = RegionPass::kRising;
    TriggerWatch watch(settings, TriggerMean::Make(settings, why));
    watch.Arm();
    watch.ComesWith(frameOf(0));
    EXPECT_TRUE(watch.ComesWith(frameOf(100)));
    watch.ComesWith(frameOf(0));
    watch.Arm();
    EXPECT_FALSE(watch.ComesWith(frameOf(200)));
    EXPECT_FALSE(watch.ComesWith(frameOf(201)));
}

TEST_F(Recorder, RecordsFromTheFrameInWhichARegionsMeanPasses)
{
    std::string why;
    Region region;
    region.name = "R1";
    region.place = {30, 10, 50, 20};
    ASSERT_NE(AddRegion(region, why), 0) << why;
    const auto meanOf = [this](std::int64_t number) {
        const std::vector<std::int16_t> frame = Expected(number - 1, grabUs + number * 10'000);
        double sum = 0;
        for (std::size_t row = 10; row <= 20; ++row) {
            for (std::size_t column = 30; column <= 50; ++column) sum += frame[kPixels - 1 - (row * 320 + column)];
        }
        return sum / (11.0 * 21.0);
    };
    // The value lies below the highest mean of the first frames, so that one of them is the first to come above it.
    std::vector<double> means;
    for (std::int64_t number = 1; number <= 40; ++number) means.push_back(meanOf(number));
    const double level = (*std::ranges::max_element(means) + *std::ranges::min_element(means)) / 2;
    std::size_t first = 1;
    while (means[first - 1] >= level || means[first] < level) ++first;
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kRegion;
    settings.region = "R1";
    settings.regionLevel = level;
    settings.length = RecordLength::kFrames;
    settings.frames = 3;
    Start(settings);
    GoToFrame(50);
    const auto number = static_cast<std::int64_t>(first) + 1;
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(number, number + 2));
}

TEST_F(Recorder, ARegionThatIsNotThereIsRefused)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kRegion;
    ExpectRefused(settings, "Please choose the region that triggers.");
    settings.region = "R1";
    ExpectRefused(settings, "There is no region R1.");
    std::string why;
    Region region;
    region.name = "R1";
    region.place = {400, 10, 410, 20};
    ASSERT_NE(AddRegion(region, why), 0) << why;
    ExpectRefused(settings, "R1 lies outside of the picture.");
}

TEST_F(Recorder, WritesTheSameWhileSomebodyObserves)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    settings.preTriggerFrames = 5;
    settings.length = RecordLength::kFrames;
    settings.frames = 10;
    std::vector<std::int64_t> observed;
    ASSERT_TRUE(BeginObserving([&observed](const ObservedFrame& frame) { observed.push_back(frame.stamp.number); }));
    AdvanceVirtualClock(grabUs + 95'000 - TickUs());
    Start(settings);
    GoToFrame(20);
    TriggerRecorder();
    GoToFrame(40);
    StopRecorder();
    AdvanceVirtualClock(100'000);
    EndObserving();
    const TakenApart file = TakeApart(Out("event001.seq"), kPixels);
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(16, 30)) << "as without him";
    ASSERT_EQ(file.frames.size(), 15U);
    for (std::int64_t number = 16; number <= 30; ++number) {
        EXPECT_EQ(file.frames[static_cast<std::size_t>(number - 16)], Expected(number - 1, grabUs + number * 10'000));
    }
    EXPECT_EQ(CurrentRecorderStatus().verdict, "15 frames, none lost, 0.1 s");
    EXPECT_EQ(observed, FromTo(1, 50)) << "before, within and behind the recording";
}

TEST_F(Recorder, ARectangleOutsideThePictureIsRefused)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kMean;
    settings.meanRight = 320;
    settings.meanBottom = 10;
    ExpectRefused(settings, "The rectangle of the mean lies outside the picture.");
}

TEST_F(Recorder, APulseAtTheBoardsInputTriggersWithItsFrame)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kBoardInput;
    TriggerWatch watch(settings, std::nullopt);
    watch.Arm();
    CapturedFrame frame;
    frame.stamp.triggers = 4;  // pulses of before
    EXPECT_FALSE(watch.ComesWith(frame));
    EXPECT_FALSE(watch.ComesWith(frame));
    frame.stamp.triggers = 5;
    EXPECT_TRUE(watch.ComesWith(frame));
    frame.stamp.triggers = 7;  // while the event was written
    watch.Note(frame);
    watch.Arm();
    EXPECT_FALSE(watch.ComesWith(frame));
}

TEST_F(Recorder, RefusesAPreTriggerThatTheRingCantHold)
{
    SetRingBytes(107LL * 2 * 320 * 256);  // 104 frames may wait (three places are in use); a quarter stays free
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    const std::int64_t longest = LongestPreTrigger();
    EXPECT_GT(longest, 50);
    settings.preTriggerFrames = longest + 1;
    ExpectRefused(settings,
                  "The ring holds at most 0.7 s (" + std::to_string(longest) + " frames) before the trigger.");
    settings.preTriggerFrames = longest;
    Start(settings);
}

TEST_F(Recorder, MarksTheFrameThatComesAfter)
{
    Start(Settings());
    GoToFrame(4);
    EXPECT_EQ(MarkRecorder(), 1);
    GoToFrame(7);
    EXPECT_EQ(MarkRecorder(), 2);
    EXPECT_EQ(MarkRecorder(), 3) << "two on one frame";
    GoToFrame(10);
    StopRecorder();
    EXPECT_EQ(MarkRecorder(), 0);
    const FramesFile journal = ReadFramesFile(Out("event001.seq.frames"));
    for (const FrameRecord& record : journal.records) {
        const std::uint32_t mark = record.number == 5 ? 1 : record.number == 8 ? 3 : 0;
        EXPECT_EQ(record.mark, mark) << record.number;
        EXPECT_EQ((record.flags & kMarkedFrame) != 0, mark != 0) << record.number;
    }
    EXPECT_EQ(CurrentRecorderStatus().marks, 3);
}

TEST_F(Recorder, CorrectsAsTheLivePictureShows)
{
    write::cal.CalType = 2;
    write::cal.OffsetList.resize(kPixels);
    write::cal.GainList.resize(kPixels);
    for (std::size_t i = 0; i < kPixels; ++i) {
        write::cal.OffsetList[i] = static_cast<std::int16_t>(i % 50);
        write::cal.GainList[i] = i % 2 == 0 ? 2.0F : 0.5F;
    }
    write::cal.IntensityCold = 1500;
    CalibrationListsChanged();
    RecorderSettings settings = Settings();
    settings.pixels = RecordPixels::kBoth;
    Start(settings);
    GoToFrame(2);
    StopRecorder();
    EXPECT_THAT(FilesOut(),
                ElementsAre("event001.seq", "event001.seq.frames", "event001_cal.seq", "event001_cal.seq.frames"));
    const TakenApart raw = TakeApart(Out("event001.seq"), kPixels);
    const TakenApart corrected = TakeApart(Out("event001_cal.seq"), kPixels);
    EXPECT_EQ(raw.header.IntensityCold, -10000);
    EXPECT_EQ(corrected.header.IntensityCold, 1500);
    ASSERT_THAT(corrected.frames, SizeIs(2));
    for (std::size_t f = 0; f < 2; ++f) {
        EXPECT_EQ(raw.frames[f],
                  Expected(static_cast<std::int64_t>(f), grabUs + (static_cast<std::int64_t>(f) + 1) * 10'000));
        for (std::size_t i = 0; i < kPixels; ++i) {
            const std::size_t d = kPixels - 1 - i;
            const int difference = raw.frames[f][d] - static_cast<int>(d % 50);
            const int expected = d % 2 == 0 ? difference / 2 : difference * 2;
            ASSERT_EQ(corrected.frames[f][i], static_cast<std::int16_t>(expected)) << i;
        }
    }
    const FramesFile journal = ReadFramesFile(Out("event001_cal.seq.frames"));
    EXPECT_EQ(journal.head.Text("Pixels"), "corrected");
    EXPECT_EQ(journal.records.at(1).pixelCrc, Crc32cByTable(std::as_bytes(std::span(corrected.frames[1]))));
    EXPECT_EQ(NumbersOf(Out("event001.seq")), NumbersOf(Out("event001_cal.seq")));
}

TEST_F(Recorder, CorrectedAloneIsNamedSo)
{
    RecorderSettings settings = Settings();
    settings.pixels = RecordPixels::kCorrected;
    Start(settings);
    GoToFrame(2);
    StopRecorder();
    EXPECT_THAT(FilesOut(), ElementsAre("event001_cal.seq", "event001_cal.seq.frames"));
    EXPECT_THAT(CurrentRecorderStatus().files, ElementsAre(Out("event001_cal.seq")));
}

TEST_F(Recorder, ANewFileBeginsWithoutAGap)
{
    RecorderSettings settings = Settings();
    settings.splitGigabytes = static_cast<double>(512 + 8 * kFrameBytes) / 1e9;
    Start(settings);
    GoToFrame(20);
    StopRecorder();
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(1, 8));
    EXPECT_EQ(NumbersOf(Out("event001-2.seq")), FromTo(9, 16));
    EXPECT_EQ(NumbersOf(Out("event001-3.seq")), FromTo(17, 20));
    EXPECT_EQ(+TakeApart(Out("event001-2.seq"), kPixels).header.FrameCount, 8U);
    const FramesFile second = ReadFramesFile(Out("event001-2.seq.frames"));
    EXPECT_EQ(second.records.at(0).flags, static_cast<std::uint32_t>(kFirstOfPart));
    EXPECT_THAT(GapsOf(second.records), IsEmpty());
    EXPECT_THAT(CurrentRecorderStatus().files, SizeIs(3));
    EXPECT_EQ(CurrentRecorderStatus().verdict, "20 frames, none lost, 0.2 s");
    EXPECT_EQ(CurrentRecorderStatus().bytes, 3 * 512 + 20 * kFrameBytes);
}

TEST_F(Recorder, ANewFileBeginsAfterSoManyMinutes)
{
    RecorderSettings settings = Settings();
    settings.splitMinutes = 0.05 / 60;
    Start(settings);
    GoToFrame(12);
    StopRecorder();
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(1, 5));
    EXPECT_EQ(NumbersOf(Out("event001-2.seq")), FromTo(6, 10));
    EXPECT_EQ(NumbersOf(Out("event001-3.seq")), FromTo(11, 12));
}

TEST_F(Recorder, NothingIsEverOverwritten)
{
    PutFile(Out("event001.seq"), "mine");
    PutFile(Out("event002_cal.seq.frames"), "mine too");
    PutFile(Out("event003-2.seq"), "and mine");
    RecorderSettings settings = Settings();
    settings.splitGigabytes = static_cast<double>(512 + 2 * kFrameBytes) / 1e9;
    Start(settings);
    GoToFrame(4);
    StopRecorder();
    EXPECT_EQ(FileContents(Out("event001.seq")), "mine");
    EXPECT_EQ(FileContents(Out("event002_cal.seq.frames")), "mine too");
    EXPECT_EQ(FileContents(Out("event003-2.seq")), "and mine");
    EXPECT_THAT(CurrentRecorderStatus().files, ElementsAre(Out("event003.seq"), Out("event003-3.seq")));
    settings.namePattern = "plain";
    for (int i = 0; i < 2; ++i) {
        Start(settings);
        AdvanceVirtualClock(15'000);
        StopRecorder();
    }
    EXPECT_THAT(CurrentRecorderStatus().files, ElementsAre(Out("plain_2.seq")));
}

TEST(RecorderLosses, NameTheTransportWhereItLostAny)
{
    RecorderStatus status;
    EXPECT_EQ(status.Lost(), 0);
    EXPECT_EQ(LostFramesText(status), "none");
    status.lostByBoard = 1;
    EXPECT_EQ(LostFramesText(status), "1 by the board, 0 by the ring");
    status.lostByTransport = 2;
    EXPECT_EQ(status.Lost(), 3);
    EXPECT_EQ(LostFramesText(status), "2 by the transport, 1 by the board, 0 by the ring");
    status.lostByBoard.reset();
    EXPECT_EQ(status.Lost(), std::nullopt);
}

TEST_F(Recorder, WhatTheBoardSkippedIsToldExactly)
{
    SkipSimFrames(100, 100);
    SkipSimFrames(200, 209);
    Start(Settings());
    GoToFrame(300);
    StopRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.counts.lostByBoard, 11);
    EXPECT_EQ(status.counts.lostByRing, 0);
    EXPECT_EQ(status.counts.recorded, 289);
    ExpectBalance(status.counts);
    EXPECT_EQ(status.verdict, "289 frames, 11 lost (11 by the board, 0 by the ring), 3.0 s");
    EXPECT_EQ(status.exitCode, 1);
    const FramesFile journal = ReadFramesFile(Out("event001.seq.frames"));
    EXPECT_THAT(GapsOf(journal.records), ElementsAre(FrameGap{99, 100, 1, 0, 0, 0}, FrameGap{198, 200, 10, 0, 0, 0}));
    std::vector<std::int64_t> numbers = FromTo(1, 99);
    for (const std::int64_t number : FromTo(101, 199)) numbers.push_back(number);
    for (const std::int64_t number : FromTo(210, 300)) numbers.push_back(number);
    EXPECT_EQ(NumbersOf(Out("event001.seq")), numbers);
    EXPECT_EQ(HeaderNumbersOf(Out("event001.seq")), numbers);
}

// Each write that is slow takes 300 ms, thirty frames' time.
TEST_F(Recorder, ASlowDiskWithinTheRingLosesNothing)
{
    SetRingBytes(80LL * 2 * 320 * 256);
    Start(Settings());
    for (const int writes : {3, 40, 17, 60, 5}) {
        SetFaultOnce("slow disk", writes);
        AdvanceVirtualClock(1'000'000);
    }
    StopRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.counts.lostByRing, 0);
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(1, status.counts.lastNumber));
    EXPECT_EQ(status.exitCode, 0);
    EXPECT_EQ(QuestionsUntilFault("slow disk"), 0) << "it was slow each time";
}

TEST_F(Recorder, ASlowDiskBeyondTheRingIsCountedExactly)
{
    SetRingBytes(14LL * 2 * 320 * 256);
    Start(Settings());
    for (const int writes : {3, 40, 17}) {
        SetFaultOnce("slow disk", writes);
        AdvanceVirtualClock(1'000'000);
    }
    StopRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    const std::vector<std::int64_t> numbers = NumbersOf(Out("event001.seq"));
    EXPECT_GT(status.lostByRing, 0);
    EXPECT_EQ(status.lostByRing, numbers.back() - static_cast<std::int64_t>(numbers.size()));
    std::int64_t inTheTable = 0;
    for (const FrameGap& gap : GapsOf(ReadFramesFile(Out("event001.seq.frames")).records)) {
        EXPECT_EQ(gap.Missing(), gap.lostByRing);
        EXPECT_EQ(gap.firstNumber, numbers[static_cast<std::size_t>(gap.beforeFrame) - 1] + 1);
        inTheTable += gap.lostByRing;
    }
    EXPECT_EQ(inTheTable, status.lostByRing);
    EXPECT_EQ(HeaderNumbersOf(Out("event001.seq")), numbers);
    EXPECT_EQ(status.exitCode, 1);
    ExpectBalance(status.counts);
}

TEST_F(Recorder, AFullDiskEndsItAndWhatWasWrittenStays)
{
    Start(Settings());
    {
        const FullDisk disk(static_cast<rlim_t>(512 + 5 * kFrameBytes + 1000));
        GoToFrame(10);
    }
    EXPECT_FALSE(RecorderRuns());
    TendRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.end, RecorderEnd::kWriteFailed);
    EXPECT_EQ(status.exitCode, 2);
    EXPECT_EQ(status.frames, 5);
    EXPECT_THAT(status.message, HasSubstr("The 5 frames before it are safe."));
    const TakenApart file = TakeApart(Out("event001.seq"), kPixels);
    EXPECT_EQ(file.bytesBehind, 0U);
    EXPECT_EQ(+file.header.FrameCount, 5U);
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(1, 5));
    EXPECT_TRUE(ReadFramesFile(Out("event001.seq.frames")).closing);
    ExpectBalance(status.counts);
}

TEST_F(Recorder, ADiskThatIsUnpluggedEndsItAndWhatWasWrittenStays)
{
    Start(Settings());
    GoToFrame(5);
    SetFault("disk unplugged", true);
    GoToFrame(8);
    SetFault("disk unplugged", false);
    TendRecorder();
    EXPECT_EQ(CurrentRecorderStatus().end, RecorderEnd::kWriteFailed);
    EXPECT_EQ(TakeApart(Out("event001.seq"), kPixels).frames.size(), 5U);
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(1, 5));
}

TEST_F(Recorder, AFileThatIsDeletedIsNoticedWithinASecond)
{
    Start(Settings());
    GoToFrame(100);
    std::filesystem::remove(Out("event001.seq"));
    GoToFrame(199);
    TendRecorder();
    EXPECT_EQ(CurrentRecorderStatus().end, RecorderEnd::kFileDeleted);
    EXPECT_EQ(CurrentRecorderStatus().message,
              "The recording was stopped: its file was deleted.\n" + Out("event001.seq"));
}

TEST_F(Recorder, StopsWithFiveSecondsLeftOnTheDisk)
{
    Start(Settings());
    GoToFrame(60);
    EXPECT_TRUE(RecorderRuns());
    EXPECT_GT(CurrentRecorderStatus().secondsLeft, 5);
    SetFault("little disk space", true);
    GoToFrame(120);
    TendRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.end, RecorderEnd::kDiskFull);
    EXPECT_THAT(status.message, HasSubstr("room for less than 5 s"));
    EXPECT_EQ(NumbersOf(Out("event001.seq")), FromTo(1, status.frames));
    EXPECT_EQ(ReadFramesFile(Out("event001.seq.frames")).closing->mark,
              static_cast<std::uint32_t>(EndOfRecording::kDiskFull));
}

TEST_F(Recorder, ADirectoryThatTakesNoFileIsRefused)
{
    RecorderSettings settings = Settings();
    settings.directory = out + "/none";
    ExpectRefused(settings, "The directory of the recordings isn't there.");
    SetFault("disk", true);
    ExpectRefused(Settings(), "No file can be made in the directory of the recordings.");
    SetFault("disk", false);
    EXPECT_FALSE(CaptureRuns());
}

TEST_F(Recorder, AFileThatCantBeMadeEndsTheRun)
{
    Start(Settings());
    SetFault("disk", true);
    GoToFrame(2);
    SetFault("disk", false);
    TendRecorder();
    EXPECT_EQ(CurrentRecorderStatus().end, RecorderEnd::kNoFile);
    EXPECT_EQ(CurrentRecorderStatus().exitCode, 2);
    EXPECT_THAT(FilesOut(), IsEmpty());
}

TEST_F(Recorder, RefusedMemoryIsToldAndNothingRuns)
{
    for (int n = 1; n <= 3; ++n) {
        RecorderSettings settings = Settings();
        settings.pixels = RecordPixels::kBoth;
        FailAllocation(n);
        std::string why;
        if (StartRecorder(settings, why)) break;
        EXPECT_EQ(why, "Unable to allocate memory to store data to disk!");
        EXPECT_FALSE(CaptureRuns());
        EXPECT_THAT(FilesOut(), IsEmpty());
    }
    FailAllocation(0);
}

TEST_F(Recorder, RefusesWhatMakesNoSense)
{
    RecorderSettings settings = Settings();
    settings.namePattern = "{day}";
    ExpectRefused(settings,
                  "The name pattern makes no file name. Its words are {date}, {time}, {sample}, {n} and {n:03}.");
    settings = Settings();
    settings.length = RecordLength::kFrames;
    settings.frames = 0;
    ExpectRefused(settings, "A recording of n frames needs at least one.");
    settings = Settings();
    settings.length = RecordLength::kSeconds;
    settings.seconds = 0;
    ExpectRefused(settings, "A recording of n seconds needs more than 0 s.");
    settings = Settings();
    settings.events = -1;
    ExpectRefused(settings, "A time or a number is below 0.");
    settings = Settings();
    settings.startTime = "25:00";
    ExpectRefused(settings, "The start time isn't a time of day like 14:30:00.");
    settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    settings.intervalSeconds = 1;
    settings.preTriggerFrames = 1;
    ExpectRefused(settings, "A pre-trigger keeps every frame: there is none with an interval.");
    settings = Settings();
    settings.trigger = RecordTrigger::kMean;
    settings.meanLow = 2;
    settings.meanHigh = 1;
    ExpectRefused(settings, "The window of the mean has its low end above its high one.");
}

TEST_F(Recorder, RefusesASecondRun)
{
    Start(Settings());
    std::string why;
    EXPECT_FALSE(StartRecorder(Settings(), why));
    EXPECT_EQ(why, "A recording runs already.");
    EXPECT_TRUE(RecorderRuns());
}

TEST_F(Recorder, RefusesWithoutACamera)
{
    write::frames.CameraOn = 0;
    write::frames.LiveVideo = 0;
    ExpectRefused(Settings(), "No camera is on.");
    EXPECT_THAT(op.Boxes(), SizeIs(1));
}

TEST_F(Recorder, AFileBeingRecordedIsLockedAndReadable)
{
    Start(Settings());
    GoToFrame(3);
    std::optional<File> file = File::Open(Out("event001.seq"), FileMode::kReadWrite);
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->Lock());
    EXPECT_THAT(TakeApart(Out("event001.seq"), kPixels).frames, SizeIs(3));
    EXPECT_FALSE(ReadFramesFile(Out("event001.seq.frames")).closing);
    StopRecorder();
    EXPECT_TRUE(file->Lock());
}

TEST_F(Recorder, TakesNoMemoryForAFrame)
{
    RecorderSettings settings = Settings();
    settings.pixels = RecordPixels::kBoth;
    Start(settings);
    GoToFrame(2);
    const std::int64_t requests = MemoryRequests();
    GoToFrame(20);
    EXPECT_EQ(MemoryRequests(), requests);
}

TEST_F(Recorder, MeasuresTheTargetAndTidiesUp)
{
    const std::optional<double> rate = MeasureWriteRate(out);
    ASSERT_TRUE(rate);
    EXPECT_GT(*rate, 1e5);
    EXPECT_THAT(FilesOut(), IsEmpty());
    EXPECT_FALSE(MeasureWriteRate(out + "/none"));
    EXPECT_DOUBLE_EQ(BytesPerSecondNeeded(Settings()), 100.0 * (2 * 320 * 256 + 80 + 64));
}

}  // namespace
}  // namespace kelvo
