#include "batch/recover_command.h"

#include "batch/sequence_fixture.h"
#include "imagefile/recovery.h"
#include "platform/faults.h"
#include "support/full_disk.h"

#include <gmock/gmock.h>

#include <cstring>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class Recover : public SequenceTest {
  protected:
    void CutOff(const std::string& file, std::size_t bytes) const
    {
        const std::string contents = FileContents(file);
        PutFile(file, std::string_view(contents).substr(0, contents.size() - bytes));
    }
    std::size_t SizeOf(const std::string& file) const { return FileContents(file).size(); }
    std::string path = In("run.seq");
    std::string journal = In("run.seq.frames");
};

TEST_F(Recover, WhatIsWholeIsCleanAndUntouched)
{
    Record(path, {1, 2, 3, 7});
    const auto before = Everything();
    const RecoveryReport report = RecoverSequence(path, false);
    EXPECT_EQ(report.outcome, Recovery::kClean);
    EXPECT_EQ(report.frames, 4);
    EXPECT_THAT(report.gaps, ElementsAre(FrameGap{3, 4, 3, 0, 0, 0}));
    EXPECT_EQ(Everything(), before);
}

TEST_F(Recover, StoppedWhileItChecksItHasChangedNothing)
{
    Record(path, {1, 2, 3}, false);
    const auto before = Everything();
    std::vector<std::int64_t> asked;
    const RecoveryReport report = RecoverSequence(path, false, [&asked](std::int64_t checked, std::int64_t frames) {
        EXPECT_EQ(frames, 3);
        asked.push_back(checked);
        return checked < 1;
    });
    EXPECT_EQ(report.outcome, Recovery::kFailed);
    EXPECT_EQ(report.why, "it was stopped");
    EXPECT_THAT(asked, ElementsAre(0, 1));
    EXPECT_EQ(Everything(), before);
}

TEST_F(Recover, AfterAKillTheFramesAreCountedAndTheJournalClosed)
{
    Record(path, {1, 2, 3}, false);
    const RecoveryReport report = RecoverSequence(path, false);
    EXPECT_EQ(report.outcome, Recovery::kRepaired);
    EXPECT_EQ(report.headerCount, 0);
    EXPECT_FALSE(report.wasClosed);
    EXPECT_EQ(report.frames, 3);
    std::uint32_t count = 0;
    std::memcpy(&count, FileContents(path).data() + 42, 4);
    EXPECT_EQ(count, 3U);
    const FramesFile file = ReadFramesFile(journal);
    ASSERT_TRUE(file.closing);
    EXPECT_EQ(file.closing->mark, static_cast<std::uint32_t>(EndOfRecording::kRecovered));
    EXPECT_EQ(file.closing->number, 3);
    EXPECT_EQ(file.records[2].number, 3);
    EXPECT_EQ(RecoverSequence(path, false).outcome, Recovery::kClean) << "and then it is whole";
}

TEST_F(Recover, CutAtEachByteEveryWholeFrameIsKept)
{
    Record(path, {1, 2, 3}, false);
    const std::string sequence = FileContents(path);
    const std::string records = FileContents(journal);
    for (std::size_t bytes = 512; bytes <= sequence.size(); ++bytes) {
        PutFile(path, std::string_view(sequence).substr(0, bytes));
        PutFile(journal, records);
        const RecoveryReport report = RecoverSequence(path, false);
        const std::size_t whole = (bytes - 512) / static_cast<std::size_t>(kSmallFrameBytes);
        ASSERT_EQ(report.outcome, Recovery::kRepaired) << bytes;
        EXPECT_EQ(report.frames, static_cast<std::int64_t>(whole));
        EXPECT_EQ(report.bytesCut,
                  static_cast<std::int64_t>((bytes - 512) % static_cast<std::size_t>(kSmallFrameBytes)));
        EXPECT_EQ(report.recordsDropped, static_cast<std::int64_t>(3 - whole));
        EXPECT_EQ(SizeOf(path), 512 + whole * static_cast<std::size_t>(kSmallFrameBytes));
        EXPECT_EQ(FileContents(path).substr(512), sequence.substr(512, SizeOf(path) - 512));
        EXPECT_THAT(ReadFramesFile(journal).records, SizeIs(whole));
        EXPECT_EQ(RecoverSequence(path, true).outcome, Recovery::kClean);
    }
}

TEST_F(Recover, RecordsThatAreMissingAreMadeFromTheirFrames)
{
    Record(path, {5, 6, 7}, false);
    CutOff(journal, 64 + 10);
    const RecoveryReport report = RecoverSequence(path, false);
    EXPECT_EQ(report.outcome, Recovery::kRepaired);
    EXPECT_EQ(report.recordsMade, 2);
    const FramesFile file = ReadFramesFile(journal);
    ASSERT_THAT(file.records, SizeIs(3));
    EXPECT_EQ(file.records[0].flags, 0U);
    for (const std::size_t i : {1U, 2U}) {
        EXPECT_EQ(file.records[i].number, static_cast<std::int64_t>(5 + i));
        EXPECT_EQ(file.records[i].integrationMs, 1.5F);
        EXPECT_EQ(file.records[i].flags, static_cast<std::uint32_t>(kRecoveredFrame));
        EXPECT_EQ(file.records[i].utcNs, 0);
    }
    EXPECT_EQ(RecoverSequence(path, true).outcome, Recovery::kClean) << "their checksums hold";
}

