#include "dibapi32/dibutil.h"

#include "platform/box.h"
#include "platform/faults.h"

#include <algorithm>
#include <cstring>

namespace kelvo {

namespace {

// The header's first bytes as a record; all zero where the block is too short.
template <typename Header>
Header HeaderOf(const DibBlock& block)
{
    Header header;
    if (block.bytes.size() >= sizeof header) std::memcpy(&header, block.bytes.data(), sizeof header);
    return header;
}

// Of a block too short to tell: more than it holds, so that nothing lies behind its header.
std::uint32_t StoredHeaderBytes(const DibBlock& block)
{
    std::uint32_t size = 0xFFFFFFFF;
    if (block.bytes.size() >= sizeof size) std::memcpy(&size, block.bytes.data(), sizeof size);
    return size;
}

std::size_t TableEntryBytes(const DibBlock& block)
{
    return HasCoreHeader(block) ? kCoreTableEntryBytes : kInfoTableEntryBytes;
}

struct Extent {
    std::size_t start = 0;
    std::size_t size = 0;
};

Extent WithinBlock(const DibBlock& block, std::size_t start, std::size_t size)
{
    const std::size_t held = block.bytes.size();
    start = std::min(start, held);
    return {start, std::min(size, held - start)};
}

Extent PaletteExtent(const DibBlock& block)
{
    return WithinBlock(block, StoredHeaderBytes(block), DibPaletteBytes(block));
}

Extent BitsExtent(const DibBlock& block)
{
    return WithinBlock(block, StoredHeaderBytes(block) + DibPaletteBytes(block), block.bytes.size());
}

}  // namespace

BitmapInfoHeader DibInfo(const DibBlock& block)
{
    return HeaderOf<BitmapInfoHeader>(block);
}

void SetDibInfo(DibBlock& block, const BitmapInfoHeader& header)
{
    std::memcpy(block.bytes.data(), &header, sizeof header);
}

bool HasCoreHeader(const DibBlock& block)
{
    return StoredHeaderBytes(block) == kCoreHeaderBytes;
}

int DibWidth(const DibBlock& block)
{
    return HasCoreHeader(block) ? HeaderOf<BitmapCoreHeader>(block).bcWidth : DibInfo(block).biWidth;
}

int DibHeight(const DibBlock& block)
{
    return HasCoreHeader(block) ? HeaderOf<BitmapCoreHeader>(block).bcHeight : DibInfo(block).biHeight;
}

int DibBitCount(const DibBlock& block)
{
    return HasCoreHeader(block) ? HeaderOf<BitmapCoreHeader>(block).bcBitCount : DibInfo(block).biBitCount;
}

std::uint32_t ColorsOfDepth(int bits)
{
    switch (bits) {
        case 1:
            return 2;
        case 4:
            return 16;
        case 8:
            return 256;
        default:
            return 0;
    }
}

std::uint32_t DibColorCount(const DibBlock& block)
{
    if (!HasCoreHeader(block)) {
        const std::uint32_t used = DibInfo(block).biClrUsed;
        if (used != 0) return used;
    }
    return ColorsOfDepth(DibBitCount(block));
}

std::size_t DibPaletteBytes(const DibBlock& block)
{
    return DibColorCount(block) * TableEntryBytes(block);
}

std::span<std::uint8_t> DibPalette(DibBlock& block)
{
    const Extent extent = PaletteExtent(block);
    return std::span(block.bytes).subspan(extent.start, extent.size);
}

std::span<const std::uint8_t> DibPalette(const DibBlock& block)
{
    const Extent extent = PaletteExtent(block);
    return std::span(block.bytes).subspan(extent.start, extent.size);
}

std::span<std::uint8_t> DibBits(DibBlock& block)
{
    const Extent extent = BitsExtent(block);
    return std::span(block.bytes).subspan(extent.start, extent.size);
}

std::span<const std::uint8_t> DibBits(const DibBlock& block)
{
    const Extent extent = BitsExtent(block);
    return std::span(block.bytes).subspan(extent.start, extent.size);
}

std::optional<Palette> PaletteFromDib(const Dib& dib)
{
    if (!dib || DibColorCount(*dib) == 0) return std::nullopt;
    const DibBlock& block = *dib;
    const std::span<const std::uint8_t> table = DibPalette(block);
    const std::size_t entryBytes = TableEntryBytes(block);
    Palette palette;
    palette.entries.reserve(table.size() / entryBytes);
    for (std::size_t at = 0; at + entryBytes <= table.size(); at += entryBytes) {
        palette.entries.push_back({.red = table[at + 2], .green = table[at + 1], .blue = table[at], .flags = 0});
    }
    return palette;
}

int DeviceColorCount()
{
    constexpr int kMoreThanATableNames = -1;
    return FaultIsSet("device colors") ? 0 : kMoreThanATableNames;
}

std::optional<Palette> SystemPaletteCopy()
{
    const int nColors = DeviceColorCount();
    if (nColors == 0) MessageBox(nullptr, "Assertion failed: nColors", "dibutil", BoxIcon::kStop);
    return std::nullopt;  // true colour: there is no palette to copy
}

}  // namespace kelvo
