// Continuous save without its dialog. The board gives a frame each 10 ms of the virtual clock; the value of column x,
// row y of the n-th is 1000 n + 100 y + x.
#include "record/continuous_save.h"

#include "grabber/capture.h"
#include "grabber/frame_account.h"
#include "grabber/frame_read.h"
#include "grabber/recording.h"
#include "imagefile/crc32c.h"
#include "imagefile/frames_file.h"
#include "imagefile/header_write.h"
#include "imagefile/sequence_file.h"
#include "platform/clock.h"
#include "platform/disk_space.h"
#include "platform/faults.h"
#include "platform/memory.h"
#include "state/cal_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "support/full_disk.h"
#include "support/recording_board.h"
#include "video/video.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

// ---- Frame numbers by the clock

TEST(FrameEstimate, GivesTheFirstFrameOfAFileNumber0)
{
    FrameEstimate estimate{.previousSeconds = 3, .olderSeconds = 3};
    AddFrame(estimate, 8, 64, true);
    EXPECT_EQ(estimate.allFrames, 0);
    AddFrame(estimate, 8 + 1.0F / 64, 64, false);
    EXPECT_EQ(estimate.allFrames, 1);
}

TEST(FrameEstimate, GoesOnByOneAtLeast)
{
    FrameEstimate estimate{.previousSeconds = 3, .olderSeconds = 3};
    AddFrame(estimate, 3, 64, false);
    AddFrame(estimate, 3, 64, false);
    EXPECT_EQ(estimate.allFrames, 2);
}

TEST(FrameEstimate, CountsFramesThatAreMissing)
{
    FrameEstimate estimate{.previousSeconds = 3, .olderSeconds = 3};
    AddFrame(estimate, 3 + 1.0F / 64, 64, false);
    AddFrame(estimate, 3 + 5.0F / 64, 64, false);  // 4 further; 5 from the one before, as 1 + 4
    EXPECT_EQ(estimate.allFrames, 5);
}

// At 64 Hz, 1.5 and 3 frames after the start: each step is 2 when it is rounded, both together are 3.
TEST(FrameEstimate, TakesBackACountThatRoundingGaveTwice)
{
    FrameEstimate estimate{.previousSeconds = 0, .olderSeconds = 0, .previousStep = 0};
    AddFrame(estimate, 1.5F / 64, 64, false);
    EXPECT_EQ(estimate.allFrames, 1) << "1.5 frames have passed: 2 are too many";
    AddFrame(estimate, 3.0F / 64, 64, false);
    EXPECT_EQ(estimate.allFrames, 3);
    AddFrame(estimate, 4.5F / 64, 64, false);  // 3 since the frame before the last, which 2 + 2 exceed
    EXPECT_EQ(estimate.allFrames, 4);
}

TEST(FrameEstimate, GoesOnOverTheEndOfAMinute)
{
    FrameEstimate estimate{.previousSeconds = 59.5F, .olderSeconds = 59, .previousStep = 1};
    AddFrame(estimate, 0.5F, 2, false);
    EXPECT_EQ(estimate.allFrames, 2);
    EXPECT_EQ(estimate.previousSeconds, 60.5F) << "the 60 that was added stays";
    AddFrame(estimate, 1, 2, false);
    EXPECT_EQ(estimate.allFrames, 3);
    EXPECT_EQ(estimate.previousSeconds, 1);
}

class TimeStampText : public testing::Test {
  protected:
    static std::string StampAt(std::int64_t utcNs, const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
        SetFrameTime(utcNs);
        TimeStamp stamp{};
        FormatTimeStamp(stamp);
        return stamp.data();
    }
};

TEST_F(TimeStampText, IsTheLocalTimeWithItsMilliseconds)
{
    EXPECT_EQ(StampAt(1'794'512'815'123'999'999, "UTC"), "Thu Nov 12 19:46:55.123 2026\n");
    EXPECT_EQ(StampAt(1'794'512'815'005'000'000, "EST5"), "Thu Nov 12 14:46:55.005 2026\n");
    EXPECT_EQ(StampAt(1'793'505'906'000'000'000, "UTC"), "Sun Nov  1 04:05:06.000 2026\n");
}

// ---- A run

class ContinuousSave : public BoardTest {
  protected:
    ContinuousSave()
    {
        GoLive(kColumns, kRows);
        SetRingBytes(100 * kFrameBytes);
        write::head.FrameRate = 100;
        write::frames.DisplayEnabled = 0;
        recordingBoard.onRead = [this](std::int32_t /*read*/) {
            recordingBoard.picture = 1000 * static_cast<std::int32_t>(recordingBoard.frameCount);
            AdvanceVirtualClock(periodUs);
        };
        EXPECT_TRUE(AllocateSaveBuffer());
        options.path = directory / "run.seq";
        ClearFrameAccount();
    }

