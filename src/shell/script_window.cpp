#include "shell/script_window.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/file_dialog.h"
#include "platform/files.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "script/script.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"

namespace kelvo {

namespace {

constexpr std::uint32_t kTextTimer = 1;
constexpr std::int64_t kTextMs = 50;  // a script that prints without end is shown so often
constexpr std::size_t kBytesKept = std::size_t{1} << 20;

struct Course {
    std::string name;
    std::string state;  // "running"
    std::string text;   // what was printed, each with its newline
    std::string toShow;
};
Course course;
HWND scriptWindow = nullptr;

void ShowState(HWND dialog)
{
    const bool runs = ScriptRunsBeside();
    SetDlgItemText(dialog, kScriptState,
                   course.name.empty() ? "No script has run." : course.name + ": " + course.state);
    EnableDlgItem(dialog, kScriptStop, runs);
    EnableDlgItem(dialog, kScriptSave, !course.text.empty());
}

std::string_view WithoutLastNewline(std::string_view text)
{
    if (text.ends_with('\n')) text.remove_suffix(1);
    return text;
}

void ShowText(HWND dialog)
{
    KillTimer(dialog, kTextTimer);
    if (!course.toShow.empty()) AppendDlgItemText(dialog, kScriptText, WithoutLastNewline(course.toShow));
    course.toShow.clear();
    ShowState(dialog);
}

// In the upper left corner of the picture's area: below are the frame account and the play bar, to the right the scale.
void Place(HWND dialog)
{
    constexpr int kMargin = 12;
    constexpr int kCaptionRoom = 32;
    Rect area;
    ViewClipRect(area);
    const Rect window = GetWindowRect(dialog);
    const int left = area.left + kMargin;
    const int top = area.top + kCaptionRoom + kMargin;
    MoveWindow(dialog, {left, top, left + window.Width(), top + window.Height()});
}

void Show(HWND dialog)
{
    course.toShow = course.text;
    ShowText(dialog);
    Place(dialog);
}

void Stop(HWND /*dialog*/)
{
    StopScriptBeside();
}

void Close(HWND dialog)
{
    EndDialog(dialog, 0);
}

// Escape stops what runs; the next one closes the window.
void StopOrClose(HWND dialog)
{
    if (!StopScriptByEscape()) Close(dialog);
}

void SaveText(HWND dialog)
{
    const std::string text = course.text;  // the script goes on beside the file dialog
    const FileDialogResult chosen =
        RunFileDialog({.owner = dialog,
                       .mode = FileDialogMode::kSave,
                       .title = "Save text",
                       .filters = {{"Text files (*.txt)", "*.txt"}, {"All Files (*.*)", "*.*"}},
                       .directory = DefaultDir,
                       .name = {},
                       .defaultExtension = "txt"});
    if (chosen.paths.empty() || ReplaceFile(chosen.paths.front(), text)) return;
    MessageBox(scriptWindow ? scriptWindow : hWndMain, "Unable to write the text to\n" + chosen.paths.front(),
               kMessageCaption, BoxIcon::kExclamation);
}

void Forget(HWND /*dialog*/)
{
    scriptWindow = nullptr;
}

constexpr DialogEntry kEntries[] = {
    OnTimer(kTextTimer, ShowText), {kScriptStop, Stop},      {kScriptSave, SaveText},
    {kScriptClose, Close},         {kIdCancel, StopOrClose},
};
constexpr DialogFrame kFrame{.name = "SCRIPT",
                             .procedure = fnSCRIPTDlgProc,
                             .open = Show,
                             .entries = kEntries,
                             .helpContext = kHelpScripts,
                             .closed = Close,
                             .destroyed = Forget};

void Add(std::string_view text)
{
    course.text.append(text).append(1, '\n');
    course.toShow.append(text).append(1, '\n');
    for (std::string* const kept : {&course.text, &course.toShow}) {
        // In larger steps, and whole lines.
        if (kept->size() > kBytesKept + kBytesKept / 4) kept->erase(0, kept->find('\n', kept->size() - kBytesKept) + 1);
    }
}

}  // namespace

void BeginScriptText(const std::string& name)
{
    course = {.name = name, .state = "running", .text = {}, .toShow = {}};
    if (!scriptWindow) OpenScriptWindow();
    if (!scriptWindow) return;
    SetDlgItemText(scriptWindow, kScriptText, "");
    ShowState(scriptWindow);
    EnableDlgItem(scriptWindow, kScriptStop, true);
}

void AddScriptText(std::string_view text)
{
    Add(text);
    if (scriptWindow) SetTimer(scriptWindow, kTextTimer, kTextMs);
}

void EndScriptText(const std::string& failure)
{
    const bool stopped = failure == kStoppedByOperator;
    course.state = failure.empty() ? "finished" : stopped ? "stopped" : "failed";
    if (!failure.empty() && !stopped) Add(failure);
    if (!scriptWindow && !failure.empty()) {
        OpenScriptWindow();
    } else if (scriptWindow) {
        ShowText(scriptWindow);
    }
}

std::string ScriptInWindow()
{
    return course.name;
}

void OpenScriptWindow()
{
    if (scriptWindow) {
        BringToFront(scriptWindow, {});
    } else {
        scriptWindow = OpenModelessDialog(kFrame, hWndMain);
    }
}

LRESULT fnSCRIPTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetScriptWindow()
{
    course = {};
    scriptWindow = nullptr;
}

}  // namespace kelvo
