#include "imagefile/stored_frames.h"

#include "imagefile/frame_file.h"
#include "platform/memory.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace kelvo {

namespace {

constexpr std::int16_t kShortSamples = 2;
constexpr std::int16_t kFloatSamples = 4;
constexpr double kNsPerSecond = 1e9;

}  // namespace

std::optional<StoredFrames> StoredFrames::Open(std::string_view path, std::string& why,
                                               const ForeignFrames::GoesOn& goesOn)
{
    if (const std::optional<ForeignKind> kind = ForeignKindOf(path)) {
        std::optional<ForeignFrames> foreign = ForeignFrames::Open(path, *kind, why, goesOn);
        if (!foreign) return std::nullopt;
        return StoredFrames(std::string(path), std::move(*foreign));
    }
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) {
        why = "can't be opened";
        return std::nullopt;
    }
    StoredFrames frames(std::string(path), std::move(*file));
    if (!frames.ReadHead(why)) return std::nullopt;
    frames.ReadJournal();
    return frames;
}

StoredFrames::StoredFrames(std::string path, ForeignFrames foreign)
    : path_(std::move(path)), foreign_(std::move(foreign)), header_(foreign_->Header()), frames_(foreign_->Frames())
{
}

bool StoredFrames::ReadHead(std::string& why)
{
    headerBytes_ = ReadHeaderOf(ImageFile(), header_);
    if (headerBytes_ > 0) RestoreSwappedHeader(header_);
    const bool hasSamples = header_.SampleBytes == kShortSamples || header_.SampleBytes == kFloatSamples;
    const bool isImage = headerBytes_ > 0 && hasSamples && header_.ImageHeaderDataOffset >= 0 &&
                         PixelCount(header_) > 0 && FrameRecordPosition(header_, headerBytes_, 0);
    if (!isImage) {
        why = "isn't an image file";
        return false;
    }
    frames_ = std::clamp<std::int64_t>((ImageFile().Length() - headerBytes_) / FrameRecordBytes(header_), 0,
                                       std::numeric_limits<std::int32_t>::max());
    header_.FrameCount = static_cast<std::uint32_t>(frames_);
    if (frames_ == 0) why = "holds no whole frame";
    return frames_ > 0;
}

void StoredFrames::ReadJournal()
{
    const std::string path = FramesPathOf(path_);
    FramesFile journal = ReadFramesFile(path);
    const bool isItsOwn = journal.head.columns == Columns() && journal.head.rows == Rows() &&
                          journal.head.pixelBytes == Pixels() * static_cast<std::size_t>(header_.SampleBytes);
    switch (journal.fault) {
        case FramesFault::kNone:
            if (!isItsOwn) journalFault_ = "is of another sequence";
            break;
        case FramesFault::kNotOpened:
            if (NameIsTaken(path)) journalFault_ = "can't be read";
            return;
        case FramesFault::kNoJournal:
            journalFault_ = "is none";
            break;
        case FramesFault::kNewer:
            journalFault_ = "is of a later version";
            break;
        case FramesFault::kDamaged:
            journalFault_ = "is damaged";
            break;
        case FramesFault::kNoMemory:
            journalFault_ = "needs more memory than is left";
            break;
    }
    if (journalFault_.empty()) journal_ = std::move(journal);
}

bool StoredFrames::AreCorrected() const
{
    const std::string told = journal_ ? journal_->head.Text(frames_key::kPixels) : std::string();
    return told.empty() ? BearsCalibration(header_) : told == kCorrectedPixels;
}

bool StoredFrames::AreToldRaw() const
{
    return journal_ && journal_->head.Text(frames_key::kPixels) == kRawPixels;
}

const FrameRecord* StoredFrames::RecordOf(std::int64_t frame) const
{
    const bool isTold = journal_ && frame >= 0 && frame < std::ssize(journal_->records);
    return isTold ? &journal_->records[static_cast<std::size_t>(frame)] : nullptr;
}

std::optional<double> StoredFrames::SecondsOf(std::int64_t frame) const
{
    const FrameRecord* const first = RecordOf(0);
    const FrameRecord* const record = RecordOf(frame);
    const bool areTimed = first != nullptr && record != nullptr && first->monotonicNs != 0 && record->monotonicNs != 0;
    if (areTimed) return static_cast<double>(record->monotonicNs - first->monotonicNs) / kNsPerSecond;
    const double rate = header_.FrameRate;
    if (!(rate > 0)) return std::nullopt;
    return static_cast<double>(frame) / rate;
}

bool StoredFrames::ReadSamples(std::int64_t frame, std::span<std::int16_t> counts, std::string& why)
{
    const std::optional<std::int64_t> record =
        FrameRecordPosition(header_, headerBytes_, static_cast<std::uint32_t>(frame));
    const std::span<std::byte> bytes = std::as_writable_bytes(counts.first(Pixels()));
    const bool isRead = record && ImageFile().ReadAt(*record + header_.ImageHeaderDataOffset, bytes) == bytes.size();
    if (!isRead) why = "can't be read";
    return isRead;
}

bool StoredFrames::ReadCounts(std::int64_t frame, std::span<std::int16_t> counts, std::string& why)
{
    if (frame < 0 || frame >= frames_ || counts.size() < Pixels()) {
        why = "has no such frame";
        return false;
    }
    if (foreign_) return foreign_->ReadCounts(frame, counts, why);
    if (header_.SampleBytes == kShortSamples && header_.ByteSwap != 0) return ReadSamples(frame, counts, why);
    const bool holdsFloats = header_.SampleBytes == kFloatSamples;
    std::vector<std::uint8_t>& record = holdsFloats ? floats_ : block_;
    FrameRead read = ReadFrameRecord(ImageFile(), header_, headerBytes_, static_cast<std::uint32_t>(frame), record);
    if (holdsFloats && read == FrameRead::kComplete && block_.size() < record.size() &&
        !AllocateBlock(block_, record.size())) {
        read = FrameRead::kNoMemory;
    }
    if (read != FrameRead::kComplete) {
        why = read == FrameRead::kNoMemory ? "needs more memory than is left" : "can't be read";
        return false;
    }
    const auto before = static_cast<std::size_t>(header_.ImageHeaderDataOffset);
    if (holdsFloats) FloatRecordToCounts(record, header_, block_);
    if (header_.ByteSwap == 0) SwapRecordWords(block_, header_);
    std::memcpy(counts.data(), block_.data() + before, Pixels() * sizeof(std::int16_t));
    return true;
}

}  // namespace kelvo
