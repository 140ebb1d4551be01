#include "dibapi32/dibapi32.h"

#include "platform/faults.h"
#include "platform/memory.h"
#include "support/full_disk.h"
#include "support/shown.h"
#include "support/temp_directory.h"

#include <QImage>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <numeric>
#include <string>

namespace kelvo {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

// ---- bytes by hand

// Little-endian fields put one after another.
class Bytes {
  public:
    Bytes& Word(std::uint32_t value)
    {
        text_ += static_cast<char>(value & 0xFF);
        text_ += static_cast<char>(value >> 8 & 0xFF);
        return *this;
    }
    Bytes& Long(std::uint32_t value) { return Word(value & 0xFFFF).Word(value >> 16); }
    Bytes& Text(std::string_view text)
    {
        text_ += text;
        return *this;
    }
    Bytes& Zeros(std::size_t count)
    {
        text_.append(count, '\0');
        return *this;
    }
    const std::string& Get() const { return text_; }

  private:
    std::string text_;
};

struct Fields {
    std::uint32_t width = 3;
    std::uint32_t height = 2;
    std::uint32_t bits = 24;
    std::uint32_t compression = 0;
    std::uint32_t imageBytes = 0;
    std::uint32_t colorsUsed = 0;
    std::uint32_t headerBytes = 40;
    std::uint32_t bitsOffset = 0;
};

std::string InfoBytes(const Fields& fields)
{
    return Bytes()
        .Long(fields.headerBytes)
        .Long(fields.width)
        .Long(fields.height)
        .Word(1)
        .Word(fields.bits)
        .Long(fields.compression)
        .Long(fields.imageBytes)
        .Zeros(8)
        .Long(fields.colorsUsed)
        .Zeros(4)
        .Get();
}

// File header and the first 40 bytes of the information header.
std::string FileStart(const Fields& fields)
{
    return Bytes().Text("BM").Long(0).Long(0).Long(fields.bitsOffset).Get() + InfoBytes(fields);
}

Dib DibOf(const std::string& bytes)
{
    return std::make_shared<DibBlock>(DibBlock{std::vector<std::uint8_t>(bytes.begin(), bytes.end())});
}

Dib DibOf(const Fields& fields, const std::string& behindHeader)
{
    return DibOf(InfoBytes(fields) + behindHeader);
}

// A reader of bitmap files that knows nothing of the code under test: plain rows of 8 or 24 bits, 40-byte header.
struct ReadPicture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint32_t> colors;  // 0x00RRGGBB from the top
};

ReadPicture ReadByHand(const std::string& file)
{
    const auto number = [&file](std::size_t at, std::size_t size) {
        std::uint32_t value = 0;
        for (std::size_t i = size; i-- > 0;) value = value << 8 | static_cast<unsigned char>(file.at(at + i));
        return value;
    };
    const auto color = [&](std::size_t at) { return number(at + 2, 1) << 16 | number(at + 1, 1) << 8 | number(at, 1); };
    EXPECT_EQ(file.substr(0, 2), "BM");
    EXPECT_EQ(number(2, 4), file.size());
    EXPECT_EQ(number(6, 4), 0U);
    EXPECT_EQ(number(14, 4), 40U);
    EXPECT_EQ(number(26, 2), 1U);
    ReadPicture picture = {.width = number(18, 4), .height = number(22, 4), .colors = {}};
    const std::uint32_t bits = number(28, 2);
    const std::size_t rowBytes = (picture.width * bits / 8 + 3) / 4 * 4;
    EXPECT_EQ(number(34, 4), rowBytes * picture.height);
    const std::size_t start = number(10, 4);
    EXPECT_EQ(start + rowBytes * picture.height, file.size());
    for (std::size_t row = picture.height; row-- > 0;) {
        for (std::size_t column = 0; column < picture.width; ++column) {
            const std::size_t pixel = start + row * rowBytes + column * bits / 8;
            picture.colors.push_back(bits == 8 ? color(54 + 4 * number(pixel, 1)) : color(pixel));
        }
    }
    return picture;
}

// 8 bits, 3 x 2, gray table, rows from the top 10 20 30 and 40 50 60.
Dib GrayDib()
{
    Dib dib = CreateDIB(3, 2, 8);
    const std::span<std::uint8_t> table = DibPalette(*dib);
    for (std::size_t i = 0; i < 256; ++i)
        std::fill_n(table.begin() + static_cast<int>(4 * i), 3, static_cast<std::uint8_t>(i));
    const std::array<std::uint8_t, 8> rows = {40, 50, 60, 0, 10, 20, 30, 0};
    std::ranges::copy(rows, DibBits(*dib).begin());
    return dib;
}

