#include "ui/docking.h"

#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "state/state_registry.h"
#include "state/windows.h"

namespace kelvo {

int PanelHeight()
{
    return hDlgPanel ? GetClientRect(hDlgPanel).Height() : 0;
}

void ViewClipRect(Rect& rectangle)
{
    if (!hWndMain) {
        rectangle = {};
        return;
    }
    const Rect client = GetClientRect(hWndMain);
    const Point topLeft = ClientToScreen(hWndMain, {client.left, client.top + PanelHeight()});
    const Point bottomRight = ClientToScreen(hWndMain, {client.right, client.bottom - TextHeight});
    rectangle = {topLeft.x, topLeft.y, bottomRight.x, bottomRight.y};
}

Rect ViewArea()
{
    Rect area;
    ViewClipRect(area);
    return area;
}

void DockDialog(HWND dialog)
{
    if (!hWndMain) return;
    DockWindow(dialog, ViewArea());
}

void DockInCorner(HWND dialog, LowerCorner corner)
{
    constexpr int kMargin = 12;
    if (!hWndMain) return;
    const Rect area = ViewArea();
    const Rect window = GetWindowRect(dialog);
    const int left = corner == LowerCorner::kLeft ? area.left + kMargin : area.right - kMargin - window.Width();
    const int bottom = area.bottom - kPlayBarRoom;
    MoveWindow(dialog, {left, bottom - window.Height(), left + window.Width(), bottom});
}

namespace {

const StateNames kStateNames{
    {"PanelHeight", [] { return StateValue{std::int64_t{PanelHeight()}}; }},
};

}  // namespace

}  // namespace kelvo
