// The recorder with its threads, in real time: one captures, one writes, and the main one asks and tells meanwhile.
#include "grabber/capture.h"
#include "imagefile/crc32c.h"
#include "imagefile/frames_file.h"
#include "imagefile/header.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "record/recorder.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows_write.h"
#include "threads/paced_board.h"

#include <stdlib.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr std::size_t kFrameBytes = 80 + 2 * kPacedValues;
constexpr std::size_t kLargestFile = std::size_t{1} << 26;

bool Until(const std::function<bool()>& holds)
{
    for (int i = 0; i < 10'000 && !holds(); ++i) DelayMs(1);
    return holds();
}

class RecorderThreads : public PacedBoardTest {
  protected:
    RecorderThreads()
    {
        EXPECT_NE(mkdtemp(directory_.data()), nullptr);
        SetDefaultDir(directory_);
        SetRingBytes(std::int64_t{1} << 20);
        write::camera.ActiveConfig.Hroi = kPacedColumns;
        write::camera.ActiveConfig.Vroi = kPacedRows;
        write::frames.CameraOn = 1;
        write::frames.LiveVideo = 1;
        write::head.FrameRate = 1000;
        write::cal.DecomList.resize(kPacedValues);
        std::iota(write::cal.DecomList.rbegin(), write::cal.DecomList.rend(), 0);
    }
    ~RecorderThreads() override
    {
        ResetRecorder();
        ResetHeadState();
        ResetFrameState();
        ResetCameraState();
        ResetCalState();
        ResetWindows();
        std::filesystem::remove_all(directory_);
    }

    RecorderSettings Settings() const
    {
        RecorderSettings settings;
        settings.directory = directory_;
        settings.namePattern = "event{n:03}";
        settings.syncSeconds = 0.1;
        return settings;
    }
    static void Start(const RecorderSettings& settings)
    {
        std::string why;
        ASSERT_TRUE(StartRecorder(settings, why)) << why;
    }
    // All that the operator may do while it runs.
    static void Work()
    {
        MarkRecorder();
        TriggerRecorder();
        SignalRecorder();
        TendRecorder();
        const RecorderStatus status = CurrentRecorderStatus();
        const CaptureCounts& counts = status.counts;
        EXPECT_EQ(counts.delivered, counts.recorded + counts.passedOver + counts.lostByBoard.value_or(0) +
                                        counts.lostByRing + counts.waiting);
        EXPECT_LE(status.frames, counts.recorded + 1) << "a frame is told before it leaves the ring";
        std::vector<std::int16_t> newest(kPacedValues);
        CopyNewestFrame(newest, 0);  // none may have come: zeros
        EXPECT_EQ(newest.front(), newest.back());
    }
    // What a file holds: whole frames, each the one that its record tells of, and at most so many records more. The
    // frames' numbers.
    static std::vector<std::int64_t> WholeFramesOf(const std::string& path, std::size_t recordsMore = 0)
    {
        const std::string contents = ReadWholeFile(path, kLargestFile).value_or("");
        const FramesFile journal = ReadFramesFile(FramesPathOf(path));
        const std::size_t frames = (contents.size() - sizeof(ImageHeaderRecord)) / kFrameBytes;
        EXPECT_EQ(contents.size(), sizeof(ImageHeaderRecord) + frames * kFrameBytes) << path;
        EXPECT_LE(frames, journal.records.size()) << path;
        EXPECT_LE(journal.records.size(), frames + recordsMore) << path;
        std::vector<std::int64_t> numbers;
        for (const FrameRecord& record : journal.records) {
            std::vector<std::int16_t> pixels(kPacedValues);
            const std::size_t at = sizeof(ImageHeaderRecord) + numbers.size() * kFrameBytes + 80;
            if (at + 2 * kPacedValues > contents.size()) break;
            std::memcpy(pixels.data(), contents.data() + at, 2 * kPacedValues);
            EXPECT_EQ(pixels, std::vector<std::int16_t>(kPacedValues, static_cast<std::int16_t>(record.number)));
            EXPECT_EQ(record.pixelCrc, Crc32cByTable(std::as_bytes(std::span(pixels))));
            numbers.push_back(record.number);
        }
        return numbers;
    }
    static std::vector<FrameRecord> RecordsOf(const std::vector<std::string>& files)
    {
        std::vector<FrameRecord> records;
        for (const std::string& file : files) {
            WholeFramesOf(file);
            const std::vector<FrameRecord> own = ReadFramesFile(FramesPathOf(file)).records;
            records.insert(records.end(), own.begin(), own.end());
        }
        return records;
    }
    // From the first frame to the last each one is in the files or told as missing.
    static void ExpectEachFrameToldOf(const std::vector<FrameRecord>& records)
    {
        for (std::size_t i = 1; i < records.size(); ++i) {
            const FrameRecord& record = records[i];
            EXPECT_EQ(record.number - records[i - 1].number - 1,
                      std::int64_t{record.lostByBoard} + record.lostByRing + record.passedOver);
        }
    }

  private:
    std::string directory_ = (std::filesystem::temp_directory_path() / "kelvo-threads-XXXXXX").string();
};

TEST_F(RecorderThreads, StopsWhileFramesComeAndMarksAreSet)
{
    Start(Settings());
    for (int i = 0; i < 100; ++i) {
        DelayMs(2);
        Work();
    }
    StopRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.end, RecorderEnd::kStopped);
    EXPECT_EQ(status.counts.waiting, 0);
    EXPECT_EQ(status.frames, status.counts.recorded);
    const std::vector<FrameRecord> records = RecordsOf(status.files);
    ASSERT_EQ(std::ssize(records), status.frames);
    ExpectEachFrameToldOf(records);
    EXPECT_GT(status.marks, 0);
    std::int64_t lastMark = 0;
    for (const FrameRecord& record : records) {
        if (record.mark == 0) continue;
        EXPECT_GT(record.mark, lastMark);
        lastMark = record.mark;
    }
    EXPECT_GT(lastMark, 0);
    EXPECT_LE(lastMark, status.marks);
}