// ---- making

TEST(CreateDib, MakesRowsOfWholeWords)
{
    const Dib dib = CreateDIB(3, 5, 8);
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibBits(*dib).size(), 4U * 5U);
    EXPECT_EQ(dib->bytes.size(), 40U + 1024U + 20U);
}

TEST(CreateDib, FillsTheHeaderAndClearsTheRest)
{
    const Dib dib = CreateDIB(3, 2, 24);
    const std::string expected = InfoBytes({.width = 3, .height = 2, .bits = 24}) + std::string(24, '\0');
    EXPECT_EQ(std::string(dib->bytes.begin(), dib->bytes.end()), expected);
}

TEST(CreateDib, RoundsTheDepth)
{
    const std::array<std::array<int, 2>, 14> cases = {{{-1, 1},
                                                       {0, 1},
                                                       {1, 1},
                                                       {2, 4},
                                                       {4, 4},
                                                       {5, 8},
                                                       {8, 8},
                                                       {9, 24},
                                                       {16, 24},
                                                       {24, 24},
                                                       {25, 4},
                                                       {30, 4},
                                                       {32, 4},
                                                       {64, 4}}};
    for (const auto& [asked, stored] : cases) {
        const Dib dib = CreateDIB(0, 0, asked);
        ASSERT_TRUE(dib);
        EXPECT_EQ(DibBitCount(*dib), stored) << asked;
    }
}

TEST(CreateDib, WorksTheRowsFromTheDepthAskedFor)
{
    const Dib dib = CreateDIB(5, 2, 30);
    EXPECT_EQ(DibBitCount(*dib), 4);
    EXPECT_EQ(DibPaletteBytes(*dib), 64U);
    EXPECT_EQ(DibBits(*dib).size(), 20U * 2U);  // 150 bits are five words
}

TEST(CreateDib, GivesNothingWithoutMemoryOrWithNegativeSides)
{
    EXPECT_FALSE(CreateDIB(-1, 2, 8));
    EXPECT_FALSE(CreateDIB(2, -1, 8));
    EXPECT_FALSE(CreateDIB(2147483647, 2147483647, 24));
    EXPECT_FALSE(CreateDIB(2147483647, 2147483647, 2147483647));
    EXPECT_FALSE(CreateDIB(65536, 32768, 8));
    FailAllocation(1);
    EXPECT_FALSE(CreateDIB(2, 2, 8));
}

TEST(FreeDib, LetsGoOfTheBlock)
{
    Dib dib = CreateDIB(2, 2, 8);
    const std::weak_ptr<DibBlock> watched = dib;
    EXPECT_EQ(FreeDib(dib), 0);
    EXPECT_FALSE(dib);
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(FreeDib(dib), 0);
}

// ---- headers and tables

TEST(DibHeader, OfTheOlderFormGivesSizesAndColours)
{
    const Dib dib = DibOf(Bytes().Long(12).Word(640).Word(512).Word(1).Word(4).Zeros(48 + 7).Get());
    EXPECT_TRUE(HasCoreHeader(*dib));
    EXPECT_EQ(DibWidth(*dib), 640);
    EXPECT_EQ(DibHeight(*dib), 512);
    EXPECT_EQ(DibColorCount(*dib), 16U);
    EXPECT_EQ(DibPaletteBytes(*dib), 48U);
    EXPECT_EQ(DibBits(*dib).size(), 7U);
}

TEST(DibHeader, CountsColoursByItsOwnNumberOrItsDepth)
{
    EXPECT_EQ(DibColorCount(*DibOf({.bits = 1}, "")), 2U);
    EXPECT_EQ(DibColorCount(*DibOf({.bits = 4}, "")), 16U);
    EXPECT_EQ(DibColorCount(*DibOf({.bits = 8}, "")), 256U);
    EXPECT_EQ(DibColorCount(*DibOf({.bits = 24}, "")), 0U);
    EXPECT_EQ(DibColorCount(*DibOf({.bits = 32}, "")), 0U);
    EXPECT_EQ(DibColorCount(*DibOf({.bits = 8, .colorsUsed = 17}, "")), 17U);
    EXPECT_EQ(DibColorCount(*DibOf({.bits = 24, .colorsUsed = 3}, "")), 3U);
}

