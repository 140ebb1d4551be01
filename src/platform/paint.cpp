#include "platform/paint.h"

#include "platform/faults.h"
#include "platform/qt_window.h"

#include <QClipboard>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kelvo {

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

QColor ToQColor(ColorRef color)
{
    return {static_cast<int>(color & 0xFF), static_cast<int>((color >> 8) & 0xFF),
            static_cast<int>((color >> 16) & 0xFF)};
}

Window* SurfaceOf(HWND window)
{
    if (!IsWindow(window) || !window->widget) return nullptr;
    EnsureSurface(*window);
    return window->surface.isNull() ? nullptr : window;
}

std::int64_t ToDevice(int logical, double ratio)
{
    return std::llround(logical * ratio);
}

// Where a rectangle of the window's surface lies on the device, and the part of it that may be painted. 64 bits: a
// picture at a large zoom may reach far beyond.
struct DeviceArea {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::int64_t right = 0;
    std::int64_t bottom = 0;
    bool Empty() const { return right <= left || bottom <= top; }
    DeviceArea And(const DeviceArea& other) const
    {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }
};

DeviceArea ToDevice(const Rect& rect, double ratio)
{
    return {ToDevice(rect.left, ratio), ToDevice(rect.top, ratio), ToDevice(rect.right, ratio),
            ToDevice(rect.bottom, ratio)};
}

Rect Scrolled(const Window& window, const Rect& rect)
{
    const Point topLeft = ToClient(window, {rect.left, rect.top});
    return {topLeft.x, topLeft.y, topLeft.x + rect.Width(), topLeft.y + rect.Height()};
}

// The whole surface; of a scrolled window only the area that scrolls.
DeviceArea PaintableArea(const Window& window)
{
    const DeviceArea whole{0, 0, window.surface.width(), window.surface.height()};
    if (GetScrollOrigin(const_cast<HWND>(&window)) == Point{}) return whole;
    return whole.And(ToDevice(PictureArea(window), DeviceRatio(window)));
}

// What lies under scroll bars and other opaque children isn't seen, and each of them would be drawn again with it.
QRegion SeenOf(const QWidget& widget, const QRect& area)
{
    QRegion seen(area);
    for (const QObject* object : widget.children()) {
        const auto* const child = qobject_cast<const QWidget*>(object);
        if (!child || child->isWindow() || !child->isVisible()) continue;
        const bool opaque = child->autoFillBackground() || child->testAttribute(Qt::WA_OpaquePaintEvent);
        if (opaque) seen -= child->geometry();
    }
    return seen;
}

void ShowArea(Window& window, const DeviceArea& area)
{
    const double ratio = DeviceRatio(window);
    const QPoint topLeft(static_cast<int>(std::floor(static_cast<double>(area.left) / ratio)),
                         static_cast<int>(std::floor(static_cast<double>(area.top) / ratio)));
    const QPoint bottomRight(static_cast<int>(std::ceil(static_cast<double>(area.right) / ratio)),
                             static_cast<int>(std::ceil(static_cast<double>(area.bottom) / ratio)));
    window.widget->update(SeenOf(*window.widget, QRect(topLeft, bottomRight)));
}

std::uint32_t* Row(QImage& surface, std::int64_t y)
{
    return reinterpret_cast<std::uint32_t*>(surface.scanLine(static_cast<int>(y)));
}

void Fill(Window& window, const Rect& area, std::uint32_t rgb)
{
    DeviceArea target = ToDevice(Scrolled(window, area), DeviceRatio(window));
    // The last logical pixel may end within a device pixel.
    if (area.right >= window.widget->width())
        target.right = std::max<std::int64_t>(target.right, window.surface.width());
    if (area.bottom >= window.widget->height()) {
        target.bottom = std::max<std::int64_t>(target.bottom, window.surface.height());
    }
    target = target.And(PaintableArea(window));
    if (target.Empty()) return;
    for (std::int64_t y = target.top; y < target.bottom; ++y) {
        std::uint32_t* const row = Row(window.surface, y);
        std::fill(row + target.left, row + target.right, rgb | kOpaque);
    }
    ShowArea(window, target);
}

int BlockAt(double ratio, int zoom)
{
    return static_cast<int>(std::max<long>(std::lround(zoom * ratio), 1));
}

