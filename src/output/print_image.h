// Command 117 and the print buttons of other windows: a picture on a page, by the dialog DIBPRINT.
#pragma once

#include "dibapi32/dibutil.h"
#include "platform/types.h"
#include "ui/command_end.h"

namespace kelvo {

// Controls of DIBPRINT.
constexpr int kPrintFitButton = 101;
constexpr int kPrintStretchButton = 102;
constexpr int kPrintScaleButton = 103;
constexpr int kPrintXScale = 104;
constexpr int kPrintXLabel = 105;
constexpr int kPrintYScale = 106;
constexpr int kPrintYLabel = 107;
constexpr int kPrintCaption = 108;
constexpr int kPrintCaptionBottom = 109;
constexpr int kPrintCaptionBelow = 110;
constexpr int kPrintDevice = 21801;  // the printer, and where it is
constexpr int kPrintToFile = 21802;  // into a PDF file instead

// What is being printed, while the dialog is open; otherwise null.
extern const Dib& PrintDib;

// Prints what is on view for the main window (CaptureToDib, which stands still meanwhile in the main window, as it will
// be printed), for any other window a capture of itself. The dialog asks how; it stays open where the operator takes
// back the choice of a PDF file's name or says no to a page that the picture doesn't fit on.
//
// Returns the dialog's result: 1 once a print was begun, 0 for Cancel, and 0 where there is nothing to print (told on
// the status line or in a box) or the dialog can't be made (told in a box). Then the status line says what was printed
// where, that the operator stopped it, or the text of the error (DibErrorText); after Cancel its usual hint stands.
int PrintImage(HWND window);

// Command 117.
CommandEnd PrintBitmap();

// Nothing is being printed.
void ResetPrintImage();

}  // namespace kelvo
