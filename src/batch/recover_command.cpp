#include "batch/recover_command.h"

#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "batch/gap_report.h"
#include "imagefile/recovery.h"
#include "platform/json_text.h"
#include "platform/text.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace kelvo {

namespace {

constexpr std::string_view kWord = "recover";

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
    std::string text = Printable(path) + ": " + OutcomeText(report.outcome, dryRun);
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
    for (const FrameGap& gap : report.gaps) text += "  " + GapText(gap) + '\n';
    return text;
}

std::string JsonOf(const std::string& path, const RecoveryReport& report)
{
    std::vector<std::string> bad;
    bad.reserve(report.badFrames.size());
    for (const std::int64_t frame : report.badFrames) bad.push_back(std::to_string(frame));
    return JsonText()
               .Text("file", path)
               .Text("outcome", OutcomeText(report.outcome, false))
               .Text("why", report.why)
               .Whole("frames", report.frames)
               .Whole("bytes_cut", report.bytesCut)
               .Whole("header_count", report.headerCount)
               .Whole("records_dropped", report.recordsDropped)
               .Whole("records_made", report.recordsMade)
               .Truth("journal", report.hasJournal)
               .Truth("closed", report.wasClosed)
               .Truth("journal_damaged", report.journalWasDamaged)
               .Member("bad_frames", JsonList(bad))
               .Member("gaps", GapsJson(report.gaps))
               .Json() +
           '\n';
}

}  // namespace

int RecoverCommand(std::span<const std::string> arguments)
{
    const BatchArguments taken = TakeApart(arguments, kWord);
    if (!taken.error.empty()) return TellBatchFailure(kWord, taken.error);
    if (taken.files.empty()) return TellBatchFailure(kWord, "no file was named");
    const bool dryRun = taken.Has("--dry-run");
    int code = kBatchDone;
    for (const std::string& path : taken.files) {
        BatchProgress progress(kWord, Printable(path));
        const RecoveryReport report = RecoverSequence(path, dryRun, [&progress](std::int64_t done, std::int64_t all) {
            if (done > 0) progress.Show(done, all);
            return !Interrupted();
        });
        EndProgressLine();
        if (Interrupted()) return TellBatchFailure(kWord, kInterrupted);
        std::fputs((taken.Has("--json") ? JsonOf(path, report) : TextOf(path, report, dryRun)).c_str(), stdout);
        code = std::max(code, static_cast<int>(report.outcome));
    }
    return code;
}

}  // namespace kelvo
