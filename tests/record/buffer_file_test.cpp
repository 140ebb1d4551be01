#include "record/buffer_file.h"

#include "grabber/host_frames_write.h"
#include "head/camera_head_write.h"
#include "imagefile/header_write.h"
#include "platform/memory.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "support/full_disk.h"
#include "support/recording_board.h"
#include "support/stored_files.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kColumns = 4;
constexpr int kRows = 3;
constexpr int kSlots = 6;

// The count of a slot's pixel.
std::int16_t CountAt(int slot, int row, int column)
{
    return static_cast<std::int16_t>(1000 * slot + 10 * row + column);
}

std::string Contents(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

int Word(const std::string& bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8;
}

class BufferFile : public BoardTest {
  protected:
    BufferFile() : path(directory / "frames.buf")
    {
        SetSize(kColumns, kRows);
        write::camera.numBufFrames = kSlots;
        PutFile(directory / "kelvo.ini", "[Camera.2]\nMaxNumFramesToAllocate=6\n");
        AllocateHostFrames();
        for (int slot = 0; slot < kSlots; ++slot) FillSlot(slot);
        list[0] = {.Name = "A", .Frames = 3, .Skip = 2};
        list[1] = {.Name = "B", .Frames = 70000, .Skip = 16383};
    }

    static void FillSlot(int slot)
    {
        auto& frame = write::hostFrames.HostFrames[static_cast<std::size_t>(slot)];
        for (int row = 0; row < kRows; ++row) {
            for (int column = 0; column < kColumns; ++column) {
                frame[static_cast<std::size_t>(row * kColumns + column)] = CountAt(slot, row, column);
            }
        }
    }
    static void ClearSlots()
    {
        for (auto& frame : write::hostFrames.HostFrames) std::ranges::fill(frame, std::int16_t{-1});
    }

    int Save(int first, int last, int top = 0, int left = 0, int bottom = kRows - 1, int right = kColumns - 1)
    {
        return SaveBufferFile(path, first, last, top, left, bottom, right, "AB", list);
    }
    int Load(int first, int last, int top = 0, int left = 0, int bottom = kRows - 1, int right = kColumns - 1) const
    {
        return LoadBufferFile(path, first, last, top, left, bottom, right);
    }
    // A file of whole frames, frame f with the counts of slot 10 + f.
    void PutWholeFile(int frames, bool swapped = false) const
    {
        std::string bytes = HeaderBytes(PlainHeader(kColumns, kRows));
        for (int frame = 0; frame < frames; ++frame) {
            for (int i = 0; i < kColumns * kRows; ++i) {
                bytes += SampleBytes({CountAt(10 + frame, i / kColumns, i % kColumns)});
            }
        }
        if (swapped) {
            bytes[0] = bytes[1] = 0;
            for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) std::swap(bytes[at], bytes[at + 1]);
        }
        PutFile(path, bytes);
    }

    std::string path;
    std::array<SubSeqRecord, kSubSequences> list;
};

// ---- Saving

TEST_F(BufferFile, TheWholeStoreIsTheHeaderAndItsFramesBackToBack)
{
    const std::int64_t requests = MemoryRequests();
    ASSERT_EQ(Save(0, kSlots - 1), 1);
    EXPECT_EQ(MemoryRequests(), requests);  // straight from the store, without a work block
    const std::string bytes = Contents(path);
    ASSERT_EQ(bytes.size(), 512U + 2 * kSlots * kColumns * kRows);
    EXPECT_EQ(Word(bytes, 2), kColumns);
    EXPECT_EQ(Word(bytes, 4), kRows);
    EXPECT_EQ(Word(bytes, 42), kSlots);  // FrameCount
    for (int slot = 0; slot < kSlots; ++slot) {
        for (int i = 0; i < kColumns * kRows; ++i) {
            const std::size_t at = 512 + 2 * static_cast<std::size_t>(slot * kColumns * kRows + i);
            ASSERT_EQ(Word(bytes, at), CountAt(slot, i / kColumns, i % kColumns));
        }
    }
}

TEST_F(BufferFile, TheHeaderHasFramesAndSkipsOfTheCompositionsLetters)
{
    write::file.ImageHeader.Reserved64.fill(0x55);  // of a file that was read before
    ASSERT_EQ(SaveBufferFile(path, 0, 0, 0, 0, 2, 3, "A 1bA", list), 1);
    const std::string bytes = Contents(path);
    EXPECT_EQ(Word(bytes, 64), 3);
    EXPECT_EQ(Word(bytes, 66), 70000 & 0xFFFF);
    EXPECT_EQ(Word(bytes, 68), 3);
    EXPECT_EQ(Word(bytes, 70), 0);
    EXPECT_EQ(Word(bytes, 88), 2);
    EXPECT_EQ(Word(bytes, 90), 16383);
    EXPECT_EQ(Word(bytes, 92), 2);
    EXPECT_EQ(Word(bytes, 94), 0);
}

TEST_F(BufferFile, TwelveLettersAtMostGoIntoTheHeader)
{
    ASSERT_EQ(SaveBufferFile(path, 0, 0, 0, 0, 2, 3, "AAAAAAAAAAAABB", list), 1);
    const std::string bytes = Contents(path);
    EXPECT_EQ(Word(bytes, 86), 3);
    EXPECT_EQ(Word(bytes, 88), 2);  // of the first letter: the frames of a thirteenth would stand here
    EXPECT_EQ(Word(bytes, 110), 2);
}

TEST_F(BufferFile, ARectangleIsSavedAsItsRowsPacked)
{
    ASSERT_EQ(Save(1, 2, 1, 1, 2, 2), 1);
    const std::string bytes = Contents(path);
    ASSERT_EQ(bytes.size(), 512U + 2 * 2 * 4);
    std::vector<int> counts;
    for (std::size_t at = 512; at < bytes.size(); at += 2) counts.push_back(Word(bytes, at));
    EXPECT_THAT(counts, ElementsAre(1011, 1012, 1021, 1022, 2011, 2012, 2021, 2022));
}

TEST_F(BufferFile, RowsAndColumnsAreThoseOfTheHeadsWindow)
{
    write::registers.FpaSerialWord.RowStart = 100;
    write::registers.FpaSerialWord.ColStart = 50;
    EXPECT_EQ(Save(0, 0, 0, 0, 2, 3), kBufferRectangleOutside);
    ASSERT_EQ(Save(1, 1, 101, 52, 102, 53), 1);
    const std::string bytes = Contents(path);
    std::vector<int> counts;
    for (std::size_t at = 512; at < bytes.size(); at += 2) counts.push_back(Word(bytes, at));
    EXPECT_THAT(counts, ElementsAre(1012, 1013, 1022, 1023));
    const std::optional<ImageHeaderRecord> header = ReadBufferHeader(path);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->TopRow, 101);
    EXPECT_EQ(header->RightColumn, 53);

    ClearSlots();
    ASSERT_EQ(Load(0, 0, 102, 52, 102, 52), 1);
    EXPECT_EQ(HostFrames[0][2 * kColumns + 2], 1022);
    EXPECT_EQ(std::ranges::count(HostFrames[0], -1), kColumns * kRows - 1);
}

TEST_F(BufferFile, ByteSwap0ExchangesHeaderAndFramesOnBothWays)
{
    write::file.ByteSwap = 0;
    ASSERT_EQ(Save(1, 2), 1);
    const std::string bytes = Contents(path);
    EXPECT_EQ(bytes[2], 0);
    EXPECT_EQ(bytes[3], kColumns);
    EXPECT_EQ(static_cast<unsigned char>(bytes[512]) << 8 | static_cast<unsigned char>(bytes[513]), 1000);
    EXPECT_EQ(bytes[65], 3);  // Frames of the first letter
    EXPECT_EQ(HostFrames[1][0], 1000);

    ClearSlots();
    ASSERT_EQ(Load(0, 1), 1);
    EXPECT_EQ(HostFrames[0][5], CountAt(1, 1, 1));
    EXPECT_EQ(HostFrames[1][11], CountAt(2, 2, 3));
}

