#include "ui/menu_state.h"

#include "platform/menu.h"
#include "resources/board_use.h"
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

void ShowBoardUseInMenu(BoardUse use)
{
    if (!hWndMain) return;
    const auto show = [use](int id) {
        EnableMenuItem(hWndMain, id, use == BoardUse::kNone);
        SetMenuTip(hWndMain, id, TipOf(use));
    };
    for (const CommandRow& row : kCommandList) {
        if (row.needsBoard) show(row.id);
    }
    for (int id = kCmdUserFirst; id <= kCmdUserLast; ++id) show(id);
}

}  // namespace kelvo
