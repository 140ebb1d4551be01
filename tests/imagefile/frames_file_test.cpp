#include "imagefile/frames_file.h"

#include "imagefile/crc32c.h"
#include "platform/faults.h"
#include "support/full_disk.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>

#include <cstring>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::size_t kRecord = 64;

FramesHead SmallHead()
{
    return {
        .columns = 4, .rows = 2, .pixelBytes = 16, .texts = {{"Camera", "InSb 4 x 2"}, {"Comment", "two\nlines \\"}}};
}

FrameRecord Frame(std::int64_t number)
{
    return {.number = number,
            .monotonicNs = number * 10'000'000,
            .utcNs = 1'700'000'000'000'000'000 + number * 10'000'000,
            .integrationMs = 1.5F,
            .pixelCrc = static_cast<std::uint32_t>(number * 3)};
}

template <typename T>
T At(std::string_view bytes, std::size_t place)
{
    T value{};
    std::memcpy(&value, bytes.data() + place, sizeof value);
    return value;
}

class Journal : public testing::Test {
  protected:
    // Three frames, closed.
    void Write()
    {
        std::optional<FramesFileWriter> writer = FramesFileWriter::Create(path, SmallHead());
        ASSERT_TRUE(writer);
        for (const std::int64_t number : {7, 8, 12}) {
            FrameRecord record = Frame(number);
            if (number == 12) record.lostByBoard = 3;
            ASSERT_TRUE(writer->Append(record));
        }
        ASSERT_TRUE(writer->Close(ClosingRecord(3, EndOfRecording::kStopped)));
    }
    std::string Contents() const { return ReadWholeFile(path, 1 << 20).value_or(""); }
    void Put(std::string_view bytes) const { ASSERT_TRUE(ReplaceFile(path, bytes)); }

    TempDirectory directory;
    std::string path = directory / "run.seq.frames";
};

TEST_F(Journal, LiesAsItsFormatSays)
{
    Write();
    const std::string bytes = Contents();
    EXPECT_EQ(bytes.substr(0, 8), "KVFRAMES");
    EXPECT_EQ(At<std::uint32_t>(bytes, 8), 1U);
    const auto head = At<std::uint32_t>(bytes, 12);
    EXPECT_EQ(head % kRecord, 0U);
    EXPECT_EQ(At<std::uint32_t>(bytes, 16), kRecord);
    EXPECT_EQ(At<std::uint32_t>(bytes, 20), 16U);
    EXPECT_EQ(At<std::uint32_t>(bytes, 24), 4U);
    EXPECT_EQ(At<std::uint32_t>(bytes, 28), 2U);
    const std::string text = "Camera=InSb 4 x 2\nComment=two\\nlines \\\\\n";
    EXPECT_EQ(At<std::uint32_t>(bytes, 32), text.size());
    EXPECT_EQ(bytes.substr(64, text.size()), text);
    ASSERT_EQ(bytes.size(), head + 4 * kRecord);
    EXPECT_EQ(At<std::int64_t>(bytes, head + 2 * kRecord), 12);
    EXPECT_EQ(At<std::int64_t>(bytes, head + 2 * kRecord + 8), 120'000'000);
    EXPECT_EQ(At<std::int64_t>(bytes, head + 2 * kRecord + 16), 1'700'000'000'120'000'000);
    EXPECT_EQ(At<float>(bytes, head + 2 * kRecord + 24), 1.5F);
    EXPECT_EQ(At<std::uint32_t>(bytes, head + 2 * kRecord + 32), 3U);
    EXPECT_EQ(At<std::uint32_t>(bytes, head + 2 * kRecord + 56), 36U);
    EXPECT_EQ(At<std::uint32_t>(bytes, head + 3 * kRecord + 28), 128U) << "the closing record";
}

TEST_F(Journal, ComesBackAsItWasWritten)
{
    Write();
    const FramesFile file = ReadFramesFile(path);
    EXPECT_EQ(file.fault, FramesFault::kNone);
    EXPECT_EQ(file.head, SmallHead());
    EXPECT_EQ(file.head.Text("Comment"), "two\nlines \\");
    EXPECT_EQ(file.head.Text("Nothing"), "");
    ASSERT_THAT(file.records, SizeIs(3));
    EXPECT_EQ(file.records[1], Sealed(Frame(8)));
    ASSERT_TRUE(file.closing);
    EXPECT_EQ(file.closing->number, 3);
    EXPECT_EQ(file.bytesBehind, 0);
}

TEST_F(Journal, IsNeverWrittenOverAnother)
{
    Put("something");
    EXPECT_FALSE(FramesFileWriter::Create(path, SmallHead()));
    EXPECT_EQ(Contents(), "something");
}