int ExtentAt(double ratio, int count, int zoom)
{
    const double devicePixels = static_cast<double>(count) * BlockAt(ratio, zoom);
    return static_cast<int>(std::min(std::ceil(devicePixels / ratio - 1e-9), 2147483647.0));
}

constexpr int kLargestZoom = 64;

// The block of a pixel where count pixels are to fill a length; 0: the length is no zoom of theirs.
int BlockFor(double ratio, int count, int length)
{
    if (length % count == 0) return BlockAt(ratio, length / count);
    for (int zoom = 1; zoom <= kLargestZoom; ++zoom) {
        if (ExtentAt(ratio, count, zoom) == length) return BlockAt(ratio, zoom);
    }
    return 0;
}

// One direction of a stretch: which pixel of the picture each device pixel shows.
struct Axis {
    std::int64_t start = 0;  // device pixels; sources[0] stands there
    std::vector<int> sources;
};

// from, length: logical. clipFrom, clipTo: device pixels.
Axis StretchAxis(double ratio, int from, int length, int count, std::int64_t clipFrom, std::int64_t clipTo)
{
    const std::int64_t first = ToDevice(from, ratio);
    const int block = BlockFor(ratio, count, length);
    const std::int64_t deviceLength = block > 0 ? std::int64_t{count} * block : ToDevice(from + length, ratio) - first;
    Axis axis{std::max(first, clipFrom), {}};
    for (std::int64_t device = axis.start; device < std::min(first + deviceLength, clipTo); ++device) {
        const std::int64_t offset = device - first;
        axis.sources.push_back(
            static_cast<int>(block > 0 ? offset / block : (2 * offset + 1) * count / (2 * deviceLength)));
    }
    return axis;
}

// Both directions of a picture of width x height pixels in a window; empty where nothing of it can be seen.
struct Axes {
    Axis columns;
    Axis rows;
    bool Empty() const { return columns.sources.empty() || rows.sources.empty(); }
};

Axes StretchAxes(const Window& window, const Rect& destination, int width, int height)
{
    if (width <= 0 || height <= 0 || destination.Empty()) return {};
    const double ratio = DeviceRatio(window);
    const DeviceArea clip = PaintableArea(window);
    const Rect place = Scrolled(window, destination);
    return {StretchAxis(ratio, place.left, place.Width(), width, clip.left, clip.right),
            StretchAxis(ratio, place.top, place.Height(), height, clip.top, clip.bottom)};
}

void ShowStretched(Window& window, const Axes& axes)
{
    const auto& [columns, rows] = axes;
    ShowArea(window, {columns.start, rows.start, columns.start + std::ssize(columns.sources),
                      rows.start + std::ssize(rows.sources)});
}

// pixel(x, y) gives 0xFFRRGGBB. Rows that repeat are copied.
template <typename RowReader>
bool Stretch(HWND handle, const Rect& destination, int width, int height, RowReader readRow)
{
    Window* const window = SurfaceOf(handle);
    if (!window) return false;
    const Axes axes = StretchAxes(*window, destination, width, height);
    if (axes.Empty()) return true;
    const auto& [columns, rows] = axes;

    const std::size_t rowBytes = columns.sources.size() * sizeof(std::uint32_t);
    const std::uint32_t* rowBefore = nullptr;
    for (std::size_t i = 0; i < rows.sources.size(); ++i) {
        std::uint32_t* const row = Row(window->surface, rows.start + static_cast<std::int64_t>(i)) + columns.start;
        if (rowBefore && rows.sources[i] == rows.sources[i - 1]) {
            std::memcpy(row, rowBefore, rowBytes);
        } else {
            readRow(rows.sources[i], columns.sources, row);
        }
        rowBefore = row;
    }
    ShowStretched(*window, axes);
    return true;
}

}  // namespace

void FillSurface(HWND window, const Rect& area, ColorRef color)
{
    if (Window* const surface = SurfaceOf(window)) Fill(*surface, area, ToQColor(color).rgb());
}

void InvalidateRect(HWND window, const Rect* area, bool erase)
{
    if (!IsWindow(window) || !window->widget) return;
    Window* const surface = SurfaceOf(window);
    if (surface && erase) {
        if (area) {
            Fill(*surface, *area, BackgroundColor(*surface));
        } else {
            EraseSurface(*surface);
        }
    }
    window->paintDue = true;
    PostPaints();
}

