#include "imagefile/header_write.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "support/full_disk.h"
#include "support/shown.h"
#include "support/stored_files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>

namespace kelvo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A header as bytes, worked on by offset: nothing here knows the record's layout.
class RawHeader {
  public:
    explicit RawHeader(std::size_t size = 512) : bytes_(size, '\0') {}
    explicit RawHeader(const ImageHeaderRecord& record) : bytes_(512, '\0')
    {
        std::memcpy(bytes_.data(), &record, bytes_.size());
    }

    RawHeader& Word(std::size_t offset, int value)
    {
        bytes_[offset] = static_cast<char>(value & 0xFF);
        bytes_[offset + 1] = static_cast<char>((value >> 8) & 0xFF);
        return *this;
    }
    RawHeader& Long(std::size_t offset, std::uint32_t value)
    {
        return Word(offset, static_cast<int>(value & 0xFFFF)).Word(offset + 2, static_cast<int>(value >> 16));
    }
    RawHeader& Byte(std::size_t offset, int value)
    {
        bytes_[offset] = static_cast<char>(value);
        return *this;
    }
    RawHeader& Embed(std::size_t offset, const RawHeader& inner)
    {
        bytes_.replace(offset, inner.bytes_.size(), inner.bytes_);
        return *this;
    }

    int WordAt(std::size_t offset) const
    {
        const int value = static_cast<unsigned char>(bytes_[offset]) | static_cast<unsigned char>(bytes_[offset + 1])
                                                                           << 8;
        return value >= 0x8000 ? value - 0x10000 : value;
    }
    std::uint32_t LongAt(std::size_t offset) const
    {
        return static_cast<std::uint32_t>(WordAt(offset) & 0xFFFF) |
               static_cast<std::uint32_t>(WordAt(offset + 2) & 0xFFFF) << 16;
    }
    const std::string& Bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

// A plain header of the newest version for frames of 16-bit counts.
RawHeader Plain(int width, int height, int sampleBytes = 2)
{
    return RawHeader().Word(0, 0xFFFF).Word(2, width).Word(4, height).Word(6, sampleBytes).Word(40, 8);
}

class ImageHeaderFile : public ::testing::Test {
  protected:
    std::string Put(const RawHeader& header, std::size_t dataBytes = 0)
    {
        std::string path = directory / "frame.img";
        PutFile(path, header.Bytes() + std::string(dataBytes, '\x11'));
        return path;
    }
    std::uint32_t FrameCountOf(const RawHeader& header, std::size_t dataBytes)
    {
        ImageHeaderRecord read;
        EXPECT_GE(ReadImageHeader(Put(header, dataBytes), read), 512);
        return +read.FrameCount;
    }