TEST_F(Journal, CutAnywhereItGivesTheWholeRecordsBeforeTheCut)
{
    Write();
    const std::string whole = Contents();
    const std::size_t head = At<std::uint32_t>(whole, 12);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        Put(std::string_view(whole).substr(0, length));
        const FramesFile file = ReadFramesFile(path);
        if (length < 64) {
            EXPECT_EQ(file.fault, FramesFault::kNoJournal) << length;
        } else if (length < head) {
            EXPECT_EQ(file.fault, FramesFault::kDamaged) << length;
        } else {
            EXPECT_EQ(file.fault, FramesFault::kNone) << length;
            EXPECT_THAT(file.records, SizeIs((length - head) / kRecord)) << length;
            EXPECT_FALSE(file.closing) << length;
            EXPECT_EQ(file.bytesBehind, static_cast<std::int64_t>((length - head) % kRecord)) << length;
        }
    }
}

TEST_F(Journal, EachBitThatTurnsIsNoticed)
{
    Write();
    const std::string whole = Contents();
    const std::size_t head = At<std::uint32_t>(whole, 12);
    for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
        std::string broken = whole;
        broken[bit / 8] = static_cast<char>(broken[bit / 8] ^ (1 << bit % 8));
        Put(broken);
        const FramesFile file = ReadFramesFile(path);
        if (bit / 8 < head) {
            EXPECT_NE(file.fault, FramesFault::kNone) << bit;
        } else {
            const std::size_t hit = (bit / 8 - head) / kRecord;
            EXPECT_EQ(file.records.size(), std::min<std::size_t>(hit, 3)) << bit;
            EXPECT_FALSE(file.closing) << bit;
        }
    }
}

TEST_F(Journal, AHeadThatPromisesMoreThanTheFileHasTakesNoMemoryForIt)
{
    Write();
    std::string bytes = Contents();
    for (const std::uint32_t size : {0U, 1U, 63U, 65U, 0x00FFFFC0U, 0xFFFFFFC0U}) {
        std::memcpy(bytes.data() + 12, &size, sizeof size);
        Put(bytes);
        EXPECT_EQ(ReadFramesFile(path).fault, FramesFault::kDamaged) << size;
    }
    EXPECT_EQ(ReadFramesFile(directory / "none.frames").fault, FramesFault::kNotOpened);
    EXPECT_EQ(ReadFramesFile(directory.Path()).fault, FramesFault::kNotOpened);
}

TEST_F(Journal, AFullDiskLeavesWholeRecords)
{
    std::optional<FramesFileWriter> writer = FramesFileWriter::Create(path, SmallHead());
    ASSERT_TRUE(writer);
    ASSERT_TRUE(writer->Append(Frame(1)));
    {
        const FullDisk disk(static_cast<rlim_t>(Contents().size() + 20));
        EXPECT_FALSE(writer->Append(Frame(2)));
    }
    EXPECT_EQ(writer->Records(), 1);
    EXPECT_TRUE(writer->Append(Frame(3)));
    EXPECT_TRUE(writer->Close(ClosingRecord(2, EndOfRecording::kComplete)));
    const FramesFile file = ReadFramesFile(path);
    ASSERT_THAT(file.records, SizeIs(2));
    EXPECT_EQ(file.records[1].number, 3);
    EXPECT_TRUE(file.closing);
}

TEST_F(Journal, TakesRecordsBack)
{
    std::optional<FramesFileWriter> writer = FramesFileWriter::Create(path, SmallHead());
    ASSERT_TRUE(writer);
    for (const std::int64_t number : {1, 2, 3}) ASSERT_TRUE(writer->Append(Frame(number)));
    EXPECT_TRUE(writer->DropLast(2));
    EXPECT_TRUE(writer->Append(Frame(9)));
    writer.reset();
    const FramesFile file = ReadFramesFile(path);
    ASSERT_THAT(file.records, SizeIs(2));
    EXPECT_EQ(file.records[1].number, 9);
    EXPECT_FALSE(file.closing) << "it wasn't closed";
}

TEST_F(Journal, AsBytesIsWhatTheWriterWrites)
{
    Write();
    FrameRecord last = Frame(12);
    last.lostByBoard = 3;
    const std::vector<std::byte> bytes =
        FramesFileBytes(SmallHead(), std::vector{Frame(7), Frame(8), last}, ClosingRecord(3, EndOfRecording::kStopped));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()), Contents());
}

TEST_F(Journal, IsReadOnFromWhereItWas)
{
    auto writer = FramesFileWriter::Create(path, SmallHead());
    ASSERT_TRUE(writer->Append(Frame(1)) && writer->Append(Frame(2)));
    FramesFile file = ReadFramesFile(path);
    ReadOn(path, 2, file);
    EXPECT_THAT(file.records, ElementsAre(Sealed(Frame(1)), Sealed(Frame(2)))) << "nothing has come";
    ASSERT_TRUE(writer->Append(Frame(3)));
    ReadOn(path, 2, file);
    EXPECT_THAT(file.records, ElementsAre(Sealed(Frame(1)), Sealed(Frame(2)), Sealed(Frame(3))));
    // The third one's frame didn't reach the disk: its record was taken back, and another one stands there.
    ASSERT_TRUE(writer->DropLast(1) && writer->Append(Frame(9)));
    ASSERT_TRUE(writer->Close(ClosingRecord(3, EndOfRecording::kDiskFull)));
    ReadOn(path, 2, file);
    EXPECT_THAT(file.records, ElementsAre(Sealed(Frame(1)), Sealed(Frame(2)), Sealed(Frame(9))));
    EXPECT_EQ(file.closing, Sealed(ClosingRecord(3, EndOfRecording::kDiskFull)));
}