    void Begin() { ASSERT_EQ(BeginSave(options), SaveStart::kBegun); }
    static void Ticks(int count)
    {
        for (int i = 0; i < count; ++i) EXPECT_EQ(SaveTick(), SaveTrouble::kNone);
    }
    // A whole run of so many frames.
    SavedRun Run(int frames)
    {
        Begin();
        Ticks(frames);
        return EndSave();
    }

    std::string Contents() const { return FileContents(options.path); }
    template <typename T>
    static T At(const std::string& bytes, std::size_t place)
    {
        T value{};
        if (place + sizeof value <= bytes.size()) std::memcpy(&value, bytes.data() + place, sizeof value);
        return value;
    }
    template <typename T>
    T HeaderField(std::size_t place) const
    {
        return At<T>(Contents(), place);
    }
    // The value of column 0, row 0 of each record, as thousands: the board's number of the frame.
    std::vector<int> Numbers(std::size_t frameHeaderBytes = 0) const
    {
        const std::string bytes = Contents();
        std::vector<int> numbers;
        const std::size_t record = frameHeaderBytes + kFrameBytes;
        for (std::size_t at = 512; at + record <= bytes.size(); at += record) {
            numbers.push_back(At<std::int16_t>(bytes, at + frameHeaderBytes) / 1000);
        }
        return numbers;
    }
    std::vector<std::int32_t> FrameHeaderFields(std::size_t place) const
    {
        const std::string bytes = Contents();
        std::vector<std::int32_t> fields;
        for (std::size_t at = 512; at < bytes.size(); at += 80 + kFrameBytes) {
            fields.push_back(At<std::int32_t>(bytes, at + place));
        }
        return fields;
    }
    // Two points: offsets 100, 101, ...; gain 2; the table turns the frame upside down.
    static void Calibrate(std::int32_t calType)
    {
        write::cal.CalType = calType;
        write::cal.IntensityCold = 3000;
        write::cal.IntensityHot = 9000;
        write::cal.DecomList.clear();
        write::cal.OffsetList.clear();
        for (std::size_t i = 0; i < kValues; ++i) {
            write::cal.DecomList.push_back(static_cast<std::uint32_t>(kValues - 1 - i));
            write::cal.OffsetList.push_back(static_cast<std::int16_t>(100 + i));
        }
        write::cal.GainList.assign(kValues, 2.0F);
        CalibrationListsChanged();
    }
    static std::vector<std::int16_t> Raw(int number)
    {
        std::vector<std::int16_t> values;
        for (int y = 0; y < kRows; ++y) {
            for (int x = 0; x < kColumns; ++x) values.push_back(static_cast<std::int16_t>(1000 * number + 100 * y + x));
        }
        return values;
    }
    // What Calibrate's two points make of it.
    static std::vector<std::int16_t> Corrected(int number)
    {
        const std::vector<std::int16_t> raw = Raw(number);
        std::vector<std::int16_t> values;
        for (int d = kValues - 1; d >= 0; --d) {
            values.push_back(static_cast<std::int16_t>((raw[static_cast<std::size_t>(d)] - (100 + d)) / 2));
        }
        return values;
    }
    std::vector<std::int16_t> FrameAt(std::size_t record, std::size_t frameHeaderBytes = 0) const
    {
        const std::string bytes = Contents();
        std::vector<std::int16_t> values;
        for (std::size_t i = 0; i < kValues; ++i) {
            const std::size_t start = 512 + record * (frameHeaderBytes + kFrameBytes) + frameHeaderBytes;
            values.push_back(At<std::int16_t>(bytes, start + 2 * i));
        }
        return values;
    }
    FramesFile Journal() const { return ReadFramesFile(FramesPathOf(options.path)); }
    static std::vector<std::int64_t> NumbersOf(const FramesFile& journal)
    {
        std::vector<std::int64_t> numbers;
        for (const FrameRecord& record : journal.records) numbers.push_back(record.number);
        return numbers;
    }
    // Each frame of the file has its record, with the checksum of what stands there.
    void ExpectTrueChecksums(std::size_t frameHeaderBytes) const
    {
        const FramesFile journal = Journal();
        EXPECT_EQ(journal.records.size(), Numbers(frameHeaderBytes).size());
        for (std::size_t i = 0; i < journal.records.size(); ++i) {
            const std::vector<std::int16_t> pixels = FrameAt(i, frameHeaderBytes);
            EXPECT_EQ(journal.records[i].pixelCrc, Crc32cByTable(std::as_bytes(std::span(pixels)))) << i;
        }
    }
    static void ExpectBalance()
    {
        const CaptureCounts counts = CurrentCaptureCounts();
        EXPECT_EQ(counts.delivered, counts.recorded + counts.passedOver + counts.lostByBoard.value_or(0) +
                                        counts.lostByRing + counts.waiting);
    }

