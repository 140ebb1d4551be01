#include "viewing/recorded_dialog.h"

#include "platform/box.h"
#include "platform/text.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/status.h"
#include "viewing/playback.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

// A recording with more of them tells how many there are: a list of a million lines helps nobody.
constexpr std::size_t kMostLines = 1000;

// "12:04:01.123" of "Sat Nov 21 12:04:01.123 2026"
std::string TimeOfDay(const FrameRecord& record)
{
    constexpr std::size_t kFirst = 11;
    constexpr std::size_t kLength = 12;
    const std::string time = TimeOf(record);
    return time.size() < kFirst ? std::string() : time.substr(kFirst, kLength);
}

std::string WithTime(const std::string& text, const FrameRecord& record)
{
    const std::string time = TimeOfDay(record);
    return time.empty() ? text : text + ", " + time;
}

std::string NumberText(std::int64_t number)
{
    return number < 0 ? std::string("number unknown") : "number " + std::to_string(number);
}

std::string MissingText(const FrameGap& gap)
{
    return NumberText(gap.firstNumber) + ": " + std::to_string(gap.Missing()) + " missing, " + CausesOf(gap);
}

RecordedLine LineOfGap(const FrameGap& gap, const std::vector<FrameRecord>& records)
{
    const std::string where = MissingText(gap) + "; before frame " + std::to_string(gap.beforeFrame);
    return {WithTime(where, records[static_cast<std::size_t>(gap.beforeFrame)]), gap.beforeFrame};
}

void ShowLines(HWND dialog, int list, const std::vector<RecordedLine>& lines, std::string_view none)
{
    ListClear(dialog, list);
    const std::size_t shown = std::min(lines.size(), kMostLines);
    for (std::size_t i = 0; i < shown; ++i) ListAdd(dialog, list, lines[i].text, lines[i].frame);
    if (lines.empty()) ListAdd(dialog, list, none, -1);
    if (lines.size() > shown) {
        ListAdd(dialog, list, "and " + std::to_string(lines.size() - shown) + " more", -1);
    }
}

void Open(HWND dialog)
{
    const RecordedFile& recorded = *RecordedFileOnView();
    SetDlgItemText(dialog, kRecordedSummary,
                   Format("%lld frames, ", static_cast<long long>(recorded.frames)) + SummaryOf(recorded));
    SetDlgItemText(dialog, kRecordedEnd, EndOf(recorded));
    WarnDlgItem(dialog, kRecordedSummary, !recorded.complaint.empty());
    ShowLines(dialog, kRecordedGaps, GapLines(recorded), "none");
    ShowLines(dialog, kRecordedMarks, MarkLines(recorded), "none");
    SetDlgItemText(dialog, kRecordedTexts, HeadTextOf(recorded));
    DockDialog(dialog);
}

// One line of both lists is chosen.
void Choose(HWND dialog, int list)
{
    const int other = list == kRecordedGaps ? kRecordedMarks : kRecordedGaps;
    if (ListSelection(dialog, list) >= 0) ListSelect(dialog, other, -1);
}

void ShowChosenFrame(HWND dialog)
{
    const int list = ListSelection(dialog, kRecordedMarks) >= 0 ? kRecordedMarks : kRecordedGaps;
    const int line = ListSelection(dialog, list);
    const std::intptr_t frame = line >= 0 ? ListItemData(dialog, list, line) : -1;
    if (frame >= 0) {
        ShowFrame(static_cast<std::uint32_t>(frame));
    } else {
        MessageBeep(Sound::kInformation);
    }
}

constexpr DialogEntry kEntries[] = {
    {kRecordedGaps, Choose, kSelectionChanged},
    {kRecordedMarks, Choose, kSelectionChanged},
    {kRecordedGaps, ShowChosenFrame, kDoubleClicked},
    {kRecordedMarks, ShowChosenFrame, kDoubleClicked},
    {kRecordedShow, ShowChosenFrame},
};
constexpr DialogFrame kFrame{.name = "RECORDED",
                             .procedure = fnRECORDEDDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpRecorded};

std::string_view EndWords(std::uint32_t end)
{
    constexpr std::string_view kWords[] = {
        "It was stopped by the operator.",
        "It is complete.",
        "It goes on in the next file.",
        "It was stopped: the disk was almost full.",
        "It was stopped: the disk refused to take more.",
        "It was stopped: its file was deleted.",
        "It was cut short, and made whole afterwards.",
    };
    return end < std::size(kWords) ? kWords[end] : "It was closed for a reason unknown to this version.";
}

}  // namespace

void ShowGapsAndMarks()
{
    StopPlaying();
    LookAgain();
    if (!RecordedFileOnView()) {
        MessageBox(hWndMain, "There is no recorded sequence on view.", kMessageCaption, BoxIcon::kInformation);
        return;
    }
    RunDialog(kFrame, hWndMain);
}

std::vector<RecordedLine> GapLines(const RecordedFile& recorded)
{
    std::vector<RecordedLine> lines;
    lines.reserve(recorded.gaps.size() + 1);
    for (const FrameGap& gap : recorded.gaps) lines.push_back(LineOfGap(gap, recorded.journal.records));
    if (recorded.behindLast.Missing() > 0) {
        lines.push_back({MissingText(recorded.behindLast) + "; behind the last frame", -1});
    }
    return lines;
}

std::vector<RecordedLine> MarkLines(const RecordedFile& recorded)
{
    std::vector<RecordedLine> lines;
    if (!recorded.isUsable) return lines;
    const std::vector<FrameRecord>& records = recorded.journal.records;
    for (std::size_t i = 0; i < records.size() && std::cmp_less(i, recorded.frames); ++i) {
        const std::string words = WordsOf(records[i], i, {});
        if (words.empty()) continue;
        lines.push_back({WithTime(Format("frame %zu: ", i) + words, records[i]), static_cast<std::int64_t>(i)});
    }
    return lines;
}

std::string EndOf(const RecordedFile& recorded)
{
    if (recorded.grows) return "It is being recorded.";
    if (!recorded.isUsable) return "The picture is shown without it.";
    if (!recorded.journal.closing) return "It wasn't closed: the program that recorded it was stopped.";
    return std::string(EndWords(recorded.journal.closing->mark));
}

std::string HeadTextOf(const RecordedFile& recorded)
{
    std::string text;
    for (const auto& [key, value] : recorded.journal.head.texts) {
        if (!value.empty()) text.append(key).append(": ").append(value).append("\n");
    }
    return text;
}

LRESULT fnRECORDEDDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo
