#include "platform/print.h"

#include "platform/application.h"
#include "platform/machine.h"
#include "platform/qt_window.h"
#include "platform/transcript.h"

#include <QImage>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>

#include <memory>
#include <string>

namespace kelvo {

namespace {

// Null where nothing takes a page.
std::unique_ptr<QPrinter> OpenPrinter()
{
    const std::string file = MachineSetting("Printer", "File", "");
    if (!file.empty()) {
        auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
        printer->setOutputFormat(QPrinter::PdfFormat);
        printer->setOutputFileName(ToQString(file));
        return printer;
    }
    if (RunsOffscreen()) return nullptr;
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    if (info.isNull()) return nullptr;
    return std::make_unique<QPrinter>(info, QPrinter::HighResolution);
}

// Pixels are repeated or left out, never mixed: a dot of a plot stays a dot.
bool PaintPage(QPrinter& printer, const QImage& image)
{
    QPainter painter;
    if (!painter.begin(&printer)) return false;
    const QSize page = painter.viewport().size();
    const QSize size = image.size().scaled(page, Qt::KeepAspectRatio);
    painter.drawImage(QRect(QPoint(0, 0), size), image);
    return painter.end();
}

}  // namespace

bool PrintPicture(const DeviceBitmap& picture, std::string_view title)
{
    if (picture.pixels.empty()) return false;
    const std::unique_ptr<QPrinter> printer = OpenPrinter();
    if (!printer) return false;
    printer->setDocName(ToQString(title));
    const QImage image(reinterpret_cast<const uchar*>(picture.pixels.data()), picture.width, picture.height,
                       QImage::Format_RGB32);
    if (!PaintPage(*printer, image)) return false;
    Transcribe("print", {{"text", std::string(title)}});
    return true;
}

}  // namespace kelvo