TEST_F(BufferFile, TheHeaderOnViewStaysAsItIs)
{
    write::file.ImageHeader = PlainHeader(7, 5);
    const ImageHeaderRecord before = ImageHeader;
    ASSERT_EQ(Save(0, 1), 1);
    EXPECT_EQ(std::memcmp(&before, &ImageHeader, sizeof before), 0);
}

TEST_F(BufferFile, SavingRefusesRangesAndRectanglesByTheirCodes)
{
    EXPECT_EQ(Save(2, 1), kBufferRange);
    EXPECT_EQ(Save(0, kSlots), kBufferRange);
    EXPECT_EQ(Save(-1, 0), kBufferRange);
    EXPECT_EQ(Save(0, 0, 2, 0, 1, 3), kBufferRectangleOrder);
    EXPECT_EQ(Save(0, 0, 0, 3, 2, 2), kBufferRectangleOrder);
    EXPECT_EQ(Save(0, 0, -1, 0, 2, 3), kBufferRectangleNegative);
    EXPECT_EQ(Save(0, 0, 0, -1, 2, 3), kBufferRectangleNegative);
    EXPECT_EQ(Save(0, 0, 0, 0, 3, 3), kBufferRectangleOutside);
    EXPECT_EQ(Save(0, 0, 0, 0, 2, 4), kBufferRectangleOutside);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(BufferFile, ANameThatCannotBeWrittenIsMinus25)
{
    path = directory / "none/frames.buf";
    EXPECT_EQ(Save(0, 0), kBufferNoFile);
}

TEST_F(BufferFile, AFailedSaveLeavesWhatStoodBefore)
{
    PutFile(path, "before");
    {
        const FullDisk full(100);
        EXPECT_EQ(Save(0, 1), kBufferHeaderWrite);
    }
    EXPECT_EQ(Contents(path), "before");
    {
        const FullDisk full(520);
        EXPECT_EQ(Save(0, 1), kBufferFrameWrite);
    }
    EXPECT_EQ(Contents(path), "before");
    FailAllocation(1);
    EXPECT_EQ(Save(0, 1, 1, 1, 1, 1), kBufferFrameWrite);
    EXPECT_EQ(Contents(path), "before");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.Path()), {}), 3);  // no part of it beside
}

// ---- Loading

TEST_F(BufferFile, FramesGoIntoTheSlotsOfTheirOwnNumbers)
{
    PutWholeFile(6);
    ClearSlots();
    ASSERT_EQ(Load(2, 5), 1);
    for (int slot = 0; slot < kSlots; ++slot) {
        const std::int16_t expected = slot < 2 ? std::int16_t{-1} : CountAt(10 + slot, 1, 3);
        EXPECT_EQ(HostFrames[static_cast<std::size_t>(slot)][7], expected) << slot;
    }
}

TEST_F(BufferFile, ARectangleGoesToItsOwnRowsAndColumnsAndTheRestStays)
{
    PutWholeFile(2);
    ASSERT_EQ(Load(1, 1, 1, 2, 2, 3), 1);
    for (int row = 0; row < kRows; ++row) {
        for (int column = 0; column < kColumns; ++column) {
            const bool inside = row >= 1 && column >= 2;
            EXPECT_EQ(ReadBufferPixel(1, row, column), CountAt(inside ? 11 : 1, row, column)) << row << ' ' << column;
        }
    }
    EXPECT_EQ(ReadBufferPixel(0, 2, 3), CountAt(0, 2, 3));
}

TEST_F(BufferFile, AByteSwappedFileIsReadInNativeOrder)
{
    PutWholeFile(2, true);
    const std::optional<ImageHeaderRecord> header = ReadBufferHeader(path);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->ImageWidth, kColumns);
    EXPECT_EQ(+header->FrameCount, 2U);
    ASSERT_EQ(Load(0, 1), 1);
    EXPECT_EQ(ReadBufferPixel(1, 2, 1), CountAt(11, 2, 1));
}

