#include "ui/menu_state.h"

#include "platform/menu.h"
#include "resources/command_list.h"
#include "resources/ids.h"
#include "state/windows.h"

namespace kelvo {

void ShowReplacementInMenu(bool replaced)
{
    if (hWndMain) CheckMenuItem(hWndMain, kCmdReplaceBadPixels, replaced);
}

void ShowColorMapInMenu(int map)
{
    if (!hWndMain) return;
    CheckMenuItem(hWndMain, kCmdNormalGray, map == kNormalGray);
    CheckMenuItem(hWndMain, kCmdInvertedGray, map == kInvertedGray);
    CheckMenuItem(hWndMain, kCmdNormalColor, map == kNormalColor);
}

void ShowFreezeInMenu(bool live)
{
    if (hWndMain) SetMenuText(hWndMain, kCmdFreeze, live ? "&Freeze\tF2" : "&Continue\tF2");
}

void ShowTurnOnInMenu(bool cameraIsOn)
{
    if (!hWndMain) return;
    SetMenuText(hWndMain, kCmdTurnOn, cameraIsOn ? "&Turn Vantir off" : "&Turn Vantir on");
    DrawMenuBar(hWndMain);
}

void ShowRecordingInMenu(bool records)
{
    if (!hWndMain) return;
    const auto show = [records](int id) {
        EnableMenuItem(hWndMain, id, !records);
        SetMenuTip(hWndMain, id, records ? kRecordingTip : std::string_view());
    };
    for (const CommandRow& row : kCommandList) {
        if (row.needsBoard) show(row.id);
    }
    for (int id = kCmdUserFirst; id <= kCmdUserLast; ++id) show(id);
}

}  // namespace kelvo
