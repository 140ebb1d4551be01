#include "ui/dialog_frame.h"

#include "platform/help.h"
#include "platform/window.h"
#include "ui/scroll_rule.h"

#include <algorithm>

namespace kelvo {

namespace {

void TellThatItCantOpen(const DialogFrame& frame, HWND owner)
{
    MessageBox(owner, frame.cantOpen, "System Error", frame.cantOpenIcon);
}

bool Answers(const DialogEntry& entry, DialogEntry::Kind kind, std::intptr_t id, int notification)
{
    const bool notified = entry.notification == kAnyNotification || entry.notification == notification;
    return entry.kind == kind && entry.id == id && notified;
}

// Null where the dialog has no answer.
const DialogEntry* EntryFor(const DialogFrame& frame, DialogEntry::Kind kind, std::intptr_t id,
                            int notification = kAnyNotification)
{
    const auto entry = std::ranges::find_if(
        frame.entries, [&](const DialogEntry& candidate) { return Answers(candidate, kind, id, notification); });
    return entry == frame.entries.end() ? nullptr : &*entry;
}

bool CallEntry(const DialogEntry* entry, HWND dialog)
{
    if (!entry) return false;
    if (entry->handler) entry->handler(dialog);
    if (entry->controlHandler) entry->controlHandler(dialog, entry->id);
    return true;
}

bool CallIfSet(DialogHandler handler, HWND dialog)
{
    if (handler) handler(dialog);
    return handler != nullptr;
}

bool OnCommand(const DialogFrame& frame, HWND dialog, int id, int notification)
{
    if (CallEntry(EntryFor(frame, DialogEntry::Kind::kCommand, id, notification), dialog)) return true;
    if (id == kIdCancel) {
        CancelDialog(dialog);
        return true;
    }
    if (id == kIdHelp && frame.helpContext != 0) {
        ShowHelpContext(frame.helpContext);
        return true;
    }
    return false;
}

bool OnOpening(const DialogFrame& frame, HWND dialog)
{
    if (frame.picturePressed) TakePicturePresses(dialog);
    return CallIfSet(frame.open, dialog);
}

bool OnPress(const DialogFrame& frame, HWND dialog, WPARAM control, LPARAM place)
{
    if (!frame.picturePressed || control != 0) return false;
    const auto at = static_cast<WPARAM>(place);
    frame.picturePressed(dialog, {SignedLowWord(at), SignedHighWord(at)});
    return true;
}

bool OnScrollMessage(const DialogFrame& frame, HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    const DialogEntry* const entry = EntryFor(frame, DialogEntry::Kind::kScroll, lParam);
    if (!entry) return false;
    entry->scrollHandler(dialog, entry->id, ScrollTo(dialog, message, wParam, lParam));
    return true;
}

}  // namespace

int RunDialog(const DialogFrame& frame, HWND parent)
{
    const int result = DialogBox(frame.name, parent, frame.procedure);
    if (result != -1) return result;
    TellThatItCantOpen(frame, parent);
    return frame.cantOpenResult;
}

HWND OpenModelessDialog(const DialogFrame& frame, HWND owner)
{
    const HWND dialog = CreateModelessDialog(frame.name, owner, frame.procedure);
    if (!dialog) TellThatItCantOpen(frame, owner);
    return dialog;
}

void CancelDialog(HWND dialog)
{
    EndDialog(dialog, 0);
}

void RefuseField(HWND dialog, int id, std::string_view text)
{
    MessageBox(dialog, text, kMessageCaption);
    FocusDlgItem(dialog, id);
}

LRESULT HandleDialogMessage(const DialogFrame& frame, HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
        case WM_INITDIALOG:
            return OnOpening(frame, dialog);
        case WM_LBUTTONDOWN:
            return OnPress(frame, dialog, wParam, lParam);
        case WM_COMMAND:
            return OnCommand(frame, dialog, LowWord(wParam), HighWord(wParam));
        case WM_HSCROLL:
        case WM_VSCROLL:
            return OnScrollMessage(frame, dialog, message, wParam, lParam);
        case WM_TIMER:
            return CallEntry(EntryFor(frame, DialogEntry::Kind::kTimer, static_cast<std::intptr_t>(wParam)), dialog);
        case WM_DRAWITEM:
            return CallEntry(EntryFor(frame, DialogEntry::Kind::kPaint, static_cast<std::intptr_t>(wParam)), dialog);
        case WM_CLOSE:
            return CallIfSet(frame.closed, dialog);
        case WM_DESTROY:
            return CallIfSet(frame.destroyed, dialog);
        default:
            return 0;
    }
}

}  // namespace kelvo