    static constexpr int kColumns = 4;
    static constexpr int kRows = 2;
    static constexpr int kValues = kColumns * kRows;
    static constexpr std::size_t kFrameBytes = 2 * kValues;
    std::int64_t periodUs = 10'000;
    SaveOptions options;
};

TEST_F(ContinuousSave, WritesHeaderAndFramesInOrder)
{
    const SavedRun run = Run(3);
    EXPECT_TRUE(run.closed);
    EXPECT_EQ(run.frames, 3);
    EXPECT_EQ(Contents().size(), 512 + 3 * kFrameBytes);
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3));
    EXPECT_EQ(FrameAt(1), Raw(2));
    EXPECT_EQ(HeaderField<std::uint16_t>(0), 0xFFFF);
    EXPECT_EQ(HeaderField<std::int16_t>(2), kColumns);
    EXPECT_EQ(HeaderField<std::int16_t>(4), kRows);
    EXPECT_EQ(HeaderField<std::int16_t>(6), 2);
    EXPECT_EQ(HeaderField<std::uint32_t>(42), 3U) << "frames";
    EXPECT_EQ(HeaderField<std::int16_t>(50), kRows - 1) << "last row";
    EXPECT_EQ(HeaderField<std::int16_t>(52), kColumns - 1) << "last column";
    EXPECT_EQ(HeaderField<std::int16_t>(54), 1) << "frames averaged";
    EXPECT_EQ(HeaderField<float>(56), 100) << "frame rate";
    EXPECT_EQ(HeaderField<std::int16_t>(144), 0) << "frame header";
    EXPECT_EQ(+ImageHeader.FrameCount, 3U);
}

TEST_F(ContinuousSave, PutsAHeaderBeforeEachFrame)
{
    options.frameHeaders = true;
    SetFrameIntegrationTime(2.5F);
    Begin();
    Ticks(2);
    SetFrameIntegrationTime(0.75F);
    Ticks(1);
    EndSave();
    EXPECT_EQ(SaveFrameBytes, 80 + static_cast<std::int64_t>(kFrameBytes));
    EXPECT_EQ(HeaderField<std::int16_t>(144), 80);
    EXPECT_THAT(Numbers(80), ElementsAre(1, 2, 3));
    EXPECT_THAT(FrameHeaderFields(30), ElementsAre(0, 1, 2)) << "FrameNum; the first is 0";
    EXPECT_THAT(FrameHeaderFields(34), ElementsAre(0, 1, 2)) << "AllFramesNum";
    const std::string bytes = Contents();
    EXPECT_EQ(At<float>(bytes, 512 + 38), 2.5F);
    EXPECT_EQ(At<float>(bytes, 512 + 2 * (80 + kFrameBytes) + 38), 0.75F);
    EXPECT_THAT(bytes.substr(512 + 42, 38), Each('\0')) << "reserved";
}

TEST_F(ContinuousSave, StampsAFrameWithItsOwnTime)
{
    setenv("TZ", "UTC", 1);
    tzset();
    options.frameHeaders = true;
    const std::int64_t beganMs = WallClockSeconds() * 1000 + WallClockMilliseconds();
    Begin();
    Ticks(1);
    AdvanceVirtualClock(3'000'000);  // the disk stalls, and the frame waits
    Ticks(1);
    EndSave();
    const std::string first = Contents().substr(512, 30);
    const std::string second = Contents().substr(512 + 80 + kFrameBytes, 30);
    const auto msOf = [](const std::string& stamp) {
        return std::stoi(stamp.substr(17, 2)) * 1000 + std::stoi(stamp.substr(20, 3));
    };
    EXPECT_EQ(msOf(first), beganMs % 60'000);
    EXPECT_EQ(msOf(second), (beganMs + 10) % 60'000);
    EXPECT_EQ(first.substr(28), std::string("\n\0", 2));
}

// At 8 Hz and from a whole second on, so that the seconds of all stamps are exact.
TEST_F(ContinuousSave, CountsOnExactlyWhereFramesAreLost)
{
    constexpr std::int64_t kSecondUs = 1'000'000;
    write::head.FrameRate = 8;
    periodUs = kSecondUs / 8;
    AdvanceVirtualClock(kSecondUs - TickUs() % kSecondUs);
    options.frameHeaders = true;
    Begin();
    Ticks(1);
    periodUs = 4 * kSecondUs / 8;  // the second frame, and three that nobody reads
    Ticks(1);
    periodUs = kSecondUs / 8;
    recordingBoard.frameCount += 4;
    Ticks(3);
    EndSave();
    EXPECT_THAT(FrameHeaderFields(30), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(FrameHeaderFields(34), ElementsAre(0, 1, 5, 6, 7));
    EXPECT_THAT(Numbers(80), ElementsAre(1, 2, 6, 7, 8));
    EXPECT_EQ(LostFrames(), 3);
    ExpectBalance();
}

TEST_F(ContinuousSave, SavesEveryFrameThatWaitsWithUpdateRate0)
{
    options.frameHeaders = true;
    Begin();
    Ticks(1);
    // Three more come while the window is at work.
    for (int i = 0; i < 3; ++i) WaitForFrames(FramesWaiting(), 1000);
    EXPECT_EQ(FramesWaiting(), 3U);
    EXPECT_EQ(SaveTick(), SaveTrouble::kNone);
    EXPECT_EQ(SaveFrameCount, 4) << "all that waited in one tick";
    EndSave();
    EXPECT_THAT(Numbers(80), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(FrameHeaderFields(34), ElementsAre(0, 1, 2, 3));
}

TEST_F(ContinuousSave, SavesAtTheEndWhatStillWaits)
{
    Begin();
    Ticks(1);
    for (int i = 0; i < 2; ++i) WaitForFrames(FramesWaiting(), 1000);
    EXPECT_EQ(EndSave().frames, 3);
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3));
    EXPECT_EQ(CurrentCaptureCounts().recorded, 3);
    ExpectBalance();
}

TEST_F(ContinuousSave, TakesTheFirstFrameAfterTheTickBeganAtAnInterval)
{
    options.updateRate = 0.5F;
    Begin();
    Ticks(1);
    for (int i = 0; i < 5; ++i) WaitForFrames(FramesWaiting(), 1000);
    const std::int64_t beganNs = TickUs() * 1000;
    Ticks(1);
    EXPECT_GT(LastTakenFrame().stamp.monotonicNs, beganNs);
    EXPECT_LE(LastTakenFrame().stamp.monotonicNs - 10'000'000, beganNs) << "the first one";
    EndSave();
    const CaptureCounts counts = CurrentCaptureCounts();
    EXPECT_EQ(counts.recorded, 2);
    EXPECT_GE(counts.passedOver, 5);
    EXPECT_EQ(LostFrames(), 0);
    ExpectBalance();
}

TEST_F(ContinuousSave, PassesOverBetweenTwoTicksAtAnInterval)
{
    options.updateRate = 0.5F;
    Begin();
    for (int i = 0; i < 3; ++i) WaitForFrames(FramesWaiting(), 1000);
    PassOverWhatWaits();
    EXPECT_EQ(FramesWaiting(), 0U);
    EndSave();
    options.updateRate = 0;
    options.path = directory / "all.seq";
    Begin();
    WaitForFrames(0, 1000);
    PassOverWhatWaits();
    EXPECT_EQ(FramesWaiting(), 1U) << "every frame is wanted";
    EndSave();
}

TEST_F(ContinuousSave, DoesNotMissWhatCouldNotBeReadBetweenTwoTicks)
{
    options.updateRate = 0.5F;
    Begin();
    Ticks(1);
    recordingBoard.answers["icp_read_area"] = -1;
    WaitForFrames(0, 15);
    recordingBoard.answers.clear();
    WaitForFrames(0, 1000);
    Ticks(1);
    EXPECT_EQ(EndSave().frames, 2);
    ExpectBalance();
}

TEST_F(ContinuousSave, PulsesTheSyncBeforeTheFirstFrameAlone)
{
    options.syncOut = true;
    Begin();
    WaitForFrames(0, 1000);
    ForgetAsked();
    Ticks(2);
    std::vector<std::string> lines;
    for (const std::string& asked : recordingBoard.asked) {
        if (asked.starts_with("amdig_exsyncp") || asked.starts_with("icp_read_area"))
            lines.push_back(asked.substr(0, 18));
    }
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[0], "amdig_exsyncp 12 0");
    EXPECT_EQ(lines[1], "amdig_exsyncp 12 1");
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 2, lines.end()), Each("icp_read_area 11 5"))
        << "no other pulse";
    EndSave();
    EXPECT_GT(Numbers()[0], 1) << "the one that waited was complete before the pulse";
}

TEST_F(ContinuousSave, DrawsNothingButWhatItSaves)
{
    write::frames.DisplayEnabled = 1;
    Begin();
    Ticks(1);
    const std::int64_t shown = CurrentFrameAccount().shown;
    EXPECT_EQ(RefreshLiveFrame(), 1) << "the image cursor looks at the newest frame";
    Ticks(2);
    EXPECT_EQ(CurrentFrameAccount().shown, shown);
    EndSave();
    EXPECT_EQ(DisplayEnabled, 1);
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3)) << "which takes none away";

    options.shows = true;
    options.path = directory / "shown.seq";
    Begin();
    Ticks(2);
    EXPECT_EQ(CurrentFrameAccount().shown, shown + 2);
    EndSave();
}