TEST_F(Recover, ABrokenRecordDoesntTakeThoseBehindItAlong)
{
    Record(path, {1, 2, 3, 7});
    const FramesFile before = ReadFramesFile(journal);
    std::string broken = FileContents(journal);
    broken[static_cast<std::size_t>(before.headBytes) + 64 + 30] ^= 1;
    PutFile(journal, broken);
    const RecoveryReport report = RecoverSequence(path, false);
    EXPECT_EQ(report.outcome, Recovery::kRepaired);
    EXPECT_EQ(report.recordsMade, 1);
    EXPECT_TRUE(report.wasClosed);
    EXPECT_THAT(report.gaps, ElementsAre(FrameGap{3, 4, 3, 0, 0, 0}));
    const FramesFile after = ReadFramesFile(journal);
    ASSERT_THAT(after.records, SizeIs(4));
    for (const std::size_t i : {0U, 2U, 3U}) EXPECT_EQ(after.records[i], before.records[i]) << i;
    EXPECT_EQ(after.records[1].number, 2);
    EXPECT_EQ(after.records[1].flags, static_cast<std::uint32_t>(kRecoveredFrame));
    EXPECT_EQ(after.records[1].pixelCrc, before.records[1].pixelCrc);
    EXPECT_EQ(after.closing, before.closing);
    EXPECT_EQ(RecoverSequence(path, true).outcome, Recovery::kClean);
}

TEST_F(Recover, ADamagedJournalIsMadeAnewAndKept)
{
    Record(path, {5, 6});
    std::string broken = FileContents(journal);
    broken[20] = 'x';
    PutFile(journal, broken);
    const RecoveryReport report = RecoverSequence(path, false);
    EXPECT_EQ(report.outcome, Recovery::kRepaired);
    EXPECT_TRUE(report.journalWasDamaged);
    EXPECT_EQ(report.recordsMade, 2);
    EXPECT_EQ(FileContents(journal + ".damaged"), broken);
    EXPECT_EQ(ReadFramesFile(journal).records.at(1).number, 6);
    EXPECT_EQ(RecoverSequence(path, true).outcome, Recovery::kClean);
}

TEST_F(Recover, AFrameWhosePixelsChangedIsTold)
{
    Record(path, {1, 2, 3});
    std::string contents = FileContents(path);
    contents[512 + static_cast<std::size_t>(kSmallFrameBytes) + 80 + 3] ^= 1;
    PutFile(path, contents);
    const RecoveryReport report = RecoverSequence(path, false);
    EXPECT_EQ(report.outcome, Recovery::kFailed);
    EXPECT_THAT(report.badFrames, ElementsAre(1));
    const Said said = Run({"recover", path});
    EXPECT_EQ(said.code, 2);
    EXPECT_THAT(said.out, HasSubstr("frame 1 doesn't fit its checksum"));
}

TEST_F(Recover, ADryRunChangesNothing)
{
    Record(path, {1, 2}, false);
    CutOff(path, 5);
    const auto before = Everything();
    const Said said = Run({"recover", "--dry-run", path});
    EXPECT_EQ(said.code, 1);
    EXPECT_EQ(said.out, path +
                            ": to be repaired; 1 frames; part of a frame, 91 bytes, cut off; the header counted 0; 1 "
                            "records without a frame dropped; the journal wasn't closed\n");
    EXPECT_EQ(Everything(), before);
}

TEST_F(Recover, AFileBeingRecordedIsRefused)
{
    std::optional<SequenceWriter> writer = SequenceWriter::Create(path, SmallHeader(), SmallHead());
    ASSERT_TRUE(writer);
    ASSERT_TRUE(writer->Append(SmallRecord(1), SmallPixels(1)));
    const auto before = Everything();
    for (const bool dryRun : {false, true}) EXPECT_EQ(RecoverSequence(path, dryRun).why, "it is being recorded");
    EXPECT_EQ(Run({"recover", path}).code, 2);
    EXPECT_EQ(Everything(), before);
}

TEST_F(Recover, WithoutAJournalTheFramesAreStillCounted)
{
    Record(path, {1, 2}, false);
    std::remove(journal.c_str());
    CutOff(path, 5);
    const RecoveryReport report = RecoverSequence(path, false);
    EXPECT_EQ(report.outcome, Recovery::kRepaired);
    EXPECT_FALSE(report.hasJournal);
    EXPECT_EQ(report.frames, 1);
    EXPECT_THAT(Everything(), SizeIs(1));
}