TEST(DibHeader, StartsTheRowsBehindTheTable)
{
    const Dib dib = DibOf({.bits = 8, .colorsUsed = 2}, "bgr0BGR0rows");
    EXPECT_THAT(DibPalette(*dib), ElementsAre('b', 'g', 'r', '0', 'B', 'G', 'R', '0'));
    EXPECT_THAT(DibBits(*dib), ElementsAre('r', 'o', 'w', 's'));
}

TEST(DibHeader, OfAShortOrLyingBlockReadsNothingOutside)
{
    for (std::size_t size = 0; size < 40; ++size) {
        const Dib dib = DibOf(std::string(size, '\xFF'));
        EXPECT_THAT(DibBits(*dib), IsEmpty());
        EXPECT_THAT(DibPalette(*dib), IsEmpty());
        DibWidth(*dib);
        DibHeight(*dib);
        EXPECT_FALSE(BitmapFromDib(dib));
    }
    const Dib lying = DibOf({.bits = 8, .colorsUsed = 0xFFFFFFFF}, "123456789");
    EXPECT_EQ(DibPalette(*lying).size(), 9U);
    EXPECT_THAT(DibBits(*lying), IsEmpty());
}

TEST(PaletteFromDib, TakesTheTablesColours)
{
    const std::optional<Palette> palette = PaletteFromDib(DibOf({.bits = 8, .colorsUsed = 2}, "bgr0BGR1rows"));
    ASSERT_TRUE(palette);
    EXPECT_EQ(palette->version, 0x300);
    EXPECT_THAT(palette->entries, ElementsAre(PaletteEntry{.red = 'r', .green = 'g', .blue = 'b', .flags = 0},
                                              PaletteEntry{.red = 'R', .green = 'G', .blue = 'B', .flags = 0}));
}

TEST(PaletteFromDib, ReadsTheOlderTable)
{
    const std::optional<Palette> palette =
        PaletteFromDib(DibOf(Bytes().Long(12).Word(8).Word(1).Word(1).Word(1).Text("bgrBGR").Zeros(4).Get()));
    ASSERT_TRUE(palette);
    EXPECT_THAT(palette->entries, ElementsAre(PaletteEntry{.red = 'r', .green = 'g', .blue = 'b', .flags = 0},
                                              PaletteEntry{.red = 'R', .green = 'G', .blue = 'B', .flags = 0}));
}

TEST(PaletteFromDib, IsNothingWithoutColours)
{
    EXPECT_FALSE(PaletteFromDib(nullptr));
    EXPECT_FALSE(PaletteFromDib(CreateDIB(3, 2, 24)));
}

TEST(SystemPalette, IsNoneOnTrueColour)
{
    EXPECT_EQ(DeviceColorCount(), -1);
    EXPECT_FALSE(SystemPaletteCopy());
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST(SystemPalette, OfNoColoursTripsTheAssertion)
{
    SetFault("device colors", true);
    EXPECT_EQ(DeviceColorCount(), 0);
    EXPECT_FALSE(SystemPaletteCopy());
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "dibutil", .text = "Assertion failed: nColors"}));
}

// ---- between bitmap and picture

TEST(BitmapFromDib, ReadsEveryDepthFromTheBottomUp)
{
    constexpr std::uint32_t kFirst = 0x010203;
    constexpr std::uint32_t kSecond = 0x112233;
    const std::string table("\x03\x02\x01\x00\x33\x22\x11\x00", 8);
    const std::string noTable;
    struct Case {
        std::uint32_t bits;
        std::string rows;  // two pixels a row: first, second; then above it second, second
    };
    const std::array<Case, 5> cases = {{
        {1, std::string("\x40\0\0\0\xC0\0\0\0", 8)},
        {4, std::string("\x01\0\0\0\x11\0\0\0", 8)},
        {8, std::string("\0\1\0\0\1\1\0\0", 8)},
        {24, std::string("\3\2\1\x33\x22\x11\0\0\x33\x22\x11\x33\x22\x11\0\0", 16)},
        {32, std::string("\3\2\1\0\x33\x22\x11\0\x33\x22\x11\xFF\x33\x22\x11\0", 16)},
    }};
    for (const Case& depth : cases) {
        const bool indexed = depth.bits <= 8;
        const Dib dib = DibOf({.width = 2, .height = 2, .bits = depth.bits, .colorsUsed = indexed ? 2U : 0U},
                              (indexed ? table : noTable) + depth.rows);
        const std::optional<DeviceBitmap> picture = BitmapFromDib(dib);
        ASSERT_TRUE(picture) << depth.bits;
        EXPECT_EQ(picture->width, 2);
        EXPECT_EQ(picture->height, 2);
        EXPECT_THAT(picture->pixels, ElementsAre(kSecond, kSecond, kFirst, kSecond)) << depth.bits;
    }
}

