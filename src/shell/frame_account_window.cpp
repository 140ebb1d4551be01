#include "shell/frame_account_window.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/help.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "resources/ids.h"
#include "state/windows.h"
#include "ui/docking.h"
#include "ui/view_switch.h"
#include "video/image_cursor.h"

#include <string>

namespace kelvo {

namespace {

constexpr ViewSwitch kSwitch{kCmdViewFrameAccount, "FrameAccount"};
constexpr std::uint32_t kRefreshTimer = 1;
constexpr std::int64_t kRefreshMs = 500;

HWND accountWindow = nullptr;

void Refresh(HWND dialog)
{
    ShowFrameAccount(dialog, CurrentFrameAccount());
}

// In the lower left corner of the picture's area, where neither the colour scale nor a docked dialog stands.
void Place(HWND dialog)
{
    constexpr int kMargin = 12;
    Rect area;
    ViewClipRect(area);
    const Rect window = GetWindowRect(dialog);
    const int left = area.left + kMargin;
    const int bottom = area.bottom - kMargin;
    MoveWindow(dialog, {left, bottom - window.Height(), left + window.Width(), bottom});
}

void Open()
{
    accountWindow = CreateModelessDialog("ACCOUNT", hWndMain, fnACCOUNTDlgProc);
    if (!accountWindow) MessageBox(hWndMain, "Unable to display dialog", "System Error");
    KeepViewSwitch(kSwitch, accountWindow != nullptr);
}

void Close()
{
    EndDialog(accountWindow, 0);
    KeepViewSwitch(kSwitch, false);
}

bool OnCommand(HWND dialog, int id)
{
    switch (id) {
        case kAccountReset:
            ClearFrameAccount();
            Refresh(dialog);
            return true;
        case kIdCancel:
            Close();
            return true;
        case kIdHelp:
            ShowHelpContext(kHelpFrameAccount);
            return true;
        default:
            return false;
    }
}

}  // namespace

void OpenFrameAccount()
{
    if (ViewSwitchIsOn(kSwitch)) Open();
}

void ToggleFrameAccount()
{
    if (accountWindow) {
        Close();
    } else {
        Open();
    }
}

void ShowFrameAccount(HWND dialog, const FrameAccount& account)
{
    SetDlgItemText(dialog, kAccountDelivered, std::to_string(account.delivered));
    SetDlgItemText(dialog, kAccountShown, std::to_string(account.shown));
    SetDlgItemText(dialog, kAccountLost, std::to_string(account.lost));
    SetDlgItemText(dialog, kAccountMissed, std::to_string(account.missed));
    SetDlgItemText(dialog, kAccountDeliveredRate, Format("%.1f Hz", account.deliveredHz));
    SetDlgItemText(dialog, kAccountShownRate, Format("%.1f Hz", account.shownHz));
    WarnDlgItem(dialog, kAccountLost, account.lost > 0);
}

LRESULT fnACCOUNTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM /*lParam*/)
{
    switch (message) {
        case WM_INITDIALOG:
            Refresh(dialog);
            Place(dialog);
            SetTimer(dialog, kRefreshTimer, kRefreshMs);
            return 1;
        case WM_TIMER:
            Refresh(dialog);
            return 1;
        case WM_COMMAND:
            return OnCommand(dialog, LowWord(wParam));
        case WM_DESTROY:
            accountWindow = nullptr;
            return 1;
        default:
            return 0;
    }
}

void ResetFrameAccountWindow()
{
    accountWindow = nullptr;
}

}  // namespace kelvo
