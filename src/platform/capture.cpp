// Pictures of what the windows show: each window's own rendering at the device ratio, and several composed as they lie
// on the screen.

#include "platform/application.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/paint.h"
#include "platform/qt_window.h"

#include <QApplication>
#include <QBuffer>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace kelvo {

namespace {

QImage Rendering(QWidget& widget)
{
    QImage image = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
    image.setDevicePixelRatio(1);
    return image;
}

void ToBitmap(const QImage& image, DeviceBitmap& result)
{
    result.width = image.width();
    result.height = image.height();
    result.pixels.resize(static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.height()));
    auto* out = result.pixels.data();
    for (int y = 0; y < image.height(); ++y) {
        const auto* const row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        out = std::transform(row, row + image.width(), out, [](QRgb rgb) { return rgb & RGB_MASK; });
    }
}

// The windows that are seen, from the back to the front: the main window, what stands beside it, what is modal, menus.
std::vector<QWidget*> VisibleWindows()
{
    QWidget* const frame = MainWindow() ? MainWindow()->frame.data() : nullptr;
    const std::vector<QWidget*> modal = ModalWidgets();
    const auto rank = [&](QWidget* widget) -> std::ptrdiff_t {
        if (widget == frame) return 0;
        if (widget->windowType() == Qt::Popup || widget->windowType() == Qt::ToolTip) return 1'000'000;
        return 1 + (std::ranges::find(modal, widget) - modal.begin() + 1) % (std::ssize(modal) + 1);
    };
    std::vector<QWidget*> widgets;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && !widget->isMinimized()) widgets.push_back(widget);
    }
    std::ranges::stable_sort(widgets, {}, rank);
    return widgets;
}

// What a window manager would add: without it a picture wouldn't tell a dialog from what lies behind it.
constexpr int kTitleHeight = 28;
constexpr int kFrameWidth = 1;

bool HasTitle(const QWidget& widget)
{
    const bool isMain = MainWindow() && &widget == MainWindow()->frame;
    return !isMain && widget.isWindow() && widget.windowType() != Qt::Popup && widget.windowType() != Qt::ToolTip;
}

QRect PlaceWithTitle(const QWidget& widget)
{
    const QRect place = widget.geometry();
    if (!HasTitle(widget)) return place;
    return place.adjusted(-kFrameWidth, -kTitleHeight, kFrameWidth, kFrameWidth);
}

void DrawTitle(QPainter& painter, const QWidget& widget, const QRect& place)
{
    const QPalette& palette = widget.palette();
    const QRect line(place.left(), place.top(), place.width(), kTitleHeight);
    painter.fillRect(place, palette.color(QPalette::Dark));
    painter.fillRect(line, palette.color(QPalette::Mid));
    QFont font = widget.font();
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(palette.color(QPalette::WindowText));
    painter.drawText(line.adjusted(10, 0, -10, 0), Qt::AlignVCenter | Qt::AlignLeft, widget.windowTitle());
}

QImage Composition(const std::vector<QWidget*>& widgets)
{
    QRect whole;
    double ratio = 1;
    for (const QWidget* const widget : widgets) {
        whole = whole.united(PlaceWithTitle(*widget));
        ratio = std::max(ratio, widget->devicePixelRatioF());
    }
    if (!widgets.empty()) ratio = widgets.front()->devicePixelRatioF();
    QImage image(static_cast<int>(std::ceil(whole.width() * ratio)),
                 static_cast<int>(std::ceil(whole.height() * ratio)), QImage::Format_RGB32);
    if (image.isNull()) return image;
    image.fill(Qt::black);
    QPainter painter(&image);
    for (QWidget* const widget : widgets) {
        painter.resetTransform();
        painter.scale(ratio, ratio);
        painter.translate(-whole.topLeft());
        if (HasTitle(*widget)) DrawTitle(painter, *widget, PlaceWithTitle(*widget));
        // Pixel for pixel, not scaled once more.
        const QPoint at = widget->geometry().topLeft() - whole.topLeft();
        painter.resetTransform();
        painter.drawImage(QPoint(qRound(at.x() * ratio), qRound(at.y() * ratio)), Rendering(*widget));
    }
    return image;
}

// Of one or more of our windows: what they show within the area.
bool ComposeOwnWindows(const QRect& area, DeviceBitmap& result)
{
    const std::vector<QWidget*> widgets = VisibleWindows();
    const bool any = std::ranges::any_of(widgets, [&](const QWidget* w) { return w->geometry().intersects(area); });
    if (!any) return false;
    const double ratio = widgets.front()->devicePixelRatioF();
    QImage image(static_cast<int>(std::lround(area.width() * ratio)),
                 static_cast<int>(std::lround(area.height() * ratio)), QImage::Format_RGB32);
    if (image.isNull()) return false;
    image.fill(Qt::black);
    QPainter painter(&image);
    for (QWidget* const widget : widgets) {
        const QPoint at = widget->geometry().topLeft() - area.topLeft();
        painter.drawImage(QPoint(qRound(at.x() * ratio), qRound(at.y() * ratio)), Rendering(*widget));
    }
    painter.end();
    ToBitmap(image, result);
    return true;
}

QScreen* ScreenOfMain()
{
    HWND window = MainWindow();
    return window && window->frame ? window->frame->screen() : QGuiApplication::primaryScreen();
}

bool SystemShowsTheScreen()
{
    return !RunsOffscreen() && QGuiApplication::platformName() == QStringLiteral("xcb");
}

}  // namespace

bool CaptureWindowPixels(HWND window, bool client, DeviceBitmap& result)
{
    if (!IsWindow(window) || !window->widget) return false;
    QWidget& widget = !client && window->frame ? static_cast<QWidget&>(*window->frame) : *window->widget;
    const QImage image = Rendering(widget);
    if (image.isNull()) return false;
    ToBitmap(image, result);
    return true;
}

bool CaptureScreenPixels(const Rect& area, DeviceBitmap& result)
{
    if (!qApp || area.Empty()) return false;
    QScreen* const screen = ScreenOfMain();
    if (screen && SystemShowsTheScreen()) {
        const QPoint origin = screen->geometry().topLeft();
        const QPixmap seen =
            screen->grabWindow(0, area.left - origin.x(), area.top - origin.y(), area.Width(), area.Height());
        if (!seen.isNull()) {
            QImage image = seen.toImage().convertToFormat(QImage::Format_RGB32);
            image.setDevicePixelRatio(1);
            ToBitmap(image, result);
            return true;
        }
    }
    return ComposeOwnWindows({area.left, area.top, area.Width(), area.Height()}, result);
}

Rect ScreenRect()
{
    if (!qApp || !ScreenOfMain()) return {};
    const QRect place = ScreenOfMain()->geometry();
    return {place.left(), place.top(), place.left() + place.width(), place.top() + place.height()};
}

std::uint32_t ScreenColor(Point client)
{
    HWND window = MainWindow();
    if (!window || !window->widget || !window->widget->rect().contains(client.x, client.y)) return 0;
    const QImage image = Rendering(*window->widget);
    const double ratio = DeviceRatio(*window);
    return image.pixel(static_cast<int>(client.x * ratio), static_cast<int>(client.y * ratio)) & RGB_MASK;
}

bool SaveScreenshot(std::string_view path)
{
    if (!qApp) return false;
    const QImage image = Composition(VisibleWindows());
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG")) return false;
    return ReplaceFile(path, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

}  // namespace kelvo