    TempDirectory directory;
};

// ---- building

class BuildingHeaders : public ::testing::Test {
  protected:
    void SetUp() override
    {
        setenv("TZ", "UTC", 1);
        tzset();
        UseVirtualClock(1791633845);  // 10 October 2026, 12:04:05
    }
    RawHeader Build(std::int32_t firstFrame = 0, std::int32_t lastFrame = 0)
    {
        ImageHeaderRecord built;
        EXPECT_EQ(BuildImageHeader(&built, firstFrame, lastFrame, 10, 20, 169, 139), &built);
        EXPECT_EQ(RawHeader(built).Bytes(), RawHeader(ImageHeader).Bytes());
        return RawHeader(built);
    }
};

TEST_F(BuildingHeaders, PutEachFieldAtItsOffset)
{
    write::file.ByteSwap = 0x1234FFFE;
    write::cal.IntensityCold = 3000;
    write::cal.TemperatureCold = 20.5F;  // 0x41A40000
    write::cal.IntensityHot = 9000;
    write::cal.TemperatureHot = -2.0F;  // 0xC0000000
    write::display.DisplayLow = 100;
    write::display.DisplayHigh = 16383;
    write::head.VideoGain = {6, 7, 0, 0};
    write::head.VideoOffset = {160, -161, 0, 0};
    write::head.FrameRate = 100.0F;  // 0x42C80000
    write::camera.ActiveConfig.NumOutputs = 4;
    const RawHeader header = Build(2, 11);

    EXPECT_EQ(header.WordAt(0), -2);  // low 16 bits of the setting
    EXPECT_EQ(header.WordAt(2), 160);
    EXPECT_EQ(header.WordAt(4), 120);
    EXPECT_EQ(header.WordAt(6), 2);
    EXPECT_EQ(header.WordAt(8), -1);
    EXPECT_EQ(header.WordAt(10), -1);
    EXPECT_EQ(header.WordAt(12), 26);
    EXPECT_EQ(header.WordAt(14), 10);
    EXPECT_EQ(header.WordAt(16), 10);
    EXPECT_EQ(header.WordAt(18), 12);
    EXPECT_EQ(header.WordAt(20), 4);
    EXPECT_EQ(header.WordAt(22), 5);
    EXPECT_EQ(header.WordAt(24), 3000);
    EXPECT_EQ(header.LongAt(26), 0x41A40000U);
    EXPECT_EQ(header.WordAt(30), 9000);
    EXPECT_EQ(header.LongAt(32), 0xC0000000U);
    EXPECT_EQ(header.LongAt(36), 0x3F800000U);  // 1.0
    EXPECT_EQ(header.WordAt(40), 8);
    EXPECT_EQ(header.LongAt(42), 10U);
    EXPECT_EQ(header.WordAt(46), 20);
    EXPECT_EQ(header.WordAt(48), 10);
    EXPECT_EQ(header.WordAt(50), 139);
    EXPECT_EQ(header.WordAt(52), 169);
    EXPECT_EQ(header.WordAt(54), 0);
    EXPECT_EQ(header.LongAt(56), 0x42C80000U);
    EXPECT_EQ(header.WordAt(112), 100);
    EXPECT_EQ(header.WordAt(114), 16383);
    EXPECT_EQ(header.WordAt(116), 6);
    EXPECT_EQ(header.WordAt(118), 160);
    EXPECT_EQ(header.WordAt(120), 7);
    EXPECT_EQ(header.WordAt(122), -161);
    EXPECT_EQ(header.WordAt(124), 1);
    EXPECT_EQ(header.WordAt(142), 4);
    EXPECT_EQ(header.WordAt(144), 0);
}

TEST_F(BuildingHeaders, LeaveEveryOtherByteZeroAfterStart)
{
    const std::string bytes = Build().Bytes();
    const std::string zero(512, '\0');
    EXPECT_EQ(bytes.substr(64, 48), zero.substr(0, 48));
    EXPECT_EQ(bytes.substr(126, 8), zero.substr(0, 8));
    EXPECT_EQ(bytes.substr(146), zero.substr(146));
}

TEST_F(BuildingHeaders, CarryTheUnnamedBytesOfTheLastFileRead)
{
    TempDirectory directory;
    RawHeader older =
        Plain(4, 4).Word(64, 0x6161).Word(110, 0x6262).Word(126, 0x6363).Word(146, 0x6464).Word(510, 0x6565);
    PutFile(directory / "older.img", older.Bytes());
    ASSERT_EQ(ReadImageHeader(directory / "older.img", write::file.ImageHeader), 512);

    const RawHeader header = Build();
    EXPECT_EQ(header.WordAt(64), 0x6161);
    EXPECT_EQ(header.WordAt(110), 0x6262);
    EXPECT_EQ(header.WordAt(126), 0x6363);
    EXPECT_EQ(header.WordAt(146), 0x6464);
    EXPECT_EQ(header.WordAt(510), 0x6565);
    EXPECT_EQ(header.WordAt(2), 160);  // and the named ones not
}

TEST_F(BuildingHeaders, NarrowTheFrameCountWithSign)
{
    EXPECT_EQ(Build(0, 32766).LongAt(42), 32767U);
    EXPECT_EQ(Build(0, 32767).LongAt(42), 0xFFFF8000U);
    EXPECT_EQ(Build(1, 65540).LongAt(42), 4U);
}

TEST_F(BuildingHeaders, NarrowCalibrationCountsToTheirLowBits)
{
    write::cal.IntensityCold = 0x12345;
    write::cal.IntensityHot = -10000;
    const RawHeader header = Build();
    EXPECT_EQ(header.WordAt(24), 0x2345);
    EXPECT_EQ(header.WordAt(30), -10000);
}

TEST_F(BuildingHeaders, KeepTheTimingOfTheFileOnView)
{
    write::file.ImageHeader.FrameRate = 8.0F;
    write::file.ImageHeader.IntegrationMsec = 4.0F;
    write::file.ImageHeader.NumOutputs = 2;
    write::head.FrameRate = 100.0F;
    write::camera.ActiveConfig.NumOutputs = 4;
    write::frames.ViewingFile = 1;
    const RawHeader header = Build();
    EXPECT_EQ(header.LongAt(56), 0x41000000U);
    EXPECT_EQ(header.LongAt(60), 0x40800000U);
    EXPECT_EQ(header.WordAt(142), 2);
}

TEST_F(BuildingHeaders, HoldNoIntegrationTimeWithoutAFrameRate)
{
    write::file.ImageHeader.IntegrationMsec = 4.0F;
    write::head.FrameRate = 0;
    EXPECT_EQ(Build().LongAt(60), 0U);
}

TEST_F(BuildingHeaders, ClearTheIrigTimeOnlyWhileItIsOff)
{
    write::file.ImageHeader.IrigTime.fill(7);
    write::file.IrigEnable = 1;
    EXPECT_EQ(Build().WordAt(134), 0x0707);
    write::file.IrigEnable = 0;
    EXPECT_EQ(Build().WordAt(134), 0);
    EXPECT_EQ(Build().WordAt(140), 0);
}

TEST_F(BuildingHeaders, KeepAZeroSwapWordThroughTheSwap)
{
    write::file.ByteSwap = 0;
    ImageHeaderRecord built;
    BuildImageHeader(&built, 0, 0, 0, 0, 319, 255);
    EXPECT_EQ(RawHeader(built).WordAt(0), 0);
    SwapHeaderBytes(std::as_writable_bytes(std::span(&built, 1)), 256);
    EXPECT_EQ(RawHeader(built).WordAt(0), 0);
    EXPECT_EQ(RawHeader(built).WordAt(2), 0x4001);  // 320 = 0x0140
}

// ---- reading

TEST_F(ImageHeaderFile, OfHeaderAloneHasOneFrame)
{
    EXPECT_EQ(FrameCountOf(Plain(64, 16).Long(42, 17), 0), 1U);
}

TEST_F(ImageHeaderFile, KeepsTheStoredCountForSidesOutOfRange)
{
    EXPECT_EQ(FrameCountOf(Plain(0, 16).Long(42, 17), 4096), 17U);
    EXPECT_EQ(FrameCountOf(Plain(1025, 16).Long(42, 17), 4096), 17U);
    EXPECT_EQ(FrameCountOf(Plain(16, -1).Long(42, 17), 4096), 17U);
    EXPECT_EQ(FrameCountOf(Plain(16, 1025).Long(42, 17), 4096), 17U);
    EXPECT_EQ(FrameCountOf(Plain(16, 16, 5).Long(42, 17), 4096), 17U);
    EXPECT_EQ(FrameCountOf(Plain(16, 16, 0).Long(42, 17), 4096), 17U);
    EXPECT_EQ(FrameCountOf(Plain(1025, 16), 4096), 1U);
}

TEST_F(ImageHeaderFile, CountsWholeFramesFromTheLength)
{
    EXPECT_EQ(FrameCountOf(Plain(1024, 1).Long(42, 99), 6144), 3U);
    EXPECT_EQ(FrameCountOf(Plain(1024, 1).Long(42, 99), 6144 + 2047), 3U);
    EXPECT_EQ(FrameCountOf(Plain(16, 16), 2560), 5U);
    EXPECT_EQ(FrameCountOf(Plain(16, 16).Word(144, 80), 2960), 5U);
    EXPECT_EQ(FrameCountOf(Plain(16, 16).Word(144, 80), 2959), 4U);
}

TEST_F(ImageHeaderFile, CountsNoPartialFrame)
{
    EXPECT_EQ(FrameCountOf(Plain(1024, 1), 1025), 1U);
}

TEST_F(ImageHeaderFile, OfAnOlderVersionHasNoFrameHeaders)
{
    ImageHeaderRecord read;
    ASSERT_EQ(ReadImageHeader(Put(Plain(16, 16).Word(40, 7).Word(144, 80), 1024), read), 512);
    EXPECT_EQ(+read.ImageHeaderDataOffset, 0);
    EXPECT_EQ(+read.FrameCount, 2U);
    ASSERT_EQ(ReadImageHeader(Put(Plain(16, 16).Word(144, 80), 1184), read), 512);
    EXPECT_EQ(+read.ImageHeaderDataOffset, 80);
}

TEST_F(ImageHeaderFile, OfTheSpectrometerCountsItsFloatFramesWhateverWasPlanned)
{
    const RawHeader spiff =
        RawHeader(1024).Byte(0, 1).Byte(1, 0x34).Byte(2, 0x12).Byte(9, 200).Embed(111, Plain(8, 4, 4).Word(124, 8));
    ImageHeaderRecord read;
    ASSERT_EQ(ReadImageHeader(Put(spiff, 640), read), 1024);
    EXPECT_EQ(+read.FrameCount, 5U);
    EXPECT_EQ(+read.ImageWidth, 8);
    EXPECT_EQ(+read.SampleBytes, 4);
    EXPECT_EQ(+read.DataType, 8);
    EXPECT_EQ(+SpiffHeader.SpiffStepCount, 200);
    EXPECT_EQ(+SpiffHeader.SpiffHeaderIdentity, 0x1234);  // the file's own takes the place of the setting's
}

TEST(SpectrometersHeader, DeclaresItselfFromTheStartOn)
{
    const auto* const first = reinterpret_cast<const std::uint8_t*>(&SpiffHeader);
    EXPECT_EQ(*first, 1);
    write::file.SpiffHeader.SpiffMarker = 0;
    ResetHeader();
    EXPECT_EQ(*first, 1);
}

TEST_F(ImageHeaderFile, OfTheSpectrometerMayBeCut)
{
    const RawHeader cut = RawHeader(700).Byte(0, 1).Embed(111, Plain(8, 4, 4));
    ImageHeaderRecord read;
    ASSERT_EQ(ReadImageHeader(Put(cut), read), 1024);
    EXPECT_EQ(+read.ImageWidth, 8);
    EXPECT_EQ(+read.FrameCount, 0xFFFFFFFEU);  // -324 bytes over 128: -2 frames, seen without sign
}

TEST_F(ImageHeaderFile, TakesOddSampleSizes)
{
    EXPECT_EQ(FrameCountOf(Plain(16, 16, 1), 768), 3U);
    EXPECT_EQ(FrameCountOf(Plain(16, 16, 3), 2304), 3U);
}

TEST_F(ImageHeaderFile, IsNotSwappedBack)
{
    const RawHeader swapped = RawHeader().Word(2, 0x4001).Word(4, 0x0001).Word(6, 0x0200).Word(40, 0x0800);
    ImageHeaderRecord read;
    ASSERT_EQ(ReadImageHeader(Put(swapped, 64), read), 512);
    EXPECT_EQ(+read.ByteSwap, 0);
    EXPECT_EQ(+read.ImageWidth, 0x4001);
    EXPECT_EQ(+read.SampleBytes, 0x0200);
}

TEST_F(ImageHeaderFile, WithARecordOfNoBytesKeepsTheStoredCount)
{
    EXPECT_EQ(FrameCountOf(Plain(1, 1, 4).Word(144, -4).Long(42, 17), 64), 17U);
}

TEST_F(ImageHeaderFile, DividesWithSign)
{
    // 64 bytes over a record of 4 - 12 = -8 bytes: -8 frames, seen without sign.
    EXPECT_EQ(FrameCountOf(Plain(1, 1, 4).Word(144, -12), 64), 0xFFFFFFF8U);
}

TEST_F(ImageHeaderFile, BeyondFourGigabytesIsCountedWhole)
{
    const std::string path = Put(Plain(1, 1));
    std::filesystem::resize_file(path, 512 + std::uintmax_t{6'000'000'000});
    ImageHeaderRecord read;
    ASSERT_EQ(ReadImageHeader(path, read), 512);
    EXPECT_EQ(+read.FrameCount, 3'000'000'000U);
}

TEST_F(ImageHeaderFile, StaysAsItIsWhenRead)
{
    const std::string path = Put(Plain(1024, 1).Word(40, 3).Word(144, 80), 100);
    const std::string before = FileContents(path);
    ImageHeaderRecord read;
    ASSERT_EQ(ReadImageHeader(path, read), 512);
    EXPECT_EQ(FileContents(path), before);
}

TEST_F(ImageHeaderFile, ThatIsMissingIsTold)
{
    ImageHeaderRecord read;
    const std::string path = directory / "missing.img";
    EXPECT_EQ(ReadImageHeader(path, read), -1);
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "Read Image Header Error", .text = "Failed to open file\n" + path}));
    EXPECT_THAT(BeepsHeard(), IsEmpty());
}

TEST_F(ImageHeaderFile, ThatIsMissingOnlyBeepsWhileStepping)
{
    ImageHeaderRecord read;
    write::frames.SteppingFrames = 1;
    EXPECT_EQ(ReadImageHeader(directory / "missing.img", read), -1);
    EXPECT_THAT(BoxesShown(), IsEmpty());
    EXPECT_THAT(BeepsHeard(), ElementsAre("information"));
}

TEST_F(ImageHeaderFile, ThatIsADirectoryCannotBeOpened)
{
    ImageHeaderRecord read;
    EXPECT_EQ(ReadImageHeader(directory.Path(), read), -1);
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "Read Image Header Error",
                                                   .text = "Failed to open file\n" + directory.Path()}));
}

