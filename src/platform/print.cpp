#include "platform/print.h"

#include "platform/application.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/memory.h"
#include "platform/qt_window.h"
#include "platform/transcript.h"

#include <QBuffer>
#include <QImage>
#include <QLocale>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QPrinter>
#include <QPrinterInfo>

#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

// A piece of the page. The page is kept as its pieces until it is whole: once a toolkit's printer has begun it can't be
// stopped any more.
struct PagePiece {
    QRect destination;
    QImage image;
};

bool Paint(QPaintDevice& device, const std::vector<PagePiece>& page)
{
    QPainter painter;
    if (!painter.begin(&device)) return false;
    // Otherwise pictures are made smaller by leaving out what the eye won't miss.
    painter.setRenderHint(QPainter::LosslessImageRendering);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    for (const PagePiece& piece : page) painter.drawImage(piece.destination, piece.image);
    return painter.end();
}

PrinterPage PageOf(const QPagedPaintDevice& device)
{
    return {.width = device.width(),
            .height = device.height(),
            .xPerInch = device.logicalDpiX(),
            .yPerInch = device.logicalDpiY()};
}

// Null where memory is refused.
QImage PartOf(const DeviceBitmap& picture, const Rect& source)
{
    const auto rowBytes = static_cast<std::size_t>(source.Width()) * sizeof(std::uint32_t);
    if (!MemoryAvailable(rowBytes * static_cast<std::size_t>(source.Height()))) return {};
    QImage image(source.Width(), source.Height(), QImage::Format_RGB32);
    if (image.isNull()) return {};
    for (int y = 0; y < source.Height(); ++y) {
        const auto first = static_cast<std::size_t>(source.top + y) * static_cast<std::size_t>(picture.width) +
                           static_cast<std::size_t>(source.left);
        std::memcpy(image.scanLine(y), picture.pixels.data() + first, rowBytes);
    }
    return image;
}

bool LiesIn(const Rect& source, const DeviceBitmap& picture)
{
    return !source.Empty() && source.left >= 0 && source.top >= 0 && source.right <= picture.width &&
           source.bottom <= picture.height;
}

}  // namespace

class PrintTarget {
  public:
    PrintTarget() = default;
    virtual ~PrintTarget() = default;
    PrintTarget(const PrintTarget&) = delete;
    PrintTarget& operator=(const PrintTarget&) = delete;

    virtual PrinterPage Page() const = 0;
    virtual bool Begin(const std::string& title) = 0;
    virtual bool Finish() = 0;
    virtual bool HandOver() = 0;

    std::string name;
    std::string port;
    bool isFile = false;
    std::vector<PagePiece> pieces;
};

namespace {

// The toolkit's writer tells of no full disk: it writes into memory, and the file is replaced by it as a whole.
class PdfFile : public PrintTarget {
  public:
    explicit PdfFile(std::string_view path)
    {
        name = "PDF";
        port = path;
        isFile = true;
        const bool usesInches = QLocale::system().measurementSystem() == QLocale::ImperialUSSystem;
        writer_.setPageSize(QPageSize(usesInches ? QPageSize::Letter : QPageSize::A4));
        writer_.setPageMargins(QMarginsF(kMarginMm, kMarginMm, kMarginMm, kMarginMm), QPageLayout::Millimeter);
        writer_.setResolution(kDotsPerInch);
        writer_.setCreator(QStringLiteral("Kelvo"));
    }
    PrinterPage Page() const override { return PageOf(writer_); }
    bool Begin(const std::string& title) override
    {
        file_ = NewFile::Begin(port);
        writer_.setTitle(ToQString(title));
        return file_.has_value();
    }
    bool Finish() override { return buffer_.open(QIODevice::WriteOnly) && Paint(writer_, pieces); }
    bool HandOver() override
    {
        const QByteArray& bytes = buffer_.data();
        const auto size = static_cast<std::size_t>(bytes.size());
        if (!file_ || size == 0) return false;
        return file_->Contents().Write(std::as_bytes(std::span(bytes.constData(), size))) == size && file_->Keep();
    }

  private:
    static constexpr int kDotsPerInch = 1200;
    static constexpr double kMarginMm = 10;  // what a printer can't reach

    std::optional<NewFile> file_;
    QBuffer buffer_;
    QPdfWriter writer_{&buffer_};
};

class Paper : public PrintTarget {
  public:
    explicit Paper(const QPrinterInfo& info) : printer_(info, QPrinter::HighResolution)
    {
        name = FromQString(info.printerName());
        port = FromQString(info.location().isEmpty() ? info.makeAndModel() : info.location());
        printer_.setCreator(QStringLiteral("Kelvo"));
    }
    PrinterPage Page() const override { return PageOf(printer_); }
    bool Begin(const std::string& title) override
    {
        printer_.setDocName(ToQString(title));
        return printer_.isValid();
    }
    bool Finish() override { return true; }
    bool HandOver() override { return Paint(printer_, pieces) && printer_.printerState() != QPrinter::Error; }

  private:
    QPrinter printer_;
};

}  // namespace

Printer::Printer(std::unique_ptr<PrintTarget> target) : target_(std::move(target)) {}

Printer::~Printer() = default;

std::unique_ptr<Printer> Printer::OpenDefault()
{
    const std::string file = MachineSetting("Printer", "File", "");
    if (!file.empty()) return OpenPdf(file);
    if (RunsOffscreen() || FaultIsSet("printer")) return nullptr;
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    if (info.isNull()) return nullptr;
    return std::unique_ptr<Printer>(new Printer(std::make_unique<Paper>(info)));
}

std::unique_ptr<Printer> Printer::OpenPdf(std::string_view path)
{
    if (FaultIsSet("printer")) return nullptr;
    return std::unique_ptr<Printer>(new Printer(std::make_unique<PdfFile>(path)));
}

const std::string& Printer::Name() const
{
    return target_->name;
}

const std::string& Printer::Port() const
{
    return target_->port;
}

bool Printer::IsFile() const
{
    return target_->isFile;
}

PrinterPage Printer::Page() const
{
    return target_->Page();
}

bool Printer::SetAbortProc(AbortProc abortProc)
{
    abortProc_ = std::move(abortProc);
    return !FaultIsSet("abort procedure");
}

bool Printer::StartDoc(std::string_view title)
{
    title_ = title;
    return !FaultIsSet("start printing") && target_->Begin(title_);
}

bool Printer::StretchBits(const Rect& destination, const DeviceBitmap& picture, const Rect& source)
{
    AskAbortProc();
    if (FaultIsSet("print bits") || !LiesIn(source, picture)) return false;
    QImage image = PartOf(picture, source);
    if (image.isNull()) return false;
    const QRect place(destination.left, destination.top, destination.Width(), destination.Height());
    target_->pieces.push_back({place, std::move(image)});
    return true;
}

bool Printer::NewFrame()
{
    if (FaultIsSet("print page") || !target_->Finish()) return false;
    AskAbortProc();
    return true;
}

bool Printer::EndDoc()
{
    if (FaultIsSet("end printing") || !target_->HandOver()) return false;
    Transcribe("print", {{"text", title_}});
    return true;
}

void Printer::AskAbortProc() const
{
    if (!abortProc_ || !abortProc_(false)) return;
    while (FaultIsSet("printer busy") && abortProc_(true)) continue;
}

}  // namespace kelvo
