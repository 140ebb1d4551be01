// The recorder on disks that are slow, full or gone: what was told as written is there, and what is missing is told.
#include "imagefile/crc32c.h"
#include "imagefile/recovery.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "record/recorder_fixture.h"

#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <random>

namespace kelvo {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class RecorderDisk : public RecorderTest {
  protected:
    // Records for so many frames, while writes take 300 ms each, 30 frames' time, at random: `least` to `most` writes
    // lie from one to the next. How many were slow.
    int RecordWithSlowWrites(std::int64_t frames, int least, int most)
    {
        std::mt19937 random(20261122);
        std::uniform_int_distribution<int> writes(least, most);
        int slow = 0;
        Start(Settings());
        for (std::int64_t frame = 1; frame <= frames; ++frame) {
            if (QuestionsUntilFault("slow disk") == 0) {
                SetFaultOnce("slow disk", writes(random));
                ++slow;
            }
            GoToFrame(std::max(frame, (TickUs() - grabUs) / 10'000));
        }
        SetFaultOnce("slow disk", 0);
        StopRecorder();
        return slow;
    }
    // Every frame that the file has is the one that its record tells, and the head counts them.
    void ExpectWhole(const std::string& path, std::size_t frames) const
    {
        const TakenApart file = TakeApart(path, kPixels);
        const FramesFile journal = ReadFramesFile(FramesPathOf(path));
        ASSERT_EQ(file.frames.size(), frames);
        ASSERT_EQ(journal.records.size(), frames);
        EXPECT_EQ(+file.header.FrameCount, frames);
        EXPECT_EQ(file.bytesBehind, 0U);
        for (std::size_t i = 0; i < frames; ++i) {
            EXPECT_EQ(+file.frameHeaders[i].AllFramesNum, journal.records[i].number);
            EXPECT_EQ(journal.records[i].pixelCrc, Crc32cByTable(std::as_bytes(std::span(file.frames[i]))));
        }
    }
};

TEST_F(RecorderDisk, SlowAtRandomWithinTheRingLosesNothing)
{
    SetRingBytes(100LL * 2 * 320 * 256);
    const int slow = RecordWithSlowWrites(600, 60, 160);  // 30 to 80 frames: on the average more than a write takes
    EXPECT_GT(slow, 6);
    const RecorderStatus status = CurrentRecorderStatus();
    EXPECT_EQ(status.lostByRing, 0);
    EXPECT_EQ(status.counts.recorded, status.counts.delivered);
    EXPECT_EQ(status.exitCode, 0);
    EXPECT_THAT(status.verdict, HasSubstr(" frames, none lost, "));
    const std::vector<std::int64_t> numbers = NumbersOf(Out("event001.seq"));
    ASSERT_GE(numbers.size(), 600U);
    EXPECT_EQ(numbers.back(), static_cast<std::int64_t>(numbers.size()));
    EXPECT_THAT(GapsOf(ReadFramesFile(Out("event001.seq.frames")).records), IsEmpty());
}

TEST_F(RecorderDisk, SlowAtRandomBeyondTheRingIsCountedExactly)
{
    SetRingBytes(20LL * 2 * 320 * 256);
    RecordWithSlowWrites(300, 1, 60);
    const RecorderStatus status = CurrentRecorderStatus();
    ExpectBalance(status.counts);
    const std::vector<std::int64_t> numbers = NumbersOf(Out("event001.seq"));
    // Which ones are gone, by the frames that are there.
    std::vector<FrameGap> gaps;
    for (std::size_t i = 1; i < numbers.size(); ++i) {
        const std::int64_t missing = numbers[i] - numbers[i - 1] - 1;
        if (missing > 0) gaps.push_back({static_cast<std::int64_t>(i), numbers[i - 1] + 1, 0, missing, 0, 0});
    }
    ASSERT_GT(gaps.size(), 3U);
    EXPECT_EQ(GapsOf(ReadFramesFile(Out("event001.seq.frames")).records), gaps);
    std::int64_t lost = 0;
    for (const FrameGap& gap : gaps) lost += gap.lostByRing;
    EXPECT_EQ(status.lostByRing, lost);
    EXPECT_EQ(status.counts.lostByBoard, 0);
    EXPECT_EQ(status.counts.recorded, static_cast<std::int64_t>(numbers.size()));
    EXPECT_EQ(status.exitCode, 1);
    EXPECT_EQ(HeaderNumbersOf(Out("event001.seq")), numbers);
}

// A file system of 1 MB of the process's own, where the machine lets one be mounted. False: it doesn't.
bool MountSmall(const std::string& path)
{
    return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", path.c_str(), "tmpfs", 0, "size=1m") == 0;
}

TEST_F(RecorderDisk, AFileSystemThatIsFullEndsItAndWhatWasWrittenStays)
{
    constexpr int kNoMount = 77;
    const pid_t child = fork();
    if (child == 0) {
        if (!MountSmall(out)) _exit(kNoMount);
        Start(Settings());
        GoToFrame(20);
        TendRecorder();
        const RecorderStatus status = CurrentRecorderStatus();
        EXPECT_EQ(status.end, RecorderEnd::kWriteFailed);
        EXPECT_EQ(status.exitCode, 2);
        EXPECT_THAT(status.message, HasSubstr("the disk didn't take a frame"));
        EXPECT_GE(status.frames, 5) << "of 164 kB each";
        ExpectWhole(Out("event001.seq"), static_cast<std::size_t>(status.frames));
        ExpectBalance(status.counts);
        EXPECT_NE(RecoverSequence(Out("event001.seq"), true).outcome, Recovery::kFailed);
        _exit(HasFailure() ? 1 : 0);
    }
    int ended = 0;
    waitpid(child, &ended, 0);
    if (WIFEXITED(ended) && WEXITSTATUS(ended) == kNoMount) GTEST_SKIP() << "no file system can be mounted here";
    EXPECT_TRUE(WIFEXITED(ended) && WEXITSTATUS(ended) == 0);
}

TEST_F(RecorderDisk, OneThatIsGoneForGoodIsToldAndItsFramesComeBackWithRecover)
{
    Start(Settings());
    GoToFrame(5);
    SetFault("disk unplugged", true);
    GoToFrame(8);
    TendRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    SetFault("disk unplugged", false);
    EXPECT_EQ(status.end, RecorderEnd::kWriteFailed);
    EXPECT_EQ(status.exitCode, 2);
    EXPECT_EQ(status.message, "The recording was stopped: the disk didn't take a frame of\n" + Out("event001.seq") +
                                  "\nThe 5 frames before it are safe.");
    ExpectBalance(status.counts);
    EXPECT_EQ(TakeApart(Out("event001.seq"), kPixels).frames.size(), 5U) << "before anything was repaired";
    const RecoveryReport report = RecoverSequence(Out("event001.seq"), false);
    EXPECT_EQ(report.outcome, Recovery::kRepaired);
    EXPECT_EQ(report.recordsMade, 0);
    EXPECT_THAT(report.badFrames, IsEmpty());
    ExpectWhole(Out("event001.seq"), 5);
}

TEST_F(RecorderDisk, RawAndCorrectedEndWithTheSameFrameWhicheverWasRefused)
{
    for (int write = 1; write <= 4; ++write) {  // a record and a frame in each of the two files
        RecorderSettings settings = Settings();
        settings.pixels = RecordPixels::kBoth;
        settings.namePattern = "run" + std::to_string(write);
        const std::int64_t before = (TickUs() - grabUs) / 10'000;
        Start(settings);
        GoToFrame(before + 3);
        SetFaultOnce("disk", write);
        GoToFrame(before + 5);
        TendRecorder();
        EXPECT_EQ(QuestionsUntilFault("disk"), 0);
        EXPECT_EQ(CurrentRecorderStatus().end, RecorderEnd::kWriteFailed) << write;
        EXPECT_EQ(CurrentRecorderStatus().counts.recorded, 3);
        ExpectWhole(Out(settings.namePattern + ".seq"), 3);
        ExpectWhole(Out(settings.namePattern + "_cal.seq"), 3);
    }
}

TEST_F(RecorderDisk, WhereAPartIsDeletedThePartsBeforeStand)
{
    RecorderSettings settings = Settings();
    settings.splitGigabytes = static_cast<double>(512 + 60 * kFrameBytes) / 1e9;
    Start(settings);
    GoToFrame(70);
    std::filesystem::remove(Out("event001-2.seq"));
    GoToFrame(119);
    TendRecorder();
    EXPECT_EQ(CurrentRecorderStatus().end, RecorderEnd::kFileDeleted);
    EXPECT_EQ(CurrentRecorderStatus().exitCode, 2);
    ExpectWhole(Out("event001.seq"), 60);
    EXPECT_EQ(RecoverSequence(Out("event001.seq"), true).outcome, Recovery::kClean);
}

}  // namespace
}  // namespace kelvo