bool DrawTextLine(HWND window, int x, int y, std::string_view text, TextAlign align, ColorRef color,
                  ColorRef background)
{
    Window* const surface = SurfaceOf(window);
    if (!surface || FaultIsSet("text")) return false;
    const double ratio = DeviceRatio(*surface);
    const QString line = ToQString(text);
    const QFont font = surface->widget->font();
    const QFontMetrics metrics(font, surface->widget);
    const int width = metrics.horizontalAdvance(line);
    if (align == TextAlign::kRight) x -= width;
    if (align == TextAlign::kCentre) x -= width / 2;
    const Point place = ToClient(*surface, {x, y});
    Fill(*surface, {x, y, x + width, y + metrics.lineSpacing()}, ToQColor(background).rgb());

    // The same bits, with the ratio: letters are drawn as sharp as the device shows them.
    QImage& pixels = surface->surface;
    QImage canvas(pixels.bits(), pixels.width(), pixels.height(), pixels.bytesPerLine(), QImage::Format_RGB32);
    canvas.setDevicePixelRatio(ratio);
    QPainter painter(&canvas);
    painter.setFont(font);
    painter.setPen(ToQColor(color));
    painter.drawText(QPoint(place.x, place.y + metrics.ascent()), line);
    painter.end();
    surface->widget->update(QRect(place.x - 1, place.y, width + 2, metrics.lineSpacing() + 1));
    return true;
}

int DeviceBlock(HWND window, int zoom)
{
    return BlockAt(IsWindow(window) ? DeviceRatio(*window) : 1.0, zoom);
}

int ScaledExtent(HWND window, int count, int zoom)
{
    return ExtentAt(IsWindow(window) ? DeviceRatio(*window) : 1.0, count, zoom);
}

bool StretchPixels(HWND window, const Rect& destination, const IndexedPixels& source)
{
    return Stretch(window, destination, source.width, source.height,
                   [&source](int y, const std::vector<int>& columns, std::uint32_t* row) {
                       const std::uint8_t* const pixels = source.firstRow + y * source.rowStride;
                       for (const int column : columns) *row++ = source.colors[pixels[column]] | kOpaque;
                   });
}

bool StretchPixels(HWND window, const Rect& destination, const DeviceBitmap& source)
{
    const bool whole =
        source.width > 0 && source.height > 0 &&
        source.pixels.size() / static_cast<std::size_t>(source.width) >= static_cast<std::size_t>(source.height);
    return Stretch(window, destination, whole ? source.width : 0, whole ? source.height : 0,
                   [&source](int y, const std::vector<int>& columns, std::uint32_t* row) {
                       const std::uint32_t* const pixels =
                           source.pixels.data() + static_cast<std::ptrdiff_t>(y) * source.width;
                       for (const int column : columns) *row++ = pixels[column] | kOpaque;
                   });
}

bool StretchMarks(HWND handle, const Rect& destination, const IndexedPixels& marks)
{
    Window* const window = SurfaceOf(handle);
    if (!window) return false;
    const Axes axes = StretchAxes(*window, destination, marks.width, marks.height);
    if (axes.Empty()) return true;
    const auto& [columns, rows] = axes;

    for (std::size_t i = 0; i < rows.sources.size(); ++i) {
        const std::uint8_t* const values = marks.firstRow + rows.sources[i] * marks.rowStride;
        if (std::all_of(values, values + marks.width, [](std::uint8_t value) { return value == 0; })) continue;
        std::uint32_t* pixel = Row(window->surface, rows.start + static_cast<std::int64_t>(i)) + columns.start;
        for (const int column : columns.sources) {
            if (values[column] != 0) *pixel = marks.colors[values[column]] | kOpaque;
            ++pixel;
        }
    }
    ShowStretched(*window, axes);
    return true;
}

void CopyToClipboard(const DeviceBitmap& picture)
{
    if (!qGuiApp || picture.width <= 0 || picture.height <= 0) return;
    QImage image(picture.width, picture.height, QImage::Format_RGB32);
    if (image.isNull()) return;
    const auto width = static_cast<std::size_t>(picture.width);
    for (int y = 0; y < picture.height; ++y) {
        const std::uint32_t* const pixels = picture.pixels.data() + static_cast<std::size_t>(y) * width;
        std::transform(pixels, pixels + width, Row(image, y), [](std::uint32_t rgb) { return rgb | kOpaque; });
    }
    QGuiApplication::clipboard()->setImage(image);
}

}  // namespace kelvo