TEST_F(ContinuousSave, TakesNoMemoryOnceItRuns)
{
    options.frameHeaders = true;
    Begin();
    Ticks(1);
    const std::int64_t requests = MemoryRequests();
    Ticks(5);
    EXPECT_EQ(MemoryRequests(), requests);
    EndSave();
}

// ---- Calibrated or not

TEST_F(ContinuousSave, SavesTheCalibratedPicture)
{
    Calibrate(2);
    options.calibrated = true;
    Run(2);
    EXPECT_EQ(FrameAt(0), Corrected(1));
    EXPECT_EQ(FrameAt(1), Corrected(2));
    EXPECT_EQ(HeaderField<std::int16_t>(24), 3000);
    EXPECT_EQ(HeaderField<std::int16_t>(30), 9000);
}

TEST_F(ContinuousSave, MarksRawFramesAsUncalibratedFromTheFirstHeaderOn)
{
    Calibrate(2);
    Begin();
    EXPECT_EQ(HeaderField<std::int16_t>(24), -10000);
    EXPECT_EQ(HeaderField<float>(26), -999.0F);
    EXPECT_EQ(HeaderField<std::int16_t>(30), -10000);
    EXPECT_EQ(HeaderField<float>(32), -999.0F);
    Ticks(1);
    EndSave();
    EXPECT_EQ(FrameAt(0), Raw(1));
    EXPECT_EQ(HeaderField<std::int16_t>(24), -10000);
}

TEST_F(ContinuousSave, CorrectsTheFramesOfTheRunAlone)
{
    for (const bool frameHeaders : {false, true}) {
        const std::size_t prefix = frameHeaders ? 80 : 0;
        options.path = directory / (frameHeaders ? "with.seq" : "without.seq");
        options.frameHeaders = frameHeaders;
        options.addsToFile = false;
        recordingBoard.frameCount = 0;
        Calibrate(0);
        Run(2);
        Calibrate(2);
        options.addsToFile = true;
        const SavedRun second = Run(2);
        const std::string before = Contents();
        EXPECT_EQ(second.firstFrame, 2);
        EXPECT_EQ(CorrectSavedRun(second), CorrectionEnd::kDone);
        EXPECT_EQ(FrameAt(0, prefix), Raw(1));
        EXPECT_EQ(FrameAt(1, prefix), Raw(2));
        EXPECT_EQ(FrameAt(2, prefix), Corrected(3));
        EXPECT_EQ(FrameAt(3, prefix), Corrected(4));
        EXPECT_EQ(Contents().size(), before.size());
        const std::size_t third = 512 + 2 * (prefix + kFrameBytes);
        EXPECT_EQ(Contents().substr(0, third + prefix), before.substr(0, third + prefix)) << "headers stay";
    }
}

TEST_F(ContinuousSave, TellsWhyARunCannotBeCorrected)
{
    Calibrate(2);
    SavedRun run = Run(2);
    run.frames = 3;
    EXPECT_EQ(CorrectSavedRun(run), CorrectionEnd::kCantRead);
    run.frames = 2;
    {
        const FullDisk disk(100);
        EXPECT_EQ(CorrectSavedRun(run), CorrectionEnd::kCantWrite);
    }
    const std::string before = Contents();
    FailAllocation(2);
    EXPECT_EQ(CorrectSavedRun(run), CorrectionEnd::kNoMemory);
    EXPECT_EQ(Contents(), before);
    std::filesystem::remove(options.path);
    EXPECT_EQ(CorrectSavedRun(run), CorrectionEnd::kCantOpen);
}

// ---- The journal

TEST_F(ContinuousSave, TellsWhatTheTransportLostInItsJournal)
{
    Begin();
    Ticks(2);
    recordingBoard.frameCount += 4;  // the next one, and three before it, two of which never came
    recordingBoard.lostByTransport += 2;
    Ticks(1);
    EXPECT_EQ(LostFrames(), 3);
    EndSave();
    EXPECT_EQ(GapsOf(Journal().records),
              (std::vector<FrameGap>{{.beforeFrame = 2, .firstNumber = 3, .lostByBoard = 1, .lostByTransport = 2}}));
}

TEST_F(ContinuousSave, TellsTheBoardsNumbersAndWhatWasLostInItsJournal)
{
    options.frameHeaders = true;
    Begin();
    Ticks(2);
    recordingBoard.frameCount += 4;  // the next one, and three that nobody has read
    Ticks(2);
    const std::int64_t lastNs = LastTakenFrame().stamp.monotonicNs;
    EndSave();
    const FramesFile journal = Journal();
    ASSERT_EQ(journal.records.size(), 4U);
    EXPECT_THAT(NumbersOf(journal), ElementsAre(1, 2, 6, 7));
    EXPECT_EQ(journal.records[2].lostByBoard, 3U);
    EXPECT_EQ(journal.records[3].monotonicNs, lastNs);
    EXPECT_EQ(journal.records[3].utcNs, LastTakenFrame().stamp.utcNs);
    ASSERT_TRUE(journal.closing);
    EXPECT_EQ(journal.closing->number, 4);
    EXPECT_EQ(GapsOf(journal.records), (std::vector<FrameGap>{{.beforeFrame = 2, .firstNumber = 3, .lostByBoard = 3}}));
    EXPECT_EQ(journal.head.Text(frames_key::kPixels), "raw");
    ExpectTrueChecksums(80);
}

