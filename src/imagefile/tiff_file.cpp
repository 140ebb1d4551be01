#include "imagefile/tiff_file.h"

#include "platform/box.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/text.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <string>

namespace kelvo {

namespace {

TiffHeadRecord head;

constexpr std::uint16_t kAscii = 2;
constexpr std::uint16_t kShort = 3;
constexpr std::uint16_t kLong = 4;
constexpr std::uint16_t kRational = 5;

constexpr std::uint16_t kImageWidth = 256;
constexpr std::uint16_t kImageLength = 257;
constexpr std::uint16_t kBitsPerSample = 258;
constexpr std::uint16_t kStripOffsets = 273;
constexpr std::uint16_t kRowsPerStrip = 278;
constexpr std::uint16_t kStripByteCounts = 279;
constexpr std::uint16_t kMinSampleValue = 280;
constexpr std::uint16_t kMaxSampleValue = 281;

constexpr std::uint32_t kPixelsPerStrip = 16384;
constexpr std::uint32_t kFewestStrips = 2;

// 0: each file has its own.
constexpr std::array<TiffEntry, kTiffEntries> kEntries = {{
    {kImageWidth, kShort, 1, 0},
    {kImageLength, kShort, 1, 0},
    {kBitsPerSample, kShort, 1, 0},
    {259, kShort, 1, 1},  // Compression: none
    {262, kShort, 1, 1},  // PhotometricInterpretation: 0 is black
    {270, kAscii, 256, offsetof(TiffHeadRecord, ImageDescription)},
    {271, kAscii, 16, offsetof(TiffHeadRecord, Make)},
    {kStripOffsets, kLong, 0, offsetof(TiffHeadRecord, StripOffsets)},
    {277, kShort, 1, 1},  // SamplesPerPixel
    {kRowsPerStrip, kShort, 1, 0},
    {kStripByteCounts, kLong, 0, offsetof(TiffHeadRecord, StripByteCounts)},
    {kMinSampleValue, kShort, 1, 0},
    {kMaxSampleValue, kShort, 1, 0},
    {282, kRational, 1, offsetof(TiffHeadRecord, XResolution)},
    {283, kRational, 1, offsetof(TiffHeadRecord, YResolution)},
    {296, kShort, 1, 1},  // ResolutionUnit: none
    {306, kAscii, 20, offsetof(TiffHeadRecord, DateTime)},
}};

// The text and at least one terminator; the rest of the field is zeros.
template <std::size_t size>
void PutText(std::array<char, size>& field, std::string_view text)
{
    field.fill(0);
    std::ranges::copy(text.substr(0, size - 1), field.begin());
}

TiffEntry& EntryOf(std::uint16_t tag)
{
    const auto row = std::ranges::find_if(kEntries, [tag](const TiffEntry& entry) { return entry.Tag == tag; });
    return head.Entries.at(static_cast<std::size_t>(row - kEntries.begin()));
}

void PutShort(std::uint16_t tag, std::int16_t value)
{
    EntryOf(tag).Value = static_cast<std::uint16_t>(value);
}

struct Picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bits = 0;
    std::uint32_t Pixels() const { return width * height; }  // at most 32767 squared
    std::uint32_t Bytes() const { return Pixels() * (bits / 8); }
};

void PutStrips(const Picture& picture)
{
    const std::uint32_t strips = std::clamp((picture.Pixels() + kPixelsPerStrip - 1) / kPixelsPerStrip, kFewestStrips,
                                            static_cast<std::uint32_t>(kMostTiffStrips));
    const std::uint32_t rows = (picture.height - 1 + strips) / strips;
    const std::uint32_t rowBytes = picture.width * (picture.bits / 8);
    EntryOf(kStripOffsets).Count = strips;
    EntryOf(kStripByteCounts).Count = strips;
    EntryOf(kRowsPerStrip).Value = rows;
    head.StripOffsets = {};
    head.StripByteCounts = {};
    for (std::uint32_t i = 0; i < strips; ++i) {
        head.StripOffsets.at(i).Value = static_cast<std::uint32_t>(sizeof head) + i * rows * rowBytes;
        head.StripByteCounts.at(i).Value = rows * rowBytes;
    }
    if (picture.height % rows != 0) head.StripByteCounts.at(strips - 1).Value = picture.height % rows * rowBytes;
}

void PutDateTime()
{
    const std::time_t now = WallClockSeconds();
    std::tm local{};
    localtime_r(&now, &local);
    PutText(head.DateTime, Format("%4d:%.2d:%.2d %.2d:%.2d:%.2d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                                  local.tm_hour, local.tm_min, local.tm_sec));
}

int WriteWhole(std::string_view path, std::span<const std::byte> samples)
{
    std::optional<NewFile> file = NewFile::Begin(path);
    if (!file) return 0;
    const std::span<const std::byte> front = std::as_bytes(std::span(&head, 1));
    if (file->Contents().Write(front, samples) == front.size() + samples.size() && file->Keep()) return 1;
    MessageBeep(Sound::kDefault);
    return 0;
}

}  // namespace

constinit const TiffHeadRecord& TiffHead = head;

void BuildTiffHead()
{
    head = {};
    head.ByteOrder = {'I', 'I'};
    head.Version = 42;
    head.DirectoryOffset = offsetof(TiffHeadRecord, EntryCount);
    head.EntryCount = kTiffEntries;
    head.Entries = kEntries;
    PutText(head.Make, "Kelvo");
    head.XResolution = {TiffLong{1}, TiffLong{1}};
    head.YResolution = {TiffLong{1}, TiffLong{1}};
}

int WriteTiffFile(std::string_view path, std::span<const std::byte> samples, std::int16_t bits, float frameRate,
                  float integrationMsec, std::int16_t height, std::int16_t width, std::int16_t intensityCold,
                  float temperatureCold, std::int16_t intensityHot, float temperatureHot, std::int16_t minimum,
                  std::int16_t maximum)
{
    if (width < 1 || height < 1 || (bits != 8 && bits != 16)) return 0;
    const Picture picture{.width = static_cast<std::uint32_t>(width),
                          .height = static_cast<std::uint32_t>(height),
                          .bits = static_cast<std::uint32_t>(bits)};
    if (samples.size() < picture.Bytes()) return 0;

    PutShort(kImageWidth, width);
    PutShort(kImageLength, height);
    PutShort(kBitsPerSample, bits);
    PutShort(kMinSampleValue, minimum);
    PutShort(kMaxSampleValue, maximum);
    PutStrips(picture);
    PutText(head.ImageDescription,
            Format("Kelvo Thermal Image\nFrameRate=%.2fHz IntegrationTime=%.3fms\nIhot=%d Thot=%.3fC\nIcold=%d "
                   "Tcold=%.3fC",
                   static_cast<double>(frameRate), static_cast<double>(integrationMsec), intensityHot,
                   static_cast<double>(temperatureHot), intensityCold, static_cast<double>(temperatureCold)));
    PutDateTime();
    return WriteWhole(path, samples.first(picture.Bytes()));
}

void ResetTiffHead()
{
    head = {};
}

}  // namespace kelvo
