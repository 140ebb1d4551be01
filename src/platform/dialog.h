// Dialogs: a .ui file each in resources/dialogs, loaded by its name. A control is known by its number alone, the
// dynamic property "controlId"; group boxes and labels without one are look. The dialog's name and title come from the
// file.
//
// Accepted control classes: QLabel, QPushButton, QToolButton, QCheckBox, QRadioButton, QLineEdit, QPlainTextEdit,
// QComboBox, QListWidget, QScrollBar, QSlider (as a scroll bar), QSpinBox (as an edit), QProgressBar, and our
// FourWayButton and ZoomStepper. What a control does reaches the procedure as WM_COMMAND with wParam = MakeLong(id,
// notification), or WM_HSCROLL, WM_VSCROLL.
//
// A control without an accessible name of its own is called as the label whose buddy it is, else as its tool tip says.
//
// Keys: Return presses the default button (control 1), Escape sends command 2, F1 command 9, as the logic expects of a
// dialog.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// True (non-zero) if the message was handled. After WM_INITDIALOG the result doesn't matter.
using DialogProc = WindowProc;

// Notifications in the high word of WM_COMMAND.
constexpr int kButtonClicked = 0;
constexpr int kSelectionChanged = 1;  // combo and list box
constexpr int kDoubleClicked = 2;     // list box
constexpr int kEditChanged = 0x300;   // edit, on each change of its text
constexpr int kEditFocus = 0x100;     // edit got the focus
constexpr int kEditFocusLost = 0x200;
// The four-way button's directions.
constexpr int kDirectionUp = 100;
constexpr int kDirectionRight = 101;
constexpr int kDirectionDown = 102;
constexpr int kDirectionLeft = 103;

constexpr int kIdOk = 1;
constexpr int kIdCancel = 2;
constexpr int kIdHelp = 9;

enum class ScrollCode : int {
    kLineUp = 0,
    kLineDown = 1,
    kPageUp = 2,
    kPageDown = 3,
    kThumbPosition = 4,
    kThumbTrack = 5,
    kTop = 6,
    kBottom = 7,
    kEnd = 8
};

// Runs the dialog until EndDialog; returns its result, or -1 if the dialog can't be made (nothing is shown). The
// procedure gets WM_INITDIALOG (lParam = parameter) before the dialog is seen, then commands, timers, WM_DESTROY at the
// end. The window's own close button sends WM_CLOSE, and command 2 unless the procedure handles that.
// Other windows than those the dialog belongs to (help, dialogs that stay open) can be used meanwhile. If the program
// is told to quit before EndDialog, the result is 0.
int DialogBox(std::string_view name, HWND owner, DialogProc procedure, LPARAM parameter = 0);
void EndDialog(HWND dialog, int result);
// For the WM_INITDIALOG of a modal dialog that belongs to the main window: while it is in front, a press of the left
// button on the picture's area comes to it as WM_LBUTTONDOWN with wParam 0 and the place that the main window would be
// told. All else that the operator does to the main window stays blocked.
void TakePicturePresses(HWND dialog);

// A dialog docked along the top of the main window's client area, as wide as it. Null if it can't be made. The platform
// keeps its width at each change of the main window's size before WM_SIZE comes.
HWND CreateDockedPanel(std::string_view name, HWND owner, DialogProc procedure);

// A strip of controls in the main window's client area, hidden at first, as high as its controls want it (its client
// rectangle); MoveWindow places it, ShowWindow shows it. A click in it leaves the keyboard where it was. Null if it
// can't be made.
HWND CreateStrip(std::string_view name, HWND owner, DialogProc procedure);

// A dialog that stays open beside the main window and doesn't block it: a tool window, always above the main window,
// that can be used beside modal dialogs too.
HWND CreateModelessDialog(std::string_view name, HWND owner, DialogProc procedure, LPARAM parameter = 0);

std::string DialogName(HWND dialog);  // "DISPLAY"
void CentreDialog(HWND dialog);       // over the main window, or the screen

// Controls. An id that the dialog doesn't have is ignored and reads as empty, 0 or false. A new text of an edit sends
// kEditChanged, whoever set it.
void SetDlgItemText(HWND dialog, int id, std::string_view text);
std::string GetDlgItemText(HWND dialog, int id);
// Lines more at the end of a QPlainTextEdit, which stays scrolled to its end where it was; it keeps the last 10000.
void AppendDlgItemText(HWND dialog, int id, std::string_view text);
void SetDlgItemInt(HWND dialog, int id, int value);
void CheckDlgButton(HWND dialog, int id, bool checked);  // sends no message
bool IsDlgButtonChecked(HWND dialog, int id);
void CheckRadioButton(HWND dialog, int firstId, int lastId, int checkId);
void EnableDlgItem(HWND dialog, int id, bool enabled);
void SetDefaultButton(HWND dialog, int id);  // the one that Return presses
bool DlgItemEnabled(HWND dialog, int id);
void SetDlgItemTip(HWND dialog, int id,
                   std::string_view text);  // shown while the pointer rests on it, grey or not; empty: none
std::string DlgItemTip(HWND dialog, int id);
void ShowDlgItem(HWND dialog, int id, bool shown);
bool HasDlgItem(HWND dialog, int id);
// A label that warns: its text in a colour that stands out in light and dark themes alike, or as it was.
void WarnDlgItem(HWND dialog, int id, bool warn);
bool DlgItemWarns(HWND dialog, int id);
void FocusDlgItem(HWND dialog, int id);  // an edit's text is selected
int FocusedDlgItem(HWND dialog);         // 0: none

// Scroll bars, zoom steppers and progress bars; of a spin box, the range of its number. SetScrollPos clamps; of a
// scroll bar it sends no message.
void SetScrollRange(HWND dialog, int id, int minimum, int maximum);
void SetScrollPos(HWND dialog, int id, int position);
int GetScrollPos(HWND dialog, int id);
int GetScrollMin(HWND dialog, int id);
int GetScrollMax(HWND dialog, int id);

// Lists: combo and list boxes alike. Indexes from 0, in the order of adding; -1 for none.
void ListClear(HWND dialog, int id);
int ListAdd(HWND dialog, int id, std::string_view text, std::intptr_t data = 0);  // the new item's index
int ListInsert(HWND dialog, int id, int index, std::string_view text);
void ListDelete(HWND dialog, int id, int index);
int ListCount(HWND dialog, int id);
void ListSelect(HWND dialog, int id, int index);  // sends no message
int ListSelection(HWND dialog, int id);
std::intptr_t ListItemData(HWND dialog, int id, int index);
std::string ListItemText(HWND dialog, int id, int index);

// A control's own painting surface, for plots: the control is then a window of its own as platform/paint.h takes it.
// Where it is to be painted anew (first shown, resized, another theme) the dialog gets WM_DRAWITEM with wParam = id.
// The pointer over it comes as WM_MOUSEMOVE, WM_LBUTTONDOWN and WM_MOUSEWHEEL with wParam = MakeLong(id, steps of the
// wheel) and the place in the control.
HWND DlgItemWindow(HWND dialog, int id);

}  // namespace kelvo
