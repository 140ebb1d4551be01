#include "batch/cut_command.h"
#include "batch/sequence_fixture.h"
#include "platform/faults.h"

#include <gmock/gmock.h>

#include <numeric>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class Pieces : public SequenceTest {
  protected:
    // 200 frames, two of them missing.
    void RecordRun() const
    {
        std::vector<std::int64_t> numbers(202);
        std::iota(numbers.begin(), numbers.end(), 1);
        numbers.erase(numbers.begin() + 100);
        numbers.erase(numbers.begin() + 128);
        Record(In("run.seq"), numbers);
    }
    void ExpectFailure(const std::vector<std::string>& arguments, const std::string& text) const
    {
        const auto before = Everything();
        const Said said = Run(arguments);
        EXPECT_EQ(said.code, 2);
        EXPECT_THAT(said.error, HasSubstr(text));
        EXPECT_THAT(said.out, IsEmpty());
        EXPECT_EQ(Everything(), before);
    }
};

TEST_F(Pieces, CutEvery64FramesAndJoinedAreTheRunByteForByte)
{
    RecordRun();
    std::vector<std::string> join = {"join"};
    for (const char* const range : {"0:64", "64:128", "128:192", "192:"}) {
        join.push_back(In(std::string("piece") + range + ".seq"));
        ASSERT_EQ(Run({"cut", "--frames", range, In("run.seq"), join.back()}).code, 0);
    }
    join.push_back(In("joined.seq"));
    const Said said = Run(join);
    EXPECT_EQ(said.code, 0) << said.error;
    EXPECT_EQ(FileContents(In("joined.seq")), FileContents(In("run.seq")));
    EXPECT_EQ(FileContents(In("joined.seq.frames")), FileContents(In("run.seq.frames")));
}

TEST_F(Pieces, APieceIsASequenceOfItsOwn)
{
    RecordRun();
    ASSERT_EQ(Run({"cut", "--frames=98:103", In("run.seq"), In("piece.seq")}).code, 0);
    const std::string whole = FileContents(In("run.seq"));
    const std::string piece = FileContents(In("piece.seq"));
    ASSERT_EQ(piece.size(), 512 + 5 * static_cast<std::size_t>(kSmallFrameBytes));
    EXPECT_EQ(piece[42], 5);
    const FramesFile journal = ReadFramesFile(In("piece.seq.frames"));
    std::vector<std::int64_t> numbers;
    for (const FrameRecord& record : journal.records) numbers.push_back(record.number);
    EXPECT_THAT(numbers, ElementsAre(99, 100, 102, 103, 104));
    EXPECT_THAT(GapsOf(journal.records), ElementsAre(FrameGap{2, 101, 1, 0, 0, 0}));
    EXPECT_EQ(journal.records[0].flags, static_cast<std::uint32_t>(kFirstOfPart));
    ASSERT_TRUE(journal.closing);
    EXPECT_EQ(journal.closing->number, 5);
    EXPECT_EQ(journal.closing->lostByRing, 0U) << "what is missing behind the run isn't missing here";
    for (std::size_t i = 0; i < 5; ++i) {
        const std::size_t at = 512 + i * static_cast<std::size_t>(kSmallFrameBytes);
        EXPECT_EQ(static_cast<std::size_t>(piece[at + 30]), i) << "its place in the file";
        EXPECT_EQ(piece.substr(at + 34, static_cast<std::size_t>(kSmallFrameBytes) - 34),
                  whole.substr(at + 98 * static_cast<std::size_t>(kSmallFrameBytes) + 34,
                               static_cast<std::size_t>(kSmallFrameBytes) - 34));
    }
}

TEST_F(Pieces, WithoutJournalsTheFramesAreCutAndJoinedAllTheSame)
{
    RecordRun();
    std::remove(In("run.seq.frames").c_str());
    ASSERT_EQ(Run({"cut", "--frames", ":7", In("run.seq"), In("a.seq")}).code, 0);
    ASSERT_EQ(Run({"cut", "--frames", "7:", In("run.seq"), In("b.seq")}).code, 0);
    ASSERT_EQ(Run({"join", In("a.seq"), In("b.seq"), In("c.seq")}).code, 0);
    EXPECT_EQ(FileContents(In("c.seq")), FileContents(In("run.seq")));
    EXPECT_THAT(Everything(), SizeIs(4));
}

