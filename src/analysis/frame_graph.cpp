#include "analysis/frame_graph.h"

#include "analysis/plot_save.h"
#include "display/units.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr int kLeastLeftMargin = 30;
constexpr int kBesideLabel = 10;
constexpr int kOtherMargin = 10;
constexpr int kBottomMargin = 50;
constexpr int kLabelFromBox = 4;
constexpr int kLabelAboveTick = 8;
constexpr int kLabelBelowBox = 10;
constexpr int kTitleBelowBox = 30;
constexpr int kBetweenLabels = 4;
constexpr double kRoomForShortTick = 2.0;
constexpr std::int64_t kMostLevels = 10;

constexpr PlotStep kFrameSteps[] = {{11, 1}, {21, 2}, {51, 5}, {101, 10}, {201, 20}, {501, 50}, {1001, 100}};

// ---- The value axis

struct ValueAxis {
    std::int64_t low = 0;
    int levels = 1;         // steps up the box
    std::int64_t step = 1;  // counts
};

ValueAxis ValueAxisOf(const CountRange& shown)
{
    const std::int64_t range = std::max<std::int64_t>(std::int64_t{shown.high} - shown.low, 0);
    const std::int64_t levels = std::min(range + 1, kMostLevels);
    return {.low = shown.low, .levels = static_cast<int>(levels), .step = range / levels + 1};
}

std::vector<std::string> LevelTexts(const ValueAxis& axis, const std::function<std::string(std::int32_t)>& text)
{
    std::vector<std::string> texts;
    for (int level = 0; level <= axis.levels; ++level) {
        texts.push_back(text(static_cast<std::int32_t>(axis.low + level * axis.step)));
    }
    return texts;
}

Rect BoxIn(const Rect& area, const std::vector<std::string>& labels, const std::function<int(std::string_view)>& width)
{
    int widest = 0;
    for (const std::string& label : labels) widest = std::max(widest, width(label));
    return {area.left + std::max(widest + kBesideLabel, kLeastLeftMargin), area.top + kOtherMargin,
            area.right - kOtherMargin, area.bottom - kBottomMargin};
}

void AddLevels(PlotPicture& picture, const ValueAxis& axis, const std::vector<std::string>& labels)
{
    const Rect& box = picture.box;
    const float spacing = static_cast<float>(box.Height()) / static_cast<float>(axis.levels);
    AddValueTicks(picture, axis.levels, spacing, true, PlotPen::kGrayDashed);
    for (int level = 0; level <= axis.levels; ++level) {
        const int y = box.bottom - PlotPosition(level, spacing) - kLabelAboveTick;
        picture.labels.push_back(
            {{box.left - kLabelFromBox, y}, labels[static_cast<std::size_t>(level)], TextAlign::kRight});
    }
}

// ---- The frame axis

// The column of each frame by its offset from the first one.
class FrameColumns {
  public:
    FrameColumns(const Rect& box, std::int64_t frames, bool squareRoot)
        : left_(box.left),
          width_(box.Width()),
          spacing_(static_cast<float>(box.Width()) / static_cast<float>(frames)),
          root_(std::sqrt(static_cast<double>(frames))),
          squareRoot_(squareRoot)
    {
    }
    int At(std::int64_t offset) const
    {
        if (!squareRoot_) return left_ + PlotPosition(offset, spacing_);
        return left_ + static_cast<int>(std::sqrt(static_cast<double>(offset)) / root_ * width_);
    }
    // Pixels from the frame before.
    double Gap(std::int64_t offset) const
    {
        if (!squareRoot_) return static_cast<double>(spacing_);
        const auto at = static_cast<double>(offset);
        return (std::sqrt(at) - std::sqrt(at - 1)) / root_ * width_;
    }

  private:
    int left_;
    double width_;
    float spacing_;
    double root_;
    bool squareRoot_;
};

void AddFrameTicks(PlotPicture& picture, const FrameColumns& columns, std::int64_t frames, std::int64_t step)
{
    for (std::int64_t offset = 0; offset <= frames; ++offset) {
        const std::int64_t within = offset % step;
        if (within == 0) {
            AddColumnTick(picture, columns.At(offset), PlotTick::kLong);
            if (offset > 0) AddColumnGrid(picture, columns.At(offset), 0, PlotPen::kGrayDashed);
        } else if (within == step / 2 || columns.Gap(offset) > kRoomForShortTick) {
            AddColumnTick(picture, columns.At(offset), PlotTick::kShort);
        }
    }
}

void AddFrameLabels(PlotPicture& picture, const FrameColumns& columns, const FrameGraphPlot& plot,
                    const std::function<int(std::string_view)>& width)
{
    const std::int64_t frames = std::ssize(plot.counts) - 1;
    const std::int64_t step = FrameStep(frames);
    const int y = picture.box.bottom + kLabelBelowBox;
    std::optional<int> end;  // of the label before
    for (std::int64_t offset = 0; offset <= frames; offset += step) {
        std::string text = Format("%d", static_cast<int>(plot.first + offset));
        const int x = columns.At(offset);
        const int half = (width(text) + 1) / 2;
        if (end && x - half < *end + kBetweenLabels) continue;
        end = x + half;
        picture.labels.push_back({{x, y}, std::move(text), TextAlign::kCentre});
    }
}

