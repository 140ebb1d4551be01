#include "imagefile/frame_file.h"

#include "platform/memory.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

ImageHeaderRecord Frames(std::int16_t width, std::int16_t height, std::int16_t sampleBytes,
                         std::int16_t frameHeader = 0)
{
    ImageHeaderRecord header;
    header.ImageWidth = width;
    header.ImageHeight = height;
    header.SampleBytes = sampleBytes;
    header.ImageHeaderDataOffset = frameHeader;
    return header;
}

std::vector<std::uint8_t> BytesOf(std::initializer_list<float> floats)
{
    std::vector<std::uint8_t> bytes(floats.size() * 4);
    std::memcpy(bytes.data(), std::data(floats), bytes.size());
    return bytes;
}

// ---- position

TEST(FrameRecord, LiesBehindTheHeaderAndTheFramesBefore)
{
    EXPECT_EQ(FrameRecordPosition(Frames(160, 120, 2), 512, 0), 512);
    EXPECT_EQ(FrameRecordPosition(Frames(160, 120, 2), 512, 3), 512 + 3 * 38400);
    EXPECT_EQ(FrameRecordPosition(Frames(160, 120, 2, 80), 512, 3), 512 + 3 * 38480);
    EXPECT_EQ(FrameRecordPosition(Frames(8, 4, 4), 1024, 5), 1024 + 5 * 128);
}

TEST(FrameRecord, IsFoundBeyondFourGigabytes)
{
    EXPECT_EQ(FrameRecordPosition(Frames(1024, 1024, 4), 512, 4000), 512 + std::int64_t{4000} * 4194304);
}

TEST(FrameRecord, HasNoPlaceWhereTheHeaderMakesNone)
{
    EXPECT_EQ(FrameRecordPosition(Frames(0, 4, 2), 512, 0), std::nullopt);
    EXPECT_EQ(FrameRecordPosition(Frames(4, -4, 2), 512, 0), std::nullopt);
    EXPECT_EQ(FrameRecordPosition(Frames(-4, -4, 2), 512, 0), std::nullopt);
    EXPECT_EQ(FrameRecordPosition(Frames(4, 4, 0), 512, 0), std::nullopt);
    EXPECT_EQ(FrameRecordPosition(Frames(4, 4, 2, -80), 512, 0), std::nullopt);
    EXPECT_EQ(FrameRecordPosition(Frames(32767, 32767, 4), 512, 0xFFFFFFFF), std::nullopt);  // leaves 63 bits
}

TEST(PixelCount, IsZeroWhereASideIsNotPositive)
{
    EXPECT_EQ(PixelCount(Frames(160, 120, 2)), 19200U);
    EXPECT_EQ(PixelCount(Frames(-160, -120, 2)), 0U);
    EXPECT_EQ(PixelCount(Frames(0, 120, 2)), 0U);
}

// ---- reading

class ReadingRecords : public ::testing::Test {
  protected:
    File Put(std::string_view contents)
    {
        PutFile(path, contents);
        std::optional<File> file = File::Open(path, FileMode::kRead);
        if (!file) std::abort();
        return std::move(*file);
    }

    TempDirectory directory;
    std::string path = directory / "frames.seq";
    std::vector<std::uint8_t> block;
};

TEST_F(ReadingRecords, TakesOneWithItsFrameHeader)
{
    File file = Put("HHaa1122bb3344");  // header 2; records of a FrameHeader of 2 and two samples of 2
    const ImageHeaderRecord header = Frames(2, 1, 2, 2);
    ASSERT_EQ(ReadFrameRecord(file, header, 2, 1, block), FrameRead::kComplete);
    EXPECT_THAT(block, ElementsAre('b', 'b', '3', '3', '4', '4'));
    ASSERT_EQ(ReadFrameRecord(file, header, 2, 0, block), FrameRead::kComplete);
    EXPECT_THAT(block, ElementsAre('a', 'a', '1', '1', '2', '2'));
}

