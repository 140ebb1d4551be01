// Headers, colour tables and palettes of device-independent bitmaps: what can be said of one block of bytes without a
// screen and without a file.
//
// A block is an information header, a colour table and the pixel rows. The 12-byte core header is understood where
// sizes and colours are read; everything that is written carries the 40-byte header. Blocks may come from a file: no
// function here reads outside the block, whatever the header says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

struct DibBlock {
    std::vector<std::uint8_t> bytes;  // header, colour table, rows
};
using Dib = std::shared_ptr<DibBlock>;  // null: no bitmap

struct [[gnu::packed]] BitmapFileHeader {
    std::uint16_t bfType = 0;  // "BM"
    std::uint32_t bfSize = 0;  // of the whole file
    std::uint16_t bfReserved1 = 0;
    std::uint16_t bfReserved2 = 0;
    std::uint32_t bfOffBits = 0;  // of the rows, from the start of the file
};
static_assert(sizeof(BitmapFileHeader) == 14);

struct [[gnu::packed]] BitmapInfoHeader {
    std::uint32_t biSize = 0;   // of this header
    std::int32_t biWidth = 0;   // pixels
    std::int32_t biHeight = 0;  // rows, stored from the bottom up; negative: from the top down
    std::uint16_t biPlanes = 0;
    std::uint16_t biBitCount = 0;
    std::uint32_t biCompression = 0;  // 0: plain rows
    std::uint32_t biSizeImage = 0;    // bytes of the rows
    std::int32_t biXPelsPerMeter = 0;
    std::int32_t biYPelsPerMeter = 0;
    std::uint32_t biClrUsed = 0;  // colours in the table; 0: as many as the bits can name
    std::uint32_t biClrImportant = 0;
};
static_assert(sizeof(BitmapInfoHeader) == 40);

struct [[gnu::packed]] BitmapCoreHeader {
    std::uint32_t bcSize = 0;
    std::uint16_t bcWidth = 0;
    std::uint16_t bcHeight = 0;
    std::uint16_t bcPlanes = 0;
    std::uint16_t bcBitCount = 0;
};
static_assert(sizeof(BitmapCoreHeader) == 12);

constexpr std::uint16_t kBitmapFileType = 0x4D42;
constexpr std::uint32_t kInfoHeaderBytes = sizeof(BitmapInfoHeader);
constexpr std::uint32_t kCoreHeaderBytes = sizeof(BitmapCoreHeader);
constexpr std::size_t kInfoTableEntryBytes = 4;  // blue, green, red, 0
constexpr std::size_t kCoreTableEntryBytes = 3;  // blue, green, red

// A row's length in bytes: rows are padded to whole 32-bit words.
constexpr std::int64_t DibRowBytes(std::int64_t bits, std::int64_t width)
{
    return ((bits * width + 31) & ~std::int64_t{31}) / 8;
}

// The information header at the front of a block; all zero where the block is too short to hold one.
BitmapInfoHeader DibInfo(const DibBlock& block);
void SetDibInfo(DibBlock& block, const BitmapInfoHeader& header);  // the block holds 40 bytes at least

bool HasCoreHeader(const DibBlock& block);
int DibWidth(const DibBlock& block);   // from either header form
int DibHeight(const DibBlock& block);  // the same; negative for rows from the top down
int DibBitCount(const DibBlock& block);

// 2, 16 or 256 for 1, 4 or 8 bits and 0 for others.
std::uint32_t ColorsOfDepth(int bits);
// A 40-byte header's biClrUsed if not 0; otherwise ColorsOfDepth.
std::uint32_t DibColorCount(const DibBlock& block);
// Colours x 4, or x 3 for a core header.
std::size_t DibPaletteBytes(const DibBlock& block);

// The colour table's bytes (blue, green, red, 0 a colour), and the rows: from behind the table to the block's end. Each
// is cut, down to nothing, where the block is shorter than its header says.
std::span<std::uint8_t> DibPalette(DibBlock& block);
std::span<const std::uint8_t> DibPalette(const DibBlock& block);
std::span<std::uint8_t> DibBits(DibBlock& block);
std::span<const std::uint8_t> DibBits(const DibBlock& block);

struct PaletteEntry {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t flags = 0;
    friend bool operator==(const PaletteEntry&, const PaletteEntry&) = default;
};
struct Palette {
    std::uint16_t version = 0x300;
    std::vector<PaletteEntry> entries;
};

// The table's colours with flags 0; nullopt for a null bitmap or one without colours.
std::optional<Palette> PaletteFromDib(const Dib& dib);

// The screen's palette size, or else its number of colours: -1 for more than 256, which is every screen that shows
// true colour. 0 under the fault "device colors".
int DeviceColorCount();

// A copy of the screen's palette; nullopt on a screen of true colour, which has none. A screen without colours trips
// the assertion "nColors", told in a stop box, and gives nullopt.
std::optional<Palette> SystemPaletteCopy();

}  // namespace kelvo