// ---- The data

void AddTrace(PlotPicture& picture, const FrameColumns& columns, const FrameGraphPlot& plot, const ValueAxis& axis)
{
    const Rect& box = picture.box;
    const float scale = static_cast<float>(box.Height()) / static_cast<float>(axis.step * axis.levels);
    PlotTrace trace(picture);
    for (std::size_t i = 0; i < plot.counts.size(); ++i) {
        const int y = box.bottom - PlotPosition(plot.counts[i] - axis.low, scale);
        trace.Add({columns.At(static_cast<std::int64_t>(i)), std::clamp(y, box.top, box.bottom)});
    }
    trace.End();
}

std::string ValueText(std::int32_t count, std::int32_t unit)
{
    std::string text;
    CountsToUnit(count, unit, &text);
    return text;
}

}  // namespace

GraphFigures FiguresOf(std::span<const std::int16_t> counts, std::int32_t first, const CountValue& value)
{
    GraphFigures figures;
    if (counts.empty()) return figures;
    double sum = 0;
    for (const std::int16_t count : counts) sum += static_cast<double>(value(count));
    const auto frames = static_cast<double>(counts.size());
    figures.mean = sum / frames;

    const auto [lowest, highest] = std::pair(std::ranges::min_element(counts), std::ranges::max_element(counts));
    figures.minimum = *lowest;
    figures.minimumFrame = first + static_cast<std::int32_t>(lowest - counts.begin());
    figures.maximum = *highest;
    figures.maximumFrame = first + static_cast<std::int32_t>(highest - counts.begin());

    if (counts.size() < 2) return figures;
    double squares = 0;
    // What the rounding of a sum leaves is no deviation.
    const bool differs = *lowest != *highest;
    if (counts.size() > 2 && differs) {
        for (const std::int16_t count : counts) {
            const double difference = static_cast<double>(value(count)) - figures.mean;
            squares += difference * difference;
        }
    }
    figures.deviation = std::sqrt(squares / (frames - 1));
    return figures;
}

PlotReport ReportOf(const GraphFigures& figures, std::int32_t unit)
{
    PlotReport report;
    report.mean = MeanText(figures.mean, unit);
    if (figures.deviation) report.deviation = *figures.deviation == 0.0 ? "0" : DeviationText(*figures.deviation, unit);
    report.minimum = ValueText(figures.minimum, unit);
    report.minimumPlace = Format("%d", figures.minimumFrame);
    report.maximum = ValueText(figures.maximum, unit);
    report.maximumPlace = Format("%d", figures.maximumFrame);
    if (CountsToUnit(figures.minimum, unit, nullptr) > CountsToUnit(figures.maximum, unit, nullptr)) {
        std::swap(report.minimum, report.maximum);
        std::swap(report.minimumPlace, report.maximumPlace);
    }
    return report;
}

CountRange RangeOf(const GraphFigures& figures)
{
    return {.low = figures.minimum, .high = figures.maximum};
}

CountRange HeldInside(const CountRange& limits, const CountRange& shown)
{
    const auto hold = [&](std::int32_t limit) { return std::max(std::min(limit, shown.high), shown.low); };
    return {.low = hold(limits.low), .high = hold(limits.high)};
}

std::int64_t FrameStep(std::int64_t frames)
{
    constexpr std::int64_t kMostLabels = 10;
    return StepFor(frames, kFrameSteps, frames / kMostLabels);
}

PlotPicture FrameGraphPicture(const Rect& area, const FrameGraphPlot& plot,
                              const std::function<std::string(std::int32_t count)>& text,
                              const std::function<int(std::string_view text)>& width)
{
    PlotPicture picture;
    const std::int64_t frames = std::ssize(plot.counts) - 1;
    const ValueAxis axis = ValueAxisOf(plot.range);
    const std::vector<std::string> labels = LevelTexts(axis, text);
    picture.box = BoxIn(area, labels, width);
    const Rect& box = picture.box;
    if (box.Empty() || frames < 1) return picture;

    const Rect around{box.left, box.top, box.right + 1, box.bottom + 1};
    AddLevels(picture, axis, labels);
    const FrameColumns columns(box, frames, plot.squareRoot);
    AddFrameTicks(picture, columns, frames, FrameStep(frames));
    AddFrame(picture, around);
    AddFrameLabels(picture, columns, plot, width);
    picture.labels.push_back({{(area.left + area.right) / 2, box.bottom + kTitleBelowBox},
                              plot.squareRoot ? "Frame number (square-root scale)" : "Frame number",
                              TextAlign::kCentre});
    picture.clip = around;
    AddTrace(picture, columns, plot, axis);
    return picture;
}

std::string GraphLines(std::span<const std::int16_t> counts, std::int32_t first, const CountValue& value)
{
    std::string lines = "frame,counts,value\n";
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const std::int16_t count = counts[i];
        lines += std::to_string(first + static_cast<std::int64_t>(i));
        lines += ',';
        lines += std::to_string(count);
        lines += ',';
        lines += CsvNumber(value(count));
        lines += '\n';
    }
    return lines;
}

}  // namespace kelvo
