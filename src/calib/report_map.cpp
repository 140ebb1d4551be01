#include "calib/report_map.h"

#include "platform/text.h"

#include <algorithm>

namespace kelvo {

namespace {

int CellsOf(int detectors, int step)
{
    return (detectors + step - 1) / step;
}

bool Fits(const MapView& view)
{
    return CellsOf(view.columns, view.Step()) * view.Block() <= view.width &&
           CellsOf(view.rows, view.Step()) * view.Block() <= view.height;
}

// One direction of the surface.
struct Extent {
    int first = 0;
    int cells = 0;
    int start = 0;  // of the destination
};

Extent ExtentOf(int detectors, int points, int middle, const MapView& view)
{
    const int cells = CellsOf(detectors, view.Step());
    const int shown = std::clamp(points / view.Block(), 1, std::max(cells, 1));
    const int first = std::clamp(middle / view.Step() - shown / 2, 0, std::max(cells - shown, 0));
    return {.first = first, .cells = shown, .start = (points - shown * view.Block()) / 2};
}

// Whole cells from the start to a point, rounded down.
int CellsBefore(int point, int start, int block)
{
    return point >= start ? (point - start) / block : -((start - point - 1) / block + 1);
}

// The middle with which a detector comes under a point.
int MiddleFor(int detector, int point, int detectors, int points, const MapView& view)
{
    const Extent extent = ExtentOf(detectors, points, 0, view);
    const int first = detector / view.Step() - CellsBefore(point, extent.start, view.Block());
    return (first + extent.cells / 2) * view.Step();
}

std::size_t IndexOf(const CalibrationReport& report, Point detector)
{
    return static_cast<std::size_t>(detector.y) * static_cast<std::size_t>(report.columns) +
           static_cast<std::size_t>(detector.x);
}

// 0 for a good detector, and beside the map.
std::uint8_t MarkAt(const CalibrationReport& report, Point detector)
{
    const std::size_t index = IndexOf(report, detector);
    const std::uint8_t mark = index < report.map.size() ? report.map[index] : std::uint8_t{0};
    return mark <= report.classes.size() ? mark : std::uint8_t{0};
}

Point ShownOfCell(const CalibrationReport& report, Point cell, int step)
{
    const Point first{cell.x * step, cell.y * step};
    for (int y = first.y; y < std::min(first.y + step, report.rows); ++y) {
        for (int x = first.x; x < std::min(first.x + step, report.columns); ++x) {
            if (MarkAt(report, {x, y}) != 0) return {x, y};
        }
    }
    return first;
}

// The detector at a point of the surface, also beyond the frame's edges.
Point Under(const MapView& view, Point at)
{
    const MapPart part = PartShown(view);
    const auto along = [&](int point, int start, int first) {
        return (first + CellsBefore(point, start, view.Block())) * view.Step();
    };
    return {along(at.x, part.destination.left, part.first.x), along(at.y, part.destination.top, part.first.y)};
}

}  // namespace

MapView WholeMap(int columns, int rows, int width, int height)
{
    MapView view{.columns = columns, .rows = rows, .width = std::max(width, 1), .height = std::max(height, 1)};
    view.middle = {columns / 2, rows / 2};
    view.level = kLargestMapLevel;
    while (!Fits(view)) --view.level;
    return view;
}

MapView Zoomed(const MapView& view, int levels, Point about)
{
    const Point kept = Under(view, about);
    MapView zoomed = view;
    const int whole = WholeMap(view.columns, view.rows, view.width, view.height).level;
    zoomed.level = std::clamp(view.level + levels, whole, kLargestMapLevel);
    zoomed.middle = {MiddleFor(kept.x, about.x, view.columns, view.width, zoomed),
                     MiddleFor(kept.y, about.y, view.rows, view.height, zoomed)};
    return zoomed;
}

MapView Centred(const MapView& view, Point at)
{
    MapView centred = view;
    centred.middle = Under(view, at);
    return centred;
}

MapPart PartShown(const MapView& view)
{
    const Extent x = ExtentOf(view.columns, view.width, view.middle.x, view);
    const Extent y = ExtentOf(view.rows, view.height, view.middle.y, view);
    return {.first = {x.first, y.first},
            .across = x.cells,
            .down = y.cells,
            .destination = {x.start, y.start, x.start + x.cells * view.Block(), y.start + y.cells * view.Block()}};
}

DeviceBitmap MapPicture(const CalibrationReport& report, const MapView& view, std::uint32_t goodColor)
{
    const MapPart part = PartShown(view);
    DeviceBitmap picture{.width = part.across, .height = part.down, .pixels = {}};
    picture.pixels.reserve(static_cast<std::size_t>(part.across) * static_cast<std::size_t>(part.down));
    for (int row = 0; row < part.down; ++row) {
        for (int column = 0; column < part.across; ++column) {
            const Point cell{part.first.x + column, part.first.y + row};
            const std::uint8_t mark = MarkAt(report, ShownOfCell(report, cell, view.Step()));
            picture.pixels.push_back(mark == 0 ? goodColor : report.classes[mark - 1U].color);
        }
    }
    return picture;
}

std::optional<Point> DetectorAt(const CalibrationReport& report, const MapView& view, Point at)
{
    const Rect destination = PartShown(view).destination;
    const bool inside =
        at.x >= destination.left && at.x < destination.right && at.y >= destination.top && at.y < destination.bottom;
    if (!inside || report.map.empty()) return std::nullopt;
    const Point first = Under(view, at);
    return ShownOfCell(report, {first.x / view.Step(), first.y / view.Step()}, view.Step());
}

std::string DetectorText(const CalibrationReport& report, Point detector)
{
    const std::string place = Format("Column %d, row %d: ", detector.x, detector.y);
    const std::uint8_t mark = MarkAt(report, detector);
    if (mark == 0) return place + "good";
    const std::string name = place + report.classes[mark - 1U].name + ". ";
    const std::size_t index = IndexOf(report, detector);
    const std::uint32_t answers = index < report.answers.size() ? report.answers[index] : kNobodyAnswers;
    if (answers == kNobodyAnswers) return name + "Nobody answers for it.";
    const auto columns = static_cast<std::uint32_t>(report.columns);
    return name + Format("Column %u, row %u answers for it.", answers % columns, answers / columns);
}

}  // namespace kelvo