TEST(BitmapFromDib, ReadsRowsFromTheTopDown)
{
    const Dib dib = DibOf({.width = 1, .height = 0xFFFFFFFE, .bits = 32}, std::string("\1\0\0\0\2\0\0\0", 8));
    const std::optional<DeviceBitmap> picture = BitmapFromDib(dib);
    ASSERT_TRUE(picture);
    EXPECT_THAT(picture->pixels, ElementsAre(1U, 2U));
}

TEST(BitmapFromDib, ShowsBlackForColoursThatTheTableLacks)
{
    const Dib dib =
        DibOf({.width = 2, .height = 1, .bits = 8, .colorsUsed = 1}, std::string("\xFF\xFF\xFF\0\0\1\0\0", 8));
    EXPECT_THAT(BitmapFromDib(dib)->pixels, ElementsAre(0xFFFFFFU, 0U));
}

TEST(BitmapFromDib, RefusesWhatItCannotRead)
{
    const std::string rows(64, '\0');
    EXPECT_FALSE(BitmapFromDib(nullptr));
    EXPECT_FALSE(BitmapFromDib(DibOf({.bits = 8, .compression = 1, .colorsUsed = 1}, rows)));
    EXPECT_FALSE(BitmapFromDib(DibOf({.bits = 4, .compression = 2, .colorsUsed = 1}, rows)));
    EXPECT_FALSE(BitmapFromDib(DibOf({.bits = 16}, rows)));
    EXPECT_FALSE(BitmapFromDib(DibOf({.width = 0}, rows)));
    EXPECT_FALSE(BitmapFromDib(DibOf({.width = 0xFFFFFFFF}, rows)));
    EXPECT_FALSE(BitmapFromDib(DibOf({.height = 0x80000000}, rows)));
    EXPECT_FALSE(BitmapFromDib(DibOf({.width = 0x7FFFFFFF, .height = 0x7FFFFFFF, .bits = 1}, rows)));
    EXPECT_FALSE(BitmapFromDib(DibOf({.width = 3, .height = 2, .bits = 24}, std::string(23, '\0'))));  // 24 are needed
    FailAllocation(1);
    EXPECT_FALSE(BitmapFromDib(DibOf({.width = 3, .height = 2, .bits = 24}, std::string(24, '\0'))));
}

TEST(DibFromBitmap, MakesRowsOf24Bits)
{
    const DeviceBitmap picture = {.width = 1, .height = 2, .pixels = {0x010203, 0xFF040506}};
    const Dib dib = DibFromBitmap(picture);
    ASSERT_TRUE(dib);
    const std::string expected =
        InfoBytes({.width = 1, .height = 2, .bits = 24, .imageBytes = 8}) + std::string("\6\5\4\0\3\2\1\0", 8);
    EXPECT_EQ(std::string(dib->bytes.begin(), dib->bytes.end()), expected);
}

TEST(DibFromBitmap, GivesNothingForAnEmptyPictureOrWithoutMemory)
{
    EXPECT_FALSE(DibFromBitmap(DeviceBitmap{}));
    FailAllocation(1);
    EXPECT_FALSE(DibFromBitmap(DeviceBitmap{.width = 1, .height = 1, .pixels = {0}}));
}

// ---- files

class BitmapFile : public ::testing::Test {
  protected:
    Dib Read(const std::string& contents)
    {
        PutFile(path, contents);
        std::optional<File> file = File::Open(path, FileMode::kRead);
        return ReadDibFile(*file);
    }
    // Rows that tell where they came from.
    static std::string Counting(std::size_t size)
    {
        std::string bytes(size, '\0');
        std::iota(bytes.begin(), bytes.end(), '\1');
        return bytes;
    }

    TempDirectory directory;
    std::string path = directory / "picture.bmp";
};

TEST_F(BitmapFile, HoldsHeaderTableAndRows)
{
    const Dib dib = GrayDib();
    ASSERT_EQ(SaveDib(dib, path), 0);
    const std::string file = FileContents(path);
    EXPECT_EQ(file.size(), 14U + 40U + 1024U + 8U);
    EXPECT_EQ(file.substr(10, 4), Bytes().Long(14 + 40 + 1024).Get());
    const ReadPicture picture = ReadByHand(file);
    EXPECT_EQ(picture.width, 3U);
    EXPECT_EQ(picture.height, 2U);
    EXPECT_THAT(picture.colors, ElementsAre(0x0A0A0AU, 0x141414U, 0x1E1E1EU, 0x282828U, 0x323232U, 0x3C3C3CU));
}

