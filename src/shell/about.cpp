#include "shell/about.h"

#include "platform/box.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "state/windows.h"
#include "ui/splash.h"
#include "ui/status.h"

#include <ctime>

namespace kelvo {

namespace {

constexpr std::uint32_t kClockTimer = 1;
constexpr std::int64_t kClockPeriodMs = 1000;
constexpr std::int64_t kPictureMs = 1000;

void ShowClock(HWND dialog)
{
    const std::time_t now = WallClockSeconds();
    std::tm local{};
    localtime_r(&now, &local);
    SetDlgItemText(dialog, kAboutClock, Format("%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec));
}

LRESULT fnABOUTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM /*lParam*/)
{
    switch (message) {
        case WM_INITDIALOG:
            SetDlgItemText(dialog, kAboutVersion, Format("Version %d.%d", 2, 20));
            SetDlgItemText(dialog, kAboutTotal, Format("Total = %lu kB", 1024UL));
            SetDlgItemText(dialog, kAboutContiguous, Format("Contiguous = %lu kB", 1024UL));
            SetDlgItemText(dialog, kAboutResources, Format("Free System Resources = %d%%", 0));
            ShowClock(dialog);
            SetTimer(dialog, kClockTimer, kClockPeriodMs);
            StatusString(kAboutHint, kLeftAligned);
            return 1;
        case WM_TIMER:
            ShowClock(dialog);
            return 1;
        case WM_COMMAND:
            if (LowWord(wParam) == kIdOk || LowWord(wParam) == kIdCancel) {
                KillTimer(dialog, kClockTimer);
                EndDialog(dialog, 1);
            }
            return 1;
        default:
            return 0;
    }
}

}  // namespace

void ShowAbout()
{
    HideSplash(ShowSplash(hWndMain), kPictureMs);
    ShowDialog("ABOUT", hWndMain, fnABOUTDlgProc);
}

}  // namespace kelvo
