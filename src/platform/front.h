// What stands in front of the operator, and the operator's hands: the one way in which scripts and tests read the
// screen and act. All of it works on the real windows.
#pragma once

#include "platform/box.h"
#include "platform/types.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

struct FrontBox {
    std::string text;
    std::string caption;
    BoxIcon icon = BoxIcon::kNone;
    std::vector<Button> buttons;
    Button defaultButton = Button::kOk;
};
struct FrontFileDialog {
    std::string title;
    std::vector<std::string> filters;  // texts
    std::string directory;
    std::string name;
};

// At most one of the three is in front: the newest modal window.
std::optional<FrontBox> BoxInFront();
std::optional<FrontFileDialog> FileDialogInFront();
HWND DialogInFront();  // null: none
// A strip of controls of the main window (CreateStrip, CreateDockedPanel) that is shown; null: none of that name.
HWND StripNamed(std::string_view name);
// A dialog that stays open beside the main window (CreateModelessDialog); null: none of that name is shown.
HWND OpenDialogNamed(std::string_view name);

// A box, file selection or dialog is open, in front or not.
bool ModalIsOpen();

// Each presses in the window in front; false if there is nothing fitting in front, or no such button.
bool PressBoxButton(Button button);
bool ChooseFiles(const std::vector<std::string>& paths);  // as if typed and accepted: asks its questions
bool CancelFileDialog();

// A control of a dialog as its operator finds it.
struct FrontControl {
    int id = 0;
    // "button", "four-way", "check", "radio", "edit", "number" (an edit with arrows), "memo", "combo", "list", "bar",
    // "stepper", "progress", "label", "picture".
    std::string_view kind;
    bool canBeWorked = false;  // it takes the operator's hand, is shown and enabled
};
std::vector<FrontControl> ControlsOf(HWND dialog);  // by number

// Controls as a person works them: the procedure gets the messages that a click or a typed text gives. False if there
// is no such control, or it is disabled or hidden.
bool OperatePress(HWND dialog, int id, int direction = 0);  // direction: of a four-way button
bool OperateText(HWND dialog, int id, std::string_view text);
bool OperateCheck(HWND dialog, int id, bool on);
bool OperatePick(HWND dialog, int id, int index);
bool OperateScroll(HWND dialog, int id, int position);
void OperateCommand(HWND window, int id);  // WM_COMMAND, as the menu sends it
void OperateClose(HWND dialog);            // its window's own close button

// Keys and mouse in the main window and its open menu, logical pixels of its client area. button: 0 move, 1 left, 2
// right, 3 middle, 4 left double click, 5 wheel up, 6 wheel down, 7 middle pressed and held over the next calls, 8
// middle released, 9 and 10 the same with left. key: names as accelerators have them, or one character.
bool OperateKey(std::string_view key);
void OperateMouse(Point client, int button);
bool OperateDrop(const std::vector<std::string>& paths);
std::uint32_t ScreenColor(Point client);  // 0x00RRGGBB as the main window shows it
// The main window with whatever is in front, composed from each visible window's own rendering at the device ratio, as
// PNG.
bool SaveScreenshot(std::string_view path);

// Where things stand on the screen, logical pixels; nothing where they can't be seen. Texts as they are read: without
// the mark of their letter and the name of their key.
std::optional<Rect> PlaceOfControl(HWND dialog, int id);
std::optional<Rect> PlaceOfDialog(std::string_view name,
                                  int id);                   // a control of the dialog of that name, in front or not
std::optional<Rect> PlaceOfMenu(std::string_view text);      // a title of the menu bar
std::optional<Rect> PlaceOfMenuItem(std::string_view text);  // of a menu that is open
std::optional<Rect> PlaceOfButton(std::string_view text);    // in the modal window, else in any
std::optional<Rect> PlaceOfWindow(std::string_view title);   // its client area; the title begins so

// Called each time the program waits with nothing queued and no timer due: from inside dialogs and boxes too. It may
// not run a loop itself; it posts what is to be done (PostAction). Null takes it off.
// One hook stands for each user: who sits in front (the script of the start, a test), and a script that runs beside
// him.
enum class IdleUser { kInFront, kBeside, kRecorder };
void SetIdleHook(std::function<void()> hook, IdleUser user = IdleUser::kInFront);
// Runs the action from the event loop, once, as an event of its own.
void PostAction(std::function<void()> action);

}  // namespace kelvo
