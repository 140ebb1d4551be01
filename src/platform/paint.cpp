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

struct DevicePoint {
    std::int64_t x = 0;
    std::int64_t y = 0;
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

// Logical pixels that hold all of an area of the device.
QRect LogicalPixels(const DeviceArea& area, double ratio)
{
    const QPoint topLeft(static_cast<int>(std::floor(static_cast<double>(area.left) / ratio)),
                         static_cast<int>(std::floor(static_cast<double>(area.top) / ratio)));
    const QPoint bottomRight(static_cast<int>(std::ceil(static_cast<double>(area.right) / ratio)),
                             static_cast<int>(std::ceil(static_cast<double>(area.bottom) / ratio)));
    return {topLeft, bottomRight};
}

void ShowArea(Window& window, const DeviceArea& area)
{
    ShowSoon(window, LogicalPixels(area, DeviceRatio(window)));
}

std::uint32_t* Row(QImage& surface, std::int64_t y)
{
    return reinterpret_cast<std::uint32_t*>(surface.scanLine(static_cast<int>(y)));
}

// All of it lies on the surface.
void FillPixels(QImage& surface, const DeviceArea& area, std::uint32_t rgb)
{
    for (std::int64_t y = area.top; y < area.bottom; ++y) {
        std::uint32_t* const row = Row(surface, y);
        std::fill(row + area.left, row + area.right, rgb | kOpaque);
    }
}

void FillDevice(Window& window, const DeviceArea& area, std::uint32_t rgb)
{
    const DeviceArea target = area.And(PaintableArea(window));
    if (target.Empty()) return;
    FillPixels(window.surface, target, rgb);
    ShowArea(window, target);
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
    FillDevice(window, target, rgb);
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
    std::int64_t first = 0;         // device pixel at which the picture begins, painted or not
    std::int64_t deviceLength = 0;  // of the whole picture
    int block = 0;                  // device pixels of one of the picture; 0: the nearest is taken
    int pixels = 0;                 // of the picture
    std::int64_t start = 0;         // the device pixels that are painted
    std::int64_t end = 0;

    int SourceOf(std::int64_t device) const
    {
        const std::int64_t offset = device - first;
        return static_cast<int>(block > 0 ? offset / block : (2 * offset + 1) * pixels / (2 * deviceLength));
    }
    std::size_t Count() const { return static_cast<std::size_t>(end - start); }
};

// from, length: logical. clipFrom, clipTo: device pixels.
Axis StretchAxis(double ratio, int from, int length, int pixels, std::int64_t clipFrom, std::int64_t clipTo)
{
    Axis axis;
    axis.first = ToDevice(from, ratio);
    axis.block = BlockFor(ratio, pixels, length);
    axis.deviceLength =
        axis.block > 0 ? std::int64_t{pixels} * axis.block : ToDevice(from + length, ratio) - axis.first;
    axis.pixels = pixels;
    axis.start = std::max(axis.first, clipFrom);
    axis.end = std::max(std::min(axis.first + axis.deviceLength, clipTo), axis.start);
    return axis;
}

// Goes along an axis: put(source, run) for each pixel of the picture that is seen, and the device pixels that it takes
// there, from the first painted one on. kBlock is the axis's block, or 0: then it isn't known before.
template <int kBlock, typename Put>
void WalkBlocks(const Axis& axis, Put put)
{
    const int block = kBlock > 0 ? kBlock : axis.block;
    const std::int64_t offset = axis.start - axis.first;
    auto left = static_cast<std::int64_t>(axis.Count());
    auto source = static_cast<int>(offset / block);
    const auto cut = static_cast<int>(offset % block);  // of the first block, outside
    if (cut > 0) {
        const auto run = static_cast<int>(std::min<std::int64_t>(block - cut, left));
        put(source++, run);
        left -= run;
    }
    for (; left >= block; left -= block) put(source++, block);
    if (left > 0) put(source, static_cast<int>(left));
}

template <typename Put>
void WalkNearest(const Axis& axis, Put put)
{
    // SourceOf with one addition a step.
    const std::int64_t whole = 2 * axis.deviceLength;
    const std::int64_t at = (2 * (axis.start - axis.first) + 1) * axis.pixels;
    const std::int64_t step = std::int64_t{2} * axis.pixels;
    std::int64_t source = at / whole;
    std::int64_t rest = at % whole;
    for (std::int64_t device = axis.start; device < axis.end; ++device) {
        put(static_cast<int>(source), 1);
        source += step / whole;
        rest += step % whole;
        if (rest >= whole) {
            rest -= whole;
            ++source;
        }
    }
}

// The usual zooms have loops of their own: nothing else is done for as many pixels.
template <typename Put>
void Walk(const Axis& axis, Put put)
{
    switch (axis.block) {
        case 0:
            return WalkNearest(axis, put);
        case 1:
            return WalkBlocks<1>(axis, put);
        case 2:
            return WalkBlocks<2>(axis, put);
        case 3:
            return WalkBlocks<3>(axis, put);
        case 4:
            return WalkBlocks<4>(axis, put);
        default:
            return WalkBlocks<0>(axis, put);
    }
}

// The pixels between two points, both inclusive, one for each step along the longer direction, which only goes through
// the area that can be seen: an end may lie far beyond.
template <typename Put>
void WalkLine(DevicePoint from, DevicePoint to, const DeviceArea& seen, Put put)
{
    const std::int64_t dx = to.x - from.x;
    const std::int64_t dy = to.y - from.y;
    const bool level = std::abs(dx) >= std::abs(dy);
    const std::int64_t steps = level ? std::abs(dx) : std::abs(dy);
    const std::int64_t begin = level ? from.x : from.y;
    const std::int64_t low = level ? seen.left : seen.top;
    const std::int64_t high = level ? seen.right : seen.bottom;
    const bool forward = (level ? dx : dy) >= 0;
    const std::int64_t first = std::max<std::int64_t>(forward ? low - begin : begin - high, 0);
    const std::int64_t last = std::min(forward ? high - begin : begin - low, steps);
    const auto part = [steps](std::int64_t length, std::int64_t i) {
        return steps == 0 ? 0 : std::llround(static_cast<double>(length * i) / static_cast<double>(steps));
    };
    for (std::int64_t i = first; i <= last; ++i) put(DevicePoint{from.x + part(dx, i), from.y + part(dy, i)});
}

// A row of the picture, each pixel in the colour that colorAt gives for it (0x00RRGGBB).
template <typename ColorAt>
void PaintRow(const Axis& columns, std::uint32_t* row, ColorAt colorAt)
{
    Walk(columns, [&](int source, int run) {
        const std::uint32_t color = colorAt(source) | kOpaque;
        for (int i = 0; i < run; ++i) row[i] = color;
        row += run;
    });
}

// Both directions of a picture of width x height pixels in a window; empty where nothing of it can be seen.
struct Axes {
    Axis columns;
    Axis rows;
    bool Empty() const { return columns.Count() == 0 || rows.Count() == 0; }
    DeviceArea Area() const { return {columns.start, rows.start, columns.end, rows.end}; }
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

// The device pixel at the corner of a logical one, and the first logical one whose corner isn't before a device pixel.
// A ratio like 1.1 has no exact number: a hair's breadth more is the same pixel.
constexpr double kHair = 1e-9;

std::int64_t CornerPixel(int logical, double ratio)
{
    return static_cast<std::int64_t>(std::floor(logical * ratio + kHair));
}

int FirstCornerFrom(std::int64_t device, double ratio)
{
    return static_cast<int>(std::ceil(static_cast<double>(device) / ratio - kHair));
}

// The pixel that a device pixel shows, or would show beside the picture.
int ShownAt(const Axis& axis, std::int64_t device)
{
    const std::int64_t offset = device - axis.first;
    if (axis.block > 0) return static_cast<int>(offset >= 0 ? offset / axis.block : (offset + 1) / axis.block - 1);
    if (axis.deviceLength <= 0) return 0;
    return axis.SourceOf(axis.first + std::clamp<std::int64_t>(offset, 0, axis.deviceLength - 1));
}

// The device pixel at which a pixel begins.
std::int64_t BeginOf(const Axis& axis, int pixel)
{
    if (axis.block > 0) return axis.first + std::int64_t{pixel} * axis.block;
    return axis.first + std::int64_t{pixel} * axis.deviceLength / std::max(axis.pixels, 1);
}

struct Span {
    int begin = 0;
    int end = 0;
};

Span CornersIn(const Axis& axis, int firstPixel, int endPixel, double ratio)
{
    const int begin = FirstCornerFrom(BeginOf(axis, firstPixel), ratio);
    return {begin, std::max(FirstCornerFrom(BeginOf(axis, endPixel), ratio), begin + 1)};
}

// readRow(y, columns, row) paints row y of the picture. Rows that repeat are copied.
template <typename RowReader>
bool Stretch(HWND handle, const Rect& destination, int width, int height, RowReader readRow)
{
    Window* const window = SurfaceOf(handle);
    if (!window) return false;
    const Axes axes = StretchAxes(*window, destination, width, height);
    if (axes.Empty()) return true;
    const auto& [columns, rows] = axes;

    const std::size_t rowBytes = columns.Count() * sizeof(std::uint32_t);
    const std::uint32_t* rowBefore = nullptr;
    int sourceBefore = -1;
    for (std::int64_t y = rows.start; y < rows.end; ++y) {
        std::uint32_t* const row = Row(window->surface, y) + columns.start;
        const int source = rows.SourceOf(y);
        if (source == sourceBefore) {
            std::memcpy(row, rowBefore, rowBytes);
        } else {
            readRow(source, columns, row);
        }
        rowBefore = row;
        sourceBefore = source;
    }
    ShowArea(*window, axes.Area());
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
    ShowSoon(*surface, QRect(place.x - 1, place.y, width + 2, metrics.lineSpacing() + 1));
    return true;
}

int TextWidth(HWND window, std::string_view text)
{
    if (!IsWindow(window) || !window->widget) return 0;
    return QFontMetrics(window->widget->font(), window->widget).horizontalAdvance(ToQString(text));
}

void DrawPolyline(HWND window, std::span<const Point> points, const Rect& clip, ColorRef color)
{
    Window* const surface = SurfaceOf(window);
    if (!surface || points.empty()) return;
    const double ratio = DeviceRatio(*surface);
    const int pen = BlockAt(ratio, 1);
    const DeviceArea inside = ToDevice(Scrolled(*surface, clip), ratio).And(PaintableArea(*surface));
    if (inside.Empty()) return;
    const DeviceArea wider{inside.left - pen, inside.top - pen, inside.right + pen, inside.bottom + pen};
    const std::uint32_t rgb = ToQColor(color).rgb();
    const auto place = [surface, ratio](Point point) {
        const Point seen = ToClient(*surface, point);
        return DevicePoint{ToDevice(seen.x, ratio), ToDevice(seen.y, ratio)};
    };
    DevicePoint from = place(points.front());
    DeviceArea drawn{from.x, from.y, from.x + pen, from.y + pen};  // shown once: a long trace has many points
    for (const Point& point : points) {
        const DevicePoint to = place(point);
        drawn = {std::min(drawn.left, to.x), std::min(drawn.top, to.y), std::max(drawn.right, to.x + pen),
                 std::max(drawn.bottom, to.y + pen)};
        WalkLine(from, to, wider, [&](DevicePoint at) {
            const DeviceArea dot = DeviceArea{at.x, at.y, at.x + pen, at.y + pen}.And(inside);
            if (!dot.Empty()) FillPixels(surface->surface, dot, rgb);
        });
        from = to;
    }
    drawn = drawn.And(inside);
    if (!drawn.Empty()) ShowArea(*surface, drawn);
}

std::vector<Point> PolylinePixels(std::span<const Point> points, const Rect& clip)
{
    std::vector<Point> pixels;
    if (points.empty() || clip.Empty()) return pixels;
    const DeviceArea inside{clip.left, clip.top, clip.right, clip.bottom};
    Point from = points.front();
    for (const Point& to : points) {
        WalkLine({from.x, from.y}, {to.x, to.y}, inside, [&](DevicePoint at) {
            if (DeviceArea{at.x, at.y, at.x + 1, at.y + 1}.And(inside).Empty()) return;
            pixels.push_back({static_cast<int>(at.x), static_cast<int>(at.y)});
        });
        from = to;
    }
    return pixels;
}

int PictureTextHeight()
{
    return QFontMetrics(QGuiApplication::font()).height();
}

int PictureTextWidth(std::string_view text)
{
    return QFontMetrics(QGuiApplication::font()).horizontalAdvance(ToQString(text));
}

bool DrawPictureText(DeviceBitmap& picture, int x, int y, std::string_view text, ColorRef color, ColorRef background)
{
    if (picture.pixels.empty() || FaultIsSet("text")) return false;
    const auto rowBytes = static_cast<qsizetype>(sizeof(std::uint32_t)) * picture.width;
    QImage canvas(reinterpret_cast<uchar*>(picture.pixels.data()), picture.width, picture.height, rowBytes,
                  QImage::Format_RGB32);
    // The edges of letters that are tuned to a screen's colours are coloured.
    QFont font = QGuiApplication::font();
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    const QFontMetrics metrics(font);
    const QString line = ToQString(text);
    QPainter painter(&canvas);
    painter.setFont(font);
    painter.fillRect(x, y, metrics.horizontalAdvance(line), metrics.height(), ToQColor(background));
    painter.setPen(ToQColor(color));
    painter.drawText(QPoint(x, y + metrics.ascent()), line);
    painter.end();
    // The format leaves the highest byte open.
    for (std::uint32_t& pixel : picture.pixels) pixel &= RGB_MASK;
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
                   [&source](int y, const Axis& columns, std::uint32_t* row) {
                       const std::uint8_t* const pixels = source.firstRow + y * source.rowStride;
                       const std::uint32_t* const colors = source.colors;
                       PaintRow(columns, row, [=](int x) { return colors[pixels[x]]; });
                   });
}

bool StretchPixels(HWND window, const Rect& destination, const DeviceBitmap& source)
{
    const bool whole =
        source.width > 0 && source.height > 0 &&
        source.pixels.size() / static_cast<std::size_t>(source.width) >= static_cast<std::size_t>(source.height);
    return Stretch(window, destination, whole ? source.width : 0, whole ? source.height : 0,
                   [&source](int y, const Axis& columns, std::uint32_t* row) {
                       const std::uint32_t* const pixels =
                           source.pixels.data() + static_cast<std::ptrdiff_t>(y) * source.width;
                       PaintRow(columns, row, [=](int x) { return pixels[x]; });
                   });
}

bool StretchMarks(HWND handle, const Rect& destination, const IndexedPixels& marks)
{
    Window* const window = SurfaceOf(handle);
    if (!window) return false;
    const Axes axes = StretchAxes(*window, destination, marks.width, marks.height);
    if (axes.Empty()) return true;
    const auto& [columns, rows] = axes;

    for (std::int64_t y = rows.start; y < rows.end; ++y) {
        const std::uint8_t* const values = marks.firstRow + rows.SourceOf(y) * marks.rowStride;
        if (std::all_of(values, values + marks.width, [](std::uint8_t value) { return value == 0; })) continue;
        std::uint32_t* pixel = Row(window->surface, y) + columns.start;
        Walk(columns, [&](int source, int run) {
            const std::uint8_t value = values[source];
            if (value != 0) std::fill_n(pixel, run, marks.colors[value] | kOpaque);
            pixel += run;
        });
    }
    ShowArea(*window, axes.Area());
    return true;
}

void FillBlocks(HWND handle, const Rect& destination, Point size, const Rect& pixels, const Rect& rim,
                std::uint32_t color)
{
    Window* const window = SurfaceOf(handle);
    if (!window || pixels.Empty()) return;
    const Axes axes = StretchAxes(*window, destination, size.x, size.y);
    if (axes.Empty()) return;
    const DeviceArea wider = ToDevice(rim, DeviceRatio(*window));
    FillDevice(*window,
               {BeginOf(axes.columns, pixels.left) - wider.left, BeginOf(axes.rows, pixels.top) - wider.top,
                BeginOf(axes.columns, pixels.right) + wider.right, BeginOf(axes.rows, pixels.bottom) + wider.bottom},
               color);
}

Point PixelShownAt(HWND window, const Rect& destination, Point size, Point at)
{
    if (!IsWindow(window) || !window->widget) return {};
    const Axes axes = StretchAxes(*window, destination, size.x, size.y);
    if (axes.columns.pixels == 0) return {};
    const double ratio = DeviceRatio(*window);
    const Point seen = ToClient(*window, at);
    return {ShownAt(axes.columns, CornerPixel(seen.x, ratio)), ShownAt(axes.rows, CornerPixel(seen.y, ratio))};
}

Rect PointsShowing(HWND window, const Rect& destination, Point size, const Rect& pixels)
{
    if (!IsWindow(window) || !window->widget) return {};
    const Axes axes = StretchAxes(*window, destination, size.x, size.y);
    if (axes.columns.pixels == 0) return {};
    const double ratio = DeviceRatio(*window);
    const Span across = CornersIn(axes.columns, pixels.left, pixels.right, ratio);
    const Span down = CornersIn(axes.rows, pixels.top, pixels.bottom, ratio);
    const Point topLeft = ToSurface(*window, {across.begin, down.begin});
    return {topLeft.x, topLeft.y, topLeft.x + across.end - across.begin, topLeft.y + down.end - down.begin};
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
