#include "analysis/line_setup.h"

#include "analysis/line_plot_view.h"
#include "analysis/line_settings_write.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "resources/ids.h"
#include "state/display_state.h"
#include "ui/dialog_frame.h"
#include "ui/status.h"

#include <optional>
#include <string>
#include <utility>

namespace kelvo {

namespace {

constexpr int kAutoscale = 340;
constexpr int kValueGrid = 341;
constexpr int kHighest = 342;
constexpr int kLowest = 343;
constexpr int kPointGrid = 347;

HWND plot = nullptr;  // the dialog LINEPLOT, while this one is open
LinePlotSettings atOpening;
bool fillsEdits = false;

std::int32_t& BoundOf(int edit)
{
    LinePlotSettings& settings = write::line.LineSettings;
    return edit == kHighest ? settings.YplotMax : settings.YplotMin;
}

std::string BoundText(int edit)
{
    std::string text;
    CountsToUnit(BoundOf(edit), DisplayUnit, &text);
    return text;
}

void ShowBound(HWND dialog, int edit)
{
    const bool before = std::exchange(fillsEdits, true);
    SetDlgItemText(dialog, edit, BoundText(edit));
    fillsEdits = before;
}

void ShowBounds(HWND dialog)
{
    const bool byHand = LineSettings.Yautoscale == 0;
    for (const int edit : {kHighest, kLowest}) {
        ShowBound(dialog, edit);
        EnableDlgItem(dialog, edit, byHand);
    }
}

void Open(HWND dialog)
{
    CentreDialog(dialog);
    atOpening = LineSettings;
    CheckDlgButton(dialog, kAutoscale, LineSettings.Yautoscale != 0);
    CheckDlgButton(dialog, kValueGrid, LineSettings.Ygridlines != 0);
    CheckDlgButton(dialog, kPointGrid, LineSettings.Xgridlines != 0);
    ShowUnits(dialog);
    ShowBounds(dialog);
    StatusMessage("Setup Line Plot axes", kLeftAligned);
}

void TakeGrids(HWND dialog)
{
    write::line.LineSettings.Xgridlines = IsDlgButtonChecked(dialog, kPointGrid) ? 1 : 0;
    write::line.LineSettings.Ygridlines = IsDlgButtonChecked(dialog, kValueGrid) ? 1 : 0;
    DrawLinePlot(plot);
}

void TakeAutoscale(HWND dialog)
{
    write::line.LineSettings.Yautoscale = IsDlgButtonChecked(dialog, kAutoscale) ? 1 : 0;
    DrawLinePlot(plot);
    ShowBounds(dialog);
}

// The count that the edit's text stands for. What the dialog itself wrote there is the bound as it is: read back it
// would be another one in units whose two directions aren't each other's inverse.
std::optional<std::int32_t> TypedBound(HWND dialog, int edit)
{
    const std::string text = GetDlgItemText(dialog, edit);
    if (text == BoundText(edit)) return BoundOf(edit);
    const std::optional<float> value = ScanFloat(text);
    return value ? std::optional(UnitToCounts(*value, DisplayUnit)) : std::nullopt;
}

void TakeBound(HWND dialog, int edit)
{
    if (fillsEdits) return;
    const std::optional<std::int32_t> typed = TypedBound(dialog, edit);
    if (!typed || *typed == BoundOf(edit)) return;
    const bool inOrder = edit == kHighest ? LineSettings.YplotMin < *typed : *typed < LineSettings.YplotMax;
    if (!inOrder) return;
    BoundOf(edit) = *typed;
    DrawLinePlot(plot);
}

void LeaveBound(HWND dialog, int edit)
{
    TakeBound(dialog, edit);
    if (TypedBound(dialog, edit) != BoundOf(edit)) ShowBound(dialog, edit);
}

void PickUnit(HWND dialog)
{
    TakeUnit(dialog);
    DrawLinePlot(plot);
    ShowBounds(dialog);
}

void Accept(HWND dialog)
{
    EndDialog(dialog, 1);
}

void Cancel(HWND dialog)
{
    write::line.LineSettings = atOpening;
    DrawLinePlot(plot);
    EndDialog(dialog, 0);
}

constexpr DialogEntry kEntries[] = {
    {kPointGrid, TakeGrids},
    {kValueGrid, TakeGrids},
    {kAutoscale, TakeAutoscale},
    {kHighest, TakeBound, kEditChanged},
    {kLowest, TakeBound, kEditChanged},
    {kHighest, LeaveBound, kEditFocusLost},
    {kLowest, LeaveBound, kEditFocusLost},
    {kUnitList, PickUnit, kSelectionChanged},
    {kIdOk, Accept},
    {kIdCancel, Cancel},
};
constexpr DialogFrame kFrame{.name = "LINEAXIS",
                             .procedure = fnLINEAXISDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpLineAxis};

}  // namespace

int LineSetupDialog(HWND dialog)
{
    plot = dialog;
    const int result = RunDialog(kFrame, dialog);
    plot = nullptr;
    return result;
}

LRESULT fnLINEAXISDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetLineSetup()
{
    plot = nullptr;
    atOpening = {};
    fillsEdits = false;
}

}  // namespace kelvo
