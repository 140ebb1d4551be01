#include "batch/recover_command.h"

#include "batch/batch_arguments.h"
#include "imagefile/crc32c.h"
#include "imagefile/sequence_file.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "platform/transcript.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

namespace kelvo {

namespace {

constexpr std::string_view kWord = "recover";

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

// The records against the frames, each with each: a frame whose own is missing or broken gets one.
bool CheckFrames(SequenceFile& sequence, FramesFile& journal, RecoveryReport& report)
{
    if (sequence.Frames() == 0) return true;  // no memory for a frame that isn't there
    std::vector<std::byte> frame;
    if (!AllocateBlock(frame, static_cast<std::size_t>(sequence.FrameBytes()))) return false;
    for (std::int64_t i = 0; i < sequence.Frames(); ++i) {
        if (!sequence.ReadFrame(i, frame)) return false;
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
    return true;
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

// ---- what is told

std::string GapText(const FrameGap& gap)
{
    struct Cause {
        std::int64_t frames;
        const char* text;
    };
    const Cause causes[] = {{gap.lostByBoard, "lost by the board"},
                            {gap.lostByRing, "lost by the ring"},
                            {gap.passedOver, "passed over"},
                            {gap.unexplained, "unexplained"}};
    std::string text = Format("  before frame %lld: %lld missing", static_cast<long long>(gap.beforeFrame),
                              static_cast<long long>(gap.Missing()));
    if (gap.firstNumber >= 0) text += Format(" from number %lld", static_cast<long long>(gap.firstNumber));
    for (const Cause& cause : causes) {
        if (cause.frames > 0) text += Format(", %lld %s", static_cast<long long>(cause.frames), cause.text);
    }
    return text + '\n';
}

std::string OutcomeText(Recovery outcome, bool dryRun)
{
    switch (outcome) {
        case Recovery::kClean:
            return "clean";
        case Recovery::kRepaired:
            return dryRun ? "to be repaired" : "repaired";
        case Recovery::kFailed:
            break;
    }
    return "failed";
}

std::string TextOf(const std::string& path, const RecoveryReport& report, bool dryRun)
{
    std::string text = path + ": " + OutcomeText(report.outcome, dryRun);
    if (!report.why.empty()) text += ": " + report.why;
    text += Format("; %lld frames", static_cast<long long>(report.frames));
    if (report.bytesCut > 0) {
        text += Format("; part of a frame, %lld bytes, cut off", static_cast<long long>(report.bytesCut));
    }
    if (report.headerCount != report.frames) {
        text += Format("; the header counted %lld", static_cast<long long>(report.headerCount));
    }
    if (report.recordsDropped > 0) {
        text += Format("; %lld records without a frame dropped", static_cast<long long>(report.recordsDropped));
    }
    if (report.recordsMade > 0) {
        text += Format("; %lld records made from their frames", static_cast<long long>(report.recordsMade));
    }
    if (!report.hasJournal) text += "; it has no journal";
    if (report.journalWasDamaged) text += "; the journal was damaged and is kept beside";
    if (report.hasJournal && !report.wasClosed && !report.journalWasDamaged) text += "; the journal wasn't closed";
    text += '\n';
    for (const std::int64_t frame : report.badFrames) {
        text += Format("  frame %lld doesn't fit its checksum\n", static_cast<long long>(frame));
    }
    for (const FrameGap& gap : report.gaps) text += GapText(gap);
    return text;
}

std::string JsonOf(const std::string& path, const RecoveryReport& report)
{
    const auto number = [](std::int64_t value) { return Format("%lld", static_cast<long long>(value)); };
    const auto truth = [](bool value) { return std::string(value ? "true" : "false"); };
    constexpr std::array kOutcomes = {"clean", "repaired", "failed"};
    std::string bad;
    for (const std::int64_t frame : report.badFrames) bad += (bad.empty() ? "" : ",") + number(frame);
    std::string gaps;
    for (const FrameGap& gap : report.gaps) {
        gaps += (gaps.empty() ? "{" : ",{") + ("\"before\":" + number(gap.beforeFrame)) +
                ",\"first\":" + number(gap.firstNumber) + ",\"missing\":" + number(gap.Missing()) +
                ",\"board\":" + number(gap.lostByBoard) + ",\"ring\":" + number(gap.lostByRing) +
                ",\"passed_over\":" + number(gap.passedOver) + ",\"unexplained\":" + number(gap.unexplained) + "}";
    }
    return "{\"file\":" + JsonString(ToUtf8(path)) + ",\"outcome\":\"" +
           kOutcomes[static_cast<std::size_t>(report.outcome)] + "\",\"why\":" + JsonString(report.why) +
           ",\"frames\":" + number(report.frames) + ",\"bytes_cut\":" + number(report.bytesCut) +
           ",\"header_count\":" + number(report.headerCount) + ",\"records_dropped\":" + number(report.recordsDropped) +
           ",\"records_made\":" + number(report.recordsMade) + ",\"journal\":" + truth(report.hasJournal) +
           ",\"closed\":" + truth(report.wasClosed) + ",\"journal_damaged\":" + truth(report.journalWasDamaged) +
           ",\"bad_frames\":[" + bad + "],\"gaps\":[" + gaps + "]}\n";
}

}  // namespace

RecoveryReport RecoverSequence(std::string_view path, bool dryRun)
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
    if (report.hasJournal && !FitsSequence(journal.head, *sequence)) {
        return Failed("its journal belongs to another sequence");
    }
    if (report.hasJournal && !CheckFrames(*sequence, journal, report)) return Failed("its frames can't be read");
    report.gaps = GapsOf(journal.records);

    const bool sequenceNeedsWork = report.bytesCut > 0 || report.headerCount != report.frames;
    const bool journalNeedsWork = JournalNeedsWork(journal, report);
    report.outcome = sequenceNeedsWork || journalNeedsWork ? Recovery::kRepaired : Recovery::kClean;
    const bool refused = !dryRun && ((sequenceNeedsWork && !sequence->EndWithLastFrame()) ||
                                     (journalNeedsWork && !WriteJournal(path, journal, report)));
    if (refused) report.why = "the disk refuses the repair";
    if (!report.badFrames.empty()) report.why = "frames don't fit their checksums";
    if (!report.why.empty()) report.outcome = Recovery::kFailed;
    return report;
}

int RecoverCommand(std::span<const std::string> arguments)
{
    constexpr std::string_view kFlags[] = {"--dry-run", "--json"};
    const BatchArguments taken = TakeApart(arguments, kFlags, {});
    if (!taken.error.empty()) return TellBatchFailure(kWord, taken.error);
    if (taken.files.empty()) return TellBatchFailure(kWord, "no file was named");
    const bool dryRun = taken.Has("--dry-run");
    int code = kBatchDone;
    for (const std::string& path : taken.files) {
        const RecoveryReport report = RecoverSequence(path, dryRun);
        std::fputs((taken.Has("--json") ? JsonOf(path, report) : TextOf(path, report, dryRun)).c_str(), stdout);
        code = std::max(code, static_cast<int>(report.outcome));
    }
    return code;
}

}  // namespace kelvo
