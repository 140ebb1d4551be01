// One bitmap on one page of a printer, with the dialog "Printing" by which the operator can stop it.
#pragma once

#include "dibapi32/dibutil.h"
#include "platform/print.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace kelvo {

// Fields of the dialog "Printing".
constexpr int kPrintingWhat = 401;
constexpr int kPrintingWhere = 402;
constexpr int kPrintingState = 403;

// 1: the operator has stopped the last print. Any command of the dialog "Printing" does.
extern const std::int32_t& PrintAborted;

// The default printer (platform/print.h), or null.
std::unique_ptr<Printer> PrinterDevice();

// Prints the bitmap by an option of output/page_layout.h, on the default printer or, with a path, into that PDF file.
// 0 for success and where the operator stopped it (PrintAborted), else an error number of dibapi32: 20 for a null
// bitmap, 3 where it can't be read, 6 without a printer, 13, 11, 9, 15 and 17 for the steps of the print. Then nothing
// has been printed. Shows nothing but the dialog "Printing", which is closed when it returns: it says what is printed,
// where, and how far it is; without it the print goes on all the same.
//
// The toolkit's printers take a page as one band. The dialog's input is handled between the steps, no other.
int PrintDibPage(const Dib& dib, int option, int xScale, int yScale, std::string_view documentName,
                 std::string_view pdfPath = {});

// Nothing was stopped.
void ResetPrintPage();

}  // namespace kelvo
