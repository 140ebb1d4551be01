#include "imagefile/frame_writer.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kelvo {

namespace {

constexpr auto kHeaderBytes = std::int64_t{sizeof(ImageHeaderRecord)};
constexpr std::size_t kHeaderWords = sizeof(ImageHeaderRecord) / 2;
// A frame may lie behind others that a full disk has swallowed, but not anywhere.
constexpr std::int64_t kWidestGap = std::numeric_limits<std::int32_t>::max();

// Frames of a record's size behind the header.
std::int64_t WholeFrames(const ImageHeaderRecord& header, std::int64_t fileBytes)
{
    const std::int64_t behindHeader = fileBytes - kHeaderBytes;
    const std::int64_t recordBytes = FrameRecordBytes(header);
    return recordBytes > 0 && behindHeader > 0 ? behindHeader / recordBytes : 0;
}

// Where the samples of the last frame that the header counts begin.
std::int64_t PositionOfLastFrame(const ImageHeaderRecord& header)
{
    const std::int64_t frames = header.FrameCount;
    const std::int64_t frameBytes = std::int64_t{header.ImageWidth} * header.ImageHeight * header.SampleBytes;
    return frameBytes * (frames - 1) + kHeaderBytes + frames * header.ImageHeaderDataOffset;
}

bool LastFrameCanStand(const ImageHeaderRecord& header, std::int64_t fileBytes)
{
    const std::int64_t position = PositionOfLastFrame(header);
    return position >= kHeaderBytes && position <= fileBytes + kWidestGap;
}

bool DescribesFrames(const ImageHeaderRecord& header)
{
    const auto within = [](std::int32_t value, std::int32_t most) { return value > 0 && value <= most; };
    return within(header.ImageWidth, kMaxImageSide) && within(header.ImageHeight, kMaxImageSide) &&
           within(header.SampleBytes, 4) && header.ImageHeaderDataOffset >= 0;
}

}  // namespace

std::optional<FrameWriter> FrameWriter::Create(std::string_view path)
{
    FrameWriter writer(path);
    writer.replacing_ = FileExists(path);
    writer.own_ = NewFile::Begin(path);
    return writer.own_ ? std::optional(std::move(writer)) : std::nullopt;
}

std::optional<FrameWriter> FrameWriter::OpenInPlace(std::string_view path)
{
    FrameWriter writer(path);
    writer.inPlace_ = File::Open(path, FileMode::kReadWrite);
    if (!writer.inPlace_ && !FileExists(path)) writer.inPlace_ = File::Open(path, FileMode::kCreate);
    if (!writer.inPlace_) return std::nullopt;
    writer.beganEmpty_ = writer.inPlace_->Length() == 0;
    return writer;
}

std::optional<ImageHeaderRecord> FrameWriter::HeaderWithOneMore()
{
    ImageHeaderRecord header;
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&header, 1));
    if (!Contents().Seek(0) || Contents().Read(bytes) < bytes.size() || !DescribesFrames(header)) return std::nullopt;
    const std::int64_t frames = std::max<std::int64_t>(header.FrameCount, WholeFrames(header, Contents().Length())) + 1;
    if (frames > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    header.FrameCount = static_cast<std::uint32_t>(frames);
    return HasPlaceFor(header) ? std::optional(header) : std::nullopt;
}

bool FrameWriter::HasPlaceFor(const ImageHeaderRecord& header)
{
    return LastFrameCanStand(header, Contents().Length());
}

// True if all 512 bytes were written.
bool FrameWriter::WriteHeader(ImageHeaderRecord header)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&header, 1));
    if (header.ByteSwap == 0) SwapHeaderBytes(bytes, kHeaderWords);
    return Contents().Write(bytes) == bytes.size();
}

std::size_t FrameWriter::WriteCounts(const ImageHeaderRecord& header, std::span<std::int16_t> counts)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(counts);
    if (header.ByteSwap == 0) SwapDataBytes(bytes, counts.size());
    return Contents().Write(bytes);
}

FrameWritten FrameWriter::WriteImage(const ImageHeaderRecord& header, std::span<std::int16_t> counts)
{
    if (!WriteHeader(header)) return {FrameFault::kNoHeader, 0};
    const std::size_t bytes = WriteCounts(header, counts);
    return {bytes == counts.size_bytes() ? FrameFault::kNone : FrameFault::kCut, bytes};
}

FrameWritten FrameWriter::AppendFrame(ImageHeaderRecord& header, std::span<std::int16_t> counts)
{
    if (!Contents().Seek(0) || !WriteHeader(header)) return {FrameFault::kNoHeader, 0};
    Contents().Seek(PositionOfLastFrame(header));
    const std::size_t bytes = WriteCounts(header, counts);
    if (bytes == counts.size_bytes()) return {FrameFault::kNone, bytes};
    if (header.FrameCount <= 1) return {FrameFault::kCut, bytes};
    header.FrameCount = header.FrameCount - 1;
    return {WriteHeader(header) ? FrameFault::kCut : FrameFault::kCutNoHeader, bytes};
}

bool FrameWriter::Keep()
{
    const bool kept = own_ ? own_->Keep() : inPlace_ && inPlace_->Close();
    own_.reset();
    inPlace_.reset();
    return kept;
}

void FrameWriter::KeepCut()
{
    if (own_ && !replacing_) own_->Keep();
    own_.reset();
    inPlace_.reset();
}

void FrameWriter::Drop()
{
    const bool began = inPlace_ && beganEmpty_ && FileExists(path_);
    own_.reset();
    inPlace_.reset();
    if (began) DeleteFileNamed(path_);
}

}  // namespace kelvo
