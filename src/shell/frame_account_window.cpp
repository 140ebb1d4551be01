#include "shell/frame_account_window.h"

#include "platform/dialog.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "resources/ids.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
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

void Show(HWND dialog)
{
    Refresh(dialog);
    DockInCorner(dialog, LowerCorner::kLeft);  // where neither the colour scale nor a docked dialog stands
    SetTimer(dialog, kRefreshTimer, kRefreshMs);
}

void Reset(HWND dialog)
{
    ClearFrameAccount();
    Refresh(dialog);
}

void Close(HWND dialog)
{
    EndDialog(dialog, 0);
    KeepViewSwitch(kSwitch, false);
}

void Forget(HWND /*dialog*/)
{
    accountWindow = nullptr;
}

constexpr DialogEntry kEntries[] = {
    OnTimer(kRefreshTimer, Refresh),
    {kAccountReset, Reset},
    {kIdCancel, Close},
};
constexpr DialogFrame kFrame{.name = "ACCOUNT",
                             .procedure = fnACCOUNTDlgProc,
                             .open = Show,
                             .entries = kEntries,
                             .helpContext = kHelpFrameAccount,
                             .destroyed = Forget};

std::string LostText(const FrameAccount& account)
{
    if (!account.lostIsKnown) return "unknown";
    std::string text = std::to_string(account.lost);
    if (account.lostByTransport > 0) {
        text += Format(" (%lld by the transport)", static_cast<long long>(account.lostByTransport));
    }
    return text;
}

void Open()
{
    accountWindow = OpenModelessDialog(kFrame, hWndMain);
    KeepViewSwitch(kSwitch, accountWindow != nullptr);
}

}  // namespace

void OpenFrameAccount()
{
    if (ViewSwitchIsOn(kSwitch)) Open();
}

void ToggleFrameAccount()
{
    if (accountWindow) {
        Close(accountWindow);
    } else {
        Open();
    }
}

void ShowFrameAccount(HWND dialog, const FrameAccount& account)
{
    SetDlgItemText(dialog, kAccountDelivered, std::to_string(account.delivered));
    SetDlgItemText(dialog, kAccountShown, std::to_string(account.shown));
    SetDlgItemText(dialog, kAccountUsed, std::to_string(account.used));
    SetDlgItemText(dialog, kAccountLost, LostText(account));
    SetDlgItemText(dialog, kAccountMissed, std::to_string(account.missed));
    SetDlgItemText(dialog, kAccountDeliveredRate, Format("%.1f Hz", account.deliveredHz));
    SetDlgItemText(dialog, kAccountShownRate, Format("%.1f Hz", account.shownHz));
    WarnDlgItem(dialog, kAccountLost, account.lost > 0);
}

LRESULT fnACCOUNTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetFrameAccountWindow()
{
    accountWindow = nullptr;
}

}  // namespace kelvo
