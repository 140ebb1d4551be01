#include "ui/panel_readouts.h"

#include "platform/dialog.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"

namespace kelvo {

void ShowLevelsInPanel()
{
    if (!hDlgPanel) return;
    SetDlgItemText(hDlgPanel, kPanelContrastText, Format("%d", Contrast));
    SetDlgItemText(hDlgPanel, kPanelBrightnessText, Format("%d", Brightness));
}

void ShowDisplayEnabledInPanel()
{
    if (hDlgPanel) CheckDlgButton(hDlgPanel, kPanelDisplayBox, DisplayEnabled != 0);
}

void ShowGeometryInPanel()
{
    if (!hDlgPanel) return;
    SetScrollPos(hDlgPanel, kPanelZoomBar, Xzoom);
    SetDlgItemText(hDlgPanel, kPanelZoomText, Format("%d", Xzoom));
    SetDlgItemText(hDlgPanel, kPanelPanText, Format("%d,%d", Xpan, Ypan));
}

void ShowBoardUseInPanel(BoardUse use)
{
    if (hDlgPanel) SendMessage(hDlgPanel, kPanelShowsBoardUse, static_cast<WPARAM>(use), 0);
}

void ShowRecorderInPanel(const std::string& word)
{
    if (hDlgPanel) SetDlgItemText(hDlgPanel, kPanelRecorder, word.empty() ? "Record" : word);
}

}  // namespace kelvo