TEST_F(BitmapFile, OfEightBitsReadsBackAsItWas)
{
    const Dib dib = GrayDib();
    ASSERT_EQ(SaveDib(dib, path), 0);
    const Dib read = LoadDib(path);
    ASSERT_TRUE(read);
    // Reading names the table's colours; all else is as it was.
    BitmapInfoHeader header = DibInfo(*read);
    EXPECT_EQ(header.biClrUsed, 256U);
    header.biClrUsed = 0;
    SetDibInfo(*read, header);
    EXPECT_EQ(read->bytes, dib->bytes);
    EXPECT_EQ(DibInfo(*dib).biSizeImage, 8U);
}

TEST_F(BitmapFile, Of24BitsIsPlainToOtherReaders)
{
    const Dib dib = DibFromBitmap({.width = 2, .height = 2, .pixels = {0x112233, 0x445566, 0x778899, 0xAABBCC}});
    ASSERT_EQ(SaveDib(dib, path), 0);
    EXPECT_THAT(ReadByHand(FileContents(path)).colors, ElementsAre(0x112233U, 0x445566U, 0x778899U, 0xAABBCCU));
}

TEST_F(BitmapFile, WithoutAnImageSizeHasRowsOfWholeWords)
{
    // Three pixels of 8 bits: the mask takes bits 3 and 4 of 24 + 31 = 55, which leaves 39, and 39 / 8 is 4.
    const Dib dib = Read(FileStart({.width = 3, .height = 2, .bits = 8, .colorsUsed = 1}) + "bgr0" + Counting(8));
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibInfo(*dib).biSizeImage, 8U);
    EXPECT_THAT(DibBits(*dib), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    for (std::uint32_t width = 1; width < 70; ++width) {
        const std::size_t words = (width + 31) / 32;  // one bit a pixel
        const Dib row = Read(FileStart({.width = width, .height = 1, .bits = 1}) + Counting(8 + words * 4));
        ASSERT_TRUE(row);
        EXPECT_EQ(DibInfo(*row).biSizeImage, words * 4);
    }
}

TEST_F(BitmapFile, NamesTheColoursOfItsDepth)
{
    EXPECT_EQ(DibInfo(*Read(FileStart({.width = 1, .height = 1, .bits = 1}) + Counting(12))).biClrUsed, 2U);
    EXPECT_EQ(DibInfo(*Read(FileStart({.width = 1, .height = 1, .bits = 4}) + Counting(68))).biClrUsed, 16U);
    EXPECT_EQ(DibInfo(*Read(FileStart({.width = 1, .height = 1, .bits = 8}) + Counting(1028))).biClrUsed, 256U);
    EXPECT_EQ(DibInfo(*Read(FileStart({.width = 1, .height = 1, .bits = 24}) + Counting(4))).biClrUsed, 0U);
    // 32 places: the shift counts modulo 32. The rows begin in the place of the one colour.
    const Dib deep = Read(FileStart({.width = 1, .height = 1, .bits = 32, .bitsOffset = 54}) + Counting(4));
    ASSERT_TRUE(deep);
    EXPECT_EQ(DibInfo(*deep).biClrUsed, 1U);
    EXPECT_THAT(DibBits(*deep), ElementsAre(1, 2, 3, 4));
}

TEST_F(BitmapFile, TakesItsRowsFromWhereItSays)
{
    const Fields fields = {.width = 4, .height = 1, .bits = 8, .colorsUsed = 1, .bitsOffset = 54 + 4 + 3};
    const Dib dib = Read(FileStart(fields) + "bgr0???rows");
    ASSERT_TRUE(dib);
    EXPECT_THAT(DibPalette(*dib), ElementsAre('b', 'g', 'r', '0'));
    EXPECT_THAT(DibBits(*dib), ElementsAre('r', 'o', 'w', 's'));
}

