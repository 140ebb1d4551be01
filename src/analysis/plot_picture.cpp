#include "analysis/plot_picture.h"

#include <algorithm>
#include <cmath>

namespace kelvo {

namespace {

constexpr int kShortTick = 3;
constexpr int kLongTick = 6;
constexpr int kFurthest = 1 << 24;  // positions beyond it lie far outside any window

}  // namespace

int PlotPosition(std::int64_t i, float pixels)
{
    const double position = std::trunc(static_cast<double>(i) * static_cast<double>(pixels));
    if (!std::isfinite(position)) return 0;
    return static_cast<int>(std::clamp(position, -double{kFurthest}, double{kFurthest}));
}

void AddFrame(PlotPicture& picture, const Rect& frame)
{
    if (frame.Empty()) return;
    const int lastColumn = frame.right - 1;
    const int lastRow = frame.bottom - 1;
    picture.lines.push_back({{frame.left, frame.top}, {frame.right, frame.top}});
    picture.lines.push_back({{frame.left, lastRow}, {frame.right, lastRow}});
    picture.lines.push_back({{frame.left, frame.top}, {frame.left, frame.bottom}});
    picture.lines.push_back({{lastColumn, frame.top}, {lastColumn, frame.bottom}});
}

void AddValueTicks(PlotPicture& picture, int ticks, float spacing, bool grid, PlotPen pen)
{
    const Rect& box = picture.box;
    for (int i = 0; i <= ticks; ++i) {
        const int y = box.top + PlotPosition(i, spacing);
        picture.lines.push_back({{box.left - kShortTick, y}, {box.left, y}});
        picture.lines.push_back({{box.right, y}, {box.right + kShortTick, y}});
        const bool inside = i > 0 && i < ticks && y > box.top && y < box.bottom;
        if (grid && inside) picture.lines.push_back({{box.left + 2, y}, {box.right, y}, pen});
    }
}

void AddColumnTick(PlotPicture& picture, int x, PlotTick tick)
{
    const Rect& box = picture.box;
    const int length = tick == PlotTick::kLong ? kLongTick : kShortTick;
    picture.lines.push_back({{x, box.bottom}, {x, box.bottom + length}});
    picture.lines.push_back({{x, box.top - length}, {x, box.top}});
}

void AddColumnGrid(PlotPicture& picture, int x, int gap, PlotPen pen)
{
    const Rect& box = picture.box;
    if (box.top + gap < box.bottom) picture.lines.push_back({{x, box.top + gap}, {x, box.bottom}, pen});
}

void PlotTrace::Add(const Point& at)
{
    if (picture_.trace.size() == first_ || at.x != last_.x) {
        End();
        Put(at);
        lowest_ = highest_ = at;
    }
    lowest_.y = std::min(lowest_.y, at.y);
    highest_.y = std::max(highest_.y, at.y);
    last_ = at;
}

void PlotTrace::Break()
{
    End();
    if (picture_.trace.size() == first_) return;
    first_ = picture_.trace.size();
    picture_.breaks.push_back(first_);
}

void PlotTrace::End()
{
    if (picture_.trace.size() == first_) return;
    for (const Point& at : {lowest_, highest_, last_}) Put(at);
}

void PlotTrace::Put(const Point& at)
{
    if (picture_.trace.size() == first_ || !(picture_.trace.back() == at)) picture_.trace.push_back(at);
}

std::int64_t StepFor(std::int64_t n, std::span<const PlotStep> steps, std::int64_t last)
{
    const auto found = std::ranges::find_if(steps, [n](const PlotStep& step) { return n < step.below; });
    return found == steps.end() ? last : found->step;
}

}  // namespace kelvo
