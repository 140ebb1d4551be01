#include "imagefile/sequence_file.h"

#include "imagefile/crc32c.h"
#include "imagefile/frames_file.h"
#include "platform/clock.h"
#include "platform/memory.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int64_t kHeaderBytes = sizeof(ImageHeaderRecord);
constexpr std::size_t kHeaderWords = sizeof(ImageHeaderRecord) / 2;
constexpr std::int16_t kIntegerBytes = 2;
constexpr std::int16_t kFloatBytes = 4;

std::span<std::byte> BytesOf(ImageHeaderRecord& header)
{
    return std::as_writable_bytes(std::span(&header, 1));
}

std::int64_t BytesBefore(const ImageHeaderRecord& header)
{
    return header.HeaderVersion < kFirstVersionWithFrameHeaders ? 0 : header.ImageHeaderDataOffset;
}

bool DescribesFrames(const ImageHeaderRecord& header)
{
    const bool samples = header.SampleBytes == kIntegerBytes || header.SampleBytes == kFloatBytes;
    const std::int64_t before = BytesBefore(header);
    return header.ImageWidth > 0 && header.ImageHeight > 0 && samples &&
           (before == 0 || before == sizeof(FrameHeaderRecord));
}

}  // namespace

std::optional<SequenceFile> SequenceFile::Open(std::string_view path, FileMode mode)
{
    std::optional<File> file = File::Open(path, mode);
    if (!file) return std::nullopt;
    ImageHeaderRecord header;
    if (file->Read(BytesOf(header)) < sizeof header || DeclaresSpiff(header)) return std::nullopt;
    const bool swapped = header.ByteSwap == 0 && !DescribesFrames(header);
    if (swapped) SwapHeaderBytes(BytesOf(header), kHeaderWords);
    if (!DescribesFrames(header)) return std::nullopt;
    return SequenceFile(std::move(*file), header, swapped);
}

SequenceFile::SequenceFile(File file, const ImageHeaderRecord& header, bool swapped)
    : file_(std::move(file)),
      header_(header),
      swapped_(swapped),
      before_(BytesBefore(header)),
      frameBytes_(before_ + std::int64_t{header.ImageWidth} * header.ImageHeight * header.SampleBytes)
{
    const std::int64_t bytes = std::max<std::int64_t>(file_.Length() - kHeaderBytes, 0);
    frames_ = bytes / frameBytes_;
    behind_ = bytes % frameBytes_;
}

bool SequenceFile::ReadFrame(std::int64_t index, std::span<std::byte> block)
{
    const auto bytes = static_cast<std::size_t>(frameBytes_);
    if (index < 0 || index >= frames_ || block.size() < bytes) return false;
    return file_.Seek(kHeaderBytes + index * frameBytes_) && file_.Read(block.first(bytes)) == bytes;
}

ImageHeaderRecord SequenceFile::HeaderForFile(std::int64_t frames) const
{
    ImageHeaderRecord header = header_;
    header.FrameCount = static_cast<std::uint32_t>(frames);
    if (swapped_) SwapHeaderBytes(BytesOf(header), kHeaderWords);
    return header;
}

bool SequenceFile::EndWithLastFrame()
{
    ImageHeaderRecord header = HeaderForFile(frames_);
    if (behind_ > 0 && !file_.SetLength(kHeaderBytes + frames_ * frameBytes_)) return false;
    behind_ = 0;
    return file_.Seek(0) && file_.Write(BytesOf(header)) == sizeof header && file_.Flush();
}

bool RenewChecksums(std::string_view path, std::int64_t first, std::int64_t count, std::string_view pixels)
{
    const std::string journalPath = FramesPathOf(path);
    FramesFile journal = ReadFramesFile(journalPath);
    if (journal.fault == FramesFault::kNotOpened) return true;
    std::optional<SequenceFile> sequence = SequenceFile::Open(path, FileMode::kRead);
    std::vector<std::byte> frame;
    if (journal.fault != FramesFault::kNone || !sequence) return false;
    if (!AllocateBlock(frame, static_cast<std::size_t>(sequence->FrameBytes()))) return false;
    const std::int64_t end = std::min({first + count, std::ssize(journal.records), sequence->Frames()});
    for (std::int64_t i = first; i < end; ++i) {
        if (!sequence->ReadFrame(i, frame)) return false;
        const std::span<const std::byte> values = std::span(frame).subspan(sequence->HeaderBytesOfFrame());
        journal.records[static_cast<std::size_t>(i)].pixelCrc = Crc32c(values);
    }
    const bool all = first == 0 && end == std::ssize(journal.records);
    if (all && !pixels.empty()) journal.head.SetText(frames_key::kPixels, pixels);
    return ReplaceFramesFile(journalPath, journal.head, journal.records, journal.closing);
}

bool IsHeldNow(std::string_view path)
{
    std::optional<File> file = File::Open(path, FileMode::kRead);
    return file && !file->Lock();
}

bool IsBeingRecorded(std::string_view path)
{
    // Another one that only asks holds the file for a moment.
    constexpr int kAttempts = 10;
    constexpr std::int64_t kPauseMs = 20;
    for (int i = 0; i < kAttempts; ++i) {
        if (!IsHeldNow(path)) return false;
        DelayMs(kPauseMs);
    }
    return true;
}

}  // namespace kelvo
