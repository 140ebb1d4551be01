#include "analysis/histogram_dialog.h"

#include "analysis/histogram_drawing.h"
#include "analysis/histogram_settings_write.h"
#include "analysis/histogram_setup.h"
#include "analysis/live_plot.h"
#include "analysis/measured_frame.h"
#include "analysis/plot_report.h"
#include "analysis/plot_save.h"
#include "display/unit_list.h"
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
#include <cstdint>
#include <iterator>
#include <optional>

namespace kelvo {

namespace {

constexpr int kSetup = 301;
constexpr int kExit = 338;
constexpr int kPrint = 339;
constexpr int kSave = 1606;

constexpr int kEnded = 1;

// A number of the rectangle, with its bar and its edit.
struct Side {
    int bar;
    int edit;
    std::int32_t HistSettingsRecord::*field;
    int Point::*frame;  // the frame's side that bounds it
    int least;          // a position goes from 0 to the last pixel, a size from 1 to the frame's
    bool turnedAbout;   // the bar runs against the number
    const char* range;  // what the status line says of it
};
constexpr Side kSides[] = {
    {308, 309, &HistSettingsRecord::Xposition, &Point::x, 0, false, "X position range: 0 to %u"},
    {310, 311, &HistSettingsRecord::Yposition, &Point::y, 0, false, "Y position range: 0 to %u"},
    {313, 314, &HistSettingsRecord::Xsize, &Point::x, 1, false, "X rectangle range: 1 to %u"},
    {315, 316, &HistSettingsRecord::Ysize, &Point::y, 1, true, "Y rectangle range: 1 to %u"},
};

const Side& SideOf(int control)
{
    return *std::ranges::find_if(kSides, [&](const Side& s) { return s.bar == control || s.edit == control; });
}

int MostOf(const Side& side)
{
    return std::max(FrameSizeOnView().*side.frame - 1, 0) + side.least;
}

// The same both ways.
int TurnedAbout(const Side& side, int number)
{
    return side.turnedAbout ? MostOf(side) + 1 - number : number;
}

void ShowHint()
{
    StatusMessage("Viewing Histogram data", kCentred);
}

// --- The rectangle --------------------------------------------------------------------------------------------------

void ShowNumber(HWND dialog, const Side& side)
{
    SetDlgItemInt(dialog, side.edit, HistSettings.*side.field);
}

void ShowPosition(HWND dialog, const Side& side)
{
    SetScrollPos(dialog, side.bar, TurnedAbout(side, HistSettings.*side.field));
}

void SetUpSides(HWND dialog)
{
    for (const Side& side : kSides) {
        SetScrollRange(dialog, side.bar, side.least, MostOf(side));
        ShowPosition(dialog, side);
        ShowNumber(dialog, side);
    }
}

// False for a number outside the frame, which changes nothing.
bool Take(HWND dialog, const Side& side, int number)
{
    if (number < side.least || number > MostOf(side)) return false;
    if (HistSettings.*side.field == number) return true;  // the edits say so while they are filled
    write::histogram.HistSettings.*side.field = number;
    DrawHistogram(dialog);
    return true;
}

void ScrollSide(HWND dialog, int bar, int position)
{
    const Side& side = SideOf(bar);
    if (Take(dialog, side, TurnedAbout(side, position))) ShowNumber(dialog, side);
}

void TypeNumber(HWND dialog, int edit)
{
    const Side& side = SideOf(edit);
    const std::optional<std::int32_t> number = ScanDecimal(GetDlgItemText(dialog, edit));
    if (number && Take(dialog, side, *number)) ShowPosition(dialog, side);
}

void TellRange(HWND /*dialog*/, int edit)
{
    const Side& side = SideOf(edit);
    StatusMessage(Format(side.range, static_cast<unsigned>(MostOf(side))), kLeftAligned);
}

// What was typed and not taken gives way to the number that holds.
void LeaveNumber(HWND dialog, int edit)
{
    ShowNumber(dialog, SideOf(edit));
    ShowHint();
}

// --- The dialog -----------------------------------------------------------------------------------------------------

void ShowTitle(HWND dialog)
{
    SetWindowText(dialog, ViewingFile ? Format("Histogram: %s", ViewFilePath.c_str()) : std::string("Histogram"));
}

bool MakeRoom()
{
    return KeepFrameOnView() && AllocateBlock(write::histogram.HistScratchFrame, FrameToMeasure().size());
}

void Open(HWND dialog)
{
    CentreDialog(dialog);
    DockDialog(dialog);  // beside the picture that it measures
    DlgItemWindow(dialog, kHistogramPlot);
    ReadHistSettings();
    SetUpSides(dialog);
    ShowTitle(dialog);
    ShowPlotReport(dialog, {});
    if (!MakeRoom()) {
        MessageBox(dialog, "Failure to allocate video memory!", kMessageCaption);
        EndDialog(dialog, 0);
        return;
    }
    StartPlotClock(dialog);
    FocusDlgItem(dialog, kExit);  // an edit would tell its range
    ShowHint();
    KeepUnitAvailable();
}

void Tick(HWND dialog)
{
    ForgetDrawnHistogram();
    TickPlot(dialog, DrawHistogram);
}

// A file that gives way leaves a frame of another size and range, which the next tick draws; of a frozen one there is
// no tick.
void ClickLiveData(HWND dialog)
{
    if (SwitchLiveData(dialog)) {
        SuitHistSettingsToView();
        KeepFrameOnView();
        SetUpSides(dialog);
        ShowTitle(dialog);
    }
    if (!LiveVideo) DrawHistogram(dialog);
}

void RunSetup(HWND dialog)
{
    HistogramSetupDialog(dialog);
    WriteHistAxes();
    ForgetDrawnHistogram();
    DrawHistogram(dialog);
    ShowHint();
}

void Print(HWND dialog)
{
    PrintImage(dialog);
}

// The figures are those of the picture, whatever is drawn while the operator chooses a name.
void Save(HWND dialog)
{
    SavePlot(dialog, [csv = HistogramCsv()] { return csv; });
}

void Exit(HWND dialog)
{
    WriteHistRectangle();
    LeaveLivePlot(dialog);
    EndDialog(dialog, kEnded);
}

LRESULT fnHISTGRAMDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

constexpr DialogEntry kEntries[] = {
    OnScroll(kSides[0].bar, ScrollSide),
    OnScroll(kSides[1].bar, ScrollSide),
    OnScroll(kSides[2].bar, ScrollSide),
    OnScroll(kSides[3].bar, ScrollSide),
    {kSides[0].edit, TypeNumber, kEditChanged},
    {kSides[1].edit, TypeNumber, kEditChanged},
    {kSides[2].edit, TypeNumber, kEditChanged},
    {kSides[3].edit, TypeNumber, kEditChanged},
    {kSides[0].edit, TellRange, kEditFocus},
    {kSides[1].edit, TellRange, kEditFocus},
    {kSides[2].edit, TellRange, kEditFocus},
    {kSides[3].edit, TellRange, kEditFocus},
    {kSides[0].edit, LeaveNumber, kEditFocusLost},
    {kSides[1].edit, LeaveNumber, kEditFocusLost},
    {kSides[2].edit, LeaveNumber, kEditFocusLost},
    {kSides[3].edit, LeaveNumber, kEditFocusLost},
    OnTimer(kPlotTimer, Tick),
    OnPaint(kHistogramPlot, RepaintHistogram),
    {kLiveDataBox, ClickLiveData},
    {kSetup, RunSetup},
    {kPrint, Print},
    {kSave, Save},
    {kExit, Exit},
    {kIdCancel, Exit},
};
constexpr DialogFrame kFrame{.name = "HISTGRAM",
                             .procedure = fnHISTGRAMDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpHistogram};

LRESULT fnHISTGRAMDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

int HistogramDialog(HWND window)
{
    if (!SomethingToMeasure()) return 0;
    const HeldPicture held;
    const int result = RunDialog(kFrame, window);
    ShowHistogramRegion(nullptr);
    FreeHistogram();
    return result;
}

CommandEnd ShowHistogram()
{
    if (!SomethingToMeasure()) return CommandEnd::kLeaveStatus;
    HistogramDialog(hWndMain);
    return CommandEnd::kResetStatus;
}

}  // namespace kelvo