TEST_F(ContinuousSave, TellsFramesBetweenTwoTicksAsPassedOverInItsJournal)
{
    options.updateRate = 0.5F;
    Begin();
    Ticks(1);
    for (int i = 0; i < 5; ++i) WaitForFrames(FramesWaiting(), 1000);
    Ticks(1);
    EndSave();
    const FramesFile journal = Journal();
    ASSERT_EQ(journal.records.size(), 2U);
    const std::int64_t between = journal.records[1].number - journal.records[0].number - 1;
    EXPECT_GE(between, 5);
    EXPECT_EQ(journal.records[1].passedOver, between);
}

TEST_F(ContinuousSave, GoesOnWithTheJournalOfAFileThatItAddsTo)
{
    Run(2);
    recordingBoard.frameCount += 50;
    options.addsToFile = true;
    Run(2);
    const FramesFile journal = Journal();
    EXPECT_THAT(NumbersOf(journal), ElementsAre(1, 2, 53, 54));
    EXPECT_EQ(journal.records[2].flags, std::uint32_t{kFirstOfRun});
    EXPECT_EQ(journal.records[3].flags, 0U) << "the first one alone";
    EXPECT_THAT(GapsOf(journal.records), IsEmpty()) << "nothing is missing between two runs";
    EXPECT_EQ(journal.closing.value_or(FrameRecord{}).number, 4);
    EXPECT_EQ(journal.bytesBehind, 0);
    ExpectTrueChecksums(0);
}

TEST_F(ContinuousSave, TellsAFrameThatTheDiskRefusedInALaterRunToo)
{
    Run(2);
    options.addsToFile = true;
    Begin();
    {
        const FullDisk disk(512 + 2 * kFrameBytes + 3);  // the run's first one in part
        EXPECT_EQ(SaveTick(), SaveTrouble::kNotWritten);
    }
    Ticks(1);
    {
        const FullDisk disk(512 + 3 * kFrameBytes + 3);
        EXPECT_EQ(SaveTick(), SaveTrouble::kNotWritten);
    }
    Ticks(1);
    EndSave();
    const FramesFile journal = Journal();
    ASSERT_EQ(journal.records.size(), 4U);
    EXPECT_EQ(journal.records[2].flags, std::uint32_t{kFirstOfRun});
    EXPECT_EQ(journal.records[3].flags, 0U);
    const std::vector<FrameGap> gaps = GapsOf(journal.records);
    ASSERT_EQ(gaps.size(), 1U);
    EXPECT_EQ(gaps[0].beforeFrame, 3);
    EXPECT_EQ(gaps[0].unexplained, 1);
    ExpectTrueChecksums(0);
}

TEST_F(ContinuousSave, KeepsNoJournalThatDoesNotTellOfAllFrames)
{
    Run(2);
    std::filesystem::remove(FramesPathOf(options.path));
    options.addsToFile = true;
    Begin();
    EXPECT_FALSE(SaveKeepsJournal());
    Ticks(1);
    EXPECT_TRUE(EndSave().closed);
    EXPECT_EQ(Journal().fault, FramesFault::kNotOpened);
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3));

    options.addsToFile = false;
    Run(1);
    EXPECT_EQ(Journal().records.size(), 1U) << "a new file has its own";
}

TEST_F(ContinuousSave, KeepsChecksumsTrueWhereItCorrects)
{
    for (const bool frameHeaders : {false, true}) {
        options.frameHeaders = frameHeaders;
        options.addsToFile = false;
        Calibrate(2);
        EXPECT_EQ(CorrectSavedRun(Run(2)), CorrectionEnd::kDone);
        EXPECT_EQ(Journal().head.Text(frames_key::kPixels), "corrected");
        ExpectTrueChecksums(frameHeaders ? 80 : 0);
        options.addsToFile = true;
        EXPECT_EQ(CorrectSavedRun(Run(1)), CorrectionEnd::kDone);
        ExpectTrueChecksums(frameHeaders ? 80 : 0);
    }
}

