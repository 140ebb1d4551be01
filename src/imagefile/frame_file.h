// Frames of an image file on disk, and the counts that are made of them: where a record lies, reading it whole, and
// turning floats, byte-swapped words and coefficient lists into the 16-bit counts that the display works on.
//
// Headers and blocks may come from a damaged file: nothing here reads or writes outside a block, and memory is taken
// only for what the file's length covers.
#pragma once

#include "imagefile/header.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

// Where record number frame starts: headerBytes + frame x FrameRecordBytes. The record's FrameHeader, if any, comes
// first. nullopt where a side, the sample size or the frame header's size makes no record, or the product leaves 64
// bits.
std::optional<std::int64_t> FrameRecordPosition(const ImageHeaderRecord& header, std::int32_t headerBytes,
                                                std::uint32_t frame);

// ImageWidth x ImageHeight; 0 where a side isn't positive.
std::size_t PixelCount(const ImageHeaderRecord& header);

enum class FrameRead {
    kComplete,
    kShort,    // the record reaches past the file's end, or the header makes no record; no memory was taken for it
    kNoMemory  // block is empty
};
// Reads record number frame, its FrameHeader included, to the start of block. A block that is large enough keeps its
// size; a smaller one is replaced. After kShort a block that was large enough may hold part of the record.
FrameRead ReadFrameRecord(File& file, const ImageHeaderRecord& header, std::int32_t headerBytes, std::uint32_t frame,
                          std::vector<std::uint8_t>& block);

// Makes block at least that many bytes; false (block empty) where memory is refused.
bool EnsureBlock(std::vector<std::uint8_t>& block, std::size_t bytes);

// A float as a count: 0.5 is added and the fraction dropped toward zero (1.5 gives 2, -0.7 gives 0). What 16 bits don't
// hold becomes the nearest count that they do; no number at all becomes 0.
std::int16_t CountOfFloat(float value);

// A record of 32-bit floats to counts: the FrameHeader's F bytes are copied, then P counts are stored from byte 2F on,
// taken from the floats from byte 4F on. (Only with F = 0, the one case that is written, do these offsets meet the
// record's own layout.) Floats beyond the record are 0, counts beyond the block are dropped.
void FloatRecordToCounts(std::span<const std::uint8_t> record, const ImageHeaderRecord& header,
                         std::span<std::uint8_t> counts);

// Exchanges the bytes of the first P words of a record in memory. With a FrameHeader before the samples this covers the
// FrameHeader and leaves the last F / 2 samples as they are: stored files are seen through it that way.
void SwapRecordWords(std::span<std::uint8_t> record, const ImageHeaderRecord& header);

// How a count on view maps back to the stored value: value = count / gain + offset.
struct CountScale {
    float gain = 1.0F;
    float offset = 0.0F;
};

// Coefficient lists as counts, entry for entry; the shorter span decides. Bad detectors show as 4000, good ones as 0.
void BadMapToCounts(std::span<const std::uint8_t> map, std::span<std::int16_t> counts);
void BytesToCounts(std::span<const std::uint8_t> list, std::span<std::int16_t> counts);
void IntegersToCounts(std::span<const std::int16_t> list, std::span<std::int16_t> counts);

// Lists of 32-bit integers and of floats are spread over the camera's display range (displayLow to displayHigh,
// counts): count = truncate((entry - offset) x gain), offset being the smallest entry and gain the range over the span
// of the entries. A list of integers that are all equal counts as a span of 100, and so does a list of floats whose
// span is below 1. Returns the scale. What 16 bits don't hold becomes the nearest count that they do; no number
// becomes 0.
CountScale LongsToCounts(std::span<const std::int32_t> list, std::int32_t displayLow, std::int32_t displayHigh,
                         std::span<std::int16_t> counts);
CountScale FloatsToCounts(std::span<const float> list, std::int32_t displayLow, std::int32_t displayHigh,
                          std::span<std::int16_t> counts);

}  // namespace kelvo
