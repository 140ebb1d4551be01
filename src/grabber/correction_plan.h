// The lists of correction made ready for the fast path: offset and gain in image order, and for each image row how it
// is taken from the raw frame.
//
// Detectors read out in a pattern that holds for a whole row: in order, mirrored, through two or four channels, by
// columns. A substituted pixel breaks the pattern at one place. So a row is its pattern, and patches written over it.
#pragma once

#include "grabber/correction.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvo {

// Pixels that the fast path corrects together; the image-order lists hold each row in whole blocks.
constexpr std::size_t kCorrectionBlock = 16;

enum class RowPattern : std::uint8_t {
    kInterleave,  // through 1, 2 or 4 channels, each of which reads its own part of the row
    kStride,      // from a constant distance to the next: the columns of a rotated image, every second sample
    kNone,        // each pixel is a patch
};

struct RowGather {
    RowPattern pattern = RowPattern::kNone;
    std::uint8_t channels = 1;
    bool mirrored = false;          // each part from right to left
    bool channelsReversed = false;  // the last channel reads the first part
    bool inDouble = false;          // a gain that the single precision quotient can't bear
    std::int64_t start = 0;         // kInterleave: the lowest raw index of the row; kStride: that of the first pixel
    std::int64_t stride = 0;
    std::size_t firstPatch = 0;
    std::size_t patches = 0;
};

// A pixel that doesn't follow its row's pattern. A source beyond the raw frame reads 0.
struct RowPatch {
    std::uint32_t column = 0;
    std::uint32_t source = 0;
};

struct CorrectionPlan {
    std::int32_t calType = 0;
    std::int32_t dataOffset = 0;
    std::size_t width = 0;        // image pixels a row
    std::size_t pixels = 0;       // of the image; the last row may be short
    std::size_t rawSize = 0;      // counts of the raw frame
    std::size_t paddedWidth = 0;  // width in whole blocks
    std::vector<RowGather> rows;
    std::vector<RowPatch> patches;
    // Image order, paddedWidth entries a row; empty where calType doesn't need them. For calType 2 they stand at
    // OffsetPlace and GainPlace of their column, so that 32-bit lanes are made of 16-bit ones without moving across.
    std::vector<std::int16_t> offset;
    std::vector<float> gain;
    // Two gathered rows: one is corrected while the next is gathered.
    mutable std::vector<std::int16_t> lines;

    std::size_t RowPixels(std::size_t row) const { return row + 1 < rows.size() ? width : pixels - row * width; }
};

// Where the lists of calType 2 have a column: in offset the two of a pair change places, in gain each block of 16 holds
// first its 8 even pixels, then its 8 odd ones.
constexpr std::size_t OffsetPlace(std::size_t column)
{
    return column ^ 1U;
}
constexpr std::size_t GainPlace(std::size_t column)
{
    const std::size_t inBlock = column % kCorrectionBlock;
    return column - inBlock + (inBlock % 2) * (kCorrectionBlock / 2) + inBlock / 2;
}

// The index of a column's sample in an interleaved row, counted from the row's lowest one. columns divides by
// row.channels.
constexpr std::int64_t InterleavedPlace(const RowGather& row, std::size_t columns, std::size_t column)
{
    const std::size_t part = columns / row.channels;
    const std::size_t channel = column / part;
    const std::size_t inPart = column % part;
    const std::size_t step = row.mirrored ? part - 1 - inPart : inPart;
    return static_cast<std::int64_t>(step * row.channels +
                                     (row.channelsReversed ? row.channels - 1 - channel : channel));
}

}  // namespace kelvo
