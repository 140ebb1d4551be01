// Windows and messages: what the logic asks of the window system. A window procedure gets everything that happens to
// its window as numbered messages; what it doesn't handle it hands to DefWindowProc.
//
// All sizes are logical pixels. Each window has a retained surface in device pixels (platform/paint.h); the logic
// paints there at any moment, and the screen shows a copy.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// Messages, by the numbers and parameters that window procedures expect.
constexpr std::uint32_t WM_CREATE = 0x0001;
constexpr std::uint32_t WM_DESTROY = 0x0002;
constexpr std::uint32_t WM_SIZE = 0x0005;       // lParam: MakeLong(client width, client height)
constexpr std::uint32_t WM_SETFOCUS = 0x0007;   // wParam: the window that loses the focus, 0 if it is not ours
constexpr std::uint32_t WM_KILLFOCUS = 0x0008;  // wParam: the window that gets it
constexpr std::uint32_t WM_PAINT = 0x000F;
constexpr std::uint32_t WM_CLOSE = 0x0010;     // default: DestroyWindow
constexpr std::uint32_t WM_DRAWITEM = 0x002B;  // to a dialog: its control wParam is to be painted (DlgItemWindow)
constexpr std::uint32_t WM_COMMNOTIFY = 0x0044;
constexpr std::uint32_t WM_KEYDOWN = 0x0100;  // wParam: a Key
constexpr std::uint32_t WM_INITDIALOG = 0x0110;
constexpr std::uint32_t WM_COMMAND =
    0x0111;  // wParam: MakeLong(id, notification); lParam: 0 from menu and accelerator, 1 from a control
constexpr std::uint32_t WM_TIMER = 0x0113;  // wParam: the timer's number
constexpr std::uint32_t WM_HSCROLL =
    0x0114;  // wParam: MakeLong(ScrollCode, position); lParam: the bar's control number
constexpr std::uint32_t WM_VSCROLL = 0x0115;        // the same
constexpr std::uint32_t WM_INITMENUPOPUP = 0x0117;  // wParam: the list of a menu that opens (SetMenuList)
constexpr std::uint32_t WM_MENUSELECT = 0x011F;     // wParam: the item highlighted
constexpr std::uint32_t WM_ENTERIDLE = 0x0121;  // wParam: 0 a dialog waits, 2 a menu waits; lParam: the dialog's handle
constexpr std::uint32_t WM_MOUSEMOVE = 0x0200;  // lParam of the mouse messages: MakeLong(x, y) in client coordinates
constexpr std::uint32_t WM_LBUTTONDOWN = 0x0201;
constexpr std::uint32_t WM_LBUTTONUP = 0x0202;
constexpr std::uint32_t WM_LBUTTONDBLCLK = 0x0203;
constexpr std::uint32_t WM_RBUTTONDOWN = 0x0204;
constexpr std::uint32_t WM_MBUTTONDOWN = 0x0207;  // until WM_MBUTTONUP all motion is this window's, over children too
constexpr std::uint32_t WM_MBUTTONUP = 0x0208;
constexpr std::uint32_t WM_MOUSELEAVE = 0x02A3;  // the pointer has left the window, or lies over a child
constexpr std::uint32_t WM_MOUSEWHEEL =
    0x020A;  // wParam: MakeLong(0, steps), one a notch, positive away from the operator
constexpr std::uint32_t WM_DROPFILES = 0x0233;  // DroppedFiles() holds the paths

// Keys that the logic asks for by number (KeyIsDown, WM_KEYDOWN).
enum class Key : std::uint32_t {
    kReturn = 0x0D,
    kShift = 0x10,
    kEscape = 0x1B,
    kPageUp = 0x21,
    kPageDown = 0x22,
    kUp = 0x26,
    kDown = 0x28,
    kF1 = 0x70,
    kF10 = 0x79,
    kMiddleButton = 0x04
};
bool KeyIsDown(Key key);

struct WindowClass {
    std::string_view name;  // "KELVO", "StatusWndClass"
    WindowProc procedure = nullptr;
    std::string_view icon;         // name of an icon in the resources, or empty
    bool systemBackground = true;  // the theme's window colour; otherwise background
    std::uint32_t background = 0;  // 0x00BBGGRR
};
bool RegisterWindowClass(const WindowClass& windowClass);

