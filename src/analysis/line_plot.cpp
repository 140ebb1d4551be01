#include "analysis/line_plot.h"

#include "analysis/plot_save.h"
#include "display/units.h"
#include "platform/memory.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int32_t kLeastAbove = 20;  // counts that an axis reaches above the lowest sample
constexpr std::int32_t kLeastBelow = 30;  // counts that it reaches below the highest

constexpr int kLeastLeftMargin = 30;
constexpr int kLabelMargin = 10;
constexpr int kBottomMargin = 50;
constexpr int kSideMargin = 10;  // right of the box and above it
constexpr int kLabelGap = 4;     // between a label and the value axis
constexpr int kLabelRise = 8;    // of a label's top above its tick
constexpr int kPointLabelDrop = 10;
constexpr int kCaptionDrop = 30;

constexpr std::int64_t kFewestTicks = 2;
constexpr std::int64_t kMostTicks = 10;
constexpr float kRoomForTicks = 2.0F;  // pixels between two points from which each has a tick

// The jump to 1000 is settled: 501 to 1000 points bear one label.
constexpr PlotStep kLabelSteps[] = {{11, 1}, {21, 2}, {51, 5}, {101, 10}, {201, 20}, {501, 50}, {1001, 1000}};

// The line seen along the axis of more pixels.
struct Course {
    bool byColumns = false;
    std::int64_t along = 0;
    std::int64_t across = 0;
};

Course CourseOf(const LinePlotSettings& line)
{
    const std::int64_t dx = std::int64_t{line.Xend} - line.Xstart;
    const std::int64_t dy = std::int64_t{line.Yend} - line.Ystart;
    if (std::abs(dx) > std::abs(dy)) return {.byColumns = true, .along = dx, .across = dy};
    return {.byColumns = false, .along = dy, .across = dx};
}

bool Holds(Point size, std::int32_t x, std::int32_t y)
{
    return x >= 0 && x < size.x && y >= 0 && y < size.y;
}

std::string UnitTextOf(std::int64_t counts, std::int32_t unit)
{
    using Limits = std::numeric_limits<std::int32_t>;
    const auto held = static_cast<std::int32_t>(std::clamp<std::int64_t>(counts, Limits::min(), Limits::max()));
    std::string text;
    CountsToUnit(held, unit, &text);
    return text;
}

// The scale of the value axis: ticks parts of step counts each, from low.
struct ValueScale {
    std::int64_t low = 0;
    std::int64_t step = 1;
    int ticks = 0;
};

ValueScale ScaleOf(std::int64_t points, const LinePlotSettings& settings)
{
    const std::int64_t ticks = std::clamp(points, kFewestTicks, kMostTicks);
    const std::int64_t counts = std::int64_t{settings.YplotMax} - settings.YplotMin;
    return {.low = settings.YplotMin, .step = counts / ticks + 1, .ticks = static_cast<int>(ticks)};
}

Rect BoxOf(const Rect& area, const LinePlotSettings& settings, std::int32_t unit, const LabelWidth& labelWidth)
{
    int margin = std::max(labelWidth(UnitTextOf(settings.YplotMax, unit)) + kLabelMargin, kLeastLeftMargin);
    margin = std::max(margin, labelWidth(UnitTextOf(settings.YplotMin, unit)));
    return {area.left + margin, area.top + kSideMargin, area.right - kSideMargin, area.bottom - kBottomMargin};
}

void AddValueAxis(PlotPicture& picture, const ValueScale& scale, bool grid, std::int32_t unit)
{
    const Rect& box = picture.box;
    const float spacing = static_cast<float>(box.Height()) / static_cast<float>(scale.ticks);
    AddValueTicks(picture, scale.ticks, spacing, grid);
    for (int j = 0; j <= scale.ticks; ++j) {
        const int y = box.bottom - PlotPosition(j, spacing) - kLabelRise;
        picture.labels.push_back(
            {{box.left - kLabelGap, y}, UnitTextOf(scale.low + j * scale.step, unit), TextAlign::kRight});
    }
}

