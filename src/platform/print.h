// Paper: a document of one page on a printer.
//
// The printer is the one that the machine's wiring names (File= in section [Printer] of platform.ini: each print goes
// there as a PDF page, the former one replaced), else the one that the desktop calls its default. Offscreen only the
// first is looked for. A PDF file of the operator's choice is a printer too, and always there.
//
// A document leaves the program as a whole when it is ended; one that is dropped before leaves nothing, and a file that
// stood under its name stays.
#pragma once

#include "platform/paint.h"
#include "platform/types.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kelvo {

// What of the page can be printed on, in the printer's own pixels, and how many of them an inch has.
struct PrinterPage {
    int width = 0;
    int height = 0;
    int xPerInch = 0;
    int yPerInch = 0;
};

// Asked between the steps of a print; false: the print is to stop. waits: the printer takes nothing for now, and the
// procedure returns when something has come.
using AbortProc = std::function<bool(bool waits)>;

class PrintTarget;  // what takes the page: paper or a file

class Printer {
  public:
    // Null where there is none, or the fault "printer" is set.
    static std::unique_ptr<Printer> OpenDefault();
    // Nothing is written before the document begins. Null under the fault "printer".
    static std::unique_ptr<Printer> OpenPdf(std::string_view path);
    ~Printer();
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    const std::string& Name() const;  // "Laser 2"; of a file "PDF"
    const std::string& Port() const;  // where it prints: the printer's place, the file's path
    bool IsFile() const;
    PrinterPage Page() const;

    // Each is false where it fails; the faults "abort procedure", "start printing", "print bits", "print page" and "end
    // printing" make them. While the fault "printer busy" is set a page waits before it is taken.
    bool SetAbortProc(AbortProc abortProc);
    bool StartDoc(std::string_view title);  // a file: whether its name can be written
    // The part source of a picture into destination on the page: pixels are repeated or left out, never mixed, and each
    // keeps its colour exactly. False too where source is empty or reaches outside the picture, and where memory is
    // refused.
    bool StretchBits(const Rect& destination, const DeviceBitmap& picture, const Rect& source);
    bool NewFrame();  // the page is whole
    bool EndDoc();    // hands it over, and the transcript tells {"kind":"print","text":title}

  private:
    explicit Printer(std::unique_ptr<PrintTarget> target);
    void AskAbortProc() const;

    std::unique_ptr<PrintTarget> target_;
    std::string title_;
    AbortProc abortProc_;
};

}  // namespace kelvo
