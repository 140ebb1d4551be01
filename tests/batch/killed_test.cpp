// A program that is killed while it records, at any moment: no whole frame is lost, and none that it had reported.
#include "batch/sequence_fixture.h"
#include "imagefile/crc32c.h"
#include "imagefile/recovery.h"
#include "support/rounds.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <random>

namespace kelvo {
namespace {

constexpr std::int16_t kColumns = 128;
constexpr std::int16_t kRows = 96;
constexpr std::size_t kPixels = std::size_t{128} * 96;
constexpr std::size_t kRecordBytes = 80 + 2 * kPixels;

std::vector<std::int16_t> Pixels(std::int64_t number)
{
    std::vector<std::int16_t> pixels(kPixels);
    for (std::size_t i = 0; i < kPixels; ++i) {
        pixels[i] = static_cast<std::int16_t>(number * 31 + static_cast<std::int64_t>(i));
    }
    return pixels;
}

// Records until it is killed, and reports each frame that was written.
[[noreturn]] void RecordForever(const std::string& path, int report)
{
    ImageHeaderRecord header = SmallHeader();
    header.ImageWidth = kColumns;
    header.ImageHeight = kRows;
    FramesHead head = SmallHead();
    head.columns = 128;
    head.rows = 96;
    head.pixelBytes = 2 * kPixels;
    std::optional<SequenceWriter> writer = SequenceWriter::Create(path, header, head);
    for (std::int64_t number = 1; writer; ++number) {
        if (!writer->Append(SmallRecord(number), Pixels(number))) break;
        if (write(report, &number, sizeof number) != sizeof number) break;
    }
    _exit(1);
}

class Killed : public SequenceTest {
  protected:
    // The last frame that was reported before the kill; 0: none.
    std::int64_t RecordAndKill(const std::string& path, useconds_t afterUs)
    {
        int ends[2] = {};
        EXPECT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        if (child == 0) RecordForever(path, ends[1]);
        close(ends[1]);
        std::int64_t last = 0;
        std::int64_t number = 0;
        EXPECT_EQ(read(ends[0], &number, sizeof number), static_cast<ssize_t>(sizeof number)) << "it has begun";
        last = number;
        // The pipe takes some thousand reports, so that nobody waits for anybody.
        usleep(afterUs);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        while (read(ends[0], &number, sizeof number) == static_cast<ssize_t>(sizeof number)) last = number;
        close(ends[0]);
        return last;
    }
};

TEST_F(Killed, AtAnyMomentEveryWholeFrameIsThere)
{
    std::mt19937 random(20261122);
    const int rounds = Rounds(200);
    for (int round = 0; round < rounds; ++round) {
        const std::string path = In("run" + std::to_string(round) + ".seq");
        const std::int64_t reported = RecordAndKill(path, static_cast<useconds_t>(random() % 8'000));
        const std::size_t before = FileContents(path).size();
        const RecoveryReport report = RecoverSequence(path, false);
        ASSERT_EQ(report.outcome, Recovery::kRepaired) << report.why;
        ASSERT_GE(report.frames, reported);
        ASSERT_EQ(report.frames, static_cast<std::int64_t>((before - 512) / kRecordBytes));
        ASSERT_EQ(report.recordsMade, 0) << "each record stands before its frame";
        const std::string contents = FileContents(path);
        ASSERT_EQ(contents.size(), 512 + static_cast<std::size_t>(report.frames) * kRecordBytes);
        const FramesFile journal = ReadFramesFile(FramesPathOf(path));
        ASSERT_EQ(journal.records.size(), static_cast<std::size_t>(report.frames));
        for (std::size_t i = 0; i < journal.records.size(); ++i) {
            const auto number = static_cast<std::int64_t>(i) + 1;
            const std::vector<std::int16_t> pixels = Pixels(number);
            const std::string_view stored = std::string_view(contents).substr(512 + i * kRecordBytes + 80, 2 * kPixels);
            ASSERT_EQ(std::memcmp(stored.data(), pixels.data(), stored.size()), 0);
            ASSERT_EQ(journal.records[i].number, number);
            ASSERT_EQ(journal.records[i].pixelCrc, Crc32cByTable(std::as_bytes(std::span(pixels))));
        }
        ASSERT_EQ(RecoverSequence(path, true).outcome, Recovery::kClean);
        std::remove(path.c_str());
        std::remove(FramesPathOf(path).c_str());
    }
}

TEST_F(Killed, ARepairThatIsKilledItselfCanBeRunAgain)
{
    std::mt19937 random(7);
    const int rounds = Rounds(50);
    for (int round = 0; round < rounds; ++round) {
        const std::string path = In("run" + std::to_string(round) + ".seq");
        std::vector<std::int64_t> numbers(300);
        for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<std::int64_t>(i) + 1;
        Record(path, numbers, false);
        PutFile(path, FileContents(path) + "part");
        const pid_t child = fork();
        if (child == 0) {
            RecoverSequence(path, false);
            _exit(0);
        }
        usleep(static_cast<useconds_t>(random() % 3000));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        ASSERT_NE(RecoverSequence(path, false).outcome, Recovery::kFailed);
        const RecoveryReport report = RecoverSequence(path, true);
        ASSERT_EQ(report.outcome, Recovery::kClean);
        ASSERT_EQ(report.frames, 300);
        ASSERT_TRUE(report.wasClosed);
    }
}

}  // namespace
}  // namespace kelvo
