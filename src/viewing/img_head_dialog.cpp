#include "viewing/img_head_dialog.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/window.h"
#include "state/windows.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr int kStandardHeader = 101;
constexpr int kNoHeader = 104;

void ShowChoice(HWND dialog)
{
    const std::int32_t stored = GetPrivateProfileInt("Setup", "ImageHeader", 0, IniFilePath);
    CheckRadioButton(dialog, kStandardHeader, kNoHeader,
                     kStandardHeader + std::clamp(stored, 0, kNoHeader - kStandardHeader));
}

void StoreChoice(HWND dialog)
{
    for (int id = kStandardHeader; id <= kNoHeader; ++id) {
        if (!IsDlgButtonChecked(dialog, id)) continue;
        WritePrivateProfileString("Setup", "ImageHeader", Format("%d", id - kStandardHeader), IniFilePath);
    }
}

LRESULT fnImgHeadDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM /*lParam*/)
{
    if (message == WM_INITDIALOG) {
        ShowChoice(dialog);
        return 1;
    }
    if (message != WM_COMMAND) return 0;
    if (LowWord(wParam) == kIdCancel) EndDialog(dialog, 0);
    if (LowWord(wParam) == kIdOk) {
        StoreChoice(dialog);
        EndDialog(dialog, 1);
    }
    return 1;
}

}  // namespace

int ImgHeadDialog(HWND window)
{
    return ShowDialog("ImgHead", window, fnImgHeadDlgProc) == 1 ? 1 : 0;
}

}  // namespace kelvo
