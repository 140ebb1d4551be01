#include "analysis/histogram_plot.h"

#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelvo {

namespace {

// The box within its control.
constexpr int kLeftMargin = 50;
constexpr int kBottomMargin = 50;
constexpr int kRightMargin = 15;
constexpr int kTopMargin = 10;
constexpr int kFirstValue = 6;  // pixels from the box's left to the first value, and from the last to its right
constexpr int kLogFoot = 3;     // the logarithmic axis begins above the bottom
constexpr int kMargins = 2 * kFirstValue;

constexpr int kNumberLabels = 10;  // column where they begin
constexpr int kLinearLabelRise = 4;
constexpr int kLogLabelRise = 8;
constexpr int kTickLength = 3;
constexpr int kDecadeTick = 6;
constexpr int kGridGap = 2;
constexpr int kValueLabelDrop = 10;
constexpr int kTitleDrop = 30;

constexpr std::int32_t kFewNumbers = 10;  // a logarithmic axis up to here names each
constexpr float kWideValues = 2.0F;       // pixels a value, above which each has a tick
constexpr std::size_t kLongLabel = 4;     // characters, from which on labels need twice the room

constexpr PlotStep kNumberSteps[] = {{11, 1},       {21, 2},       {51, 5},        {101, 10},   {201, 20},
                                     {501, 50},     {1001, 100},   {2001, 200},    {5001, 500}, {10001, 1000},
                                     {20001, 2000}, {50001, 5000}, {100001, 10000}};

std::string NumberLabel(std::int64_t samples)
{
    return Format("%5lld", static_cast<long long>(samples));
}

// --- The number axis ------------------------------------------------------------------------------------------------

float PixelsPerStep(int height, std::int64_t steps)
{
    return static_cast<float>(height) / static_cast<float>(steps);
}

void AddLinearAxis(PlotPicture& picture, const HistSettingsRecord& settings)
{
    const LinearAxis axis = LinearAxisOf(settings.YplotMin, settings.YplotMax);
    const float spacing = PixelsPerStep(picture.box.Height(), axis.ticks);
    AddValueTicks(picture, static_cast<int>(axis.ticks), spacing, settings.Ygridlines != 0);
    for (std::int64_t i = 0; i <= axis.ticks; ++i) {
        const int y = picture.box.bottom - PlotPosition(i, spacing) - kLinearLabelRise;
        picture.labels.push_back({{kNumberLabels, y}, NumberLabel(settings.YplotMin + i * axis.step)});
    }
}

struct LogTick {
    std::int64_t samples = 1;
    bool decade = false;  // 1, 10, 100...
};

// 1, 2, 5, 10, 20, 50 and so on, as far as they lie in the box; up to 10 samples each number.
std::vector<LogTick> LogTicks(std::int32_t max, int boxHeight)
{
    std::vector<LogTick> ticks;
    if (max <= kFewNumbers) {
        for (std::int64_t k = 1; k <= max; ++k) ticks.push_back({k, k == 1 || k == kFewNumbers});
        return ticks;
    }
    for (std::int64_t decade = 1;; decade *= 10) {
        for (const std::int64_t k : {decade, 2 * decade, 5 * decade}) {
            if (kLogFoot + LogHeight(k, max, boxHeight) > boxHeight) return ticks;
            ticks.push_back({k, k == decade});
        }
    }
}

void AddLogAxis(PlotPicture& picture, const HistSettingsRecord& settings)
{
    const Rect& box = picture.box;
    const std::vector<LogTick> ticks = LogTicks(settings.YplotMax, box.Height());
    for (const LogTick& tick : ticks) {
        const int y = box.bottom - kLogFoot - LogHeight(tick.samples, settings.YplotMax, box.Height());
        const int length = tick.decade ? kDecadeTick : kTickLength;
        picture.lines.push_back({{box.left - length, y}, {box.left, y}});
        picture.lines.push_back({{box.right, y}, {box.right + kTickLength, y}});
        const bool inside = &tick != &ticks.front() && &tick != &ticks.back();
        if (settings.Ygridlines && inside) {
            picture.lines.push_back({{box.left + kGridGap, y}, {box.right, y}, PlotPen::kGrayDotted});
        }
        picture.labels.push_back({{kNumberLabels, y - kLogLabelRise}, NumberLabel(tick.samples)});
    }
}

// --- The value axis -------------------------------------------------------------------------------------------------

struct ValueAxis {
    std::int32_t first = 0;
    std::int64_t span = 1;
    float pixels = 1;  // a value
    std::int64_t every = 1;
};

ValueAxis ValueAxisOf(const HistSettingsRecord& settings, const Rect& box)
{
    ValueAxis axis{.first = settings.XplotMin, .span = std::int64_t{settings.XplotMax} - settings.XplotMin};
    axis.pixels = static_cast<float>(box.Width() - kMargins) / static_cast<float>(axis.span);
    axis.every = axis.span < 9 ? 1 : axis.span / 10 + 1;
    return axis;
}

int ColumnOf(const PlotPicture& picture, const ValueAxis& axis, std::int64_t i)
{
    return PlotPosition(i, axis.pixels) + kFirstValue + picture.box.left;
}

void AddValueAxis(PlotPicture& picture, const ValueAxis& axis, bool grid)
{
    std::int64_t counter = axis.every + 1;
    for (std::int64_t i = 0; i <= axis.span; ++i) {
        const int x = ColumnOf(picture, axis, i);
        if (counter >= axis.every) {
            AddColumnTick(picture, x, PlotTick::kLong);
            if (grid) AddColumnGrid(picture, x, kGridGap);
            counter = 1;
            continue;
        }
        if (axis.pixels > kWideValues || counter == axis.every / 2) AddColumnTick(picture, x, PlotTick::kShort);
        ++counter;
    }
}

void AddValueLabels(PlotPicture& picture, const ValueAxis& axis, const HistogramTexts& texts)
{
    const std::size_t longer = std::max(texts.textOf(axis.first).size(),
                                        texts.textOf(static_cast<std::int32_t>(axis.first + axis.span)).size());
    const std::int64_t every = longer >= kLongLabel ? 2 * axis.every : axis.every;
    for (std::int64_t i = 0; i <= axis.span; i += every) {
        picture.labels.push_back({{ColumnOf(picture, axis, i), picture.box.bottom + kValueLabelDrop},
                                  texts.textOf(static_cast<std::int32_t>(axis.first + i)),
                                  TextAlign::kCentre});
    }
}

// --- The bars -------------------------------------------------------------------------------------------------------

// The top of a bar of so many samples; nullopt for one that isn't drawn.
using BarTop = std::function<std::optional<int>(std::uint32_t samples)>;

BarTop LinearTop(const Rect& box, const HistSettingsRecord& settings)
{
    const LinearAxis axis = LinearAxisOf(settings.YplotMin, settings.YplotMax);
    const float pixels = PixelsPerStep(box.Height(), axis.extent);
    return [bottom = box.bottom, from = settings.YplotMin, pixels](std::uint32_t samples) {
        return std::optional(bottom - PlotPosition(std::int64_t{samples} - from, pixels));
    };
}

BarTop LogTop(const Rect& box, const HistSettingsRecord& settings)
{
    return [box, max = settings.YplotMax](std::uint32_t samples) -> std::optional<int> {
        if (samples == 0) return std::nullopt;
        return box.bottom - kLogFoot - LogHeight(samples, max, box.Height());
    };
}

void AddBars(PlotPicture& picture, const ValueAxis& axis, std::span<const std::uint32_t> bins, const BarTop& topOf)
{
    constexpr int kLeastWidth = 2;
    const int bottom = picture.box.bottom;
    const int width = std::max(static_cast<int>(axis.pixels / 2), kLeastWidth);
    const auto count = static_cast<std::int64_t>(bins.size()) - 2;
    for (std::int64_t i = 0; i <= axis.span && i < count; ++i) {
        const std::optional<int> top = topOf(bins[static_cast<std::size_t>(i) + 1]);
        if (!top || *top >= bottom) continue;
        const int x = ColumnOf(picture, axis, i);
        if (!picture.bars.empty() && picture.bars.back().left == x) {
            picture.bars.back().top = std::min(picture.bars.back().top, *top);
        } else {
            picture.bars.push_back({x, *top, x + width, bottom});
        }
    }
}

}  // namespace

