#include "record/save_journal.h"

#include "imagefile/crc32c.h"
#include "platform/files.h"
#include "record/recording_head.h"

#include <string>
#include <utility>

namespace kelvo {

namespace {

bool TellsOf(const FramesHead& head, const FramesHead& other)
{
    return head.columns == other.columns && head.rows == other.rows && head.pixelBytes == other.pixelBytes;
}

}  // namespace

std::optional<SaveJournal> SaveJournal::New(std::string_view sequencePath, bool corrected)
{
    const std::string path = FramesPathOf(sequencePath);
    DeleteFileNamed(path);
    FramesHead head = HeadOfRecording();
    head.SetText(frames_key::kPixels, corrected ? kCorrectedPixels : kRawPixels);
    std::optional<FramesFileWriter> file = FramesFileWriter::Create(path, head);
    return file ? std::optional(SaveJournal(std::move(*file), 0)) : std::nullopt;
}

std::optional<SaveJournal> SaveJournal::Continue(std::string_view sequencePath, std::int64_t frames)
{
    const std::string path = FramesPathOf(sequencePath);
    const FramesFile journal = ReadFramesFile(path);
    if (journal.fault != FramesFault::kNone || !TellsOf(journal.head, HeadOfRecording())) return std::nullopt;
    if (std::ssize(journal.records) != frames) return std::nullopt;
    std::optional<FramesFileWriter> file = FramesFileWriter::Continue(path, journal);
    return file ? std::optional(SaveJournal(std::move(*file), frames)) : std::nullopt;
}

void SaveJournal::Missing::AddLosses(const CapturedFrame& frame)
{
    byTransport += frame.lostByTransport;
    byBoard += frame.lostByBoard;
    byRing += frame.lostByRing;
}

FrameRecord SaveJournal::WithMissing(FrameRecord record, const Missing& missing)
{
    record.lostByTransport = RecordField(missing.byTransport);
    record.lostByBoard = RecordField(missing.byBoard);
    record.lostByRing = RecordField(missing.byRing);
    record.passedOver = RecordField(missing.passedOver);
    return record;
}

bool SaveJournal::Append(const CapturedFrame& taken, std::span<const std::int16_t> pixels, float integrationMs)
{
    missing_.AddLosses(taken);
    const bool isFirstOfRun = framesBefore_ > 0 && file_.Records() == framesBefore_;
    const FrameRecord record = {.number = taken.stamp.number,
                                .monotonicNs = taken.stamp.monotonicNs,
                                .utcNs = taken.stamp.utcNs,
                                .integrationMs = integrationMs,
                                .flags = isFirstOfRun ? std::uint32_t{kFirstOfRun} : 0,
                                .triggers = static_cast<std::uint32_t>(taken.stamp.triggers),
                                .pixelCrc = Crc32c(std::as_bytes(pixels))};
    if (!file_.Append(WithMissing(record, missing_))) return false;
    beforeLast_ = std::exchange(missing_, {});
    return true;
}

// The frame itself is missing then, and no cause stands for it: its number alone tells.
void SaveJournal::TakeBack()
{
    file_.DropLast(1);
    missing_ = beforeLast_;
}

void SaveJournal::PassedOver(const CapturedFrame& frame)
{
    missing_.AddLosses(frame);
    ++missing_.passedOver;
}

bool SaveJournal::Close()
{
    return file_.Close(WithMissing(ClosingRecord(file_.Records(), EndOfRecording::kStopped), missing_));
}

}  // namespace kelvo
