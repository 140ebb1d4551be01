#include "output/page_layout.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kelvo {

namespace {

int Held(std::int64_t side)
{
    return static_cast<int>(std::clamp<std::int64_t>(side, 0, std::numeric_limits<int>::max()));
}

std::int64_t BestFitHeight(Point size, const PrinterPage& page)
{
    const std::int64_t across = std::int64_t{size.x} * page.xPerInch;
    // In double, as the product of four may leave 64 bits: the quotient is far below where a whole number isn't exact.
    const double down = static_cast<double>(page.width) * size.y * page.yPerInch;
    if (across <= 0) return 0;
    return static_cast<std::int64_t>(std::min(down / static_cast<double>(across), 2147483647.0));
}

// In the picture, of an edge on the page.
int Nearest(int edge, double pixelLength)
{
    return static_cast<int>(std::floor(edge / pixelLength + 0.5));
}

}  // namespace

Rect PrintRectangle(Point size, int option, int xScale, int yScale, const PrinterPage& page)
{
    if (size.x <= 0 || size.y <= 0) return {};
    switch (option) {
        case kPrintBestFit:
            return {0, 0, page.width, Held(BestFitHeight(size, page))};
        case kPrintScale:
            return {0, 0, Held(std::int64_t{size.x} * xScale), Held(std::int64_t{size.y} * yScale)};
        default:
            return {0, 0, page.width, page.height};
    }
}

bool ReachesBeyond(const Rect& rectangle, const PrinterPage& page)
{
    return rectangle.right > page.width || rectangle.bottom > page.height;
}

std::optional<BandCopy> CopyOfBand(const Rect& rectangle, const PrintBand& band, Point size)
{
    if (!band.hasGraphics || size.x <= 0 || size.y <= 0) return std::nullopt;
    const Rect shared{std::max(rectangle.left, band.area.left), std::max(rectangle.top, band.area.top),
                      std::min(rectangle.right, band.area.right), std::min(rectangle.bottom, band.area.bottom)};
    if (shared.Empty()) return std::nullopt;
    const double sx = static_cast<double>(rectangle.Width()) / size.x;
    const double sy = static_cast<double>(rectangle.Height()) / size.y;
    const Rect source{Nearest(shared.left, sx), Nearest(shared.top, sy), Nearest(shared.right, sx),
                      Nearest(shared.bottom, sy)};
    if (source.Empty()) return std::nullopt;
    return BandCopy{.destination = shared, .source = source};
}

}  // namespace kelvo
