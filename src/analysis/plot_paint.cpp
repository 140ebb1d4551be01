#include "analysis/plot_paint.h"

#include "platform/paint.h"
#include "platform/window.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace kelvo {

namespace {

constexpr ColorRef kWhite = 0xFFFFFF;
constexpr ColorRef kBlack = 0x000000;
constexpr ColorRef kGray = 0x808080;
constexpr ColorRef kRed = 0x0000FF;

// Painted and left out in turn along a line.
struct Dashes {
    int painted = 0;
    int left = 0;
};
constexpr Dashes kDots{.painted = 1, .left = 2};
constexpr Dashes kDashes{.painted = 6, .left = 3};

void PaintPart(HWND control, const PlotLine& line, int from, int to, ColorRef color)
{
    const bool level = line.from.y == line.to.y;
    const Rect part =
        level ? Rect{from, line.from.y, to, line.from.y + 1} : Rect{line.from.x, from, line.from.x + 1, to};
    FillSurface(control, part, color);
}

void PaintLine(HWND control, const PlotLine& line)
{
    const bool level = line.from.y == line.to.y;
    const int from = level ? line.from.x : line.from.y;
    const int to = level ? line.to.x : line.to.y;
    if (line.pen == PlotPen::kBlack) {
        PaintPart(control, line, from, to, kBlack);
        return;
    }
    const Dashes dashes = line.pen == PlotPen::kGrayDotted ? kDots : kDashes;
    for (int at = from; at < to; at += dashes.painted + dashes.left) {
        PaintPart(control, line, at, std::min(at + dashes.painted, to), kGray);
    }
}

Rect And(const Rect& a, const Rect& b)
{
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

}  // namespace

Rect PlotArea(HWND control)
{
    const Rect client = GetClientRect(control);
    return {0, 0, client.Width(), client.Height()};
}

void PaintPlot(HWND control, const PlotPicture& picture)
{
    FillSurface(control, PlotArea(control), kWhite);
    for (const PlotLine& line : picture.lines) PaintLine(control, line);
    for (const Rect& bar : picture.bars) {
        const Rect seen = And(bar, picture.clip);
        if (!seen.Empty()) FillSurface(control, seen, kRed);
    }
    std::size_t first = 0;
    const auto paintTo = [&](std::size_t end) {
        DrawPolyline(control, std::span(picture.trace).subspan(first, end - first), picture.clip, kRed);
        first = end;
    };
    for (const std::size_t at : picture.breaks) paintTo(at);
    paintTo(picture.trace.size());
    for (const PlotLabel& label : picture.labels) {
        DrawTextLine(control, label.at.x, label.at.y, label.text, label.align, kBlack, kWhite);
    }
}

int PlotTextWidth(HWND control, std::string_view text)
{
    return TextWidth(control, text);
}

}  // namespace kelvo
