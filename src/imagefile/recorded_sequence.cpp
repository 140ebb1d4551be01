#include "imagefile/recorded_sequence.h"

#include "imagefile/crc32c.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr std::int64_t kNsPerMs = 1'000'000;
constexpr std::uint16_t kNativeOrder = 0xFFFF;
constexpr std::int64_t kHeaderBytes = sizeof(ImageHeaderRecord);

constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

ImageHeaderRecord AsRecorded(ImageHeaderRecord header)
{
    header.ByteSwap = kNativeOrder;  // the frames are native: a header that isn't would make them unreadable
    header.ImageHeaderDataOffset = sizeof(FrameHeaderRecord);
    header.FramesAveraged = 1;
    header.FrameCount = 0;
    return header;
}

std::span<const std::byte> BytesOf(const ImageHeaderRecord& header)
{
    return std::as_bytes(std::span(&header, 1));
}

template <std::size_t Count>
const char* NameOf(const char* const (&names)[Count], int index)
{
    return names[static_cast<std::size_t>(std::clamp(index, 0, static_cast<int>(Count) - 1))];
}

}  // namespace

std::array<char, 30> FrameTimeText(std::int64_t utcNs)
{
    const std::int64_t fraction = (utcNs % kNsPerSecond + kNsPerSecond) % kNsPerSecond;
    const auto seconds = static_cast<std::time_t>((utcNs - fraction) / kNsPerSecond);
    std::tm local{};
    localtime_r(&seconds, &local);
    std::array<char, 30> text{};
    // A year of more digits is cut, as the field is.
    std::array<char, 80> whole{};
    std::snprintf(whole.data(), whole.size(), "%s %s %2d %02d:%02d:%02d.%03d %04d\n", NameOf(kDays, local.tm_wday),
                  NameOf(kMonths, local.tm_mon), local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                  static_cast<int>(fraction / kNsPerMs), local.tm_year + 1900);
    std::copy_n(whole.begin(), text.size() - 1, text.begin());
    return text;
}

FrameHeaderRecord FrameHeaderOf(const FrameRecord& record, std::int64_t index)
{
    FrameHeaderRecord header;
    header.FrameTimeText = FrameTimeText(record.utcNs);
    header.FrameNum = static_cast<std::int32_t>(index);
    header.AllFramesNum = static_cast<std::int32_t>(record.number);
    header.FrameIntegrationMsec = record.integrationMs;
    return header;
}

std::optional<SequenceWriter> SequenceWriter::Create(std::string_view path, const ImageHeaderRecord& header,
                                                     const FramesHead& head)
{
    std::optional<FramesFileWriter> journal = FramesFileWriter::Create(FramesPathOf(path), head);
    if (!journal) return std::nullopt;
    std::optional<File> file = File::Open(path, FileMode::kNew);
    const ImageHeaderRecord own = AsRecorded(header);
    if (file && file->Lock() && file->Write(BytesOf(own)) == sizeof own) {
        return SequenceWriter(std::string(path), std::move(*file), std::move(*journal), own);
    }
    if (file) DeleteFileNamed(path);
    DeleteFileNamed(FramesPathOf(path));
    return std::nullopt;
}

SequenceWriter::SequenceWriter(std::string path, File file, FramesFileWriter journal, const ImageHeaderRecord& header)
    : path_(std::move(path)),
      file_(std::move(file)),
      journal_(std::move(journal)),
      header_(header),
      frameBytes_(FrameRecordBytes(header))
{
}

bool SequenceWriter::CutToFrames()
{
    return file_.SetLength(Bytes()) && file_.Seek(Bytes());
}

bool SequenceWriter::Append(const FrameRecord& record, std::span<const std::int16_t> pixels)
{
    const std::span<const std::byte> bytes = std::as_bytes(pixels);
    FrameRecord told = record;
    told.pixelCrc = Crc32c(bytes);
    if (!journal_.Append(told)) return false;
    const FrameHeaderRecord header = FrameHeaderOf(record, frames_);
    if (file_.Write(std::as_bytes(std::span(&header, 1)), bytes) == static_cast<std::size_t>(frameBytes_)) {
        ++frames_;
        return true;
    }
    CutToFrames();
    journal_.DropLast(1);
    return false;
}

bool SequenceWriter::DropLast()
{
    if (frames_ > 0) --frames_;
    const bool cut = CutToFrames();
    return journal_.DropLast(1) && cut;
}

bool SequenceWriter::SyncData()
{
    const bool frames = file_.SyncData();
    return journal_.SyncData() && frames;
}

bool SequenceWriter::Close(const FrameRecord& closing)
{
    header_.FrameCount = static_cast<std::uint32_t>(frames_);
    const bool counted = file_.Seek(0) && file_.Write(BytesOf(header_)) == kHeaderBytes;
    const bool synced = file_.SyncData();
    // The journal last: a closed one says that all before it has arrived.
    const bool closed = journal_.Close(closing);
    return file_.Close() && counted && synced && closed;
}

}  // namespace kelvo
