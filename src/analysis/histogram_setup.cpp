#include "analysis/histogram_setup.h"

#include "analysis/histogram_drawing.h"
#include "analysis/histogram_settings_write.h"
#include "analysis/measured_frame.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "resources/ids.h"
#include "state/display_state.h"
#include "ui/dialog_frame.h"
#include "ui/status.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

namespace {

constexpr int kNumberAutoscale = 340;
constexpr int kNumberGrid = 341;
constexpr int kNumberMax = 342;
constexpr int kNumberMin = 343;
constexpr int kLinear = 344;
constexpr int kLog = 345;
constexpr int kValueAutoscale = 346;
constexpr int kValueGrid = 347;
constexpr int kValueMax = 348;
constexpr int kValueMin = 349;

constexpr std::int32_t kMostNumbers = 65530;

struct Choices {
    HistSettingsRecord settings;
    std::int32_t unit = 0;
};
Choices atOpening;

HWND plotDialog = nullptr;  // the histogram, in which each change is drawn
bool filling = false;       // a text is shown, not typed: rounded as it is, it isn't to be read back

HistSettingsRecord& Settings()
{
    return write::histogram.HistSettings;
}

std::string UnitText(std::int32_t counts)
{
    std::string text;
    CountsToUnit(counts, DisplayUnit, &text);
    return text;
}

// --- Showing --------------------------------------------------------------------------------------------------------

void ShowField(HWND dialog, int id)
{
    filling = true;
    switch (id) {
        case kNumberMax:
            SetDlgItemInt(dialog, id, HistSettings.YplotMax);
            break;
        case kNumberMin:
            SetDlgItemInt(dialog, id, HistSettings.YplotMin);
            break;
        case kValueMax:
            SetDlgItemText(dialog, id, UnitText(HistSettings.XplotMax));
            break;
        default:
            SetDlgItemText(dialog, id, UnitText(HistSettings.XplotMin));
    }
    filling = false;
}

// An axis that follows the data has no ends to be typed.
void ShowAxes(HWND dialog)
{
    const bool logarithmic = HistSettings.Yscaling != 0;
    CheckRadioButton(dialog, kLinear, kLog, logarithmic ? kLog : kLinear);
    CheckDlgButton(dialog, kNumberAutoscale, HistSettings.Yautoscale != 0);
    EnableDlgItem(dialog, kNumberAutoscale, !logarithmic);
    CheckDlgButton(dialog, kNumberGrid, HistSettings.Ygridlines != 0);
    CheckDlgButton(dialog, kValueAutoscale, HistSettings.Xautoscale != 0);
    CheckDlgButton(dialog, kValueGrid, HistSettings.Xgridlines != 0);
    for (const int id : {kNumberMax, kNumberMin}) EnableDlgItem(dialog, id, !HistSettings.Yautoscale && !logarithmic);
    for (const int id : {kValueMax, kValueMin}) EnableDlgItem(dialog, id, !HistSettings.Xautoscale);
    for (const int id : {kNumberMax, kNumberMin, kValueMax, kValueMin}) ShowField(dialog, id);
}

// A choice holds at once.
void Redraw(HWND dialog)
{
    DrawHistogram(plotDialog);
    ShowAxes(dialog);
}

// Left of the plot, so that it stays in sight; on the screen all the same.
void MoveBesidePlot(HWND dialog)
{
    const Rect window = GetWindowRect(dialog);
    const Rect plot = GetWindowRect(plotDialog);
    const int left = std::max(plot.left - window.Width(), 0);
    MoveWindow(dialog, {left, plot.top, left + window.Width(), plot.top + window.Height()});
}

void Open(HWND dialog)
{
    atOpening = {.settings = HistSettings, .unit = DisplayUnit};
    ShowUnits(dialog);
    ShowAxes(dialog);
    MoveBesidePlot(dialog);
}

// --- What the operator does -----------------------------------------------------------------------------------------

struct Box {
    int id;
    std::int32_t HistSettingsRecord::*field;
};
constexpr Box kBoxes[] = {{kNumberAutoscale, &HistSettingsRecord::Yautoscale},
                          {kNumberGrid, &HistSettingsRecord::Ygridlines},
                          {kValueAutoscale, &HistSettingsRecord::Xautoscale},
                          {kValueGrid, &HistSettingsRecord::Xgridlines}};

void ClickBox(HWND dialog, int id)
{
    const Box& box = *std::ranges::find(kBoxes, id, &Box::id);
    Settings().*box.field = IsDlgButtonChecked(dialog, id) ? 1 : 0;
    Redraw(dialog);
}

void PickLinear(HWND dialog)
{
    Settings().Yscaling = 0;
    Redraw(dialog);
}

void PickLog(HWND dialog)
{
    Settings().Yscaling = 1;
    Settings().Yautoscale = 1;
    Redraw(dialog);
}

void PickUnit(HWND dialog)
{
    TakeUnit(dialog);
    Redraw(dialog);
}

// What is typed is drawn as it is typed. A text that holds no number, or one that would turn the axis about, keeps what
// holds.
void TypeNumber(HWND dialog, int id)
{
    if (filling) return;
    const std::optional<std::int32_t> number = ScanDecimal(GetDlgItemText(dialog, id));
    if (!number) return;
    if (id == kNumberMax && *number <= kMostNumbers && *number > HistSettings.YplotMin) Settings().YplotMax = *number;
    if (id == kNumberMin && *number < HistSettings.YplotMax) Settings().YplotMin = *number;
    DrawHistogram(plotDialog);
}

void TypeValue(HWND dialog, int id)
{
    if (filling) return;
    const std::optional<float> value = ScanFloat(GetDlgItemText(dialog, id));
    if (!value) return;
    const std::int32_t counts = std::clamp(UnitToCounts(*value, DisplayUnit), kLowestCount, kHighestCount);
    if (id == kValueMax && counts > HistSettings.XplotMin) Settings().XplotMax = counts;
    if (id == kValueMin && counts < HistSettings.XplotMax) Settings().XplotMin = counts;
    DrawHistogram(plotDialog);
}

void TellNumbers(HWND /*dialog*/)
{
    StatusMessage("Number of elements range: 0 to 65530", kLeftAligned);
}

void TellValues(HWND /*dialog*/)
{
    const CountRange range = RangeOnView();
    StatusMessage(Format("Intensity range: %s to %s", UnitText(range.low).c_str(), UnitText(range.high).c_str()),
                  kLeftAligned);
}

void Accept(HWND dialog)
{
    EndDialog(dialog, 1);
}

void Cancel(HWND dialog)
{
    Settings() = atOpening.settings;
    SetDisplayUnit(atOpening.unit);
    EndDialog(dialog, 0);
}

LRESULT fnHISTAXISDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

constexpr DialogEntry kEntries[] = {
    {kNumberAutoscale, ClickBox},
    {kNumberGrid, ClickBox},
    {kValueAutoscale, ClickBox},
    {kValueGrid, ClickBox},
    {kLinear, PickLinear},
    {kLog, PickLog},
    {kNumberMax, TypeNumber, kEditChanged},
    {kNumberMin, TypeNumber, kEditChanged},
    {kValueMax, TypeValue, kEditChanged},
    {kValueMin, TypeValue, kEditChanged},
    {kNumberMax, TellNumbers, kEditFocus},
    {kNumberMin, TellNumbers, kEditFocus},
    {kValueMax, TellValues, kEditFocus},
    {kValueMin, TellValues, kEditFocus},
    {kNumberMax, ShowField, kEditFocusLost},
    {kNumberMin, ShowField, kEditFocusLost},
    {kValueMax, ShowField, kEditFocusLost},
    {kValueMin, ShowField, kEditFocusLost},
    {kUnitList, PickUnit, kSelectionChanged},
    {kIdOk, Accept},
    {kIdCancel, Cancel},
};
constexpr DialogFrame kFrame{.name = "HISTAXIS",
                             .procedure = fnHISTAXISDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpHistogramSetup};

LRESULT fnHISTAXISDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

int HistogramSetupDialog(HWND dialog)
{
    plotDialog = dialog;
    const int result = RunDialog(kFrame, dialog);
    plotDialog = nullptr;
    return result;
}

}  // namespace kelvo
