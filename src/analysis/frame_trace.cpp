#include "analysis/frame_trace.h"

#include "grabber/host_frames.h"
#include "imagefile/frame_file.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/windows.h"
#include "ui/gather.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <span>

namespace kelvo {

namespace {

constexpr std::int32_t kShortSamples = 2;
constexpr std::int32_t kFloatSamples = 4;
constexpr std::int16_t kFloatData = 8;
constexpr std::int64_t kFramesOfALongRead = 1000;
constexpr std::int64_t kFramesBetweenGlances = 16;
constexpr std::chrono::milliseconds kBetweenLooks{100};

std::nullopt_t RefuseHeader(std::string_view path)
{
    MessageBox(hWndMain, "Error reading Image File Header\n" + std::string(path), kMessageCaption);
    return std::nullopt;
}

// What stands in the first 512 bytes.
std::optional<ImageHeaderRecord> FirstBytes(const File& file)
{
    ImageHeaderRecord record;
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&record, 1));
    return file.ReadAt(0, bytes) == bytes.size() ? std::optional(record) : std::nullopt;
}

// But for the number of frames, which grows while a file is recorded.
bool IsTheSame(ImageHeaderRecord a, const ImageHeaderRecord& b)
{
    a.FrameCount = b.FrameCount;
    return std::ranges::equal(std::as_bytes(std::span(&a, 1)), std::as_bytes(std::span(&b, 1)));
}

// Where one pixel of a file's frames lies, and how its bytes become a count.
class PixelInFile {
  public:
    PixelInFile(const TraceFile& file, const TracePlace& place) : header_(file.header), headerBytes_(file.headerBytes)
    {
        const std::int64_t index = std::int64_t{place.row} * header_.ImageWidth + place.column;
        sample_ = header_.ImageHeaderDataOffset + index * header_.SampleBytes;
        swapped_ = header_.ByteSwap == 0 && index + header_.ImageHeaderDataOffset / kShortSamples <
                                                static_cast<std::int64_t>(PixelCount(header_));
    }

    std::optional<std::int16_t> CountIn(const File& file, std::int32_t frame) const
    {
        const std::optional<std::int64_t> record =
            FrameRecordPosition(header_, headerBytes_, static_cast<std::uint32_t>(frame));
        if (!record) return std::nullopt;
        return header_.SampleBytes == kFloatSamples ? FloatAt(file, *record) : ShortAt(file, *record);
    }

  private:
    std::optional<std::int16_t> ShortAt(const File& file, std::int64_t record) const
    {
        std::int16_t count = 0;
        if (!Read(file, record, count)) return std::nullopt;
        return Ordered(count);
    }
    std::optional<std::int16_t> FloatAt(const File& file, std::int64_t record) const
    {
        float value = 0;
        if (!Read(file, record, value)) return std::nullopt;
        return Ordered(CountOfFloat(value));
    }
    template <typename Sample>
    bool Read(const File& file, std::int64_t record, Sample& sample) const
    {
        return file.ReadAt(record + sample_, std::as_writable_bytes(std::span(&sample, 1))) == sizeof sample;
    }
    std::int16_t Ordered(std::int16_t count) const
    {
        if (swapped_) SwapDataBytes(std::as_writable_bytes(std::span(&count, 1)), 1);
        return count;
    }

    const ImageHeaderRecord& header_;
    std::int32_t headerBytes_;
    std::int64_t sample_ = 0;  // from the start of the frame's record
    bool swapped_ = false;
};

bool LiesInside(const TraceFile& file, const TracePlace& place)
{
    return place.first >= 0 && place.last >= place.first && place.row >= 0 && place.column >= 0 &&
           place.row < file.header.ImageHeight && place.column < file.header.ImageWidth;
}

std::int64_t FramesOf(const TracePlace& place)
{
    return std::int64_t{place.last} - place.first + 1;
}

