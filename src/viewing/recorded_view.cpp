#include "viewing/recorded_view.h"

#include "imagefile/crc32c.h"
#include "imagefile/frame_file.h"
#include "imagefile/header_write.h"
#include "imagefile/recorded_sequence.h"
#include "imagefile/recovery.h"
#include "imagefile/sequence_file.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/text.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "ui/gather.h"
#include "ui/status.h"
#include "viewing/foreign_view.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <set>
#include <span>
#include <utility>

namespace kelvo {

namespace {

// Of the file that came on view last; without a path none has.
RecordedFile known;
bool hasJournal = false;
std::string origin;                    // of a copy of another program's file; empty: it is none
bool mayBeReplaced = true;             // the operator has opened a file since: what is known of it may be another's
std::set<std::string> shownAsTheyAre;  // recordings that the operator didn't want made whole

long long Long(std::int64_t value)
{
    return value;
}

std::string Counted(std::int64_t count, const char* one, const char* many)
{
    return Format("%lld %s", Long(count), count == 1 ? one : many);
}

// ---- the journal of the file on view

bool FitsHeader(const FramesHead& head)
{
    const std::int64_t pixelBytes = static_cast<std::int64_t>(PixelCount(ImageHeader)) * ImageHeader.SampleBytes;
    return std::cmp_equal(head.columns, ImageHeader.ImageWidth) && std::cmp_equal(head.rows, ImageHeader.ImageHeight) &&
           std::cmp_equal(head.pixelBytes, pixelBytes);
}

std::string ComplaintOfFault(FramesFault fault)
{
    switch (fault) {
        case FramesFault::kNone:
            return {};
        case FramesFault::kNotOpened:
            return "its journal can't be read";
        case FramesFault::kNoJournal:
            return "what lies beside it is no journal";
        case FramesFault::kNewer:
            return "its journal is of a later version";
        case FramesFault::kDamaged:
            return "its journal is damaged";
        case FramesFault::kNoMemory:
            return "there is no memory for its journal";
    }
    return {};
}

// Of a journal that belongs to the file.
std::string ComplaintOfRecords(const RecordedFile& recorded)
{
    constexpr std::int64_t kWholeRecord = sizeof(FrameRecord);
    const FramesFile& journal = recorded.journal;
    const auto records = static_cast<std::int64_t>(journal.records.size());
    if (recorded.grows) return {};
    if (!journal.closing && journal.bytesBehind >= kWholeRecord) {
        return Format("its journal is damaged from frame %lld on", Long(records));
    }
    if (journal.closing && journal.bytesBehind > 0) return "its journal goes on behind its end";
    const bool mayBeAhead = !journal.closing;  // a record is written before its frame
    if (records < recorded.frames || (records > recorded.frames && !mayBeAhead)) {
        return Format("its journal tells of %lld of %lld frames", Long(records), Long(recorded.frames));
    }
    return {};
}

FrameGap GapBehindLast(const FramesFile& journal)
{
    const FrameRecord end = journal.closing.value_or(FrameRecord());
    FrameGap gap{.beforeFrame = static_cast<std::int64_t>(journal.records.size()),
                 .firstNumber = -1,
                 .lostByBoard = end.lostByBoard,
                 .lostByRing = end.lostByRing,
                 .passedOver = end.passedOver,
                 .lostByTransport = end.lostByTransport};
    constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();
    const std::int64_t number = journal.records.empty() ? -1 : journal.records.back().number;
    if (number >= 0 && number < kLast) gap.firstNumber = number + 1;
    return gap;
}

void JudgeJournal()
{
    const FramesFile& journal = known.journal;
    known.complaint = ComplaintOfFault(journal.fault);
    if (known.complaint.empty() && !FitsHeader(journal.head)) {
        known.complaint = "its journal belongs to another sequence";
    }
    known.isUsable = known.complaint.empty();
    known.grows = known.grows && known.isUsable;
    if (!known.isUsable) return;
    known.complaint = ComplaintOfRecords(known);
    const std::int64_t told = std::min(known.frames, static_cast<std::int64_t>(journal.records.size()));
    known.behindLast = GapBehindLast(journal);
    known.gaps = GapsOf(std::span(journal.records).first(static_cast<std::size_t>(told)));
}

void ReadJournalOf(std::string_view path)
{
    const std::string journalPath = FramesPathOf(path);
    known = {};
    known.path = path;
    known.frames = ImageHeader.FrameCount;
    origin = OriginOf(path);
    hasJournal = FileExists(journalPath);
    if (!hasJournal) return;
    known.journal = ReadFramesFile(journalPath);
    known.grows = known.journal.fault == FramesFault::kNone && !known.journal.closing && IsHeldNow(path);
    JudgeJournal();
}

void ReadJournalOn()
{
    ReadOn(FramesPathOf(known.path), known.frames, known.journal);
    known.frames = ImageHeader.FrameCount;
    known.grows = !known.journal.closing && IsHeldNow(known.path);
    JudgeJournal();
}

// ---- what is told of a frame

// Gaps in which frames were lost, and those that were left out on purpose.
struct GapTally {
    std::int64_t gaps = 0;
    std::int64_t lost = 0;
    std::int64_t passedOver = 0;
};

void Add(const FrameGap& gap, GapTally& tally)
{
    const std::int64_t lost = gap.Missing() - gap.passedOver;
    tally.gaps += lost > 0 ? 1 : 0;
    tally.lost += lost;
    tally.passedOver += gap.passedOver;
}

GapTally TallyOf(const RecordedFile& recorded)
{
    GapTally tally;
    for (const FrameGap& gap : recorded.gaps) Add(gap, tally);
    Add(recorded.behindLast, tally);
    return tally;
}

std::string TextOf(const GapTally& tally)
{
    const std::string passedOver = Format("%lld passed over", Long(tally.passedOver));
    if (tally.gaps == 0) return tally.passedOver == 0 ? "no gaps" : "none lost, " + passedOver;
    const std::string lost =
        Counted(tally.gaps, "gap", "gaps") + ", " + Counted(tally.lost, "frame lost", "frames lost");
    return tally.passedOver == 0 ? lost : lost + ", " + passedOver;
}

bool FitsItsChecksum(const FrameRecord& record)
{
    const auto before = static_cast<std::size_t>(ImageHeader.ImageHeaderDataOffset);
    if (ImageBuffer.size() < before + known.journal.head.pixelBytes || ImageHeader.ByteSwap == 0) return true;
    const std::span pixels = std::span(ImageBuffer).subspan(before, known.journal.head.pixelBytes);
    return ImageHeader.SampleBytes != 2 || Crc32c(std::as_bytes(pixels)) == record.pixelCrc;
}

void TellOf(std::uint32_t frame)
{
    ToldFrame told;
    told.path = known.path;
    told.frame = frame;
    if (const FrameRecord* const record = RecordOnView(frame)) {
        told.number = record->number;
        told.integrationMs = record->integrationMs;
        told.time = TimeOf(*record);
        told.more = WordsOf(*record, frame, known.gaps);
        if (!FitsItsChecksum(*record)) told.more += (told.more.empty() ? "" : ", ") + std::string("checksum wrong");
    }
    told.more += (told.more.empty() ? "" : "   ") + SummaryOf(known);
    TellFrameOnView(std::move(told));
}

// ---- the offer to make it whole

bool WasNotClosed(std::string_view path)
{
    const FramesFile journal = ReadFramesFile(FramesPathOf(path));
    return journal.fault == FramesFault::kNone && !journal.closing;
}

bool TellsNoFrameYet(std::string_view path)
{
    const std::optional<SequenceFile> sequence = SequenceFile::Open(path, FileMode::kRead);
    if (!sequence || sequence->Frames() > 0) return false;
    MessageBox(hWndMain, FileNameOf(path) + " is being recorded and has no frame yet.", kMessageCaption,
               BoxIcon::kInformation);
    return true;
}

void TellWhatIsLeft(std::string_view path, const RecoveryReport& report)
{
    if (report.outcome != Recovery::kFailed) return;
    std::string text = FileNameOf(path) + " couldn't be made whole: " + report.why + '.';
    if (!report.badFrames.empty() && !report.diskRefused) {
        const auto bad = static_cast<std::int64_t>(report.badFrames.size());
        text = FileNameOf(path) + " was made whole, but " +
               Counted(bad, "frame doesn't fit its checksum.", "frames don't fit their checksums.");
    }
    MessageBox(hWndMain, text, kMessageCaption);
}

// False where Escape stopped it.
bool MakeWhole(std::string_view path)
{
    const Gather gather(true);
    std::int64_t toldPercent = -1;
    const RecoveryReport report =
        RecoverSequence(path, false, [&toldPercent](std::int64_t checked, std::int64_t frames) {
            const std::int64_t percent = 100 * checked / frames;
            if (percent != std::exchange(toldPercent, percent)) {
                StatusMessage(Format(" Checking the frames: %lld %%", Long(percent)), kLeftAligned);
            }
            return GatherGoesOn();
        });
    StatusString(kIdleHint, kLeftAligned);
    if (GatherWasStopped() && report.outcome == Recovery::kFailed) return false;
    TellWhatIsLeft(path, report);
    return true;
}

}  // namespace

bool MayViewRecording(std::string_view path)
{
    mayBeReplaced = true;
    if (!FileExists(FramesPathOf(path)) || !WasNotClosed(path)) return true;
    if (IsBeingRecorded(path)) return !TellsNoFrameYet(path);
    const std::string whole = AbsolutePath(path);
    if (shownAsTheyAre.contains(whole)) return true;
    const std::string question =
        FileNameOf(path) +
        " wasn't closed when it was recorded.\n\n"
        "Make it whole? Each whole frame stays as it is. No shows the file without changing it.";
    switch (MessageBox(hWndMain, question, kMessageCaption, BoxIcon::kQuestion, BoxButtons::kYesNoCancel)) {
        case Button::kYes:
            return MakeWhole(path);
        case Button::kNo:
            shownAsTheyAre.insert(whole);
            return true;
        default:
            return false;
    }
}

void FollowRecording(std::string_view path, std::uint32_t frame)
{
    const bool hasChanged = std::cmp_not_equal(known.frames, ImageHeader.FrameCount);
    if (std::exchange(mayBeReplaced, false) || path != known.path || (hasChanged && !known.grows)) {
        ReadJournalOf(path);
    } else if (hasChanged) {
        ReadJournalOn();
    }
    if (hasJournal) {
        TellOf(frame);
    } else {
        ToldFrame told;
        told.path = known.path;
        told.more = origin;
        TellFrameOnView(std::move(told));
    }
}

const RecordedFile* RecordedFileOnView()
{
    return ViewingFile && hasJournal && known.path == ViewFilePath ? &known : nullptr;
}

const FrameRecord* RecordOnView(std::uint32_t frame)
{
    const bool isTold = hasJournal && known.isUsable && frame < known.journal.records.size();
    return isTold ? &known.journal.records[frame] : nullptr;
}

bool LookAgain()
{
    const RecordedFile* const recorded = RecordedFileOnView();
    if (!recorded || !recorded->grows) return false;
    const std::optional<SequenceFile> sequence = SequenceFile::Open(known.path, FileMode::kRead);
    const std::int64_t before = known.frames;
    if (sequence && sequence->Frames() > 0) {
        write::file.ImageHeader.FrameCount = static_cast<std::uint32_t>(sequence->Frames());
        write::frames.LastFrame = ImageHeader.FrameCount - 1;
    }
    ReadJournalOn();
    return known.frames > before;
}

std::string SummaryOf(const RecordedFile& recorded)
{
    if (!recorded.isUsable) return recorded.complaint;
    const std::string text = TextOf(TallyOf(recorded));
    if (!recorded.complaint.empty()) return text + "; " + recorded.complaint;
    if (recorded.grows) return "being recorded, " + text;
    return recorded.journal.closing ? text : "not closed, " + text;
}

std::string ShortSummaryOf(const RecordedFile& recorded)
{
    if (!recorded.isUsable) return "Journal";
    const GapTally tally = TallyOf(recorded);
    if (tally.gaps > 0) return Counted(tally.gaps, "gap", "gaps");
    return tally.passedOver > 0 ? "None lost" : "No gaps";
}

std::string WordsOf(const FrameRecord& record, std::size_t frame, const std::vector<FrameGap>& gaps)
{
    std::string words;
    const auto add = [&words](const std::string& word) { words += (words.empty() ? "" : ", ") + word; };
    if ((record.flags & kTriggerFrame) != 0) add("trigger");
    if ((record.flags & kMarkedFrame) != 0) add(Format("mark %u", record.mark));
    if ((record.flags & kRecoveredFrame) != 0) add("time unknown");
    const auto gap = std::ranges::lower_bound(gaps, static_cast<std::int64_t>(frame), {}, &FrameGap::beforeFrame);
    if (gap != gaps.end() && std::cmp_equal(gap->beforeFrame, frame)) {
        add(CausesOf(*gap) + " before it");
    }
    return words;
}

std::string TimeOf(const FrameRecord& record)
{
    if ((record.flags & kRecoveredFrame) != 0) return {};
    const std::array<char, 30> text = FrameTimeText(record.utcNs);
    return {text.begin(), std::ranges::find_if(text, [](char c) { return c == '\n' || c == '\0'; })};
}

void ResetRecordedView()
{
    known = {};
    hasJournal = false;
    origin.clear();
    mayBeReplaced = true;
    shownAsTheyAre.clear();
}

}  // namespace kelvo
