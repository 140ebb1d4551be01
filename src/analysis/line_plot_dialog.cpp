#include "analysis/line_plot_dialog.h"

#include "analysis/line_plot_view.h"
#include "analysis/line_settings_write.h"
#include "analysis/line_setup.h"
#include "analysis/live_plot.h"
#include "analysis/measured_frame.h"
#include "analysis/plot_save.h"
#include "output/print_image.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/status.h"
#include "video/held_picture.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace kelvo {

namespace {

constexpr int kSetup = 301;
constexpr int kStartXBar = 401;
constexpr int kStartX = 402;
constexpr int kStartYBar = 404;
constexpr int kStartY = 405;
constexpr int kEndXBar = 407;
constexpr int kEndX = 408;
constexpr int kEndYBar = 410;
constexpr int kEndY = 411;
constexpr int kExit = 338;
constexpr int kPrint = 339;
constexpr int kSave = 1606;

constexpr std::string_view kHint = "Viewing Line Plot Statistics";

// A coordinate of the line with its bar and its edit.
struct Coordinate {
    int bar;
    int edit;
    std::int32_t LinePlotSettings::*field;
    bool isColumn;
    std::string_view hint;  // on the status line once it was taken; the words differ, as operators know them
};
constexpr Coordinate kCoordinates[] = {
    {kStartXBar, kStartX, &LinePlotSettings::Xstart, true, kHint},
    {kStartYBar, kStartY, &LinePlotSettings::Ystart, false, kHint},
    {kEndXBar, kEndX, &LinePlotSettings::Xend, true, "Viewing Image Statistics"},
    {kEndYBar, kEndY, &LinePlotSettings::Yend, false, kHint},
};

bool fillsEdits = false;  // a text is the dialog's own, not the operator's

// --- The coordinates -----------------------------------------------------------------------------------------------

const Coordinate& CoordinateOf(int control)
{
    return *std::ranges::find_if(kCoordinates,
                                 [control](const Coordinate& c) { return c.bar == control || c.edit == control; });
}

std::int32_t LastPlace(const Coordinate& coordinate)
{
    const Point size = FrameSizeOnView();
    return (coordinate.isColumn ? size.x : size.y) - 1;
}

std::string RangeText(const Coordinate& coordinate)
{
    return Format(coordinate.isColumn ? "X range: 0 to %u" : "Y range: 0 to %u",
                  static_cast<unsigned>(LastPlace(coordinate)));
}

void FillEdit(HWND dialog, const Coordinate& coordinate)
{
    const bool before = std::exchange(fillsEdits, true);
    SetDlgItemInt(dialog, coordinate.edit, LineSettings.*coordinate.field);
    fillsEdits = before;
}

void FillCoordinates(HWND dialog)
{
    for (const Coordinate& coordinate : kCoordinates) {
        SetScrollRange(dialog, coordinate.bar, 0, LastPlace(coordinate));
        SetScrollPos(dialog, coordinate.bar, LineSettings.*coordinate.field);
        FillEdit(dialog, coordinate);
    }
}

void TakeCoordinate(HWND dialog, const Coordinate& coordinate, std::int32_t place)
{
    write::line.LineSettings.*coordinate.field = place;
    SetScrollPos(dialog, coordinate.bar, place);
    DrawLinePlot(dialog);
    StatusMessage(coordinate.hint, kLeftAligned);
}

void Scroll(HWND dialog, int bar, int position)
{
    const Coordinate& coordinate = CoordinateOf(bar);
    const bool outside = position < 0 || position > LastPlace(coordinate);
    if (outside || position == LineSettings.*coordinate.field) return;
    TakeCoordinate(dialog, coordinate, position);
    FillEdit(dialog, coordinate);
}

void ShowRange(HWND /*dialog*/, int edit)
{
    StatusMessage(RangeText(CoordinateOf(edit)), kLeftAligned);
}

// Without a number in the edit the coordinate stays: the operator is about to type one.
void TakeTyped(HWND dialog, int edit)
{
    if (fillsEdits) return;
    const Coordinate& coordinate = CoordinateOf(edit);
    const std::optional<std::int32_t> place = ScanDecimal(GetDlgItemText(dialog, edit));
    if (!place) return;
    if (*place >= 0 && *place <= LastPlace(coordinate)) {
        TakeCoordinate(dialog, coordinate, *place);
        return;
    }
    MessageBox(dialog, RangeText(coordinate), kMessageCaption);
    FillEdit(dialog, coordinate);
    FocusDlgItem(dialog, edit);
}

// An edit that is left shows the place in force, whatever was typed.
void LeaveEdit(HWND dialog, int edit)
{
    FillEdit(dialog, CoordinateOf(edit));
}

// --- Opening -------------------------------------------------------------------------------------------------------

void ShowWindowTitle(HWND dialog)
{
    SetWindowText(dialog, ViewingFile ? Format("Line plot: %s", ViewFilePath.c_str()) : "Line Plot");
}

// LineScratchFrame of the size on view. False where memory is refused, or where there is no such size.
bool FitScratchFrame()
{
    const Point size = FrameSizeOnView();
    if (size.x <= 0 || size.y <= 0) return false;
    return AllocateBlock(write::line.LineScratchFrame,
                         static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y));
}