// The rows begin within the table: what it lacks is black, and an entry that is there in part is missing.
TEST_F(BitmapFile, WithACutTableHasBlackForTheColoursThatAreMissing)
{
    const std::string two = "bgr0BGR0";
    for (const std::string part : {"", "x", "xyz"}) {
        const auto offset = static_cast<std::uint32_t>(54 + two.size() + part.size());
        const Dib dib =
            Read(FileStart({.width = 4, .height = 1, .bits = 8, .bitsOffset = offset}) + two + part + "\1\2\3\1");
        ASSERT_TRUE(dib) << part;
        EXPECT_EQ(DibInfo(*dib).biClrUsed, 256U);
        const auto table = DibPalette(*dib);
        ASSERT_EQ(table.size(), 1024U);
        EXPECT_EQ(std::string(table.begin(), table.end()), two + std::string(1016, '\0'));
        EXPECT_THAT(DibBits(*dib), ElementsAre(1, 2, 3, 1));
        const std::optional<DeviceBitmap> picture = BitmapFromDib(dib);
        ASSERT_TRUE(picture);
        constexpr std::uint32_t kBgr = 'R' << 16 | 'G' << 8 | 'B';
        std::vector<std::uint32_t> colors;
        for (const std::uint32_t color : picture->pixels) colors.push_back(color & 0xFFFFFF);
        EXPECT_THAT(colors, ElementsAre(kBgr, 0, 0, kBgr));
    }
    // Sixteen colours announced, one there; and none at all.
    EXPECT_TRUE(Read(FileStart({.width = 8, .height = 1, .bits = 4, .bitsOffset = 58}) + "bgr0rows"));
    EXPECT_TRUE(Read(FileStart({.width = 8, .height = 1, .bits = 4, .colorsUsed = 9, .bitsOffset = 54}) + "rows"));
    // The rows are as they must be.
    EXPECT_FALSE(Read(FileStart({.width = 8, .height = 1, .bits = 4, .bitsOffset = 58}) + "bgr0row"));
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BitmapFile, KeepsAnImageSizeThatItNames)
{
    const Dib dib =
        Read(FileStart({.width = 4, .height = 1, .bits = 8, .imageBytes = 6, .colorsUsed = 1}) + "bgr0rows++");
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibBits(*dib).size(), 6U);
}

TEST_F(BitmapFile, WithALongerHeaderHasItsTableBehindTheWholeHeader)
{
    const Dib dib = Read(FileStart({.width = 4, .height = 1, .bits = 8, .colorsUsed = 1, .headerBytes = 108}) +
                         std::string(68, '?') + "bgr0rows");
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibInfo(*dib).biSize, 40U);
    EXPECT_THAT(DibPalette(*dib), ElementsAre('b', 'g', 'r', '0'));
    EXPECT_THAT(DibBits(*dib), ElementsAre('r', 'o', 'w', 's'));
}

TEST_F(BitmapFile, FromTheTopDownIsReadWhole)
{
    const Dib dib = Read(FileStart({.width = 1, .height = 0xFFFFFFFE, .bits = 24}) + Counting(8));
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibHeight(*dib), -2);
    EXPECT_EQ(DibBits(*dib).size(), 8U);
}

TEST_F(BitmapFile, CutAnywhereIsRefused)
{
    const std::string whole = FileStart({.width = 3, .height = 2, .bits = 4}) + Counting(64 + 8);
    ASSERT_TRUE(Read(whole));
    for (std::size_t size = 0; size < whole.size(); ++size) EXPECT_FALSE(Read(whole.substr(0, size))) << size;
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BitmapFile, OfAnotherKindIsRefused)
{
    const std::string rows = Counting(200);
    std::string other = FileStart({}) + rows;
    other[1] = 'A';
    EXPECT_FALSE(Read(other));
    EXPECT_FALSE(Read(FileStart({.headerBytes = 12}) + rows));
    EXPECT_FALSE(Read(FileStart({.headerBytes = 39}) + rows));
    EXPECT_FALSE(Read(FileStart({.headerBytes = 0}) + rows));
}

TEST_F(BitmapFile, ThatLiesTakesNoMemory)
{
    const std::string rows = Counting(200);
    for (const Fields& fields :
         {Fields{.headerBytes = 0xFFFFFFFF}, Fields{.width = 0x7FFFFFFF, .height = 0x7FFFFFFF},
          Fields{.width = 0xFFFFFFFF}, Fields{.imageBytes = 0xFFFFFFFF}, Fields{.colorsUsed = 0xFFFFFFFF},
          Fields{.colorsUsed = 0xFFFFFFFF, .bitsOffset = 60}, Fields{.colorsUsed = 257, .bitsOffset = 60},
          Fields{.bitsOffset = 0xFFFFFFFF}, Fields{.height = 0x80000000}, Fields{.bits = 0xFFFF}}) {
        PutFile(path, FileStart(fields) + rows);
        std::optional<File> file = File::Open(path, FileMode::kRead);
        FailAllocation(2);  // the first block is for the header; a second would be for what the file hasn't
        EXPECT_FALSE(ReadDibFile(*file));
        EXPECT_FALSE(MemoryAvailable(1)) << "memory was asked for";
    }
}

