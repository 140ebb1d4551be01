#include "imagefile/tiff_file.h"

#include "platform/clock.h"
#include "support/full_disk.h"
#include "support/operator.h"
#include "support/temp_directory.h"
#include "support/tiff_reader.h"

#include <gmock/gmock.h>

#include <ctime>
#include <filesystem>
#include <numeric>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::uint32_t Number(const std::string& file, std::size_t at, std::size_t bytes)
{
    std::uint32_t value = 0;
    for (std::size_t i = bytes; i-- > 0;) value = value << 8 | static_cast<std::uint8_t>(file.at(at + i));
    return value;
}

// Counts that no neighbour repeats, over the whole range of 16 bits.
std::vector<std::int16_t> Ramp(int width, int height)
{
    std::vector<std::int16_t> counts(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (std::size_t i = 0; i < counts.size(); ++i) counts[i] = static_cast<std::int16_t>(i * 7919);
    return counts;
}

class TiffFile : public testing::Test {
  protected:
    TiffFile() { BuildTiffHead(); }

    // Everything that isn't the picture stays as it is here.
    int Write(int width, int height, std::int16_t bits = 16, float frameRate = 30.0F)
    {
        const std::vector<std::int16_t> counts = Ramp(width, height);
        return WriteTiffFile(path, std::as_bytes(std::span(counts)), bits, frameRate, 12.5F,
                             static_cast<std::int16_t>(height), static_cast<std::int16_t>(width), 3000, 20.0F, 9000,
                             25.0F, 0, 16383);
    }
    std::string File() const { return FileContents(path); }
    std::vector<std::uint32_t> Offsets() const { return ReadTiff(File()).fields[273].values; }
    std::vector<std::uint32_t> ByteCounts() const { return ReadTiff(File()).fields[279].values; }

    TestOperator op;
    TempDirectory directory;
    std::string path = directory / "a.tif";
};

// Held against the table of the format, worked by hand: offset, bytes, content.
TEST_F(TiffFile, HeadHasItsFieldsAtTheirPlaces)
{
    ASSERT_EQ(Write(128, 128), 1);
    const std::string file = File();
    ASSERT_EQ(file.size(), 782U + 2 * 128 * 128);
    EXPECT_EQ(file.substr(0, 2), "II");
    EXPECT_EQ(Number(file, 2, 2), 42U);
    EXPECT_EQ(Number(file, 4, 4), 8U);
    EXPECT_EQ(Number(file, 8, 2), 17U);
    const std::uint32_t entries[17][4] = {
        {256, 3, 1, 128},   {257, 3, 1, 128}, {258, 3, 1, 16},  {259, 3, 1, 1},  {262, 3, 1, 1},   {270, 2, 256, 218},
        {271, 2, 16, 474},  {273, 4, 2, 490}, {277, 3, 1, 1},   {278, 3, 1, 64}, {279, 4, 2, 618}, {280, 3, 1, 0},
        {281, 3, 1, 16383}, {282, 5, 1, 746}, {283, 5, 1, 754}, {296, 3, 1, 1},  {306, 2, 20, 762}};
    for (std::size_t i = 0; i < 17; ++i) {
        const std::size_t at = 10 + 12 * i;
        EXPECT_THAT((std::vector{Number(file, at, 2), Number(file, at + 2, 2), Number(file, at + 4, 4),
                                 Number(file, at + 8, 4)}),
                    ElementsAre(entries[i][0], entries[i][1], entries[i][2], entries[i][3]))
            << "entry " << i;
    }
    EXPECT_EQ(Number(file, 214, 4), 0U);
    EXPECT_EQ(file.substr(474, 16), std::string("Kelvo\0\0\0\0\0\0\0\0\0\0\0", 16));
    EXPECT_EQ(Number(file, 746, 4), 1U);
    EXPECT_EQ(Number(file, 750, 4), 1U);
    EXPECT_EQ(Number(file, 754, 4), 1U);
    EXPECT_EQ(Number(file, 758, 4), 1U);
    EXPECT_EQ(file.at(781), '\0');
}

TEST_F(TiffFile, HeadOfTheStartHasAllThatIsTheSameInEveryFile)
{
    EXPECT_EQ(+TiffHead.EntryCount, 17);
    EXPECT_EQ(+TiffHead.Entries[0].Tag, 256);
    EXPECT_EQ(+TiffHead.Entries[16].Value, 762U);
    EXPECT_STREQ(TiffHead.Make.data(), "Kelvo");
    EXPECT_EQ(+TiffHead.Entries[0].Value, 0U) << "no width yet";
}

TEST_F(TiffFile, Of128By128HasTwoStripsByTheLowerLimit)
{
    ASSERT_EQ(Write(128, 128), 1);
    EXPECT_THAT(Offsets(), ElementsAre(782, 17166));
    EXPECT_THAT(ByteCounts(), ElementsAre(16384, 16384));
    EXPECT_THAT(ReadTiff(File()).fields[278].values, ElementsAre(64));
}

TEST_F(TiffFile, Of640By480Has19StripsTheLastOf12Rows)
{
    ASSERT_EQ(Write(640, 480), 1);
    const std::vector<std::uint32_t> counts = ByteCounts();
    ASSERT_THAT(counts, SizeIs(19));
    EXPECT_THAT(ReadTiff(File()).fields[278].values, ElementsAre(26));
    EXPECT_EQ(counts.front(), 26U * 640 * 2);
    EXPECT_EQ(counts.back(), 12U * 640 * 2);
    EXPECT_EQ(Offsets().back(), 782U + 18 * 26 * 640 * 2);
    // Entries behind the list.
    const std::string file = File();
    for (std::size_t i = 19; i < 32; ++i) {
        EXPECT_EQ(Number(file, 490 + 4 * i, 4), 0U) << i;
        EXPECT_EQ(Number(file, 618 + 4 * i, 4), 0U) << i;
    }
}

TEST_F(TiffFile, StripsStayAt32HoweverLargeTheFrame)
{
    ASSERT_EQ(Write(1024, 1024), 1);  // 64 by the pixels
    EXPECT_THAT(Offsets(), SizeIs(32));
    EXPECT_THAT(ByteCounts(), Each(32U * 1024 * 2));
    ASSERT_EQ(Write(700, 750), 1);  // 33 by the pixels: 525000
    EXPECT_THAT(Offsets(), SizeIs(32));
    EXPECT_THAT(ReadTiff(File()).fields[278].values, ElementsAre(24));
    EXPECT_EQ(ByteCounts().back(), (750U % 24) * 700 * 2);
    ASSERT_EQ(Write(700, 748), 1);  // 523600: 32
    EXPECT_THAT(Offsets(), SizeIs(32));
}

// 16000 x 5 pixels make 5 strips, 16000 x 4 make 4; 5 rows in 4 strips need 12300 to 13107 columns.
TEST_F(TiffFile, LastStripsCanLieBehindTheSamples)
{
    ASSERT_EQ(Write(13000, 5, 8), 1);
    EXPECT_THAT(ReadTiff(File()).fields[278].values, ElementsAre(2));
    EXPECT_THAT(Offsets(), ElementsAre(782, 782 + 26000, 782 + 52000, 782 + 78000));
    EXPECT_THAT(ByteCounts(), ElementsAre(26000, 26000, 26000, 13000)) << "as computed";
    EXPECT_EQ(File().size(), 782U + 65000);
    EXPECT_EQ(ReadTiff(File()).error, "") << "a reader needs the first three alone";
}

TEST_F(TiffFile, OfOneRowHasTwoStripsOfOne)
{
    ASSERT_EQ(Write(3, 1), 1);
    EXPECT_THAT(Offsets(), ElementsAre(782, 788));
    EXPECT_THAT(ByteCounts(), ElementsAre(6, 6));
    EXPECT_EQ(File().size(), 788U);
    EXPECT_EQ(ReadTiff(File()).error, "");
}

TEST_F(TiffFile, EverySampleIsWrittenAsGiven)
{
    for (const auto& [width, height] : {std::pair{1, 1}, {128, 128}, {125, 124}, {640, 480}, {13, 1024}, {1024, 999}}) {
        ASSERT_EQ(Write(width, height), 1);
        const TiffPicture picture = ReadTiff(File());
        ASSERT_EQ(picture.error, "") << width << " x " << height;
        const std::vector<std::int16_t> counts = Ramp(width, height);
        const std::vector<std::uint16_t> expected(counts.begin(), counts.end());
        ASSERT_EQ(picture.samples.size(), expected.size());
        EXPECT_TRUE(std::ranges::equal(picture.samples, expected)) << width << " x " << height;
    }
}

TEST_F(TiffFile, EightBitSamplesAreBytes)
{
    std::vector<std::byte> bytes(50 * 40 + 7, std::byte{0xEE});  // more than the picture needs
    for (std::size_t i = 0; i < 2000; ++i) bytes[i] = static_cast<std::byte>(i * 31 % 251);
    ASSERT_EQ(WriteTiffFile(path, bytes, 8, 0, 0, 40, 50, 0, 0, 0, 0, 0, 255), 1);
    EXPECT_EQ(File().size(), 782U + 2000);
    const TiffPicture picture = ReadTiff(File());
    ASSERT_EQ(picture.error, "");
    EXPECT_EQ(picture.bits, 8U);
    for (std::size_t i = 0; i < 2000; ++i) ASSERT_EQ(picture.samples.at(i), i * 31 % 251);
}

TEST_F(TiffFile, DescriptionTellsOfTheMeasurement)
{
    const std::vector<std::int16_t> counts = Ramp(2, 2);
    ASSERT_EQ(WriteTiffFile(path, std::as_bytes(std::span(counts)), 16, 59.125F, 1.25F, 2, 2, -10000, -999.0F, 9000,
                            25.0625F, -5, 16383),
              1);
    const TiffPicture picture = ReadTiff(File());
    EXPECT_EQ(picture.description,
              "Kelvo Thermal Image\nFrameRate=59.12Hz IntegrationTime=1.250ms\nIhot=9000 Thot=25.062C\nIcold=-10000 "
              "Tcold=-999.000C");
    EXPECT_THAT(picture.fields.at(280).values, ElementsAre(65531)) << "-5 in the low half, nothing in the high one";
    EXPECT_EQ(Number(File(), 10 + 12 * 11 + 8, 4), 65531U);
}

TEST_F(TiffFile, NothingOfALongerDescriptionIsLeft)
{
    ASSERT_EQ(Write(2, 2, 16, 123456789.0F), 1);
    const std::size_t longer = ReadTiff(File()).description.size();
    ASSERT_EQ(Write(2, 2, 16, 1.0F), 1);
    const std::string text = ReadTiff(File()).fields.at(270).text;
    ASSERT_EQ(text.size(), 256U);
    const std::size_t end = text.find('\0');
    EXPECT_LT(end, longer);
    EXPECT_EQ(text.find_first_not_of('\0', end), std::string::npos);
}

TEST_F(TiffFile, DescriptionIsCutAt255Characters)
{
    const std::vector<std::int16_t> counts = Ramp(2, 2);
    const float most = 3.4e38F;  // 39 digits and the decimals, four times
    ASSERT_EQ(
        WriteTiffFile(path, std::as_bytes(std::span(counts)), 16, most, most, 2, 2, -10000, -most, -10000, -most, 0, 1),
        1);
    const TiffPicture picture = ReadTiff(File());
    EXPECT_EQ(picture.description.size(), 255U);
    EXPECT_EQ(File().at(218 + 255), '\0');
    EXPECT_EQ(File().substr(474, 5), "Kelvo");
    EXPECT_EQ(picture.error, "");
}

TEST_F(TiffFile, TimeIsTheLocalOne)
{
    ASSERT_EQ(Write(2, 2), 1);
    const std::time_t now = WallClockSeconds();
    char expected[20] = {};
    ASSERT_EQ(std::strftime(expected, sizeof expected, "%Y:%m:%d %H:%M:%S", std::localtime(&now)), 19U);
    EXPECT_EQ(ReadTiff(File()).fields.at(306).text, std::string(expected, 20));
}

// A caller's 40000 is -25536 in 16 bits.
TEST_F(TiffFile, SizesBeyond16BitsAreRefused)
{
    EXPECT_EQ(Write(40000, 2), 0);
    EXPECT_EQ(Write(2, 65536), 0) << "0 rows";
    EXPECT_EQ(Write(0, 2), 0);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(Write(32767, 2, 8), 1) << "the largest";
    EXPECT_EQ(ReadTiff(File()).error, "");
    EXPECT_EQ(ReadTiff(File()).width, 32767U);
}

TEST_F(TiffFile, OfTooFewSamplesOrOtherBitsIsRefused)
{
    const std::vector<std::byte> three(3);
    EXPECT_EQ(WriteTiffFile(path, three, 8, 0, 0, 2, 2, 0, 0, 0, 0, 0, 1), 0);
    const std::vector<std::byte> four(4);
    EXPECT_EQ(WriteTiffFile(path, four, 16, 0, 0, 2, 2, 0, 0, 0, 0, 0, 1), 0);
    for (const std::int16_t bits : std::array<std::int16_t, 5>{0, 1, 12, 32, -8}) {
        EXPECT_EQ(WriteTiffFile(path, four, bits, 0, 0, 2, 2, 0, 0, 0, 0, 0, 1), 0) << bits;
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(WriteTiffFile(path, four, 8, 0, 0, 2, 2, 0, 0, 0, 0, 0, 1), 1);
}

TEST_F(TiffFile, ThatCannotBeCreatedFailsInSilence)
{
    path = directory / "no such directory/a.tif";
    EXPECT_EQ(Write(2, 2), 0);
    EXPECT_THAT(op.Texts("beep", "sound"), IsEmpty());
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(TiffFile, ThatIsCutShortBeepsAndLeavesWhatStood)
{
    ASSERT_EQ(Write(4, 4), 1);
    const std::string before = File();
    for (const rlim_t room : std::array<rlim_t, 5>{100, 781, 782, 1000, 782 + 2 * 64 * 64 - 1}) {
        const FullDisk full(room);
        const std::size_t beeps = op.Texts("beep", "sound").size();
        EXPECT_EQ(Write(64, 64), 0) << room;
        EXPECT_EQ(op.Texts("beep", "sound").size(), beeps + 1) << room;
    }
    EXPECT_EQ(File(), before);
    EXPECT_THAT(op.Boxes(), IsEmpty()) << "the caller tells";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.Path()), {}), 1)
        << "nothing is left beside it";
}

TEST_F(TiffFile, ThatIsCutShortLeavesNoFileWhereNoneWas)
{
    const FullDisk full(1000);
    EXPECT_EQ(Write(64, 64), 0);
    EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

}  // namespace
}  // namespace kelvo
