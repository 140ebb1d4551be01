#include "analysis/trace_plot.h"

#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace kelvo {

namespace {

constexpr int kMostLevels = 10;
constexpr int kLeastLeftMargin = 30;
constexpr int kBesideLabel = 10;
constexpr int kOtherMargin = 10;
constexpr int kRightMargin = 30;  // half of the last label
constexpr int kBottomMargin = 50;
constexpr int kLabelFromBox = 4;
constexpr int kLabelAboveTick = 8;
constexpr int kLabelBelowBox = 10;
constexpr int kTitleBelowBox = 30;
constexpr int kPixelsAColumnLabel = 80;

double LevelOf(const RoundAxis& axis, int level)
{
    return axis.low + axis.step * level;
}

void AddLevels(PlotPicture& picture, const RoundAxis& axis)
{
    const Rect& box = picture.box;
    const float spacing = static_cast<float>(box.Height()) / static_cast<float>(axis.steps);
    AddValueTicks(picture, axis.steps, spacing, true, PlotPen::kGrayDashed);
    for (int level = 0; level <= axis.steps; ++level) {
        const int y = box.bottom - PlotPosition(level, spacing) - kLabelAboveTick;
        picture.labels.push_back(
            {{box.left - kLabelFromBox, y}, AxisText(axis, LevelOf(axis, level)), TextAlign::kRight});
    }
}

int ColumnOf(const Rect& box, double place, double first, double last)
{
    if (!(last > first)) return box.left;
    return box.left + static_cast<int>(std::lround((place - first) / (last - first) * box.Width()));
}

// Marks at the round numbers that lie inside.
void AddColumns(PlotPicture& picture, double first, double last)
{
    const Rect& box = picture.box;
    const RoundAxis axis = RoundAxisOf(first, last, std::max(box.Width() / kPixelsAColumnLabel, 1));
    const double nearly = axis.step * 1e-9;
    for (int i = 0; i <= axis.steps; ++i) {
        const double place = LevelOf(axis, i);
        if (place < first - nearly || place > last + nearly) continue;
        const int x = ColumnOf(box, place, first, last);
        AddColumnTick(picture, x, PlotTick::kLong);
        if (x > box.left && x < box.right) AddColumnGrid(picture, x, 0, PlotPen::kGrayDashed);
        picture.labels.push_back({{x, box.bottom + kLabelBelowBox}, AxisText(axis, place), TextAlign::kCentre});
    }
}

void AddPoints(PlotPicture& picture, const TracePlot& plot, const RoundAxis& axis)
{
    const Rect& box = picture.box;
    const double scale = box.Height() / (axis.step * axis.steps);
    PlotTrace trace(picture);
    auto nextBreak = plot.breaks.begin();
    for (std::size_t i = 0; i < plot.values.size(); ++i) {
        if (nextBreak != plot.breaks.end() && *nextBreak == i) {
            trace.Break();
            ++nextBreak;
        }
        const int y = box.bottom - static_cast<int>(std::lround((plot.values[i] - axis.low) * scale));
        trace.Add({ColumnOf(box, plot.places[i], plot.places.front(), plot.places.back()),
                   std::clamp(y, box.top, box.bottom)});
    }
    trace.End();
}

}  // namespace

RoundAxis RoundAxisOf(double least, double most, int mostSteps)
{
    constexpr double kTen = 10;
    const double range = most > least ? most - least : 1;
    const double raw = range / mostSteps;
    const double power = std::pow(kTen, std::floor(std::log10(raw)));
    constexpr double kRound[] = {1, 2, 5, 10};
    const double nearly = 1e-9;
    const auto* const round =
        std::ranges::find_if(kRound, [&](double factor) { return factor * power >= raw * (1 - nearly); });
    RoundAxis axis;
    axis.step = (round == std::end(kRound) ? kTen : *round) * power;
    axis.low = std::floor(least / axis.step + nearly) * axis.step;
    axis.steps = std::max(static_cast<int>(std::ceil((most - axis.low) / axis.step - nearly)), 1);
    axis.decimals = std::max(0, static_cast<int>(-std::floor(std::log10(axis.step) + nearly)));
    return axis;
}

std::string AxisText(const RoundAxis& axis, double value)
{
    const bool isZero = std::abs(value) < axis.step / 2;
    return Format("%.*f", axis.decimals, isZero ? 0.0 : value);
}

PlotPicture TracePicture(const Rect& area, const TracePlot& plot,
                         const std::function<int(std::string_view text)>& width)
{
    PlotPicture picture;
    RoundAxis axis;
    if (!plot.values.empty()) {
        const auto [least, most] = std::ranges::minmax_element(plot.values);
        axis = RoundAxisOf(*least, *most, kMostLevels);
    }
    int widest = 0;
    for (const int level : {0, axis.steps}) widest = std::max(widest, width(AxisText(axis, LevelOf(axis, level))));
    picture.box = {area.left + std::max(widest + kBesideLabel, kLeastLeftMargin), area.top + kOtherMargin,
                   area.right - kRightMargin, area.bottom - kBottomMargin};
    const Rect& box = picture.box;
    if (box.Empty()) return picture;
    const Rect around{box.left, box.top, box.right + 1, box.bottom + 1};
    AddFrame(picture, around);
    if (plot.values.empty()) return picture;
    AddLevels(picture, axis);
    AddColumns(picture, plot.places.front(), plot.places.back());
    picture.labels.push_back(
        {{(area.left + area.right) / 2, box.bottom + kTitleBelowBox}, plot.title, TextAlign::kCentre});
    picture.clip = around;
    AddPoints(picture, plot, axis);
    return picture;
}

}  // namespace kelvo