TEST_F(ImageHeaderFile, ThatIsTooShortIsTold)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{511}}) {
        const std::string path = Put(RawHeader(size));
        ImageHeaderRecord read;
        EXPECT_EQ(ReadImageHeader(path, read), -1);
        EXPECT_EQ(BoxesShown().back(),
                  (ShownBox{.caption = "Kelvo message", .text = "Error reading Image File Header\n" + path}));
    }
    EXPECT_EQ(BoxesShown().size(), 2U);
}

// ---- swapping

TEST(SwapWords, ExchangesTheBytesOfEachWord)
{
    std::array<std::byte, 6> block = {std::byte{1}, std::byte{2}, std::byte{3},
                                      std::byte{4}, std::byte{5}, std::byte{6}};
    SwapDataBytes(block, 2);
    EXPECT_THAT(block, ElementsAre(std::byte{2}, std::byte{1}, std::byte{4}, std::byte{3}, std::byte{5}, std::byte{6}));
}

TEST(SwapWords, StaysInsideTheBlock)
{
    std::array<std::byte, 3> block = {std::byte{1}, std::byte{2}, std::byte{3}};
    SwapHeaderBytes(block, 256);
    EXPECT_THAT(block, ElementsAre(std::byte{2}, std::byte{1}, std::byte{3}));
}

