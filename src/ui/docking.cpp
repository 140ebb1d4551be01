#include "ui/docking.h"

#include "platform/window.h"
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

namespace {

const StateNames kStateNames{
    {"PanelHeight", [] { return StateValue{std::int64_t{PanelHeight()}}; }},
};

}  // namespace

}  // namespace kelvo