LinearAxis LinearAxisOf(std::int32_t min, std::int32_t max)
{
    const std::int64_t span = std::int64_t{max} - min;
    LinearAxis axis;
    axis.step = std::max<std::int64_t>(StepFor(span, kNumberSteps, std::int64_t{max} - min / 10), 1);
    axis.ticks = std::max<std::int64_t>((span + axis.step - 1) / axis.step, 1);
    axis.extent = axis.step * axis.ticks;
    return axis;
}

int LogHeight(std::int64_t samples, std::int32_t max, int boxHeight)
{
    const double top = std::max(static_cast<double>(max) * (max > kFewNumbers ? 2 : 1), 2.0);
    return static_cast<int>((boxHeight - kLogFoot) * (std::log(static_cast<double>(samples)) / std::log(top)));
}

PlotPicture HistogramPicture(const Rect& client, const HistSettingsRecord& settings,
                             std::span<const std::uint32_t> bins, const HistogramTexts& texts)
{
    PlotPicture picture;
    const Rect box{client.left + kLeftMargin, client.top + kTopMargin, client.right - kRightMargin,
                   client.bottom - kBottomMargin};
    if (box.Width() <= kMargins || box.Height() <= kLogFoot || settings.XplotMax <= settings.XplotMin) return picture;
    picture.box = box;
    picture.clip = box;
    const ValueAxis axis = ValueAxisOf(settings, box);

    AddFrame(picture, box);
    if (settings.Yscaling) {
        AddLogAxis(picture, settings);
    } else {
        AddLinearAxis(picture, settings);
    }
    AddValueAxis(picture, axis, settings.Xgridlines != 0);
    picture.labels.push_back(
        {{(client.left + client.right) / 2, box.bottom + kTitleDrop}, texts.title, TextAlign::kCentre});
    AddValueLabels(picture, axis, texts);
    AddBars(picture, axis, bins, settings.Yscaling ? LogTop(box, settings) : LinearTop(box, settings));
    return picture;
}

}  // namespace kelvo
