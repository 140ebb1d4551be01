// Pictures for other programs: one gray image as a baseline TIFF 6.0 file, little-endian and uncompressed. Its head has
// a fixed size and layout; the samples follow it directly.
//
// The layout: Aldus, TIFF Revision 6.0, June 1992, sections 2 and 4.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

static_assert(std::endian::native == std::endian::little, "the records below are the file's bytes");

constexpr std::size_t kTiffEntries = 17;
constexpr std::size_t kMostTiffStrips = 32;

struct [[gnu::packed]] TiffEntry {
    std::uint16_t Tag;
    std::uint16_t Type;   // 2 ASCII, 3 SHORT, 4 LONG, 5 RATIONAL
    std::uint32_t Count;  // of values, not of bytes
    std::uint32_t Value;  // a SHORT in the low half; where the values are more than 4 bytes, their place in the file
};

// A LONG of the head, at whatever place.
struct [[gnu::packed]] TiffLong {
    std::uint32_t Value;
};

struct [[gnu::packed]] TiffHeadRecord {
    std::array<char, 2> ByteOrder{};    // "II"
    std::uint16_t Version = 0;          // 42
    std::uint32_t DirectoryOffset = 0;  // 8
    std::uint16_t EntryCount = 0;
    std::array<TiffEntry, kTiffEntries> Entries{};  // by rising tag
    std::uint32_t NextDirectory = 0;                // 0: there is none
    std::array<char, 256> ImageDescription{};
    std::array<char, 16> Make{};
    std::array<TiffLong, kMostTiffStrips> StripOffsets{};
    std::array<TiffLong, kMostTiffStrips> StripByteCounts{};
    std::array<TiffLong, 2> XResolution{};  // numerator, denominator
    std::array<TiffLong, 2> YResolution{};
    std::array<char, 20> DateTime{};  // "2026:11:21 12:34:05" and a terminator
};
static_assert(sizeof(TiffHeadRecord) == 782);

// The head of the last file written, or as BuildTiffHead left it; all zeros before.
extern const TiffHeadRecord& TiffHead;

// Fills what is the same in every file. Called once, at the start.
void BuildTiffHead();

// Writes one file: height rows of width samples, row by row, 8 bits unsigned or 16 bits in native order. The samples
// are written as they are: signed counts stand under tags that name no sample format, and other programs read them as
// unsigned. frameRate in Hz, integrationMsec in ms, intensities in counts of the samples, temperatures in °C; minimum
// and maximum are the range of the samples. All whole numbers are 16 bits with sign: of a wider one a caller hands on
// the low half, and a size beyond 32767 is then refused as negative.
//
// The picture lies in 2 to 32 strips of about 16384 pixels. Where the rows don't fill them, the last strips of the list
// lie behind the samples; readers take as many as the height needs. Entries behind the list are 0, and so is the
// description behind its text, which is cut at 255 characters.
//
// 1, or 0: in silence where the file can't be created, where a size is below 1, bits isn't 8 or 16, or samples holds
// fewer bytes than the picture needs; with a beep where the disk doesn't take all of it. The caller tells the operator.
// A file takes its name when it is whole, and what stood there before stays until then.
int WriteTiffFile(std::string_view path, std::span<const std::byte> samples, std::int16_t bits, float frameRate,
                  float integrationMsec, std::int16_t height, std::int16_t width, std::int16_t intensityCold,
                  float temperatureCold, std::int16_t intensityHot, float temperatureHot, std::int16_t minimum,
                  std::int16_t maximum);

// All zeros, as before BuildTiffHead.
void ResetTiffHead();

}  // namespace kelvo
