#include "output/print_image.h"

#include "dibapi32/dibapi32.h"
#include "display/display_pipeline.h"
#include "output/caption.h"
#include "output/capture_to_dib.h"
#include "output/page_layout.h"
#include "output/print_page.h"
#include "platform/paint.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/display_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/held_picture.h"
#include "video/something_on_view.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace kelvo {

namespace {

Dib printDib;
bool printsFrameOnView = false;  // or another window
std::string outcome;             // of a print that was begun, as the status line tells it

// What the operator chose.
struct PrintOptions {
    int option = kPrintBestFit;
    int xScale = 1;
    int yScale = 1;
    std::string caption;
    bool captionBelow = true;
    bool toFile = false;
};

// An empty field, and one that holds less, is 1.
int ScaleOf(HWND dialog, int id)
{
    return std::max(ScanDecimal(GetDlgItemText(dialog, id)).value_or(1), 1);
}

PrintOptions ReadOptions(HWND dialog)
{
    PrintOptions options;
    if (IsDlgButtonChecked(dialog, kPrintStretchButton)) options.option = kPrintStretch;
    if (IsDlgButtonChecked(dialog, kPrintScaleButton)) options.option = kPrintScale;
    options.xScale = ScaleOf(dialog, kPrintXScale);
    options.yScale = ScaleOf(dialog, kPrintYScale);
    if (printsFrameOnView) options.caption = GetDlgItemText(dialog, kPrintCaption);
    options.captionBelow = IsDlgButtonChecked(dialog, kPrintCaptionBelow);
    options.toFile = IsDlgButtonChecked(dialog, kPrintToFile);
    return options;
}

// The picture as it goes onto the page; an empty caption leaves it as it is.
Dib PictureToPrint(const PrintOptions& options)
{
    constexpr int kInset = 2;
    if (options.caption.empty()) return PrintDib;
    const int y = options.captionBelow ? kInset : -(PictureTextHeight() + kInset);
    return AddCaption(PrintDib, options.caption, kInset, y);
}

// Without a page to compare with, or a picture, the print itself tells what is wrong.
bool AgreeToWhatIsCut(HWND dialog, const PrintOptions& options, const Dib& picture)
{
    const std::unique_ptr<Printer> printer = options.toFile ? Printer::OpenPdf({}) : PrinterDevice();
    if (!printer || !picture) return true;
    const PrinterPage page = printer->Page();
    const Point size{DibWidth(*picture), std::abs(DibHeight(*picture))};
    if (!ReachesBeyond(PrintRectangle(size, options.option, options.xScale, options.yScale, page), page)) return true;
    return MessageBox(dialog, "The picture is larger than the paper: what lies beyond it isn't printed.",
                      kMessageCaption, BoxIcon::kExclamation, BoxButtons::kOkCancel) == Button::kOk;
}

std::string Outcome(int error, const std::string& pdfPath)
{
    if (error != 0) return std::string(DibErrorText(error));
    if (PrintAborted) return " Printing was stopped: nothing is printed";
    if (!pdfPath.empty()) return " Printed into " + pdfPath;
    const std::unique_ptr<Printer> printer = PrinterDevice();
    if (!printer) return " Printed";
    return printer->IsFile() ? " Printed into " + printer->Port() : " Printed on " + printer->Name();
}

void Print(HWND dialog)
{
    const PrintOptions options = ReadOptions(dialog);
    const Dib picture = PictureToPrint(options);
    if (!AgreeToWhatIsCut(dialog, options, picture)) return;
    std::string pdfPath;
    if (options.toFile) {
        pdfPath = "*.pdf";
        if (!SelectFile(dialog, pdfPath, kSelectToSave)) return;
    }
    {
        const Hourglass hourglass;
        const int error =
            PrintDibPage(picture, options.option, options.xScale, options.yScale, "Kelvo bitmap", pdfPath);
        outcome = Outcome(error, pdfPath);
    }
    EndDialog(dialog, 1);
}

// The axes belong to Scale.
void ShowAxes(HWND dialog)
{
    const bool scales = IsDlgButtonChecked(dialog, kPrintScaleButton);
    for (int id = kPrintXScale; id <= kPrintYLabel; ++id) EnableDlgItem(dialog, id, scales);
}

// Where there is no printer the page can become a file all the same.
void ShowPrinter(HWND dialog)
{
    const std::unique_ptr<Printer> printer = PrinterDevice();
    const std::string where = printer ? printer->Name() + " on " + printer->Port() : "There is no printer.";
    SetDlgItemText(dialog, kPrintDevice, where);
    CheckDlgButton(dialog, kPrintToFile, !printer);
    EnableDlgItem(dialog, kPrintToFile, printer != nullptr);
}

void Open(HWND dialog)
{
    CheckRadioButton(dialog, kPrintFitButton, kPrintScaleButton, kPrintFitButton);
    CheckRadioButton(dialog, kPrintCaptionBottom, kPrintCaptionBelow, kPrintCaptionBelow);
    ShowAxes(dialog);
    ShowPrinter(dialog);
    StatusMessage("Select bitmap printing options", kCentred);
    if (printsFrameOnView) {
        DockDialog(dialog);  // beside the picture that is printed
        FocusDlgItem(dialog, kPrintCaption);
        return;
    }
    CentreDialog(dialog);
    for (const int id : {kPrintCaption, kPrintCaptionBottom, kPrintCaptionBelow}) EnableDlgItem(dialog, id, false);
    FocusDlgItem(dialog, kPrintFitButton);
}

LRESULT fnDIBPRINTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogEntry kEntries[] = {
    {kPrintFitButton, ShowAxes},
    {kPrintStretchButton, ShowAxes},
    {kPrintScaleButton, ShowAxes},
    {kIdOk, Print},
};
constexpr DialogFrame kFrame{
    .name = "DIBPRINT", .procedure = fnDIBPRINTDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpPrint};
LRESULT fnDIBPRINTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

// What was printed, how it failed, or the usual hint.
void TellOutcome()
{
    if (outcome.empty()) {
        StatusString(kIdleHint, kLeftAligned);
    } else {
        StatusNote(outcome);
    }
}

int RunPrintDialog(HWND window)
{
    outcome.clear();
    const int result = RunDialog(kFrame, window);
    TellOutcome();
    FreeDib(printDib);
    InvalidateRect(hWndMain, nullptr, true);
    return result;
}

int PrintFrameOnView()
{
    if (!SomethingOnView("print")) return 0;
    printDib = CaptureToDib(Contrast, Brightness, nullptr);
    if (!PrintDib) {
        StatusString(kIdleHint, kLeftAligned);
        return 0;
    }
    const HeldPicture still;
    printsFrameOnView = true;
    PaintBitmap(PrintDib, hWndMain);
    return RunPrintDialog(hWndMain);
}

int PrintWindow(HWND window)
{
    printDib = CaptureWindowDib(window, kCaptureWindow);
    if (!PrintDib) {
        MessageBox(window, "Failure to allocate global graphics memory!", kMessageCaption);
        return 0;
    }
    printsFrameOnView = false;
    return RunPrintDialog(window);
}

}  // namespace

constinit const Dib& PrintDib = printDib;

int PrintImage(HWND window)
{
    return window == hWndMain ? PrintFrameOnView() : PrintWindow(window);
}

CommandEnd PrintBitmap()
{
    PrintImage(hWndMain);
    return CommandEnd::kLeaveStatus;
}

void ResetPrintImage()
{
    printDib.reset();
    outcome.clear();
}

}  // namespace kelvo
