// The inside of the platform layer: what stands behind a window's handle, how messages reach it, which modal windows
// are in front, and the waiting program's turns. Only the .cpp files of this folder include it; no header above the
// platform names a toolkit type.
#pragma once

#include "platform/box.h"
#include "platform/front.h"
#include "platform/menu.h"
#include "platform/types.h"
#include "platform/window.h"

#include <QEvent>
#include <QIcon>
#include <QImage>
#include <QMainWindow>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QString>
#include <QWidget>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class QScrollBar;

namespace kelvo {

// --- Texts --------------------------------------------------------------------------------------------------------

// By the rule of ToUtf8 (platform/text.h).
QString ToQString(std::string_view text);
// UTF-8, the opposite way for texts that were UTF-8 or ASCII: what a person types, names of files.
std::string FromQString(const QString& text);
// Paths are bytes. FromQPath gives back the very bytes that ToQPath was given, also where they are no UTF-8.
QString ToQPath(std::string_view path);
std::string FromQPath(const QString& path);

// --- Windows ------------------------------------------------------------------------------------------------------

struct DialogData;  // dialog.cpp's own record of a dialog
struct MenuData;    // menu.cpp's own record of the menu bar
struct ScrollData;  // scroll.cpp's own: the scroll bars of the picture area

enum class WindowKind {
    kMain,     // widget: the central widget of frame
    kChild,    // a surface in its parent's client area
    kDialog,   // widget: the dialog's top-level widget
    kPanel,    // widget: the docked panel
    kControl,  // a surface that stands for a dialog's control (DlgItemWindow)
};

struct Window {
    WindowKind kind = WindowKind::kChild;
    QPointer<QWidget> widget;        // the client area; null once the toolkit has deleted it
    QPointer<QMainWindow> frame;     // main window only
    WindowProc procedure = nullptr;  // may be null: then DefWindowProc answers
    HWND parent = nullptr;
    std::uint64_t serial = 0;  // tells a window from a later one at the same address

    bool systemBackground = true;  // else background, 0x00BBGGRR
    std::uint32_t background = 0;
    QImage surface;         // device pixels, Format_RGB32; null where the window never paints
    bool paintDue = false;  // WM_PAINT is to come
    QRect unseen;           // logical pixels of the surface that changed and aren't on the screen yet

    std::string text;  // main window: its title as it was set
    bool isBeingDestroyed = false;

    QPointer<QWidget> dockedPanel;  // main window only: laid out to the client's width before WM_SIZE
    int wheelRest = 0;              // eighths of a degree that are not yet a notch

    // shared_ptr: each is complete in its own .cpp only
    std::shared_ptr<DialogData> dialog;
    std::shared_ptr<MenuData> menu;
    std::shared_ptr<ScrollData> scroll;
};

// Enters a window of any kind. The handle stays valid until ForgetWindow. Sends no message.
HWND RegisterWindow(WindowKind kind, QWidget* widget, WindowProc procedure, HWND parent);
// Takes the handle away: its timers and queued messages are dropped. Sends no message and deletes no widget.
void ForgetWindow(HWND window);
// All of them, their classes too. Numbers of windows aren't given again.
void ForgetWindows();
void ForgetWindowClasses();
// False for null and for a handle that was forgotten.
bool IsWindow(HWND window);
// The window whose client area the widget is, or lies in; null if none.
HWND WindowOf(const QWidget* widget);
HWND MainWindow();  // null before it is made and after it is gone
std::vector<HWND> ChildrenOf(HWND parent);
// All windows of a kind, oldest first.
std::vector<HWND> WindowsOfKind(WindowKind kind);
std::vector<HWND> AllWindows();

// A widget with a retained surface (platform/paint.h), its mouse messages and WM_PAINT. Give it to RegisterWindow with
// kind kChild or kControl; dialogs use it for plots. The window's background decides what a new part of it shows.
QWidget* MakeSurfaceWidget(QWidget* parent);
// Gives a window that paints its surface, in the widget's present size.
void EnsureSurface(Window& window);
// Fills the surface with the window's background.
void EraseSurface(Window& window);
// Those logical pixels of the surface have changed: they come onto the screen when the program next waits.
void ShowSoon(Window& window, const QRect& area);
void ShowPainted();  // asks the toolkit to show all that has changed
void ForgetDroppedFiles();
std::uint32_t BackgroundColor(const Window& window);  // 0xFFRRGGBB
double DeviceRatio(const Window& window);             // device pixels a logical pixel

// The widget that a new modal window belongs to: the modal window in front, else the owner's window, else the main one.
QWidget* OwnerWidget(HWND owner);
// WM_SIZE with the present client size, after the docked panel was laid out: when the panel was made or taken away.
void SendSize(HWND mainWindow);

// --- Modal windows ------------------------------------------------------------------------------------------------

// A modal window in front. Exactly one of dialog, box and file is set.
struct ModalEntry {
    QPointer<QWidget> widget;
    HWND dialog = nullptr;