// ---- patching

TEST_F(ImageHeaderFile, IsPatchedInItsFirst512BytesOnly)
{
    const std::string path = Put(Plain(16, 16), 600);
    ImageHeaderRecord record;
    record.ByteSwap = 0xFFFF;
    record.ImageWidth = 0x0102;
    EXPECT_EQ(WriteImageHeader(path, record), 1);
    const std::string expected = RawHeader().Word(0, 0xFFFF).Word(2, 0x0102).Bytes() + std::string(600, '\x11');
    EXPECT_EQ(FileContents(path), expected);
}

TEST_F(ImageHeaderFile, IsPatchedSwappedWithoutTouchingTheRecord)
{
    const std::string path = Put(Plain(16, 16));
    ImageHeaderRecord record;
    record.ImageWidth = 0x0102;
    EXPECT_EQ(WriteImageHeader(path, record), 1);
    EXPECT_EQ(FileContents(path), RawHeader().Word(2, 0x0201).Bytes());
    EXPECT_EQ(record.ImageWidth, 0x0102);
}

TEST_F(ImageHeaderFile, ThatCannotBeOpenedForPatchingIsTold)
{
    EXPECT_EQ(WriteImageHeader(directory / "missing.img", ImageHeaderRecord{}), 0);
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "Software Error!", .text = "Error opening file."}));
    EXPECT_FALSE(std::filesystem::exists(directory / "missing.img"));
}

