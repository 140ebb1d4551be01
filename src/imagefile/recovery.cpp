#include "imagefile/recovery.h"

#include "imagefile/crc32c.h"
#include "imagefile/sequence_file.h"
#include "platform/memory.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <utility>

namespace kelvo {

namespace {

RecoveryReport Failed(std::string why)
{
    RecoveryReport report;
    report.why = std::move(why);
    return report;
}

// What a journal lost, told by the frame itself.
FrameRecord RecordFromFrame(std::span<const std::byte> frame, std::size_t headerBytes)
{
    FrameRecord record = {.number = -1, .flags = kRecoveredFrame};
    if (headerBytes == sizeof(FrameHeaderRecord)) {
        FrameHeaderRecord header;
        std::memcpy(&header, frame.data(), sizeof header);
        record.number = header.AllFramesNum;
        record.integrationMs = header.FrameIntegrationMsec;
    }
    record.pixelCrc = Crc32c(frame.subspan(headerBytes));
    return record;
}

// A head for frames whose own is lost.
FramesHead PlainHead(const SequenceFile& sequence)
{
    FramesHead head;
    head.columns = static_cast<std::uint32_t>(sequence.Header().ImageWidth);
    head.rows = static_cast<std::uint32_t>(sequence.Header().ImageHeight);
    head.pixelBytes =
        static_cast<std::uint32_t>(sequence.FrameBytes() - static_cast<std::int64_t>(sequence.HeaderBytesOfFrame()));
    return head;
}

// The records against the frames, each with each: a frame whose own is missing or broken gets one. Why it couldn't be
// done, or empty.
std::string CheckFrames(SequenceFile& sequence, FramesFile& journal, RecoveryReport& report,
                        const RecoveryProgress& progress)
{
    constexpr const char* kUnreadable = "its frames can't be read";
    if (sequence.Frames() == 0) return {};  // no memory for a frame that isn't there
    std::vector<std::byte> frame;
    if (!AllocateBlock(frame, static_cast<std::size_t>(sequence.FrameBytes()))) return kUnreadable;
    for (std::int64_t i = 0; i < sequence.Frames(); ++i) {
        if (progress && !progress(i, sequence.Frames())) return "it was stopped";
        if (!sequence.ReadFrame(i, frame)) return kUnreadable;
        const FrameRecord seen = RecordFromFrame(frame, sequence.HeaderBytesOfFrame());
        const auto place = static_cast<std::size_t>(i);
        if (place >= journal.records.size()) journal.records.emplace_back();
        FrameRecord& record = journal.records[place];
        if (!IsWhole(record)) {
            record = seen;
            ++report.recordsMade;
        } else if (record.pixelCrc != seen.pixelCrc) {
            report.badFrames.push_back(i);
        }
    }
    return {};
}

bool FitsSequence(const FramesHead& head, const SequenceFile& sequence)
{
    const FramesHead own = PlainHead(sequence);
    return head.columns == own.columns && head.rows == own.rows && head.pixelBytes == own.pixelBytes;
}

// What is there of the journal, its records no more than the frames.
FramesFile JournalFor(const SequenceFile& sequence, std::string_view path, RecoveryReport& report)
{
    FramesFile journal = SalvageFramesFile(FramesPathOf(path));
    report.hasJournal = journal.fault != FramesFault::kNotOpened;
    report.wasClosed = journal.closing.has_value();
    report.journalWasDamaged = journal.fault == FramesFault::kNoJournal || journal.fault == FramesFault::kDamaged;
    if (report.journalWasDamaged) {
        journal = {};
        journal.head = PlainHead(sequence);
    }
    const auto frames = static_cast<std::size_t>(sequence.Frames());
    if (journal.records.size() > frames) {
        report.recordsDropped = static_cast<std::int64_t>(journal.records.size() - frames);
        journal.records.resize(frames);
    }
    return journal;
}

bool JournalNeedsWork(const FramesFile& journal, const RecoveryReport& report)
{
    if (!report.hasJournal) return false;
    return report.journalWasDamaged || report.recordsDropped + report.recordsMade + journal.bytesBehind > 0 ||
           !journal.closing || journal.closing->number != report.frames;
}

bool WriteJournal(std::string_view path, const FramesFile& journal, const RecoveryReport& report)
{
    const std::string journalPath = FramesPathOf(path);
    if (report.journalWasDamaged && !CopyFileTo(journalPath, journalPath + ".damaged", false)) return false;
    FrameRecord closing = journal.closing.value_or(ClosingRecord(0, EndOfRecording::kRecovered));
    closing.number = report.frames;
    return ReplaceFramesFile(journalPath, journal.head, journal.records, closing);
}

}  // namespace

RecoveryReport RecoverSequence(std::string_view path, bool dryRun, const RecoveryProgress& progress)
{
    std::optional<SequenceFile> sequence = SequenceFile::Open(path, dryRun ? FileMode::kRead : FileMode::kReadWrite);
    if (!sequence) return Failed(FileExists(path) ? "it isn't a sequence that can be repaired" : "it can't be opened");
    if (!sequence->Lock()) return Failed("it is being recorded");

    RecoveryReport report;
    report.frames = sequence->Frames();
    report.bytesCut = sequence->BytesBehind();
    report.headerCount = sequence->Header().FrameCount;
    FramesFile journal = JournalFor(*sequence, path, report);
    if (journal.fault == FramesFault::kNoMemory) return Failed("there is not enough memory");
    if (journal.fault == FramesFault::kNewer) return Failed("its journal is of a later version");
    if (report.hasJournal && !FitsSequence(journal.head, *sequence)) {
        return Failed("its journal belongs to another sequence");
    }
    if (report.hasJournal) {
        std::string why = CheckFrames(*sequence, journal, report, progress);
        if (!why.empty()) return Failed(std::move(why));
    }
    report.gaps = GapsOf(journal.records);

    const bool sequenceNeedsWork = report.bytesCut > 0 || report.headerCount != report.frames;
    const bool journalNeedsWork = JournalNeedsWork(journal, report);
    report.outcome = sequenceNeedsWork || journalNeedsWork ? Recovery::kRepaired : Recovery::kClean;
    report.diskRefused = !dryRun && ((sequenceNeedsWork && !sequence->EndWithLastFrame()) ||
                                     (journalNeedsWork && !WriteJournal(path, journal, report)));
    if (!report.badFrames.empty()) report.why = "frames don't fit their checksums";
    if (report.diskRefused) report.why = "the disk refuses the repair";
    if (!report.why.empty()) report.outcome = Recovery::kFailed;
    return report;
}

}  // namespace kelvo