// The main window: title bar, menu bar, client area. Not yet shown. Null on failure. WM_CREATE comes before it returns.
HWND CreateMainWindow(std::string_view className, std::string_view title);
// A visible child in the parent's client area. Null on failure.
HWND CreateChildWindow(std::string_view className, HWND parent, const Rect& place);
void DestroyWindow(HWND window);  // WM_DESTROY, then the handle is gone

// Shows the main window maximised and handles events other than the operator's until it is exposed and its size stands
// still (at most 1 s), so that the client size is true in the next line. Where maximising has no effect, it takes the
// available geometry.
void ShowWindowMaximised(HWND window);
void ShowWindow(HWND window, bool shown);
// In front of the desktop's other windows, with the focus, and no icon any more. activation: the desktop's permission
// for it ("XDG_ACTIVATION_TOKEN"), handed on by who asked; empty where the desktop gives none.
void BringToFront(HWND window, const std::string& activation);
void MoveWindow(HWND window, const Rect& place);  // children: in the parent's client coordinates
// Puts a dialog, its size kept, to the top right of an area of the screen, with the frame that the desktop gives it
// inside the area: also once that frame is known, after the dialog is shown.
void DockWindow(HWND window, const Rect& area);
// Paints what is invalid now: WM_PAINT, and the screen shows it when this returns.
void UpdateWindow(HWND window);
// The rectangle (null: the whole client area) needs painting; with erase it is filled with the background at once.
// WM_PAINT comes once, when the program next waits or at UpdateWindow.
void InvalidateRect(HWND window, const Rect* area, bool erase);

Rect GetClientRect(HWND window);  // left and top are 0
Rect GetWindowRect(HWND window);  // screen coordinates, frame included
Point ClientToScreen(HWND window, Point client);
Point ScreenToClient(HWND window, Point screen);
std::string GetWindowText(HWND window);
void SetWindowText(HWND window, std::string_view text);  // a title line in the transcript for the main window

// The height of a line of the window's text (character height + external leading).
int TextLineHeight(HWND window);

LRESULT SendMessage(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam);  // now
void PostMessage(HWND window, std::uint32_t message, WPARAM wParam,
                 LPARAM lParam);  // when the program next takes messages
LRESULT DefWindowProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam);
void PostQuitMessage(int exitCode);

// Takes messages until PostQuitMessage; returns its code. Accelerators of the main window come before all other keys.
int RunMessageLoop(HWND mainWindow);

// The paths of the drop that WM_DROPFILES tells of.
std::vector<std::string> DroppedFiles();

void SetFocusTo(HWND window);

// The picture of the main window moves in its area, below topInset and above bottomInset: the origin is the place of
// the surface that stands in the client area's corner, below 0 where the picture stands away from it. Scroll bars
// appear where some of the picture is out of sight. Painting, mouse messages and GetPointerPosition stay in the
// surface's coordinates, so that the logic never sees the scrolling. When picture or window change their size, a
// picture in the middle stays there, and one that lies as far in sight as it can does so again.
struct ScrollExtent {
    int right = 0;  // edges of the picture
    int bottom = 0;
    int topInset = 0;
    int bottomInset = 0;
    int rightCovered = 0;  // of the area, by something that stands over it
    friend bool operator==(const ScrollExtent&, const ScrollExtent&) = default;
};
void SetScrollExtent(HWND window, const ScrollExtent& extent);
Point GetScrollOrigin(HWND window);
// Moves the picture, as far as some of it stays in sight, or to the middle, and paints it there. False before
// SetScrollExtent.
bool ScrollPictureTo(HWND window, Point origin);
bool CentrePicture(HWND window);
// The nearest origin at which no more of the picture is out of sight than must be.
Point RestingOrigin(HWND window, Point origin);
// What is seen of that area: between the insets, without the scroll bars. Client coordinates; before SetScrollExtent
// the whole client area.
Rect GetPictureArea(HWND window);

}  // namespace kelvo
