#include "output/print_page.h"

#include "dibapi32/dibapi32.h"
#include "output/page_layout.h"
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/interrupt.h"
#include "platform/text.h"
#include "platform/window.h"
#include "state/windows.h"

#include <optional>
#include <string>

namespace kelvo {

namespace {

std::int32_t printAborted = 0;
HWND printing = nullptr;  // the dialog, while it is open

void CloseDialog()
{
    if (!printing) return;
    EndDialog(printing, 0);
    printing = nullptr;
}

LRESULT fnPRINTINGDlgProc(HWND dialog, std::uint32_t message, WPARAM /*wParam*/, LPARAM /*lParam*/)
{
    if (message == WM_INITDIALOG) CentreDialog(dialog);
    if (message != WM_COMMAND) return 0;
    printAborted = 1;
    CloseDialog();
    return 1;
}

// "Printing" for as long as a page is on its way.
class PrintingDialog {
  public:
    PrintingDialog(std::string_view documentName, const Printer& printer)
    {
        constexpr std::size_t kShownName = 31;
        const std::string name(documentName.substr(0, kShownName));
        HWND const owner = DialogInFront() ? DialogInFront() : hWndMain;
        printing = CreateModelessDialog("PRINTING", owner, fnPRINTINGDlgProc);
        SetDlgItemText(printing, kPrintingWhat, Format("Printing '%s'", name.c_str()));
        SetDlgItemText(printing, kPrintingWhere, Format("on %s on %s", printer.Name().c_str(), printer.Port().c_str()));
    }
    ~PrintingDialog() { CloseDialog(); }
    PrintingDialog(const PrintingDialog&) = delete;
    PrintingDialog& operator=(const PrintingDialog&) = delete;
    static void ShowState(std::string_view text) { SetDlgItemText(printing, kPrintingState, text); }
};

bool GoesOn(bool waits)
{
    if (waits) {
        if (!WaitFor(printing)) printAborted = 1;
    } else {
        LookUpFor(printing);
    }
    return printAborted == 0;
}

int SendBand(Printer& printer, const DeviceBitmap& picture, const Rect& rectangle, const PrintBand& band)
{
    const std::optional<BandCopy> copy = CopyOfBand(rectangle, band, {picture.width, picture.height});
    if (!copy) return 0;
    return printer.StretchBits(copy->destination, picture, copy->source) ? 0 : kDibErrorStretch;
}

// The one band of the page, and its end.
int PrintWholePage(Printer& printer, const DeviceBitmap& picture, const Rect& rectangle)
{
    PrintingDialog::ShowState("Sending bitmap to printer...");
    const PrinterPage page = printer.Page();
    const int error = SendBand(printer, picture, rectangle, {.area = {0, 0, page.width, page.height}});
    if (error != 0) return error;
    return printer.NewFrame() ? 0 : kDibErrorNewFrame;
}

int PrintDocument(Printer& printer, const DeviceBitmap& picture, const Rect& rectangle, std::string_view documentName)
{
    const PrintingDialog dialog(documentName, printer);
    if (!printer.SetAbortProc(GoesOn)) return kDibErrorAbortProc;
    if (!printer.StartDoc(documentName)) return kDibErrorStartDoc;
    const int error = PrintWholePage(printer, picture, rectangle);
    if (error != 0 || PrintAborted) return error;
    return printer.EndDoc() ? 0 : kDibErrorEndDoc;
}

}  // namespace

constinit const std::int32_t& PrintAborted = printAborted;

std::unique_ptr<Printer> PrinterDevice()
{
    return Printer::OpenDefault();
}

int PrintDibPage(const Dib& dib, int option, int xScale, int yScale, std::string_view documentName,
                 std::string_view pdfPath)
{
    printAborted = 0;
    if (!dib) return kDibErrorHandle;
    const std::optional<DeviceBitmap> picture = BitmapFromDib(dib);
    if (!picture) return kDibErrorLock;
    const std::unique_ptr<Printer> printer = pdfPath.empty() ? PrinterDevice() : Printer::OpenPdf(pdfPath);
    if (!printer) return kDibErrorDevice;
    const Rect rectangle = PrintRectangle({picture->width, picture->height}, option, xScale, yScale, printer->Page());
    return PrintDocument(*printer, *picture, rectangle, documentName);
}

void ResetPrintPage()
{
    printAborted = 0;
}

}  // namespace kelvo