TEST_F(BufferFile, LoadingRefusesByItsCodesAndReadsNothing)
{
    PutWholeFile(8);
    const auto before = HostFrames;
    EXPECT_EQ(Load(1, 0), kBufferRange);
    EXPECT_EQ(Load(0, 8), kBufferRange);
    EXPECT_EQ(Load(-1, 0), kBufferRange);
    EXPECT_EQ(Load(5, 6), kBufferRange);  // the store has six slots
    EXPECT_EQ(Load(0, 0, 2, 0, 1, 3), kBufferRectangleOrder);
    EXPECT_EQ(Load(0, 0, 0, 2, 2, 1), kBufferRectangleOrder);
    EXPECT_EQ(Load(0, 0, -1, 0, 2, 3), kBufferRectangleNegative);
    EXPECT_EQ(Load(0, 0, 0, -2, 2, 3), kBufferRectangleNegative);
    EXPECT_EQ(Load(0, 0, 0, 0, 3, 3), kBufferRectangleOutside);
    EXPECT_EQ(Load(0, 0, 0, 0, 2, 4), kBufferRectangleOutside);
    EXPECT_EQ(LoadBufferFile(directory / "none.buf", 0, 0, 0, 0, 2, 3), kBufferNoFile);
    EXPECT_EQ(HostFrames, before);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(BufferFile, AFrameLargerThanTheStoresIsOutside)
{
    WriteImageFile(path, PlainHeader(kColumns + 1, kRows),
                   {std::vector<std::int16_t>(static_cast<std::size_t>((kColumns + 1) * kRows), 5)});
    EXPECT_EQ(Load(0, 0, 0, 0, kRows - 1, kColumns), kBufferRectangleOutside);
    ASSERT_EQ(Load(0, 0, 0, 0, kRows - 1, kColumns - 1), 1);
    EXPECT_EQ(ReadBufferPixel(0, 2, 3), 5);
}

TEST_F(BufferFile, AHeaderThatIsNoBuffersIsMinus26)
{
    PutFile(path, std::string(511, '\0'));
    EXPECT_EQ(Load(0, 0), kBufferHeaderRead);
    ImageHeaderRecord header = PlainHeader(kColumns, kRows);
    header.SampleBytes = 4;
    PutFile(path, HeaderBytes(header) + std::string(1000, 'x'));
    EXPECT_EQ(Load(0, 0), kBufferHeaderRead);
    header = PlainHeader(kColumns, kRows);
    header.ImageHeaderDataOffset = 80;
    PutFile(path, HeaderBytes(header) + std::string(1000, 'x'));
    EXPECT_EQ(Load(0, 0), kBufferHeaderRead);
    header = PlainHeader(kColumns, 0);
    PutFile(path, HeaderBytes(header) + std::string(1000, 'x'));
    EXPECT_EQ(Load(0, 0), kBufferHeaderRead);
}

TEST_F(BufferFile, AHeaderMayLieAboutItsRectangle)
{
    ImageHeaderRecord header = PlainHeader(kColumns, 1);
    header.BottomRow = 2;  // of three rows, while each frame has one
    WriteImageFile(path, header, {{1, 2, 3, 4}, {5, 6, 7, 8}});
    EXPECT_EQ(Load(0, 0), kBufferRectangleOutside);
    ASSERT_EQ(Load(1, 1, 0, 0, 0, 3), 1);
    EXPECT_EQ(ReadBufferPixel(1, 0, 3), 8);
}

TEST_F(BufferFile, FramesThatAreNotThereAreBeyondTheFile)
{
    PutWholeFile(2);
    std::filesystem::resize_file(path, 512 + 2 * kColumns * kRows + 5);  // one frame, and a part of the second
    EXPECT_EQ(Load(0, 1), kBufferRange);
    EXPECT_EQ(Load(0, 0), 1);
}

TEST_F(BufferFile, AFrameThatCannotBeReadIsMinus28)
{
    PutWholeFile(2);
    FailAllocation(1);
    EXPECT_EQ(Load(0, 1), kBufferFrameRead);
    EXPECT_EQ(ReadBufferPixel(0, 0, 0), CountAt(0, 0, 0));
}

}  // namespace
}  // namespace kelvo