TEST_F(ContinuousSave, TakesTheRecordOfAFrameBackThatTheDiskRefused)
{
    Begin();
    Ticks(1);
    {
        const FullDisk disk(512 + kFrameBytes + 3);  // the second one in part
        EXPECT_EQ(SaveTick(), SaveTrouble::kNotWritten);
    }
    Ticks(1);
    EndSave();
    const FramesFile journal = Journal();
    EXPECT_THAT(NumbersOf(journal), ElementsAre(1, 3));
    ASSERT_EQ(GapsOf(journal.records).size(), 1U);
    EXPECT_EQ(GapsOf(journal.records)[0].unexplained, 1);
    ExpectTrueChecksums(0);
}

TEST_F(ContinuousSave, LeavesAFileAloneThatIsBeingRecorded)
{
    Run(1);
    const std::string before = Contents();
    std::optional<File> other = File::Open(options.path, FileMode::kReadWrite);
    ASSERT_TRUE(other && other->Lock());
    EXPECT_EQ(BeginSave(options), SaveStart::kCantOpen);
    EXPECT_EQ(Contents(), before);
    other.reset();
    Begin();
    EXPECT_TRUE(IsBeingRecorded(options.path));
    EndSave();
}

// ---- The file

TEST_F(ContinuousSave, AddsToAFileInItsOwnLayout)
{
    options.frameHeaders = true;
    Run(2);
    options.addsToFile = true;
    options.frameHeaders = false;
    const SavedRun second = Run(2);
    EXPECT_EQ(second.firstFrame, 2);
    EXPECT_EQ(second.frames, 2);
    EXPECT_EQ(HeaderField<std::uint32_t>(42), 4U);
    EXPECT_EQ(HeaderField<std::int16_t>(144), 80);
    EXPECT_THAT(Numbers(80), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(FrameHeaderFields(30), ElementsAre(0, 1, 2, 3));
}

TEST_F(ContinuousSave, CutsThePartOfAFrameAtTheEndOfAFileThatItAddsTo)
{
    Run(2);
    PutFile(options.path, Contents() + "part");
    options.addsToFile = true;
    Run(1);
    EXPECT_EQ(Contents().size(), 512 + 3 * kFrameBytes);
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3));
}

TEST_F(ContinuousSave, AddsToNoFileOfAnotherKind)
{
    Run(1);
    const std::string file = Contents();
    options.addsToFile = true;
    const auto startWith = [&](std::size_t place, std::int16_t value) {
        std::string other = file;
        std::memcpy(other.data() + place, &value, sizeof value);
        PutFile(options.path, other);
        const ImageHeaderRecord before = ImageHeader;
        const SaveStart start = BeginSave(options);
        EXPECT_EQ(Contents(), other);
        EXPECT_EQ(std::memcmp(&before, &ImageHeader, sizeof before), 0);
        EXPECT_FALSE(SaveRuns() || RecordingRuns());
        return start;
    };
    EXPECT_EQ(startWith(2, 5), SaveStart::kOtherFrames) << "width";
    EXPECT_EQ(startWith(4, 3), SaveStart::kOtherFrames) << "height";
    EXPECT_EQ(startWith(6, 4), SaveStart::kOtherFrames) << "sample size";
    EXPECT_EQ(startWith(144, 16), SaveStart::kOtherFrames) << "frame header";
    EXPECT_EQ(startWith(144, -1), SaveStart::kOtherFrames);
    EXPECT_EQ(startWith(0, 0x7F01), SaveStart::kOtherFrames) << "of the spectrometer trigger";
}

TEST_F(ContinuousSave, AddsToNoFileWithoutAWholeHeader)
{
    PutFile(options.path, std::string(511, '\0'));
    options.addsToFile = true;
    EXPECT_EQ(BeginSave(options), SaveStart::kShortHeader);
    EXPECT_EQ(Contents(), std::string(511, '\0'));
    EXPECT_FALSE(RecordingRuns());
}

TEST_F(ContinuousSave, TellsWhatCannotBeOpened)
{
    options.path = directory / "missing/run.seq";
    EXPECT_EQ(BeginSave(options), SaveStart::kCantOpen);
    options.path = "";
    EXPECT_EQ(BeginSave(options), SaveStart::kCantOpen);
    options.path = directory.Path();
    EXPECT_EQ(BeginSave(options), SaveStart::kCantOpen);
    EXPECT_FALSE(RecordingRuns());
}

TEST_F(ContinuousSave, LeavesNoFileWhoseHeaderTheDiskRefused)
{
    Run(1);  // what stands there is to be deleted
    const ImageHeaderRecord before = ImageHeader;
    {
        const FullDisk disk(100);
        EXPECT_EQ(BeginSave(options), SaveStart::kCantOpen);
    }
    EXPECT_FALSE(std::filesystem::exists(options.path));
    EXPECT_FALSE(std::filesystem::exists(FramesPathOf(options.path)));
    EXPECT_EQ(std::memcmp(&before, &ImageHeader, sizeof before), 0);
}

