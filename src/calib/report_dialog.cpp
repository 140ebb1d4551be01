#include "calib/report_dialog.h"

#include "calib/report_file.h"
#include "calib/report_map.h"
#include "pixel/unsaved_set.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/paint.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"

#include <optional>

namespace kelvo {

namespace {

constexpr std::uint32_t kGoodColor = 0x202428;
constexpr std::uint32_t kBesideMapColor = 0x3C4248;
constexpr const char* kMapHint = "Point at a detector to name it. The wheel zooms, a click centres.";

// What the open dialog shows.
struct Shown {
    std::string text;
    const CalibrationReport* report = nullptr;
    std::optional<MapView> view;  // from the first painting on
};
Shown shown;

constexpr ColorRef ToColorRef(std::uint32_t rgb)
{
    return (rgb & 0xFFU) << 16U | (rgb & 0xFF00U) | rgb >> 16U;
}

// --- The map --------------------------------------------------------------------------------------------------------

// Another size of the surface begins with the whole map again.
MapView& ViewOf(const Rect& client)
{
    const bool fits = shown.view && shown.view->width == client.Width() && shown.view->height == client.Height();
    if (!fits) shown.view = WholeMap(shown.report->columns, shown.report->rows, client.Width(), client.Height());
    return *shown.view;
}

bool HasMap()
{
    return shown.report && !shown.report->map.empty();
}

void DrawMap(HWND dialog)
{
    const HWND area = DlgItemWindow(dialog, kReportMap);
    if (!area || !shown.report) return;
    const Rect client = GetClientRect(area);
    FillSurface(area, client, ToColorRef(kBesideMapColor));
    if (!HasMap()) return;
    const MapView& view = ViewOf(client);
    StretchPixels(area, PartShown(view).destination, MapPicture(*shown.report, view, kGoodColor));
}

// One line a class: a swatch of its colour on the map, then its name and count.
void DrawLegend(HWND dialog)
{
    const HWND area = DlgItemWindow(dialog, kReportLegend);
    if (!area || !shown.report) return;
    const Rect client = GetClientRect(area);
    const int line = TextLineHeight(area);
    FillSurface(area, client, ToColorRef(kGoodColor));
    int y = 2;
    for (const BadDetectorClass& entry : shown.report->classes) {
        FillSurface(area, {6, y + 3, 6 + line - 6, y + line - 3}, ToColorRef(entry.color));
        DrawTextLine(area, line + 8, y, Format("%s: %d", entry.name.c_str(), entry.count), TextAlign::kLeft, 0xFFFFFF,
                     ToColorRef(kGoodColor));
        y += line + 2;
    }
}

void NameDetector(HWND dialog, Point at)
{
    const MapView& view = ViewOf(GetClientRect(DlgItemWindow(dialog, kReportMap)));
    const std::optional<Point> detector = DetectorAt(*shown.report, view, at);
    SetDlgItemText(dialog, kReportDetector, detector ? DetectorText(*shown.report, *detector) : kMapHint);
}

void Zoom(HWND dialog, int levels, Point about)
{
    MapView& view = ViewOf(GetClientRect(DlgItemWindow(dialog, kReportMap)));
    view = Zoomed(view, levels, about);
    DrawMap(dialog);
}

Point MiddleOfMap(HWND dialog)
{
    const Rect client = GetClientRect(DlgItemWindow(dialog, kReportMap));
    return {client.Width() / 2, client.Height() / 2};
}

void ZoomNearer(HWND dialog)
{
    if (HasMap()) Zoom(dialog, 1, MiddleOfMap(dialog));
}

void ZoomFarther(HWND dialog)
{
    if (HasMap()) Zoom(dialog, -1, MiddleOfMap(dialog));
}

void Centre(HWND dialog, Point at)
{
    MapView& view = ViewOf(GetClientRect(DlgItemWindow(dialog, kReportMap)));
    view = Centred(view, at);
    DrawMap(dialog);
}

// True where the message is one of the pointer over the map.
bool OnPointer(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    const bool onMap = LowWord(wParam) == kReportMap && HasMap();
    const Point at{SignedLowWord(static_cast<WPARAM>(lParam)), SignedHighWord(static_cast<WPARAM>(lParam))};
    switch (message) {
        case WM_MOUSEMOVE:
            if (onMap) NameDetector(dialog, at);
            return true;
        case WM_LBUTTONDOWN:
            if (onMap) Centre(dialog, at);
            return true;
        case WM_MOUSEWHEEL:
            if (onMap) Zoom(dialog, SignedHighWord(wParam), at);
            return true;
        default:
            return false;
    }
}

// --- The dialog -----------------------------------------------------------------------------------------------------

void Open(HWND dialog)
{
    SetDlgItemText(dialog, kReportText, shown.text);
    for (const int id : {kReportMap, kReportLegend}) DlgItemWindow(dialog, id);  // surfaces before the layout
    for (const int id : {kReportNearer, kReportFarther}) EnableDlgItem(dialog, id, HasMap());
    SetDlgItemText(dialog, kReportDetector, HasMap() ? kMapHint : "There is no map.");
    CentreDialog(dialog);
}

void Close(HWND dialog)
{
    EndDialog(dialog, 1);
}

constexpr DialogEntry kEntries[] = {
    OnPaint(kReportMap, DrawMap),
    OnPaint(kReportLegend, DrawLegend),
    {kReportNearer, ZoomNearer},
    {kReportFarther, ZoomFarther},
    {kIdOk, Close},
    {kIdCancel, Close},
};
constexpr DialogFrame kFrame{.name = "CALREPORT",
                             .procedure = fnCALREPORTDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpCalibrationReport};

void Show(HWND window, std::string text, const CalibrationReport& report)
{
    shown = {.text = std::move(text), .report = &report, .view = std::nullopt};
    RunDialog(kFrame, window);
    shown = {};
}

// What the report is worth for the set as it is now.
std::string LineOnLists(const StoredReport& stored)
{
    if (stored.digest.empty()) return "The report doesn't say of which lists it tells.\n\n";
    if (stored.digest == ListsDigest(CalSettings.CalFile)) return "The lists of the set are those of this report.\n\n";
    return "The lists of the set have changed since this report.\n\n";
}

}  // namespace

void ShowResult(HWND window, const std::string& text, std::string_view caption, const CalibrationReport& report)
{
    if (MessageBox(window, text, caption, BoxIcon::kInformation, BoxButtons::kOkReport) != Button::kReport) return;
    Show(window, ReportText(report), report);
}

CommandEnd OpenCalibrationReport()
{
    if (CalType == 0) {
        MessageBox(hWndMain, "No calibration is in force.", kMessageCaption, BoxIcon::kInformation);
        return CommandEnd::kResetStatus;
    }
    const std::optional<StoredReport> stored = SetWithoutFiles() ? std::nullopt : ReadReport(CalSettings.CalFile);
    if (!stored) {
        MessageBox(hWndMain,
                   "The calibration in force has no report:\n" + CalSettings.CalFile +
                       "\nA set that was made without one, or whose files couldn't be saved, has none.",
                   kMessageCaption, BoxIcon::kInformation);
        return CommandEnd::kResetStatus;
    }
    Show(hWndMain, "Set: " + CalSettings.CalFile + "\n" + LineOnLists(*stored) + stored->text, stored->map);
    return CommandEnd::kResetStatus;
}

LRESULT fnCALREPORTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (OnPointer(dialog, message, wParam, lParam)) return 1;
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo
