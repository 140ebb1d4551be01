#include "viewing/img_head_dialog.h"

#include "platform/dialog.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"

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

void Accept(HWND dialog)
{
    StoreChoice(dialog);
    EndDialog(dialog, 1);
}

LRESULT fnImgHeadDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogEntry kEntries[] = {{kIdOk, Accept}};
constexpr DialogFrame kFrame{.name = "ImgHead", .procedure = fnImgHeadDlgProc, .open = ShowChoice, .entries = kEntries};
LRESULT fnImgHeadDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

int ImgHeadDialog(HWND window)
{
    return RunDialog(kFrame, window) == 1 ? 1 : 0;
}

}  // namespace kelvo