TEST_F(Recover, WhatIsNoSequenceIsRefusedUntouched)
{
    PutFile(In("text"), "hello");
    PutFile(In("zeros"), std::string(2000, '\0'));
    PutFile(In("spiff"), '\1' + std::string(2000, '\0'));
    const auto before = Everything();
    for (const char* const name : {"text", "zeros", "spiff", "none"}) {
        EXPECT_EQ(RecoverSequence(In(name), false).outcome, Recovery::kFailed) << name;
    }
    EXPECT_EQ(RecoverSequence(directory.Path(), false).outcome, Recovery::kFailed);
    EXPECT_EQ(Everything(), before);
}

TEST_F(Recover, AJournalOfAnotherSequenceIsLeftAlone)
{
    Record(path, {1, 2}, false);
    std::remove(journal.c_str());
    FramesHead other = SmallHead();
    other.columns = 5;
    ASSERT_TRUE(FramesFileWriter::Create(journal, other));
    const auto before = Everything();
    EXPECT_EQ(RecoverSequence(path, false).why, "its journal belongs to another sequence");
    EXPECT_EQ(Everything(), before);
}

TEST_F(Recover, ADiskThatRefusesIsToldAndItCanBeRunAgain)
{
    Record(path, {1, 2, 3}, false);
    CutOff(path, 5);
    bool repaired = false;
    for (int n = 1; !repaired && n < 50; ++n) {
        SetFaultOnce("disk", n);
        const RecoveryReport report = RecoverSequence(path, false);
        repaired = QuestionsUntilFault("disk") > 0;  // it wasn't met any more
        SetFaultOnce("disk", 0);
        EXPECT_EQ(report.outcome == Recovery::kFailed, !repaired) << n;
    }
    EXPECT_TRUE(repaired);
    EXPECT_EQ(RecoverSequence(path, true).outcome, Recovery::kClean);
    EXPECT_EQ(ReadFramesFile(journal).records.size(), 2U);
}

TEST_F(Recover, AJournalOfALaterVersionIsLeftAlone)
{
    Record(path, {1, 4}, false);
    std::string newer = FileContents(journal);
    newer[8] = 2;
    PutFile(journal, newer);
    const auto before = Everything();
    EXPECT_EQ(RecoverSequence(path, false).why, "its journal is of a later version");
    EXPECT_EQ(Everything(), before);
}

TEST_F(Recover, SaysItAsJson)
{
    Record(path, {1, 4}, false);
    const Said said = Run({"recover", "--json", path});
    EXPECT_EQ(said.code, 1);
    EXPECT_EQ(
        said.out,
        "{\"file\": \"" + path +
            "\", \"outcome\": \"repaired\", \"why\": \"\", \"frames\": 2, \"bytes_cut\": 0, \"header_count\": 0, "
            "\"records_dropped\": 0, \"records_made\": 0, \"journal\": true, \"closed\": false, "
            "\"journal_damaged\": false, \"bad_frames\": [], \"gaps\": [{\"before\": 1, \"first\": 2, "
            "\"missing\": 2, \"board\": 2, \"ring\": 0, \"passed_over\": 0, \"unexplained\": 0, \"transport\": 0}]}\n");
}

TEST_F(Recover, SeveralFilesGiveTheWorstCode)
{
    Record(path, {1});
    Record(In("killed.seq"), {1}, false);
    EXPECT_EQ(Run({"recover", path}).code, 0);
    EXPECT_EQ(Run({"recover", "--dry-run", path, In("killed.seq")}).code, 1);
    EXPECT_EQ(Run({"recover", path, In("none.seq"), In("killed.seq")}).code, 2);
    EXPECT_EQ(Run({"recover", In("killed.seq")}).code, 0) << "the others were done all the same";
    EXPECT_EQ(Run({"recover"}).code, 2);
    EXPECT_EQ(Run({"recover", "--jason", path}).error, "kelvo recover: unknown option --jason\n");
}

TEST_F(Recover, ASwappedHeaderStaysSwapped)
{
    Record(path, {1, 2}, false);
    std::remove(journal.c_str());
    std::string contents = FileContents(path);
    contents[0] = contents[1] = 0;
    for (std::size_t i = 0; i < 512; i += 2) std::swap(contents[i], contents[i + 1]);
    PutFile(path, contents);
    EXPECT_EQ(RecoverSequence(path, false).outcome, Recovery::kRepaired);
    const std::string after = FileContents(path);
    EXPECT_EQ(after[43], 2) << "the count's low word, its bytes exchanged";
    EXPECT_EQ(after[42], 0);
    EXPECT_EQ(after.substr(0, 42), contents.substr(0, 42));
    EXPECT_EQ(after.substr(46), contents.substr(46));
}

}  // namespace
}  // namespace kelvo