// A look up from a read of many frames, ten times a second: a disk may take its time for each of them.
class Glances {
  public:
    bool GoesOn(std::int64_t frame)
    {
        if (frame % kFramesBetweenGlances != 0) return true;
        const auto now = std::chrono::steady_clock::now();
        if (now - last_ < kBetweenLooks) return true;
        last_ = now;
        return GatherGoesOn();
    }

  private:
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

TraceRead ReadPixels(const File& file, const PixelInFile& pixel, std::int32_t first, std::span<std::int16_t> counts)
{
    const Gather gather(std::ssize(counts) > kFramesOfALongRead);
    if (!GatherGoesOn()) return TraceRead::kStopped;
    Glances glances;
    for (std::int64_t i = 0; i < std::ssize(counts); ++i) {
        if (!glances.GoesOn(i)) return TraceRead::kStopped;
        const std::optional<std::int16_t> count = pixel.CountIn(file, static_cast<std::int32_t>(first + i));
        if (!count) return TraceRead::kShort;
        counts[static_cast<std::size_t>(i)] = *count;
    }
    return TraceRead::kComplete;
}

}  // namespace

std::optional<TraceFile> ReadTraceFile(std::string_view path)
{
    TraceFile chosen;
    chosen.path = path;
    chosen.headerBytes = ReadImageHeader(path, chosen.header);
    if (chosen.headerBytes < 0) return std::nullopt;
    RestoreSwappedHeader(chosen.header);
    const ImageHeaderRecord& header = chosen.header;
    if (header.SampleBytes != kShortSamples && header.SampleBytes != kFloatSamples) {
        MessageBox(hWndMain, Format("Invalid data sample size: %d bytes per sample", header.SampleBytes),
                   "Use different function to read this image file.");
        return std::nullopt;
    }
    if (!FrameRecordPosition(header, chosen.headerBytes, 0)) return RefuseHeader(path);

    const std::optional<File> file = File::Open(path, FileMode::kRead);
    const std::optional<ImageHeaderRecord> first = file ? FirstBytes(*file) : std::nullopt;
    if (!file || !first) return RefuseHeader(path);
    chosen.asRead = *first;
    if (header.SampleBytes == kFloatSamples) chosen.header.DataType = kFloatData;
    const std::int64_t frames = (file->Length() - chosen.headerBytes) / FrameRecordBytes(header);
    if (frames < 1) return RefuseHeader(path);
    chosen.header.FrameCount =
        static_cast<std::uint32_t>(std::min<std::int64_t>(frames, std::numeric_limits<std::int32_t>::max()));
    return chosen;
}

TraceRead ReadHostTrace(const TracePlace& place, std::vector<std::int16_t>& counts)
{
    const std::int64_t frames = std::max<std::int64_t>(FramesOf(place), 0);
    if (!AllocateBlock(counts, static_cast<std::size_t>(frames))) return TraceRead::kNoMemory;
    for (std::int64_t i = 0; i < frames; ++i) {
        counts[static_cast<std::size_t>(i)] =
            ReadBufferPixel(static_cast<std::int32_t>(place.first + i), place.row, place.column);
    }
    return TraceRead::kComplete;
}

TraceRead ReadFileTrace(const TraceFile& file, const TracePlace& place, std::vector<std::int16_t>& counts)
{
    counts.clear();
    if (!LiesInside(file, place)) return TraceRead::kShort;
    const std::optional<File> opened = File::Open(file.path, FileMode::kRead);
    const std::optional<ImageHeaderRecord> first = opened ? FirstBytes(*opened) : std::nullopt;
    if (!opened || !first || !IsTheSame(*first, file.asRead)) return TraceRead::kChanged;
    if (!AllocateBlock(counts, static_cast<std::size_t>(FramesOf(place)))) return TraceRead::kNoMemory;
    const TraceRead read = ReadPixels(*opened, PixelInFile(file, place), place.first, counts);
    if (read != TraceRead::kComplete) counts.clear();
    return read;
}

}  // namespace kelvo