TEST_F(ContinuousSave, SwapsTheHeaderOfASwappedFileOnItsWayAlone)
{
    write::file.ByteSwap = 0;
    options.frameHeaders = true;
    Run(2);
    const std::string swapped = Contents();
    EXPECT_EQ(At<std::uint16_t>(swapped, 0), 0);
    EXPECT_EQ(At<std::uint16_t>(swapped, 2), kColumns << 8);
    EXPECT_EQ(At<std::uint16_t>(swapped, 144), 80 << 8);
    EXPECT_EQ(At<std::uint16_t>(swapped, 42), 2 << 8) << "frames, low word";
    EXPECT_EQ(ImageHeader.ImageWidth, kColumns) << "memory stays native";
    EXPECT_EQ(FrameAt(1, 80), Raw(2)) << "so do the pixels";
    options.addsToFile = true;
    Run(1);
    EXPECT_THAT(Numbers(80), ElementsAre(1, 2, 3));
    EXPECT_EQ(At<std::uint16_t>(Contents(), 42), 3 << 8);
    EXPECT_EQ(+ImageHeader.FrameCount, 3U);
}

TEST_F(ContinuousSave, CutsAFrameThatWasWrittenInPartAndGoesOn)
{
    Begin();
    Ticks(2);
    {
        const FullDisk disk(512 + 2 * kFrameBytes + 5);
        EXPECT_EQ(SaveTick(), SaveTrouble::kNotWritten);
        EXPECT_EQ(Contents().size(), 512 + 2 * kFrameBytes);
        EXPECT_EQ(SaveTick(), SaveTrouble::kNotWritten);
    }
    Ticks(1);
    const SavedRun run = EndSave();
    EXPECT_EQ(run.frames, 3);
    EXPECT_TRUE(run.closed);
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 5));
    EXPECT_EQ(HeaderField<std::uint32_t>(42), 3U);
}

TEST_F(ContinuousSave, TellsALastHeaderThatDidNotArrive)
{
    Begin();
    Ticks(1);
    SetFault("disk", true);
    EXPECT_FALSE(EndSave().closed);
    SetFault("disk", false);
    EXPECT_FALSE(RecordingRuns());
}

TEST_F(ContinuousSave, GoesOnBehindAFrameThatDoesNotCome)
{
    Begin();
    Ticks(1);
    recordingBoard.answers["icp_read_area"] = -1;
    EXPECT_EQ(SaveTick(), SaveTrouble::kNoFrame);
    EXPECT_EQ(LastFrameReadFault().text, "icp_read_area() Error");
    recordingBoard.answers.clear();
    Ticks(1);
    recordingBoard.answers["icp_wait_vb"] = kBoardTimeout;
    EXPECT_EQ(SaveTick(), SaveTrouble::kNoFrame);
    EXPECT_EQ(LastFrameReadFault().text, "Timeout waiting for vertical blank!");
    recordingBoard.answers.clear();
    Ticks(1);
    EXPECT_EQ(EndSave().frames, 3);
    EXPECT_THAT(op.Boxes(), IsEmpty()) << "whoever runs it tells";
    ExpectBalance();
}

TEST_F(ContinuousSave, RefusesWithoutMemoryForTheRing)
{
    FailAllocation(1);
    EXPECT_EQ(BeginSave(options), SaveStart::kNoMemory);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Unable to allocate memory to store data to disk!");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo Warning");
    EXPECT_FALSE(std::filesystem::exists(options.path));
}

TEST_F(ContinuousSave, ReckonsTheRoomOnTheDisk)
{
    SetFault("little disk space", true);
    // 16 bytes a frame at 100 Hz: 1600 bytes a second, of which 1 is free.
    EXPECT_DOUBLE_EQ(SecondsOfRoom(options, 0).value_or(-1), 1.0 / 1600);
    EXPECT_DOUBLE_EQ(SecondsOfRoom(options, 15'999).value_or(-1), 10);
    options.updateRate = 0.5F;  // 2 frames a second
    EXPECT_DOUBLE_EQ(SecondsOfRoom(options, 31).value_or(-1), 1);
    options.frameHeaders = true;  // 96 bytes a frame
    EXPECT_DOUBLE_EQ(SecondsOfRoom(options, 191).value_or(-1), 1);
    write::head.FrameRate = 0;
    EXPECT_FALSE(SecondsOfRoom(options, 0).has_value());
}

TEST(DiskSpace, IsThatOfTheDirectoryWhereThereIsNoFileYet)
{
    const TempDirectory directory;
    const auto room = FreeDiskBytes(directory / "new.seq");
    ASSERT_TRUE(room.has_value());
    EXPECT_GT(*room, 0);
    EXPECT_FALSE(FreeDiskBytes(directory / "none/new.seq").has_value());
}

}  // namespace
}  // namespace kelvo
