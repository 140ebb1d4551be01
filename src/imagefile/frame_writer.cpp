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
constexpr std::int16_t kMostSampleBytes = 4;

// Bytes before each frame's samples, as readers take them: older versions have none, whatever stands in the field.
std::int64_t FrameHeaderBytes(const ImageHeaderRecord& header)
{
    return header.HeaderVersion < kFirstVersionWithFrameHeaders ? 0 : header.ImageHeaderDataOffset;
}

std::int64_t SampleBytesOfFrame(const ImageHeaderRecord& header)
{
    return std::int64_t{header.ImageWidth} * header.ImageHeight * header.SampleBytes;
}

// Where the samples of the last frame that the header counts begin.
std::int64_t PositionOfLastFrame(const ImageHeaderRecord& header)
{
    const std::int64_t frames = header.FrameCount;
    return SampleBytesOfFrame(header) * (frames - 1) + kHeaderBytes + frames * header.ImageHeaderDataOffset;
}

bool LastFrameCanStand(const ImageHeaderRecord& header, std::int64_t fileBytes)
{
    const std::int64_t position = PositionOfLastFrame(header);
    return position >= kHeaderBytes && position <= fileBytes + kWidestGap;
}

bool DescribesFrames(const ImageHeaderRecord& header)
{
    return header.ImageWidth > 0 && header.ImageHeight > 0 && header.SampleBytes > 0 &&
           header.SampleBytes <= kMostSampleBytes && header.ImageHeaderDataOffset >= 0;
}

std::span<std::byte> BytesOf(ImageHeaderRecord& header)
{
    return std::as_writable_bytes(std::span(&header, 1));
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
    if (!writer.inPlace_ && !FileExists(path)) {
        writer.inPlace_ = File::Open(path, FileMode::kCreate);
        writer.made_ = true;
    }
    if (!writer.inPlace_) return std::nullopt;
    writer.beganEmpty_ = writer.inPlace_->Length() == 0;
    return writer;
}

std::optional<ImageHeaderRecord> FrameWriter::ReadHeader()
{
    ImageHeaderRecord header;
    if (!Contents().Seek(0) || Contents().Read(BytesOf(header)) < sizeof header) return std::nullopt;
    if (DeclaresSpiff(header)) return std::nullopt;
    // No size of a sample is one in both orders.
    headerIsNative_ = DescribesFrames(header);
    if (header.ByteSwap == 0 && !headerIsNative_) SwapHeaderBytes(BytesOf(header), kHeaderWords);
    return DescribesFrames(header) ? std::optional(header) : std::nullopt;
}

bool FrameWriter::HasPlaceFor(const ImageHeaderRecord& header)
{
    return LastFrameCanStand(header, Contents().Length());
}

// True if all 512 bytes were written.
bool FrameWriter::WriteHeader(ImageHeaderRecord header)
{
    if (header.ByteSwap == 0 && !headerIsNative_) SwapHeaderBytes(BytesOf(header), kHeaderWords);
    return Contents().Write(BytesOf(header)) == sizeof header;
}

bool FrameWriter::WriteHeaderInFront(const ImageHeaderRecord& header)
{
    return Contents().Seek(0) && WriteHeader(header) && Contents().Flush();
}

// With no frame counted, so that a file whose first frame never comes can be gone on with.
bool FrameWriter::BeginWithHeader(ImageHeaderRecord header)
{
    header.FrameCount = 0;
    return WriteHeaderInFront(header);
}

std::size_t FrameWriter::WriteCounts(const ImageHeaderRecord& header, std::span<std::int16_t> counts)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(counts);
    if (header.ByteSwap == 0) SwapDataBytes(bytes, counts.size());
    return Contents().Write(bytes);
}

bool FrameWriter::CutAt(std::int64_t position)
{
    return Contents().Length() <= position || Contents().SetLength(position);
}

bool FrameWriter::EndRecordAt(std::int64_t position)
{
    return Contents().Length() >= position || Contents().SetLength(position);
}

FrameWritten FrameWriter::WriteImage(const ImageHeaderRecord& header, std::span<std::int16_t> counts)
{
    if (!WriteHeader(header)) return {FrameFault::kNoHeader, 0};
    const std::size_t bytes = WriteCounts(header, counts);
    return {bytes == counts.size_bytes() ? FrameFault::kNone : FrameFault::kCut, bytes};
}

FrameWritten FrameWriter::WriteLastFrame(ImageHeaderRecord& header, std::span<std::int16_t> counts)
{
    if (!WriteHeader(header)) return {FrameFault::kNoHeader, 0};
    Contents().Seek(PositionOfLastFrame(header));
    const std::size_t bytes = WriteCounts(header, counts);
    if (bytes == counts.size_bytes()) return {FrameFault::kNone, bytes};
    if (header.FrameCount <= 1) return {FrameFault::kCut, bytes};
    header.FrameCount = header.FrameCount - 1;
    return {WriteHeader(header) ? FrameFault::kCut : FrameFault::kCutNoHeader, bytes};
}

FrameWritten FrameWriter::AppendFrame(ImageHeaderRecord& header, std::span<std::int16_t> counts)
{
    if (!DescribesFrames(header) || (beganEmpty_ && !BeginWithHeader(header))) {
        if (beganEmpty_) CutAt(0);
        return {FrameFault::kNoHeader, 0};
    }
    const std::int64_t recordBytes = FrameHeaderBytes(header) + SampleBytesOfFrame(header);
    const std::int64_t frames = std::max<std::int64_t>(Contents().Length() - kHeaderBytes, 0) / recordBytes;
    const std::int64_t start = kHeaderBytes + frames * recordBytes;
    if (frames >= std::numeric_limits<std::uint32_t>::max() || !CutAt(start)) return {FrameFault::kCut, 0};

    const bool placed = Contents().Seek(start + FrameHeaderBytes(header));
    const std::size_t bytes = placed ? WriteCounts(header, counts) : 0;
    if (bytes < counts.size_bytes() || !EndRecordAt(start + recordBytes) || !Contents().Flush()) {
        CutAt(start);
        return {FrameFault::kCut, bytes};
    }
    if (CountFrames(header, static_cast<std::uint32_t>(frames + 1))) return {FrameFault::kNone, bytes};
    CutAt(start);
    return {FrameFault::kNotCounted, bytes};
}

// Both headers, the file's and the one in memory, or neither.
bool FrameWriter::CountFrames(ImageHeaderRecord& header, std::uint32_t frames)
{
    ImageHeaderRecord former;
    if (!Contents().Seek(0) || Contents().Read(BytesOf(former)) < sizeof former) return false;
    ImageHeaderRecord counted = header;
    counted.FrameCount = frames;
    if (!WriteHeaderInFront(counted)) {
        if (Contents().Seek(0)) Contents().Write(BytesOf(former));
        return false;
    }
    header = counted;
    return true;
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
    if (inPlace_ && beganEmpty_) CutAt(0);
    const bool made = made_ && FileExists(path_);
    own_.reset();
    inPlace_.reset();
    if (made) DeleteFileNamed(path_);
}

}  // namespace kelvo