TEST_F(Pieces, ARangeThatIsntThereIsRefused)
{
    RecordRun();
    const std::string run = In("run.seq");
    for (const char* const range : {"200:", "5:5", "6:5", "0:201"}) {
        ExpectFailure({"cut", "--frames", range, run, In("x.seq")}, "has 200 frames: there are none of that range");
    }
    for (const char* const range : {"5", "a:b", "-1:4", "1:2:3", "1:-2", "99999999999999999999:"}) {
        ExpectFailure({"cut", "--frames", range, run, In("x.seq")}, "--frames A:B says which frames");
    }
    ExpectFailure({"cut", "--frames", "", run, In("x.seq")}, "--frames needs a value");
    ExpectFailure({"cut", run, In("x.seq")}, "--frames A:B says which frames");
    ExpectFailure({"cut", "--frames", ":", run}, "a sequence and the name of the new one are needed");
    ExpectFailure({"join", run}, "sequences and the name of the new one are needed");
}

TEST_F(Pieces, NothingIsOverwritten)
{
    RecordRun();
    PutFile(In("mine.seq"), "mine");
    PutFile(In("other.seq.frames"), "mine");
    ExpectFailure({"cut", "--frames", ":", In("run.seq"), In("mine.seq")}, "stands already");
    ExpectFailure({"cut", "--frames", ":", In("run.seq"), In("other.seq")}, "stands already");
    ExpectFailure({"join", In("run.seq"), In("run.seq")}, "stands already");
}

TEST_F(Pieces, WhatWasntClosedHasToBeRecoveredFirst)
{
    Record(In("killed.seq"), {1, 2}, false);
    ExpectFailure({"cut", "--frames", ":", In("killed.seq"), In("x.seq")}, "recover it first");
    ASSERT_EQ(Run({"recover", In("killed.seq")}).code, 1);
    EXPECT_EQ(Run({"cut", "--frames", ":", In("killed.seq"), In("x.seq")}).code, 0);
}

TEST_F(Pieces, AFileBeingRecordedIsRefused)
{
    std::optional<SequenceWriter> writer = SequenceWriter::Create(In("live.seq"), SmallHeader(), SmallHead());
    ASSERT_TRUE(writer);
    ASSERT_TRUE(writer->Append(SmallRecord(1), SmallPixels(1)));
    ExpectFailure({"cut", "--frames", ":", In("live.seq"), In("x.seq")}, "is being recorded");
}

TEST_F(Pieces, ADamagedFrameIsntPassedOn)
{
    RecordRun();
    std::string contents = FileContents(In("run.seq"));
    contents[512 + 3 * static_cast<std::size_t>(kSmallFrameBytes) + 80] ^= 1;
    PutFile(In("run.seq"), contents);
    ExpectFailure({"cut", "--frames", ":", In("run.seq"), In("x.seq")}, "frame 3 doesn't fit its checksum");
    EXPECT_EQ(Run({"cut", "--frames", "4:", In("run.seq"), In("x.seq")}).code, 0);
}

TEST_F(Pieces, OfDifferentKindsDontJoin)
{
    Record(In("a.seq"), {1});
    Record(In("b.seq"), {2});
    std::remove(In("b.seq.frames").c_str());
    ExpectFailure({"join", In("a.seq"), In("b.seq"), In("x.seq")}, "some have a journal and some don't");
    std::remove(In("a.seq.frames").c_str());
    std::string contents = FileContents(In("b.seq"));
    contents[2] = 2;  // columns
    contents[4] = 4;  // rows
    PutFile(In("b.seq"), contents);
    ExpectFailure({"join", In("a.seq"), In("b.seq"), In("x.seq")}, "frames of another kind");
    ExpectFailure({"join", In("a.seq"), In("none.seq"), In("x.seq")}, "isn't a sequence that can be read");
}

TEST_F(Pieces, ADiskThatRefusesLeavesNothingHalf)
{
    Record(In("run.seq"), {1, 2, 3});
    for (int n = 1; n < 50; ++n) {
        SetFaultOnce("disk", n);
        const auto before = Everything();
        const int code = Run({"cut", "--frames", ":", In("run.seq"), In("x.seq")}).code;
        const bool met = QuestionsUntilFault("disk") == 0;
        SetFaultOnce("disk", 0);
        if (!met) {
            EXPECT_EQ(code, 0);
            return;
        }
        EXPECT_EQ(code, 2);
        EXPECT_EQ(Everything(), before);
    }
    FAIL() << "the disk was asked without end";
}

}  // namespace
}  // namespace kelvo
