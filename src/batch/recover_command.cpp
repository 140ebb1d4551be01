#include "batch/recover_command.h"

#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "imagefile/recovery.h"
#include "platform/text.h"
#include "platform/transcript.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace kelvo {

namespace {

constexpr std::string_view kWord = "recover";

std::string GapText(const FrameGap& gap)
{
    std::string text = Format("  before frame %lld: %lld missing", static_cast<long long>(gap.beforeFrame),
                              static_cast<long long>(gap.Missing()));
    if (gap.firstNumber >= 0) text += Format(" from number %lld", static_cast<long long>(gap.firstNumber));
    return text + ", " + CausesOf(gap) + '\n';
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

int RecoverCommand(std::span<const std::string> arguments)
{
    const BatchArguments taken = TakeApart(arguments, kWord);
    if (!taken.error.empty()) return TellBatchFailure(kWord, taken.error);
    if (taken.files.empty()) return TellBatchFailure(kWord, "no file was named");
    const bool dryRun = taken.Has("--dry-run");
    int code = kBatchDone;
    for (const std::string& path : taken.files) {
        if (Interrupted()) return TellBatchFailure(kWord, kInterrupted);
        const RecoveryReport report = RecoverSequence(path, dryRun);
        std::fputs((taken.Has("--json") ? JsonOf(path, report) : TextOf(path, report, dryRun)).c_str(), stdout);
        code = std::max(code, static_cast<int>(report.outcome));
    }
    return code;
}

}  // namespace kelvo
