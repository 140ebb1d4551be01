// The frame that the dialogs share. A dialog is a constant table: for each control, bar and timer the function that
// answers it. The frame opens the dialog, hands each message to its entry, ends it at Cancel and shows its help page.
//
//     constexpr DialogEntry kEntries[] = {
//         {kIdOk, Accept},
//         {kUnitList, PickUnit, kSelectionChanged},
//         OnTimer(kClockTimer, ShowClock),
//     };
//     constexpr DialogFrame kFrame{
//         .name = "NAME", .procedure = fnNAMEDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpName};
//
//     LRESULT fnNAMEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
//     {
//         return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
//     }
#pragma once

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/types.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

using DialogHandler = void (*)(HWND dialog);
using PlaceHandler = void (*)(HWND dialog, Point place);
using ControlHandler = void (*)(HWND dialog, int id);
// position: where the bar now stands, by the one rule of ui/scroll_rule.h.
using ScrollHandler = void (*)(HWND dialog, int bar, int position);

constexpr int kAnyNotification = -1;

// One thing that a dialog answers. Of several entries that fit a message the first is called.
struct DialogEntry {
    enum class Kind { kCommand, kScroll, kTimer, kPaint };

    // A control's command (platform/dialog.h): a button pressed, a list or an edit changed. Of a control that sends
    // several notifications the entry names the one that it answers.
    constexpr DialogEntry(int control, DialogHandler answer, int answered = kAnyNotification)
        : id(control), notification(answered), handler(answer)
    {
    }
    constexpr DialogEntry(int control, ControlHandler answer, int answered = kAnyNotification)
        : id(control), notification(answered), controlHandler(answer)
    {
    }

    Kind kind = Kind::kCommand;
    int id;
    int notification;
    // The one that is set is called.
    DialogHandler handler = nullptr;
    ControlHandler controlHandler = nullptr;
    ScrollHandler scrollHandler = nullptr;
};

constexpr DialogEntry OnScroll(int bar, ScrollHandler handler)
{
    DialogEntry entry(bar, DialogHandler{});
    entry.kind = DialogEntry::Kind::kScroll;
    entry.scrollHandler = handler;
    return entry;
}
constexpr DialogEntry OnTimer(std::uint32_t timer, DialogHandler handler)
{
    DialogEntry entry(static_cast<int>(timer), handler);
    entry.kind = DialogEntry::Kind::kTimer;
    return entry;
}
// A control with a painting surface (DlgItemWindow) is to be painted anew.
constexpr DialogEntry OnPaint(int control, DialogHandler handler)
{
    DialogEntry entry(control, handler);
    entry.kind = DialogEntry::Kind::kPaint;
    return entry;
}

struct DialogFrame {
    std::string_view name;                      // of its look, resources/dialogs/NAME.ui
    DialogProc procedure = nullptr;             // the dialog's own, which hands to HandleDialogMessage
    DialogHandler open = nullptr;               // fills the controls before the dialog is seen; may end it
    std::span<const DialogEntry> entries = {};  // Cancel (2) without an entry ends the dialog with 0
    int helpContext = 0;                        // what Help (9) shows; 0: the dialog has no help
    DialogHandler closed = nullptr;             // the window's own close button, where that isn't Cancel
    DialogHandler destroyed = nullptr;
    // Set: the dialog takes presses on the picture (platform/dialog.h); place in the main window's client coordinates.
    PlaceHandler picturePressed = nullptr;

    // What the operator reads where the dialog can't be made, under "System Error", and what RunDialog returns then.
    std::string_view cantOpen = "Unable to display dialog";
    BoxIcon cantOpenIcon = BoxIcon::kExclamation;
    int cantOpenResult = 0;
};

// Runs the dialog until EndDialog and returns its result, which is never -1; 0 where the program is told to quit.
// Blocks, while other events are handled (DialogBox).
int RunDialog(const DialogFrame& frame, HWND parent);
// A dialog that stays open beside the main window and doesn't block it. Null after the box where it can't be made.
HWND OpenModelessDialog(const DialogFrame& frame, HWND owner);

// What handlers have in common. Ends the dialog with 0: for a button that is another Cancel.
void CancelDialog(HWND dialog);
// Tells in a box why a field's text won't do, and puts the focus on the field.
void RefuseField(HWND dialog, int id, std::string_view text);

// All that a dialog procedure does. Non-zero where the frame or one of its entries took the message.
LRESULT HandleDialogMessage(const DialogFrame& frame, HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