void AddPointTicks(PlotPicture& picture, std::int64_t points, std::int64_t step, float spacing, bool grid)
{
    std::int64_t counter = step + 1;  // so that the first point takes a long tick
    for (std::int64_t i = 0; i < points; ++i) {
        const int x = PlotPosition(i, spacing) + picture.box.left;
        if (counter >= step) {
            AddColumnTick(picture, x, PlotTick::kLong);
            if (grid && i != 0) AddColumnGrid(picture, x, 0);
            counter = 1;
            continue;
        }
        if (spacing > kRoomForTicks || counter == step / 2) AddColumnTick(picture, x, PlotTick::kShort);
        ++counter;
    }
}

void AddPointAxis(PlotPicture& picture, std::int64_t points, const Rect& area, bool grid)
{
    const Rect& box = picture.box;
    const std::int64_t step = StepFor(points, kLabelSteps, points / 10);
    const float spacing = static_cast<float>(box.Width()) / static_cast<float>(points);
    picture.labels.push_back(
        {{area.left + area.Width() / 2, box.bottom + kCaptionDrop}, "Points (start to end)", TextAlign::kCentre});
    for (std::int64_t i = 0; i < points; i += step) {
        picture.labels.push_back({{PlotPosition(i, spacing) + box.left, box.bottom + kPointLabelDrop},
                                  Format("%d", static_cast<int>(i)),
                                  TextAlign::kCentre});
    }
    AddPointTicks(picture, points, step, spacing, grid);
}

void AddTrace(PlotPicture& picture, std::span<const std::int16_t> samples, const ValueScale& scale)
{
    const Rect& box = picture.box;
    const float counts = static_cast<float>(scale.step * scale.ticks);
    const float pixelsPerCount = static_cast<float>(box.Height()) / counts;
    const float spacing = static_cast<float>(box.Width()) / static_cast<float>(samples.size());
    picture.clip = {box.left, box.top, box.right + 1, box.bottom + 1};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const int x = PlotPosition(static_cast<std::int64_t>(i), spacing) + box.left;
        picture.trace.push_back({x, box.bottom - PlotPosition(samples[i] - scale.low, pixelsPerCount)});
    }
}

}  // namespace

std::int64_t LinePoints(const LinePlotSettings& line)
{
    return std::abs(CourseOf(line).along) + 1;
}

Point LinePoint(const LinePlotSettings& line, std::int64_t i)
{
    const Course course = CourseOf(line);
    if (course.along == 0) return {line.Xstart, line.Ystart};
    const float slope = static_cast<float>(course.across) / static_cast<float>(course.along);
    const std::int64_t along = course.along > 0 ? i : -i;
    const auto part = static_cast<std::int64_t>(static_cast<double>(i) * static_cast<double>(slope));
    const std::int64_t across = course.along > 0 ? part : -part;
    return {static_cast<int>(line.Xstart + (course.byColumns ? along : across)),
            static_cast<int>(line.Ystart + (course.byColumns ? across : along))};
}

bool SampleLine(std::span<const std::int16_t> frame, Point size, const LinePlotSettings& line,
                std::vector<std::int16_t>& samples)
{
    const bool inside = Holds(size, line.Xstart, line.Ystart) && Holds(size, line.Xend, line.Yend);
    if (!inside || std::ssize(frame) < std::int64_t{size.x} * size.y) return false;
    std::vector<std::int16_t> taken;
    if (!AllocateBlock(taken, static_cast<std::size_t>(LinePoints(line)))) return false;
    for (std::size_t i = 0; i < taken.size(); ++i) {
        const Point at = LinePoint(line, static_cast<std::int64_t>(i));
        taken[i] =
            frame[static_cast<std::size_t>(at.y) * static_cast<std::size_t>(size.x) + static_cast<std::size_t>(at.x)];
    }
    samples = std::move(taken);
    return true;
}