TEST_F(ReadingRecords, TakesNoMemoryForWhatTheFileDoesNotHold)
{
    File file = Put("HH112");
    FailAllocation(1);  // would tell if memory were asked for
    EXPECT_EQ(ReadFrameRecord(file, Frames(2, 1, 2), 2, 0, block), FrameRead::kShort);
    EXPECT_EQ(ReadFrameRecord(file, Frames(32767, 32767, 4), 2, 0, block), FrameRead::kShort);
    EXPECT_EQ(ReadFrameRecord(file, Frames(0, 1, 2), 2, 0, block), FrameRead::kShort);
    EXPECT_EQ(ReadFrameRecord(file, Frames(1, 1, 2), 2, 1, block), FrameRead::kShort);
    EXPECT_TRUE(block.empty());
    FailAllocation(0);
}

TEST_F(ReadingRecords, FailsOnThePartialFrameThatTheHeaderCounts)
{
    File file = Put(std::string(512 + 1025, 'x'));
    EXPECT_EQ(ReadFrameRecord(file, Frames(1024, 1, 2), 512, 0, block), FrameRead::kShort);
}

TEST_F(ReadingRecords, KeepsABlockThatIsLargeEnough)
{
    block = {9, 9, 9, 9, 9, 9};
    const std::uint8_t* const before = block.data();
    File file = Put("HH1122");
    ASSERT_EQ(ReadFrameRecord(file, Frames(2, 1, 2), 2, 0, block), FrameRead::kComplete);
    EXPECT_EQ(block.data(), before);
    EXPECT_THAT(block, ElementsAre('1', '1', '2', '2', 9, 9));
}

TEST_F(ReadingRecords, TellsOfRefusedMemory)
{
    File file = Put("HH1122");
    FailAllocation(1);
    EXPECT_EQ(ReadFrameRecord(file, Frames(2, 1, 2), 2, 0, block), FrameRead::kNoMemory);
    EXPECT_TRUE(block.empty());
}

// ---- floats

TEST(CountOfFloat, AddsAHalfAndDropsTheFraction)
{
    EXPECT_EQ(CountOfFloat(1.5F), 2);
    EXPECT_EQ(CountOfFloat(-0.7F), 0);   // -0.2 toward zero
    EXPECT_EQ(CountOfFloat(-1.5F), -1);  // -1.0
    EXPECT_EQ(CountOfFloat(-1.75F), -1);
    EXPECT_EQ(CountOfFloat(1.25F), 1);
    EXPECT_EQ(CountOfFloat(0.0F), 0);
    EXPECT_EQ(CountOfFloat(16383.0F), 16383);
}

TEST(CountOfFloat, AddsTheHalfExactly)
{
    EXPECT_EQ(CountOfFloat(0x1.fffffep-2F), 0);  // the float below one half; a single-precision sum would round to 1
}