TEST_F(ImageHeaderFile, ThatTakesTooLittleOfThePatchIsTold)
{
    const std::string path = Put(Plain(16, 16));
    const FullDisk disk(100);
    EXPECT_EQ(WriteImageHeader(path, ImageHeaderRecord{}), 0);
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "Software Error!", .text = "Error writing Image Header to file."}));
}

class ImageData : public ImageHeaderFile {
  protected:
    std::array<std::byte, 4> data = {std::byte{'a'}, std::byte{'b'}, std::byte{'c'}, std::byte{'d'}};
};

TEST_F(ImageData, IsWrittenAtItsOffset)
{
    const std::string path = directory / "data";
    PutFile(path, "0123456789");
    EXPECT_EQ(WriteImageData(path, data, 3, 4, false), 1);
    EXPECT_EQ(FileContents(path), "012abcd789");
    EXPECT_EQ(WriteImageData(path, data, 8, 3, false), 1);
    EXPECT_EQ(FileContents(path), "012abcd7abc");
}

TEST_F(ImageData, StaysSwappedInMemory)
{
    const std::string path = directory / "data";
    PutFile(path, "0123456789");
    EXPECT_EQ(WriteImageData(path, data, 0, 3, true), 1);
    EXPECT_EQ(FileContents(path), "bac3456789");
    EXPECT_THAT(data, ElementsAre(std::byte{'b'}, std::byte{'a'}, std::byte{'c'}, std::byte{'d'}));
}