void GiveUp(HWND dialog)
{
    MessageBox(dialog, "Failure to allocate video memory!", kMessageCaption);
    EndDialog(dialog, 0);
}

void Open(HWND dialog)
{
    ShowWindowTitle(dialog);
    DlgItemWindow(dialog, kLinePlotControl);  // made before the dialog is laid out
    ForgetLinePlot();
    ReadLineSettings(IniFilePath, FrameSizeOnView(), RangeOnView());
    FillCoordinates(dialog);
    if (!FitScratchFrame() || !KeepFrameOnView()) {
        GiveUp(dialog);
        return;
    }
    CentreDialog(dialog);
    DockDialog(dialog);  // beside the picture
    StartPlotClock(dialog);
    StatusMessage(kHint, kLeftAligned);
}

// --- What the operator does ----------------------------------------------------------------------------------------

void Redraw(HWND dialog)
{
    ForgetLinePlot();
    DrawLinePlot(dialog);
}

void Tick(HWND dialog)
{
    TickPlot(dialog, Redraw);
}

// The camera's picture has taken the place of the file's.
void BeginLiveFrame(HWND dialog)
{
    ShowWindowTitle(dialog);
    FitLineSettings(FrameSizeOnView(), RangeOnView());
    FillCoordinates(dialog);
    if (!FitScratchFrame()) GiveUp(dialog);
}

void SwitchLive(HWND dialog)
{
    if (SwitchLiveData(dialog)) BeginLiveFrame(dialog);
}

void SetUp(HWND dialog)
{
    LineSetupDialog(dialog);
    WriteLineSettings(IniFilePath);
    Redraw(dialog);
    StatusMessage(kHint, kLeftAligned);
}

void Print(HWND dialog)
{
    const PlotPause pause(dialog);
    PrintImage(dialog);
}

void Save(HWND dialog)
{
    const PlotPause pause(dialog);
    SavePlot(dialog, ShownLineFigures);
}

void Exit(HWND dialog)
{
    WriteLineSettings(IniFilePath);
    LeaveLivePlot(dialog);
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, 1);
}

constexpr DialogEntry kEntries[] = {
    OnTimer(kPlotTimer, Tick),
    OnPaint(kLinePlotControl, PaintLinePlot),
    OnScroll(kStartXBar, Scroll),
    OnScroll(kStartYBar, Scroll),
    OnScroll(kEndXBar, Scroll),
    OnScroll(kEndYBar, Scroll),
    {kStartX, TakeTyped, kEditChanged},
    {kStartY, TakeTyped, kEditChanged},
    {kEndX, TakeTyped, kEditChanged},
    {kEndY, TakeTyped, kEditChanged},
    {kStartX, ShowRange, kEditFocus},
    {kStartY, ShowRange, kEditFocus},
    {kEndX, ShowRange, kEditFocus},
    {kEndY, ShowRange, kEditFocus},
    {kStartX, LeaveEdit, kEditFocusLost},
    {kStartY, LeaveEdit, kEditFocusLost},
    {kEndX, LeaveEdit, kEditFocusLost},
    {kEndY, LeaveEdit, kEditFocusLost},
    {kLiveDataBox, SwitchLive},
    {kSetup, SetUp},
    {kPrint, Print},
    {kSave, Save},
    {kExit, Exit},
    {kIdCancel, Exit},  // Escape and the window's own close button
};
constexpr DialogFrame kFrame{.name = "LINEPLOT",
                             .procedure = fnLINEPLOTDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpLinePlot};

}  // namespace

CommandEnd LinePlot()
{
    if (!SomethingToMeasure()) return CommandEnd::kLeaveStatus;
    LinePlotDialog(hWndMain);
    return CommandEnd::kResetStatus;
}

int LinePlotDialog(HWND window)
{
    const HeldPicture held;
    const int result = RunDialog(kFrame, window);
    EndLinePlot();
    return result;
}

LRESULT fnLINEPLOTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetLinePlotDialog()
{
    fillsEdits = false;
}

}  // namespace kelvo