    std::optional<FrontBox> box;
    std::function<bool(Button)> pressButton;  // false: no such button

    std::function<FrontFileDialog()> file;
    std::function<bool(const std::vector<std::string>&)> chooseFiles;
    std::function<void()> cancelFiles;
};

// In front from construction to destruction. Make it right before the modal loop (QDialog::exec, QEventLoop::exec).
class ModalScope {
  public:
    explicit ModalScope(ModalEntry entry);
    ~ModalScope();
    ModalScope(const ModalScope&) = delete;
    ModalScope& operator=(const ModalScope&) = delete;

  private:
    const ModalEntry* entry_;
};

// Presses, motion, wheel, keys, drops and closing: what a window that can't be worked doesn't get. Releases of keys
// come through: they were pressed before.
bool IsOperatorsInput(QEvent::Type type);
// The dialog in front takes presses on the picture (TakePicturePresses).
bool FrontTakesPicturePresses();

const ModalEntry* FrontModal();        // the newest that is seen; null: none. Not to be kept.
std::size_t ModalDepth();              // with those whose loop hasn't returned yet
std::vector<QWidget*> ModalWidgets();  // from the back to the front

// PostQuitMessage was called: modal loops that ran then have been ended without a result of their own.
bool QuitPosted();

// --- The application ----------------------------------------------------------------------------------------------

// Deletes all that the toolkit knows: its widgets and the application object. No message is sent.
void EndApplication();

// --- The loop -----------------------------------------------------------------------------------------------------

// Timers, posted messages and the idle hook run from each Qt event loop that waits, nested ones too. Called once by
// StartApplication.
void StartTurns();
void ForgetTurns();  // no hook, nothing posted, no quit under way; StartTurns begins anew
bool IdleHookIsSet();
// WM_PAINT goes out to the windows with paintDue when the program next waits.
void PostPaints();
// ~ModalScope tells the loop: a quit may have waited for it.
void ModalHasEnded();

// While one lives, queued messages, posted actions and timers wait: for event handling in the midst of a command.
class HoldMessages {
  public:
    HoldMessages();
    ~HoldMessages();
    HoldMessages(const HoldMessages&) = delete;
    HoldMessages& operator=(const HoldMessages&) = delete;
};

// The focus has gone over to another window: tells the main window, once all of the change has arrived.
void NoteFocusChange();
void TellFocusChange();  // at once

// --- The pointer --------------------------------------------------------------------------------------------------

// Shows the shape that holds now: the hourglass over the whole program, but the arrow while a modal window is in front.
void ShowPointerShape();
Point PointerOnScreen();
void MovePointerTo(Point screen);  // as the operator's hand does: no place of the logic's own
void NotePointer(Point screen);    // where an event has it

// --- Scrolling ----------------------------------------------------------------------------------------------------

// Fits the scroll bars to the client area, when its size has changed.
void FitScrollBars(Window& window);
// A modal window comes in front: the bars will never hear of the button's release.
void LetGoOfScrollBars();
// The part of the client area in which the picture is seen, between panel, status line and scroll bars.
Rect PictureArea(const Window& window);
// From the client area to the surface that scrolls in it, and back.
Point ToSurface(const Window& window, Point client);
Point ToClient(const Window& window, Point surface);

// --- Keys ---------------------------------------------------------------------------------------------------------

struct KeyStroke {
    int key = 0;  // Qt::Key
    Qt::KeyboardModifiers modifiers;
    QString text;  // what it types
};
// "F3", "Shift+F3", "+", "Right", "PgUp", "Ctrl+Q", or one character. nullopt: no such key.
std::optional<KeyStroke> ParseKey(std::string_view name);
std::optional<Key> KeyOf(int qtKey);  // the number that the logic knows a Qt::Key by
void ForgetKeys();                    // none is down
void StartKeys();                     // watches all keys, for KeyIsDown, accelerators and help in an open menu
// The command that the accelerators of the main window give for a key; nullopt if none.
std::optional<int> AcceleratorCommand(const Window& window, int key, Qt::KeyboardModifiers modifiers);
// Press and release, through the application's filters, to the widget.
void StrikeKey(QWidget* widget, const KeyStroke& stroke);

// --- What the resources give (icons.cpp) --------------------------------------------------------------------------

// The picture of that name in the theme's colours; empty if there is none.
QIcon IconNamed(std::string_view name);

}  // namespace kelvo
