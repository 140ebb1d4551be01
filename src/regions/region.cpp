#include "regions/region.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace kelvo {

namespace {

__extension__ using Wide = __int128;  // the fourth power of a side of 2^31

// The same shape with its first corner above and left.
RegionPlace Ordered(RegionPlace place)
{
    if (place.x2 < place.x1) std::swap(place.x1, place.x2);
    if (place.y2 < place.y1) std::swap(place.y1, place.y2);
    return place;
}

void AddRun(std::vector<PixelRun>& runs, PixelRun run, std::int32_t columns)
{
    run.first = std::max(run.first, 0);
    run.last = std::min(run.last, columns - 1);
    if (run.first <= run.last) runs.push_back(run);
}

void AddRectangle(std::vector<PixelRun>& runs, const RegionPlace& place, std::int32_t columns, std::int32_t rows)
{
    for (std::int32_t row = std::max(place.y1, 0); row <= std::min(place.y2, rows - 1); ++row) {
        AddRun(runs, {row, place.x1, place.x2}, columns);
    }
}

// How many of a row's pixels on the left of the place lie outside of its ellipse.
std::int32_t OutsideOnTheLeft(const RegionPlace& place, std::int32_t row)
{
    const std::int64_t width = std::int64_t{place.x2} - place.x1 + 1;
    const std::int64_t height = std::int64_t{place.y2} - place.y1 + 1;
    const Wide dy = 2 * std::int64_t{row} - place.y1 - place.y2;
    const auto isInside = [&](std::int64_t fromLeft) {
        const Wide dx = 2 * fromLeft - (width - 1);
        return dx * dx * height * height + dy * dy * width * width <= Wide{width} * width * height * height;
    };
    std::int64_t outside = 0;  // of the left half, by halving: inside begins once
    std::int64_t inside = width / 2;
    while (outside < inside) {
        const std::int64_t middle = (outside + inside) / 2;
        if (isInside(middle)) {
            inside = middle;
        } else {
            outside = middle + 1;
        }
    }
    return static_cast<std::int32_t>(outside);
}

void AddEllipse(std::vector<PixelRun>& runs, const RegionPlace& place, std::int32_t columns, std::int32_t rows)
{
    for (std::int32_t row = std::max(place.y1, 0); row <= std::min(place.y2, rows - 1); ++row) {
        const std::int32_t outside = OutsideOnTheLeft(place, row);
        AddRun(runs, {row, place.x1 + outside, place.x2 - outside}, columns);
    }
}

void AddLine(std::vector<PixelRun>& runs, const RegionPlace& place, std::int32_t columns, std::int32_t rows)
{
    // From the upper end, of two on one height from the left one, so that both directions give the same pixels.
    auto [x, y, endX, endY] = place;
    if (std::pair(endY, endX) < std::pair(y, x)) {
        std::swap(x, endX);
        std::swap(y, endY);
    }
    const std::int64_t dx = std::abs(std::int64_t{endX} - x);
    const std::int64_t dy = std::int64_t{endY} - y;
    const std::int32_t step = x < endX ? 1 : -1;
    std::int64_t error = dx - dy;
    std::int32_t runFrom = x;
    for (;;) {
        const bool isEnd = x == endX && y == endY;
        const std::int64_t doubled = 2 * error;
        const bool movesRight = !isEnd && doubled > -dy;
        const bool movesDown = !isEnd && doubled < dx;
        if ((isEnd || movesDown) && y >= 0 && y < rows) {
            AddRun(runs, {y, std::min(runFrom, x), std::max(runFrom, x)}, columns);
        }
        if (isEnd) return;
        if (movesRight) {
            error -= dy;
            x += step;
        }
        if (movesDown) {
            error += dx;
            ++y;
            runFrom = x;
        }
    }
}

}  // namespace

std::vector<PixelRun> PixelsOf(RegionShape shape, const RegionPlace& place, std::int32_t columns, std::int32_t rows)
{
    std::vector<PixelRun> runs;
    switch (shape) {
        case RegionShape::kRectangle:
            AddRectangle(runs, Ordered(place), columns, rows);
            break;
        case RegionShape::kEllipse:
            AddEllipse(runs, Ordered(place), columns, rows);
            break;
        case RegionShape::kLine:
            AddLine(runs, place, columns, rows);
            break;
        case RegionShape::kPoint:
            AddRectangle(runs, {place.x1, place.y1, place.x1, place.y1}, columns, rows);
            break;
    }
    return runs;
}

std::size_t PixelCountOf(const std::vector<PixelRun>& runs)
{
    std::size_t pixels = 0;
    for (const PixelRun& run : runs) pixels += static_cast<std::size_t>(run.last - run.first + 1);
    return pixels;
}

Region WholePicture(std::int32_t columns, std::int32_t rows)
{
    return {.name = "picture", .place = {0, 0, columns - 1, rows - 1}};
}

}  // namespace kelvo