LineMeasure MeasureLine(std::span<const std::int16_t> samples, const LinePlotSettings& line, std::int32_t unit)
{
    LineMeasure measure;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        measure.extremes.Take(samples[i], LinePoint(line, static_cast<std::int64_t>(i)));
        measure.sums.Add(CountsToUnit(samples[i], unit, nullptr));
    }
    const float mean = measure.sums.Mean();
    for (const std::int16_t sample : samples) measure.sums.AddSquare(mean, CountsToUnit(sample, unit, nullptr));
    return measure;
}

std::optional<double> LineDeviation(const LineMeasure& measure)
{
    const std::int64_t points = measure.sums.Count();
    if (points < 2) return std::nullopt;
    if (measure.sums.Sum() == 0.0) return 0.0;
    return std::sqrt(measure.sums.Squares() / static_cast<double>(points));
}

PlotReport ReportLine(const LineMeasure& measure, std::int32_t unit)
{
    PlotReport report;
    report.mean = MeanText(measure.sums.Mean(), unit);
    if (const std::optional<double> deviation = LineDeviation(measure)) {
        report.deviation = measure.sums.Sum() == 0.0 ? "0" : DeviationText(*deviation, unit);
    }
    ReportExtremes(report, measure.extremes, unit);
    return report;
}

void AutoscaleLine(LinePlotSettings& settings, const Extremes& extremes, CountRange range)
{
    settings.YplotMax = std::max(extremes.maximum, extremes.minimum + kLeastAbove);
    if (range.high > extremes.minimum) settings.YplotMax = std::min(settings.YplotMax, range.high);
    settings.YplotMin = std::min(extremes.minimum, extremes.maximum - kLeastBelow);
}

PlotPicture LayOutLinePlot(const Rect& area, std::span<const std::int16_t> samples, const LinePlotSettings& settings,
                           std::int32_t unit, const LabelWidth& labelWidth)
{
    PlotPicture picture;
    const Rect box = BoxOf(area, settings, unit, labelWidth);
    if (samples.empty() || box.Empty()) return picture;
    picture.box = box;
    const std::int64_t points = std::ssize(samples);
    const ValueScale scale = ScaleOf(points, settings);
    AddFrame(picture, {box.left, box.top, box.right + 1, box.bottom + 1});
    AddValueAxis(picture, scale, settings.Ygridlines != 0, unit);
    AddPointAxis(picture, points, area, settings.Xgridlines != 0);
    AddTrace(picture, samples, scale);
    return picture;
}

std::string LineTitle(std::int32_t unit)
{
    std::string name;
    std::string unitText;
    GetUnitName(unit, name, unitText);
    return Format("%s (%s) vs Line Pixel Number", name.c_str(), unitText.c_str());
}

std::string LineFigures(std::span<const std::int16_t> samples, const LinePlotSettings& line, std::int32_t unit)
{
    std::string name;
    std::string unitText;
    GetUnitName(unit, name, unitText);
    const LineMeasure measure = MeasureLine(samples, line, unit);
    const std::optional<double> deviation = LineDeviation(measure);

    std::string figures = CsvNote("line", Format("(%d,%d) to (%d,%d)", line.Xstart, line.Ystart, line.Xend, line.Yend));
    figures += CsvNote("unit", unitText.empty() ? name : Format("%s (%s)", name.c_str(), unitText.c_str()));
    figures += CsvNote("mean", CsvNumber(measure.sums.Mean()));
    figures += CsvNote("deviation", deviation ? CsvNumber(static_cast<float>(*deviation)) : "");
    figures += "index,column,row,counts,value\n";
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Point at = LinePoint(line, static_cast<std::int64_t>(i));
        figures += Format("%d,%d,%d,%d,%s\n", static_cast<int>(i), at.x, at.y, samples[i],
                          CsvNumber(CountsToUnit(samples[i], unit, nullptr)).c_str());
    }
    return figures;
}

}  // namespace kelvo
