#include "shell/panel.h"

#include "display/display_pipeline.h"
#include "display/lookup_table.h"
#include "display/unit_list.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/board_use.h"
#include "resources/command_list.h"
#include "resources/ids.h"
#include "shell/color_scale.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "ui/panel_readouts.h"
#include "ui/status.h"
#include "ui/undo.h"
#include "video/video.h"
#include "video/zoom_pan.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <utility>

namespace kelvo {

namespace {

constexpr int kPanButton = 312;
constexpr int kLevelButton = 315;
constexpr int kVmCopyBox = 1014;
constexpr int kEqualizeBox = 1015;
constexpr int kTriggeredSaveButton = 1016;

constexpr int kMinZoom = 1;
constexpr int kMaxZoom = 16;
constexpr int kBrightnessStep = 10;

struct CommandButton {
    int control = 0;
    int command = 0;
};
constexpr CommandButton kCommandButtons[] = {
    {kCmdSaveImage, kCmdSaveImage},
    {kCmdLoadImage, kCmdLoadImage},
    {kCmdLoadNext, kCmdLoadNext},
    {kCmdVideoSetup, kCmdVideoSetup},
    {kCmdPrintBitmap, kCmdPrintBitmap},
    {kCmdHistogram, kCmdHistogram},
    {kTriggeredSaveButton, kCmdTriggeredSave},
    {kPanelRecorder, kCmdRecorder},
};

std::map<int, std::string> tipsOfGreyButtons;  // what they said before they became grey

void GreyFor(BoardUse use, HWND panel, int control)
{
    EnableDlgItem(panel, control, false);
    tipsOfGreyButtons.emplace(control, DlgItemTip(panel, control));
    SetDlgItemTip(panel, control, TipOf(use));
}

void ShowBoardUse(HWND panel, BoardUse use)
{
    if (use != BoardUse::kNone) {
        for (const CommandButton& button : kCommandButtons) {
            const CommandRow& row = *CommandRowOf(button.command);
            if (row.needsBoard) GreyFor(use, panel, button.control);
        }
        return;
    }
    for (const auto& [control, tip] : std::exchange(tipsOfGreyButtons, {})) {
        EnableDlgItem(panel, control, true);
        SetDlgItemTip(panel, control, tip);
    }
}

void Open(HWND panel)
{
    tipsOfGreyButtons.clear();
    write::windows.hDlgPanel = panel;
    SetScrollRange(panel, kPanelZoomBar, kMinZoom, kMaxZoom);
    ShowGeometryInPanel();
    ShowLevelsInPanel();
    BuildDisplayLut(Contrast, Brightness);
    ShowUnits(panel);
    ShowDisplayEnabledInPanel();
    ShowDlgItem(panel, kVmCopyBox, false);
    ShowDlgItem(panel, kEqualizeBox, false);
}

void SendCommand(int id)
{
    SendMessage(hWndMain, WM_COMMAND, MakeLong(id, 0), 0);
}

void LeaveControl()
{
    SetFocusTo(hWndMain);
}

constexpr GestureKind kStep{.repeats = true};  // a button that is held repeats

void Pan(int direction)
{
    const Gesture gesture(kStep);
    switch (direction) {
        case kDirectionUp:
            ZoomPanCommand(kCmdPanPageUp);
            break;
        case kDirectionDown:
            ZoomPanCommand(kCmdPanPageDown);
            break;
        case kDirectionLeft:
            ZoomPanCommand(kCmdPanPageLeft);
            break;
        case kDirectionRight:
            ZoomPanCommand(kCmdPanPageRight);
            break;
        default:
            break;
    }
    LeaveControl();
}

void ChangeLevels(int direction)
{
    const Gesture gesture(kStep);
    std::int32_t contrast = Contrast;
    std::int32_t brightness = Brightness;
    switch (direction) {
        case kDirectionUp:
            contrast = std::min(contrast + 1, kMaxContrast);
            break;
        case kDirectionDown:
            contrast = std::max(contrast - 1, kMinContrast);
            break;
        case kDirectionLeft:
            brightness = std::max(brightness - kBrightnessStep, kMinBrightness);
            break;
        case kDirectionRight:
            brightness = std::min(brightness + kBrightnessStep, kMaxBrightness);
            break;
        default:
            break;
    }
    if (contrast != Contrast || brightness != Brightness) BuildDisplayLut(contrast, brightness);
}

void FollowDisplayBox(HWND panel)
{
    write::frames.DisplayEnabled = IsDlgButtonChecked(panel, kPanelDisplayBox) ? 1 : 0;
    if (!DisplayEnabled) {
        StatusMessage("Display off", kLeftAligned);
        return;
    }
    StatusString(kIdleHint, kLeftAligned);
    SetTimer(hWndMain, kLiveTimer, 0);
}

void ChooseUnit(HWND panel)
{
    const Gesture gesture;
    TakeUnit(panel);
    FollowDisplay();
    LeaveControl();
}

bool OnCommand(HWND panel, int id, int notification)
{
    const auto* const button = std::ranges::find(kCommandButtons, id, &CommandButton::control);
    if (button != std::end(kCommandButtons)) {
        SendCommand(button->command);
        return true;
    }
    switch (id) {
        case kPanButton:
            Pan(notification);
            return true;
        case kLevelButton:
            ChangeLevels(notification);
            return true;
        case kPanelDisplayBox:
            FollowDisplayBox(panel);
            return true;
        case kUnitList:
            if (notification != kSelectionChanged) return false;
            ChooseUnit(panel);
            return true;
        default:
            return false;
    }
}

// Up is a larger picture.
void StepZoom(HWND panel, ScrollCode code)
{
    int position = GetScrollPos(panel, kPanelZoomBar);
    if (code == ScrollCode::kLineUp) {
        position = std::min(position + 1, kMaxZoom);
    } else if (code == ScrollCode::kLineDown) {
        position = std::max(position - 1, kMinZoom);
    } else {
        return;
    }
    // Shown even where nothing is to do: after a refused step the bar stands beside the zoom, and finds back to it.
    SetDlgItemText(panel, kPanelZoomText, Format("%d", position));
    SetScrollPos(panel, kPanelZoomBar, position);
    if (position == Xzoom) return;
    const Gesture gesture(kStep);
    ZoomPanCommand(position > Xzoom ? kCmdZoomIn : kCmdZoomOut);
}

}  // namespace

LRESULT PanelProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
        case WM_INITDIALOG:
            Open(dialog);
            return 1;
        case WM_COMMAND:
            return OnCommand(dialog, LowWord(wParam), HighWord(wParam));
        case kPanelShowsBoardUse:
            ShowBoardUse(dialog, static_cast<BoardUse>(wParam));
            return 1;
        case WM_VSCROLL:
            if (lParam != kPanelZoomBar) return 0;
            StepZoom(dialog, static_cast<ScrollCode>(LowWord(wParam)));
            return 1;
        default:
            return 0;
    }
}

}  // namespace kelvo