TEST_F(ImageData, ThatFindsNoFileIsTold)
{
    EXPECT_EQ(WriteImageData(directory / "missing", data, 0, 4, false), 0);
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "Software Error!", .text = "Error opening file."}));
}

TEST_F(ImageData, AtAnOffsetThatCannotBeReachedIsTold)
{
    const std::string path = directory / "data";
    PutFile(path, "0123456789");
    EXPECT_EQ(WriteImageData(path, data, -1, 4, true), 0);
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "Software Error", .text = "Unable to correctly access file."}));
    EXPECT_EQ(FileContents(path), "0123456789");
}

TEST_F(ImageData, ThatDoesNotFitIsTold)
{
    const std::string path = directory / "data";
    PutFile(path, "0123456789");
    const FullDisk disk(10);
    EXPECT_EQ(WriteImageData(path, data, 8, 4, false), 0);
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "Software Error", .text = "Error writing data from buffer to file."}));
}

TEST_F(ImageData, ShorterThanItsCountIsTold)
{
    const std::string path = directory / "data";
    PutFile(path, "0123456789");
    EXPECT_EQ(WriteImageData(path, data, 0, 5, false), 0);
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "Software Error", .text = "Error writing data from buffer to file."}));
}

TEST(HeaderOfACalibration, NamesOneSourceOrTwo)
{
    ImageHeaderRecord header = PlainHeader(1, 1);
    EXPECT_FALSE(BearsCalibration(header));
    header.IntensityCold = 3000;
    EXPECT_TRUE(BearsCalibration(header));
    EXPECT_FALSE(HasTwoSources(header));
    header.IntensityHot = 9000;
    EXPECT_TRUE(BearsCalibration(header));  // nobody gave temperatures
    EXPECT_FALSE(HasTwoSources(header));
    header.TemperatureCold = 20.0F;
    header.TemperatureHot = 25.0F;
    EXPECT_TRUE(BearsCalibration(header));
    EXPECT_TRUE(HasTwoSources(header));
}

TEST(HeaderOfACalibration, IsNoneThatNobodyFilled)
{
    ImageHeaderRecord header = PlainHeader(1, 1);
    header.IntensityCold = header.IntensityHot = 0;
    header.TemperatureCold = header.TemperatureHot = 0.0F;
    EXPECT_FALSE(BearsCalibration(header));
    EXPECT_FALSE(HasTwoSources(header));
}

}  // namespace
}  // namespace kelvo