TEST(CountOfFloat, BoundsWhatSixteenBitsDoNotHold)
{
    EXPECT_EQ(CountOfFloat(32767.6F), 32767);
    EXPECT_EQ(CountOfFloat(1e30F), 32767);
    EXPECT_EQ(CountOfFloat(-1e30F), -32768);
    EXPECT_EQ(CountOfFloat(std::numeric_limits<float>::infinity()), 32767);
    EXPECT_EQ(CountOfFloat(std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(FloatRecord, BecomesCounts)
{
    const std::vector<std::uint8_t> record = BytesOf({1.5F, -0.7F, 513.0F});
    std::vector<std::uint8_t> counts(12, 0xEE);
    FloatRecordToCounts(record, Frames(3, 1, 4), counts);
    EXPECT_THAT(counts, ElementsAre(2, 0, 0, 0, 1, 2, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE));
}

TEST(FloatRecord, WithAFrameHeaderIsTakenFromFourTimesItsSize)
{
    // F = 2: floats from byte 8, counts from byte 4. Of the record's 14 bytes the first float takes 8 to 11; the second
    // would end beyond the record and is 0, like the third.
    std::vector<std::uint8_t> record = {0xAA, 0xBB, 0, 0, 0, 0, 0, 0};
    const std::vector<std::uint8_t> seven = BytesOf({7.0F});
    record.insert(record.end(), seven.begin(), seven.end());
    record.insert(record.end(), {0x12, 0x34});
    ASSERT_EQ(record.size(), 14U);
    std::vector<std::uint8_t> counts(14, 0xEE);
    FloatRecordToCounts(record, Frames(3, 1, 4, 2), counts);
    EXPECT_THAT(counts, ElementsAre(0xAA, 0xBB, 0xEE, 0xEE, 7, 0, 0, 0, 0, 0, 0xEE, 0xEE, 0xEE, 0xEE));
}

TEST(FloatRecord, NeverLeavesItsBlocks)
{
    const std::vector<std::uint8_t> record(4 + 80, 1);  // one pixel behind a FrameHeader of 80
    std::vector<std::uint8_t> counts(84, 0xEE);
    FloatRecordToCounts(record, Frames(1, 1, 4, 80), counts);  // its count would stand at byte 160
    std::vector<std::uint8_t> expected(84, 0xEE);
    std::fill_n(expected.begin(), 80, std::uint8_t{1});
    EXPECT_EQ(counts, expected);
    std::vector<std::uint8_t> none;
    FloatRecordToCounts({}, Frames(100, 100, 4, -5), none);
    EXPECT_TRUE(none.empty());
}

// ---- swapped words

TEST(SwappedRecord, WithAFrameHeaderLeavesItsLastSamplesSwapped)
{
    std::vector<std::uint8_t> record = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};  // F = 4, then three samples
    SwapRecordWords(record, Frames(3, 1, 2, 4));
    EXPECT_THAT(record, ElementsAre(2, 1, 4, 3, 6, 5, 7, 8, 9, 10));
}

TEST(SwappedRecord, IsBoundedByTheBlock)
{
    std::vector<std::uint8_t> record = {1, 2, 3};
    SwapRecordWords(record, Frames(1000, 1000, 2));
    EXPECT_THAT(record, ElementsAre(2, 1, 3));
    SwapRecordWords(record, Frames(-1, 5, 2));
    EXPECT_THAT(record, ElementsAre(2, 1, 3));
}

// ---- coefficient lists

TEST(CoefficientCounts, ShowABadDetectorAsFourThousand)
{
    const std::array<std::uint8_t, 4> map = {0, 1, 0, 255};
    std::array<std::int16_t, 4> counts{};
    BadMapToCounts(map, counts);
    EXPECT_THAT(counts, ElementsAre(0, 4000, 0, 4000));
}

TEST(CoefficientCounts, WidenBytesWithoutSignAndCopyIntegers)
{
    const std::array<std::uint8_t, 3> bytes = {0, 127, 255};
    const std::array<std::int16_t, 3> integers = {-32768, -1, 32767};
    std::array<std::int16_t, 3> counts{};
    BytesToCounts(bytes, counts);
    EXPECT_THAT(counts, ElementsAre(0, 127, 255));
    IntegersToCounts(integers, counts);
    EXPECT_THAT(counts, ElementsAre(-32768, -1, 32767));
}

TEST(CoefficientCounts, StopAtTheShorterSpan)
{
    const std::array<std::int16_t, 3> list = {5, 6, 7};
    std::array<std::int16_t, 2> counts{};
    IntegersToCounts(list, counts);
    EXPECT_THAT(counts, ElementsAre(5, 6));
}

TEST(CoefficientCounts, SpreadLongsOverTheDisplayRange)
{
    const std::array<std::int32_t, 4> list = {1000, 1004, 1002, 1003};
    std::array<std::int16_t, 4> counts{};
    const CountScale scale = LongsToCounts(list, 100, 4195, counts);  // range 4095 over 4
    EXPECT_EQ(scale.gain, 1023.75F);
    EXPECT_EQ(scale.offset, 1000.0F);
    EXPECT_THAT(counts, ElementsAre(0, 4095, 2047, 3071));  // 2047.5 and 3071.25 truncated
}

TEST(CoefficientCounts, OfEqualLongsHaveASpanOfAHundred)
{
    const std::array<std::int32_t, 3> list = {7, 7, 7};
    std::array<std::int16_t, 3> counts = {1, 1, 1};
    const CountScale scale = LongsToCounts(list, 0, 4095, counts);
    EXPECT_EQ(scale.gain, 40.95F);
    EXPECT_EQ(scale.offset, 7.0F);
    EXPECT_THAT(counts, ElementsAre(0, 0, 0));
}

TEST(CoefficientCounts, OfNegativeLongsReachUpToZero)
{
    const std::array<std::int32_t, 2> list = {-10, -5};  // the search for the largest starts at 0
    std::array<std::int16_t, 2> counts{};
    const CountScale scale = LongsToCounts(list, 0, 100, counts);
    EXPECT_EQ(scale.gain, 10.0F);
    EXPECT_EQ(scale.offset, -10.0F);
    EXPECT_THAT(counts, ElementsAre(0, 50));
}

TEST(CoefficientCounts, OfExtremeLongsStayInRange)
{
    const std::array<std::int32_t, 2> list = {std::numeric_limits<std::int32_t>::min(),
                                              std::numeric_limits<std::int32_t>::max()};
    std::array<std::int16_t, 2> counts{};
    const CountScale scale =
        LongsToCounts(list, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max(), counts);
    EXPECT_EQ(scale.gain, 1.0F);
    EXPECT_THAT(counts, ElementsAre(0, 32767));
}

TEST(CoefficientCounts, SpreadFloatsOverTheDisplayRange)
{
    const std::array<float, 3> list = {0.5F, 2.5F, 1.25F};
    std::array<std::int16_t, 3> counts{};
    const CountScale scale = FloatsToCounts(list, 0, 16383, counts);
    EXPECT_EQ(scale.gain, 8191.5F);
    EXPECT_EQ(scale.offset, 0.5F);
    EXPECT_THAT(counts, ElementsAre(0, 16383, 6143));  // 0.75 x 8191.5 = 6143.625
}

TEST(CoefficientCounts, OfFloatsCloserThanOneHaveASpanOfAHundred)
{
    const std::array<float, 2> list = {1.0F, 1.875F};
    std::array<std::int16_t, 2> counts{};
    const CountScale scale = FloatsToCounts(list, 0, 4000, counts);
    EXPECT_EQ(scale.gain, 40.0F);
    EXPECT_EQ(scale.offset, 1.0F);
    EXPECT_THAT(counts, ElementsAre(0, 35));

    const std::array<float, 2> oneApart = {1.0F, 2.0F};
    EXPECT_EQ(FloatsToCounts(oneApart, 0, 4000, counts).gain, 4000.0F);
}

TEST(CoefficientCounts, OfFloatsThatAreNoNumbersAreZero)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    std::array<std::int16_t, 3> counts = {1, 1, 1};
    FloatsToCounts(std::array<float, 3>{nan, nan, nan}, 0, 4095, counts);
    EXPECT_THAT(counts, ElementsAre(0, 0, 0));
    const CountScale scale = FloatsToCounts(std::array<float, 3>{1.0F, nan, 3.0F}, 0, 4000, counts);
    EXPECT_EQ(scale.gain, 2000.0F);
    EXPECT_THAT(counts, ElementsAre(0, 0, 4000));
    FloatsToCounts(std::array<float, 3>{-infinity, 0.0F, infinity}, 0, 4095, counts);
    EXPECT_THAT(counts, ElementsAre(0, 0, 0));
}

}  // namespace
}  // namespace kelvo
