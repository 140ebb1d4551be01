// The recorder in a process that is killed at any moment, also while it goes on with the next file: what its status had
// told as recorded is there, and each whole frame is right.
#include "imagefile/crc32c.h"
#include "imagefile/recovery.h"
#include "platform/clock.h"
#include "record/recorder_fixture.h"
#include "support/rounds.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <random>

namespace kelvo {
namespace {

class RecorderKilled : public RecorderTest {
  protected:
    void SetUp() override
    {
        ResetClock();
        RecorderTest::SetUp();
    }

    // Records until it is killed, and reports how many frames its status tells of each time that there are more.
    [[noreturn]] void RecordForever(int report) const
    {
        RecorderSettings settings = Settings();
        settings.splitGigabytes = (512 + 4.0 * kFrameBytes) / 1e9;
        std::string why;
        if (!StartRecorder(settings, why)) _exit(1);
        for (std::int64_t told = 0;; DelayMs(1)) {
            TendRecorder();
            const std::int64_t frames = CurrentRecorderStatus().frames;
            if (frames > told && write(report, &frames, sizeof frames) != sizeof frames) _exit(1);
            told = frames;
        }
    }

    // How many frames were told before the kill.
    std::int64_t RecordAndKill(useconds_t afterUs) const
    {
        int ends[2] = {};
        EXPECT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        if (child == 0) RecordForever(ends[1]);
        close(ends[1]);
        std::int64_t told = 0;
        EXPECT_EQ(read(ends[0], &told, sizeof told), static_cast<ssize_t>(sizeof told)) << "it has begun";
        usleep(afterUs);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        for (std::int64_t frames = 0; read(ends[0], &frames, sizeof frames) == static_cast<ssize_t>(sizeof frames);) {
            told = frames;
        }
        close(ends[0]);
        return told;
    }

    // Makes the file whole; its records, after each was held against its frame.
    static std::vector<FrameRecord> RecoveredFrames(const std::string& path)
    {
        const RecoveryReport report = RecoverSequence(path, false);
        EXPECT_NE(report.outcome, Recovery::kFailed) << path << ": " << report.why;
        EXPECT_EQ(report.recordsMade, 0) << "each record stands before its frame";
        const TakenApart file = TakeApart(path, kPixels);
        EXPECT_EQ(file.bytesBehind, 0U);
        const FramesFile journal = ReadFramesFile(FramesPathOf(path));
        EXPECT_EQ(journal.records.size(), file.frames.size());
        for (std::size_t i = 0; i < std::min(journal.records.size(), file.frames.size()); ++i) {
            EXPECT_EQ(journal.records[i].pixelCrc, Crc32cByTable(std::as_bytes(std::span(file.frames[i]))));
            EXPECT_EQ(+file.frameHeaders[i].AllFramesNum, journal.records[i].number);
        }
        EXPECT_EQ(RecoverSequence(path, true).outcome, Recovery::kClean);
        return journal.records;
    }

    // A file that was only just made may not even have its header yet: no frame was told of it.
    std::vector<std::string> SequencesWithHeaders() const
    {
        std::vector<std::string> paths;
        for (std::int64_t part = 1;; ++part) {
            const std::string path = Out(part == 1 ? "event001.seq" : "event001-" + std::to_string(part) + ".seq");
            if (!std::filesystem::exists(path) || std::filesystem::file_size(path) < 512) return paths;
            paths.push_back(path);
        }
    }
};

TEST_F(RecorderKilled, AtAnyMomentWhatWasToldIsThere)
{
    std::mt19937 random(20261123);
    const int rounds = Rounds(200);
    std::size_t mostFiles = 0;
    for (int round = 0; round < rounds; ++round) {
        const std::int64_t told = RecordAndKill(static_cast<useconds_t>(random() % 200'000));
        std::vector<FrameRecord> records;
        const std::vector<std::string> files = SequencesWithHeaders();
        mostFiles = std::max(mostFiles, files.size());
        for (const std::string& path : files) {
            const std::vector<FrameRecord> own = RecoveredFrames(path);
            records.insert(records.end(), own.begin(), own.end());
        }
        ASSERT_GE(std::ssize(records), told);
        for (std::size_t i = 1; i < records.size(); ++i) {
            ASSERT_EQ(records[i].number - records[i - 1].number - 1,
                      std::int64_t{records[i].lostByBoard} + records[i].lostByRing);
        }
        for (const auto& entry : std::filesystem::directory_iterator(out)) std::filesystem::remove(entry);
    }
    EXPECT_GT(mostFiles, 1U) << "some were killed behind a cut";
}

}  // namespace
}  // namespace kelvo