TEST_F(BitmapFile, WithoutMemoryIsSilent)
{
    for (const int call : {1, 2}) {
        FailAllocation(call);
        EXPECT_FALSE(Read(FileStart({}) + Counting(24)));
    }
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BitmapFile, ThatIsMissingIsTold)
{
    EXPECT_FALSE(LoadDib(directory / "missing.bmp"));
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "Error", .text = "File Not Found!"}));
}

TEST_F(BitmapFile, ThatIsBrokenIsSilentlyRefusedByLoading)
{
    PutFile(path, "BM");
    EXPECT_FALSE(LoadDib(path));
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BitmapFile, WithPackedRowsIsSavedAsItStands)
{
    const Fields fields = {.width = 8, .height = 1, .bits = 8, .compression = 1, .imageBytes = 4, .colorsUsed = 1};
    ASSERT_EQ(SaveDib(DibOf(fields,
                            "bgr0"
                            "rle!"
                            "beyond"),
                      path),
              0);
    const std::string file = FileContents(path);
    EXPECT_EQ(file.substr(0, 14), Bytes().Text("BM").Long(14 + 40 + 4 + 4).Long(0).Long(58).Get());
    EXPECT_EQ(file.substr(14), InfoBytes(fields) + "bgr0rle!");
}

// Read back by the toolkit, which has nothing to do with how it was written.
TEST_F(BitmapFile, AsPngKeepsIndicesAndColours)
{
    const std::string png = directory / "picture.png";
    const Dib dib = GrayDib();
    const std::span<std::uint8_t> table = DibPalette(*dib);
    ASSERT_GE(table.size(), 24U);
    std::iota(table.begin(), table.begin() + 24, std::uint8_t{1});
    ASSERT_EQ(SavePng(dib, png), 0);
    const QImage picture(QString::fromStdString(png), "PNG");
    ASSERT_EQ(picture.format(), QImage::Format_Indexed8);
    ASSERT_EQ(picture.size(), QSize(3, 2));
    EXPECT_EQ(picture.color(1), qRgb(7, 6, 5)) << "blue stands first in the table";
    const std::int64_t rowBytes = DibRowBytes(8, 3);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            const auto at = static_cast<std::size_t>((1 - y) * rowBytes + x);
            EXPECT_EQ(picture.pixelIndex(x, y), DibBits(*dib)[at]) << x << ", " << y;
        }
    }
    // Plain gray stays a picture with a colour table too.
    const Dib gray = GrayDib();
    const std::span<std::uint8_t> grays = DibPalette(*gray);
    for (std::size_t i = 0; i < grays.size(); ++i) grays[i] = i % 4 == 3 ? 0 : static_cast<std::uint8_t>(i / 4);
    ASSERT_EQ(SavePng(gray, png), 0);
    constexpr std::size_t kDepthAt = 24;
    EXPECT_EQ(FileContents(png).substr(kDepthAt, 2), std::string("\x08\x03"));
}

TEST_F(BitmapFile, AsPngOfTrueColoursKeepsEveryPixel)
{
    const std::string png = directory / "picture.png";
    const Dib dib = CreateDIB(3, 2, 24);
    const std::span<std::uint8_t> rows = DibBits(*dib);
    std::iota(rows.begin(), rows.end(), std::uint8_t{10});
    ASSERT_EQ(SavePng(dib, png), 0);
    const QImage picture(QString::fromStdString(png), "PNG");
    ASSERT_EQ(picture.size(), QSize(3, 2));
    const auto rowBytes = static_cast<std::size_t>(DibRowBytes(24, 3));
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            const std::size_t at = static_cast<std::size_t>(1 - y) * rowBytes + static_cast<std::size_t>(x) * 3;
            EXPECT_EQ(picture.pixel(x, y), qRgb(rows[at + 2], rows[at + 1], rows[at])) << x << ", " << y;
        }
    }
}

TEST_F(BitmapFile, AsPngKeepsWhatStoodWhereItFails)
{
    const std::string png = directory / "picture.png";
    PutFile(png, "before");
    EXPECT_EQ(SavePng(nullptr, png), 20);
    EXPECT_EQ(SavePng(CreateDIB(3, 2, 4), png), 21);
    const Dib cut = GrayDib();
    cut->bytes.pop_back();
    EXPECT_EQ(SavePng(cut, png), 21);
    const Dib cutColors = CreateDIB(3, 2, 24);
    cutColors->bytes.pop_back();
    EXPECT_EQ(SavePng(cutColors, png), 21);
    EXPECT_EQ(SavePng(GrayDib(), directory / "none/picture.png"), 4);
    EXPECT_EQ(FileContents(png), "before");
}

