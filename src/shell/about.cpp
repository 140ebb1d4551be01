#include "shell/about.h"

#include "platform/application.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/splash.h"
#include "ui/status.h"

#include <ctime>
#include <utility>

namespace kelvo {

namespace {

constexpr std::uint32_t kClockTimer = 1;
constexpr std::uint32_t kPictureTimer = 2;
constexpr std::int64_t kClockPeriodMs = 1000;
constexpr std::int64_t kPictureMs = 1000;

bool pictureStands = false;

// The start picture behind the dialog.
void ShowPicture()
{
    UpdateWindow(hWndMain);  // what is invalid now would paint over it
    pictureStands = ShowSplash(hWndMain) != nullptr;
}

void TakePictureAway()
{
    if (std::exchange(pictureStands, false)) InvalidateRect(hWndMain, nullptr, true);
}

void EndPicture(HWND dialog)
{
    KillTimer(dialog, kPictureTimer);
    TakePictureAway();
}

void ShowClock(HWND dialog)
{
    const std::time_t now = WallClockSeconds();
    std::tm local{};
    localtime_r(&now, &local);
    SetDlgItemText(dialog, kAboutClock, Format("%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec));
}

void Open(HWND dialog)
{
    SetDlgItemText(dialog, kAboutVersion, Format("Version %d.%d", 2, 20));
    SetDlgItemText(dialog, kAboutTotal, Format("Total = %lu kB", 1024UL));
    SetDlgItemText(dialog, kAboutContiguous, Format("Contiguous = %lu kB", 1024UL));
    SetDlgItemText(dialog, kAboutResources, Format("Free System Resources = %d%%", 0));
    SetDlgItemText(dialog, kAboutProgram, "Kelvo " KELVO_VERSION ", with " + ToolkitVersion());
    SetDlgItemText(dialog, kAboutData, "Data directory: " + DefaultDir);
    ShowClock(dialog);
    SetTimer(dialog, kClockTimer, kClockPeriodMs);
    SetTimer(dialog, kPictureTimer, kPictureMs);
    StatusString(kAboutHint, kLeftAligned);
}

void Close(HWND dialog)
{
    KillTimer(dialog, kClockTimer);
    EndDialog(dialog, 1);
}

LRESULT fnABOUTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogEntry kEntries[] = {
    OnTimer(kClockTimer, ShowClock), OnTimer(kPictureTimer, EndPicture), {kIdOk, Close}, {kIdCancel, Close}};
constexpr DialogFrame kFrame{.name = "ABOUT", .procedure = fnABOUTDlgProc, .open = Open, .entries = kEntries};
LRESULT fnABOUTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

void ShowAbout()
{
    ShowPicture();
    RunDialog(kFrame, hWndMain);
    TakePictureAway();  // closed, or not opened, before its time was up
}

}  // namespace kelvo