TEST_F(Journal, ThatIsGoneOrShorterIsLeftAsItWasRead)
{
    auto writer = FramesFileWriter::Create(path, SmallHead());
    ASSERT_TRUE(writer->Append(Frame(1)) && writer->Append(Frame(2)));
    FramesFile file = ReadFramesFile(path);
    ASSERT_TRUE(writer->DropLast(2));
    ReadOn(path, 2, file);
    EXPECT_THAT(file.records, SizeIs(2));
    DeleteFileNamed(path);
    ReadOn(path, 0, file);
    EXPECT_THAT(file.records, SizeIs(2));
}

FrameRecord Lost(std::int64_t number, std::uint32_t board, std::uint32_t ring, std::uint32_t passedOver)
{
    return {.number = number, .lostByBoard = board, .lostByRing = ring, .passedOver = passedOver};
}

TEST(GapTable, SaysWhatIsMissingAndWhy)
{
    const std::vector<FrameRecord> records = {Lost(1, 0, 0, 0), Lost(2, 0, 0, 0), Lost(4, 1, 0, 0), Lost(10, 2, 1, 2)};
    EXPECT_THAT(GapsOf(records), ElementsAre(FrameGap{2, 3, 1, 0, 0, 0}, FrameGap{3, 5, 2, 1, 2, 0}));
    EXPECT_THAT(GapsOf({}), IsEmpty());
}

TEST(GapTable, NamesEachCauseThatThereIs)
{
    EXPECT_EQ(CausesOf({2, 3, 1, 0, 0, 0}), "1 lost by the board");
    EXPECT_EQ(CausesOf({2, 3, 1, 2, 3, 4}), "1 lost by the board, 2 lost by the ring, 3 passed over, 4 unexplained");
}

TEST(GapTable, TellsFramesThatTheTransportLostApart)
{
    std::vector<FrameRecord> records = {Lost(1, 0, 0, 0), Lost(6, 1, 0, 1)};
    records[1].lostByTransport = 2;
    ASSERT_THAT(GapsOf(records), ElementsAre(FrameGap{1, 2, 1, 0, 1, 0, 2}));
    EXPECT_EQ(GapsOf(records)[0].Missing(), 4);
    EXPECT_EQ(CausesOf(GapsOf(records)[0]), "2 lost by the transport, 1 lost by the board, 1 passed over");
    EXPECT_EQ(CausesOf({.lostByTransport = 2}), "2 lost by the transport");
}

// Where the count stands, 52 bytes in, a journal of before it has zeros.
TEST(FramesFileRecord, HasTheCountOfTheTransportWhereZerosWereReserved)
{
    const auto at52 = [](const FrameRecord& record) {
        std::uint32_t value = 0;
        std::memcpy(&value, reinterpret_cast<const char*>(&record) + 52, sizeof value);
        return value;
    };
    EXPECT_EQ(at52({.lostByTransport = 7}), 7U);
    EXPECT_EQ(at52({.lostByBoard = 7, .mark = 5}), 0U);
}

TEST(GapTable, BeginsWithTheFirstFrameUnlessTheFileGoesOnWithAnother)
{
    std::vector<FrameRecord> records = {Lost(50, 3, 0, 40), Lost(51, 0, 0, 0)};
    EXPECT_THAT(GapsOf(records), IsEmpty());
    records[0] = Lost(50, 3, 0, 0);
    records[0].flags = kFirstOfPart;
    EXPECT_THAT(GapsOf(records), ElementsAre(FrameGap{0, 47, 3, 0, 0, 0}));
}

TEST(GapTable, NumbersTellWhatNoRecordExplains)
{
    const std::vector<FrameRecord> records = {Lost(1, 0, 0, 0), Lost(5, 1, 0, 0)};
    EXPECT_THAT(GapsOf(records), ElementsAre(FrameGap{1, 2, 1, 0, 0, 2}));
}

TEST(GapTable, ABoardThatDoesntCountHasNoNumbersToTell)
{
    const std::vector<FrameRecord> records = {Lost(-1, 0, 0, 0), Lost(-1, 0, 4, 0)};
    EXPECT_THAT(GapsOf(records), ElementsAre(FrameGap{1, -1, 0, 4, 0, 0}));
}

TEST(GapTable, HostileNumbersDontOverflow)
{
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    const std::vector<FrameRecord> records = {Lost(0, 0, 0, 0), Lost(kMost, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF)};
    ASSERT_THAT(GapsOf(records), SizeIs(1));
    EXPECT_EQ(GapsOf(records)[0].firstNumber, 1);
}

}  // namespace
}  // namespace kelvo
