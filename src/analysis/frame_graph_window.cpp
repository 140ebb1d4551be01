#include "analysis/frame_graph_window.h"

#include "analysis/frame_graph.h"
#include "analysis/frame_graph_settings.h"
#include "analysis/frame_trace.h"
#include "analysis/plot_paint.h"
#include "analysis/plot_report.h"
#include "analysis/plot_save.h"
#include "display/units.h"
#include "output/print_image.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/display_state.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/status.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

namespace {

constexpr int kPrint = 339;
constexpr int kSavePlot = 1606;
constexpr int kExit = 1620;
constexpr int kPlot = 1622;
constexpr int kSourceText = 21510;
constexpr int kFramesText = 21511;
constexpr int kPixelText = 21512;

constexpr std::uint32_t kFirstTick = 1;
constexpr std::int64_t kFirstTickMs = 500;

// What is on the screen; empty where it couldn't be read.
std::vector<std::int16_t> counts;
GraphFigures figures;

bool IsOfAFile()
{
    return GraphSource == kGraphFile && GraphedFile;
}

std::string SourceText()
{
    return IsOfAFile() ? GraphedFile->path : "Buffer board memory";
}

std::string UnitText()
{
    std::string name;
    std::string unit;
    GetUnitName(DisplayUnit, name, unit);
    return Format("%s (%s)", name.c_str(), unit.c_str());
}

float ValueInUnit(std::int32_t count)
{
    return CountsToUnit(count, DisplayUnit, nullptr);
}

std::string TextInUnit(std::int32_t count)
{
    std::string text;
    CountsToUnit(count, DisplayUnit, &text);
    return text;
}

// ---- The counts

TraceRead ReadCounts()
{
    const Hourglass hourglass;
    const TracePlace place{.first = GraphFirstFrame, .last = GraphLastFrame, .row = PixelRow, .column = PixelCol};
    return IsOfAFile() ? ReadFileTrace(*GraphedFile, place, counts) : ReadHostTrace(place, counts);
}

void TellUnread(HWND window, TraceRead read)
{
    switch (read) {
        case TraceRead::kNoMemory:
            MessageBox(window, "Failure to allocate global intensity memory!", kMessageCaption);
            return;
        case TraceRead::kShort:
            MessageBox(window, "Failed to read entire file\n" + SourceText(), kMessageCaption, BoxIcon::kInformation);
            return;
        case TraceRead::kChanged:
            MessageBox(window,
                       "The file is gone, or another one than was chosen. Please choose it again.\n" + SourceText(),
                       kMessageCaption, BoxIcon::kInformation);
            return;
        case TraceRead::kStopped:
            StatusMessage("Stopped by Esc: nothing is graphed", kLeftAligned);
            return;
        case TraceRead::kComplete:
            return;
    }
}

// ---- The plot

CountRange AxisRange()
{
    if (Autoscale) return RangeOf(figures);
    return HeldInside({.low = yClipMin, .high = yClipMax}, GraphedRange());
}

void PaintGraph(HWND window)
{
    const HWND control = DlgItemWindow(window, kPlot);
    PlotPicture picture;
    if (!counts.empty()) {
        const UnitScope units = GraphedUnits();
        const FrameGraphPlot plot{
            .counts = counts, .first = GraphFirstFrame, .range = AxisRange(), .squareRoot = SqrtTime != 0};
        picture = FrameGraphPicture(PlotArea(control), plot, TextInUnit,
                                    [control](std::string_view text) { return PlotTextWidth(control, text); });
    }
    PaintPlot(control, picture);
}

// ---- Its commands

std::string FiguresAsText()
{
    const UnitScope units = GraphedUnits();
    std::string text = CsvNote("source", SourceText());
    text += CsvNote("pixel", Format("row %d, column %d", PixelRow, PixelCol));
    text += CsvNote("unit", UnitText());
    text += CsvNote("mean", counts.empty() ? std::string() : CsvNumber(static_cast<float>(figures.mean)));
    text += CsvNote("deviation", figures.deviation ? CsvNumber(static_cast<float>(*figures.deviation)) : std::string());
    return text + GraphLines(counts, GraphFirstFrame, ValueInUnit);
}

void Save(HWND window)
{
    SavePlot(window, FiguresAsText);
}

void Print(HWND window)
{
    PrintImage(window);
}

void FirstTick(HWND window)
{
    KillTimer(window, kFirstTick);
    DrawFrameGraph(window);
}

void Exit(HWND window)
{
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(window, 1);
}

void Open(HWND window)
{
    counts.clear();
    figures = {};
    DlgItemWindow(window, kPlot);  // made before the dialog is laid out
    SetWindowText(window, Format("%s vs Frame Number: %d Frames, Pixel=(%d,%d)", UnitText().c_str(), GraphFrames,
                                 PixelRow, PixelCol));
    SetDlgItemText(window, kSourceText, SourceText());
    SetDlgItemText(window, kFramesText, Format("%d to %d", GraphFirstFrame, GraphLastFrame));
    SetDlgItemText(window, kPixelText, Format("row %d, column %d", PixelRow, PixelCol));
    FocusDlgItem(window, kExit);
    DockDialog(window);
    SetTimer(window, kFirstTick, kFirstTickMs);
}

constexpr DialogEntry kEntries[] = {
    {kPrint, Print},
    {kSavePlot, Save},
    {kExit, Exit},
    {kIdOk, Exit},
    {kIdCancel, Exit},
    OnTimer(kFirstTick, FirstTick),
    OnPaint(kPlot, PaintGraph),
};

LRESULT fnGRAPHDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kFrame{
    .name = "GRAPH", .procedure = fnGRAPHDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpFrameGraph};
LRESULT fnGRAPHDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

int FrameGraphWindow(HWND parent)
{
    const int result = RunDialog(kFrame, parent);
    std::vector<std::int16_t>().swap(counts);
    return result;
}

void DrawFrameGraph(HWND window)
{
    figures = {};
    const TraceRead read = ReadCounts();
    if (read == TraceRead::kComplete) {
        const UnitScope units = GraphedUnits();
        figures = FiguresOf(counts, GraphFirstFrame, ValueInUnit);
        ShowPlotReport(window, ReportOf(figures, DisplayUnit));
    }
    PaintGraph(window);
    TellUnread(window, read);
}

}  // namespace kelvo