TEST_F(RecorderThreads, CutsFilesWhileTheOperatorLooks)
{
    RecorderSettings settings = Settings();
    settings.pixels = RecordPixels::kBoth;
    settings.splitGigabytes = (sizeof(ImageHeaderRecord) + 20.0 * kFrameBytes) / 1e9;
    settings.length = RecordLength::kFrames;
    settings.frames = 200;
    Start(settings);
    ASSERT_TRUE(Until([] {
        Work();
        return !RecorderRuns();
    }));
    TendRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.end, RecorderEnd::kComplete);
    EXPECT_EQ(status.frames, 200);
    EXPECT_EQ(status.files.size(), 10U);
    const std::vector<FrameRecord> records = RecordsOf(status.files);
    EXPECT_EQ(records.size(), 200U);
    ExpectEachFrameToldOf(records);
}

TEST_F(RecorderThreads, TriggersAgainAndAgain)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    settings.preTriggerFrames = 10;
    settings.length = RecordLength::kFrames;
    settings.frames = 5;
    settings.events = 5;
    Start(settings);
    ASSERT_TRUE(Until([] {
        Work();
        return !RecorderRuns();
    }));
    TendRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.end, RecorderEnd::kComplete);
    ASSERT_EQ(status.files.size(), 5U);
    for (const std::string& file : status.files) {
        const std::vector<FrameRecord> records = RecordsOf({file});
        ASSERT_GE(records.size(), 5U);
        ASSERT_LE(records.size(), 15U);
        ExpectEachFrameToldOf(records);
        EXPECT_EQ(records[records.size() - 5].flags & kTriggerFrame, std::uint32_t{kTriggerFrame});
    }
}

TEST_F(RecorderThreads, ASignalBeginsAnEvent)
{
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kSignal;
    settings.length = RecordLength::kSeconds;
    settings.seconds = 0.02;
    settings.events = 2;
    Start(settings);
    ASSERT_TRUE(Until([] {
        Work();
        return !RecorderRuns();
    }));
    EXPECT_EQ(CurrentRecorderStatus().files.size(), 2U);
    ExpectEachFrameToldOf(RecordsOf({CurrentRecorderStatus().files.front()}));
}

TEST_F(RecorderThreads, AFullDiskEndsItWhileFramesCome)
{
    // A disk that is gone takes no record back whose frame it refused.
    const std::pair<const char*, std::size_t> faults[] = {{"disk full", 0}, {"disk unplugged", 1}};
    for (const auto& [fault, recordsMore] : faults) {
        Start(Settings());
        ASSERT_TRUE(Until([] { return CurrentRecorderStatus().frames >= 20; }));
        SetFault(fault, true);
        ASSERT_TRUE(Until([] {
            Work();
            return !RecorderRuns();
        }));
        SetFault(fault, false);
        TendRecorder();
        const RecorderStatus status = CurrentRecorderStatus();
        EXPECT_EQ(status.end, RecorderEnd::kWriteFailed);
        EXPECT_EQ(status.exitCode, 2);
        EXPECT_FALSE(CaptureRuns());
        const std::vector<std::int64_t> numbers = WholeFramesOf(status.files.back(), recordsMore);
        EXPECT_EQ(std::ssize(numbers), status.frames);
        EXPECT_GE(status.frames, 20);
    }
}

TEST_F(RecorderThreads, ASlowDiskCostsWhatTheRingCantHoldAndTellsIt)
{
    SetRingBytes(std::int64_t{1} << 14);
    Start(Settings());
    ASSERT_TRUE(Until([] { return CurrentRecorderStatus().frames >= 10; }));
    SetFaultOnce("slow disk", 3);
    ASSERT_TRUE(Until([] {
        Work();
        return CurrentRecorderStatus().lostByRing > 0;
    }));
    StopRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.exitCode, 1);
    ExpectEachFrameToldOf(RecordsOf(status.files));
}

TEST_F(RecorderThreads, StartsAndStopsAtOnce)
{
    for (int i = 0; i < 20; ++i) {
        Start(Settings());
        Work();
        StopRecorder();
        EXPECT_FALSE(RecorderRuns());
        EXPECT_EQ(CurrentRecorderStatus().counts.waiting, 0);
    }
    Start(Settings());
    ResetRecorder();  // as the program's end does
    EXPECT_FALSE(CaptureRuns());
}

}  // namespace
}  // namespace kelvo
