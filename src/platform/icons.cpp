#include "platform/icons.h"

#include "platform/qt_window.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

namespace kelvo {

namespace {

constexpr int kCursorSize = 32;

QByteArray IconSource(std::string_view name)
{
    QFile file(QStringLiteral(":/icons/") + QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())) +
               QStringLiteral(".svg"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void PaintIcon(QPainter& painter, const QRectF& place, QByteArray source, const QColor& color)
{
    source.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(source);
    renderer.render(&painter, place);
}

QColor LineColor(QIcon::Mode mode)
{
    const QPalette palette = QApplication::palette();
    if (mode == QIcon::Disabled) return palette.color(QPalette::Disabled, QPalette::ButtonText);
    if (mode == QIcon::Selected) return palette.color(QPalette::Active, QPalette::HighlightedText);
    return palette.color(QPalette::Active, QPalette::ButtonText);
}

class LineIconEngine : public QIconEngine {
  public:
    explicit LineIconEngine(QByteArray source) : source_(std::move(source)) {}

    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State /*state*/) override
    {
        PaintIcon(*painter, place, source_, LineColor(mode));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap result(size);
        result.fill(Qt::transparent);
        QPainter painter(&result);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return result;
    }

    QIconEngine* clone() const override { return new LineIconEngine(*this); }

  private:
    QByteArray source_;
};

}  // namespace

QIcon IconNamed(std::string_view name)
{
    const QByteArray source = IconSource(name);
    return source.isEmpty() ? QIcon() : QIcon(new LineIconEngine(source));
}

QPixmap IconPixmap(std::string_view name, int size, const QColor& color, double deviceRatio)
{
    const int side = qRound(size * deviceRatio);
    QPixmap result(side, side);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    PaintIcon(painter, QRectF(0, 0, side, side), IconSource(name), color);
    painter.end();
    result.setDevicePixelRatio(deviceRatio);
    return result;
}

QCursor CursorNamed(std::string_view name)
{
    return QCursor(IconPixmap(name, kCursorSize, Qt::black, qApp->devicePixelRatio()), kCursorSize / 2,
                   kCursorSize / 2);
}

}  // namespace kelvo