TEST_F(BitmapFile, AsPngWithoutMemoryGivesThreeAndKeepsWhatStood)
{
    const std::string png = directory / "picture.png";
    PutFile(png, "before");
    const Dib dib = GrayDib();
    FailAllocation(1);
    EXPECT_EQ(SavePng(dib, png), 3);
    EXPECT_EQ(FileContents(png), "before");
    EXPECT_EQ(SavePng(dib, png), 0);
}

TEST_F(BitmapFile, OfNoBitmapIsNotMade)
{
    EXPECT_EQ(SaveDib(nullptr, path), 20);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(BitmapFile, ThatCannotBeMadeGivesFour)
{
    EXPECT_EQ(SaveDib(GrayDib(), directory / "none/picture.bmp"), 4);
}

TEST_F(BitmapFile, WithoutMemoryGivesThreeAndKeepsWhatStood)
{
    PutFile(path, "before");
    const Dib dib = GrayDib();
    FailAllocation(1);
    EXPECT_EQ(SaveDib(dib, path), 3);
    EXPECT_EQ(FileContents(path), "before");
}

TEST_F(BitmapFile, OnAFullDiskGivesFourAndKeepsWhatStood)
{
    PutFile(path, "before");
    const Dib dib = GrayDib();
    {
        const FullDisk disk(500);
        EXPECT_EQ(SaveDib(dib, path), 4);
    }
    EXPECT_EQ(FileContents(path), "before");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.Path()), {}), 1);  // no half file beside it
}

TEST_F(BitmapFile, OfTheOlderHeaderIsLeftEmpty)
{
    EXPECT_EQ(SaveDib(DibOf(Bytes().Long(12).Word(8).Word(1).Word(1).Word(1).Zeros(10).Get()), path), 0);
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(FileContents(path), "");
}

TEST_F(BitmapFile, WithFewerRowsThanItSaysGivesTwentyOne)
{
    EXPECT_EQ(SaveDib(DibOf({.width = 3, .height = 2, .bits = 24}, std::string(23, '\0')), path), 21);
    EXPECT_EQ(SaveDib(DibOf({.width = 0, .height = 0, .bits = 8}, "short table"), path), 21);
    EXPECT_EQ(SaveDib(DibOf({.width = 0x7FFFFFFF, .height = 0x7FFFFFFF, .bits = 24}, ""), path), 21);
    EXPECT_FALSE(std::filesystem::exists(path));
}

// ---- messages

TEST(DibErrors, HaveTheirTexts)
{
    const std::array<std::string, 22> texts = {"Not a Windows DIB file!",
                                               "Couldn't allocate memory!",
                                               "Error reading file!",
                                               "Error locking memory!",
                                               "Error opening file!",
                                               "Error creating palette!",
                                               "Error getting a DC!",
                                               "Error creating Device Dependent Bitmap",
                                               "StretchBlt() failed!",
                                               "StretchDIBits() failed!",
                                               "SetDIBitsToDevice() failed!",
                                               "Printer: StartDoc failed!",
                                               "Printing: GetModuleHandle() couldn't find GDI!",
                                               "Printer: SetAbortProc failed!",
                                               "Printer: StartPage failed!",
                                               "Printer: NEWFRAME failed!",
                                               "Printer: EndPage failed!",
                                               "Printer: EndDoc failed!",
                                               "SetDIBits() failed!",
                                               "File Not Found!",
                                               "Invalid Handle",
                                               "General Error on call to DIB function"};
    for (int number = 0; number < 22; ++number) DibError(number);
    const std::vector<ShownBox> boxes = BoxesShown();
    ASSERT_EQ(boxes.size(), texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(boxes[i], (ShownBox{.caption = "Error", .text = texts[i]}));
    }
    for (const TranscriptLine& line : TranscriptLines()) {
        if (line.kind != "box") continue;
        EXPECT_EQ(FieldOf(line, "icon"), "stop");
    }
}

TEST(DibErrors, OutsideTheTableAreUndefined)
{
    DibError(22);
    DibError(-1);
    const ShownBox undefined = {.caption = "Error", .text = "Undefined Error!"};
    EXPECT_THAT(BoxesShown(), ElementsAre(undefined, undefined));
}

}  // namespace
}  // namespace kelvo
