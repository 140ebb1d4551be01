#include "analysis/noise_map.h"

#include "analysis/plot_save.h"
#include "imagefile/header.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/text.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace kelvo {

namespace {

constexpr int kBarGap = 12;
constexpr int kBarWidth = 18;
constexpr double kWholeBlocks = 3;

constexpr int kLeftMargin = 12;
constexpr int kRightMargin = 14;
constexpr int kTopMargin = 10;
constexpr int kBottomMargin = 38;
constexpr int kLabelBelowBox = 8;
constexpr int kLabelApart = 12;

constexpr std::int16_t kFloatBytes = 4;
constexpr std::int16_t kFloatData = 8;  // DataType

std::size_t ColorOf(double value, const NoiseRange& range, std::size_t colors)
{
    const double part = (value - range.low) / (range.high - range.low);
    const double last = static_cast<double>(colors) - 1;
    return static_cast<std::size_t>(std::clamp(part * static_cast<double>(colors), 0.0, last));
}

// --- The plot -------------------------------------------------------------------------------------------------------

class Columns {
  public:
    Columns(const Rect& box, const NoiseHistogram& histogram) : box_(box), histogram_(histogram) {}
    int At(double value) const
    {
        const double part = (value - histogram_.low) / (histogram_.high - histogram_.low);
        return box_.left + static_cast<int>(std::lround(part * box_.Width()));
    }
    int OfBin(std::size_t bin) const
    {
        return box_.left + static_cast<int>(bin * static_cast<std::size_t>(box_.Width()) / histogram_.bins.size());
    }

  private:
    const Rect& box_;
    const NoiseHistogram& histogram_;
};

// A bar that a mark stands in is drawn beside it on both sides: the mark would be hidden under it.
void AddBar(PlotPicture& picture, const Rect& bar, std::span<const int> marks)
{
    int left = bar.left;
    for (const int mark : marks) {
        if (mark < left || mark >= bar.right) continue;
        if (mark > left) picture.bars.push_back({left, bar.top, mark, bar.bottom});
        left = mark + 1;
    }
    if (left < bar.right) picture.bars.push_back({left, bar.top, bar.right, bar.bottom});
}

void AddBars(PlotPicture& picture, const NoiseHistogram& histogram, const Columns& columns, std::span<const int> marks)
{
    const std::uint32_t most = std::max(*std::ranges::max_element(histogram.bins), 1U);
    for (std::size_t bin = 0; bin < histogram.bins.size(); ++bin) {
        const double part = static_cast<double>(histogram.bins[bin]) / most;
        const int height = static_cast<int>(std::lround(part * (picture.box.Height() - 2)));
        if (height == 0) continue;
        const int bottom = picture.box.bottom - 1;
        AddBar(picture, {columns.OfBin(bin), bottom - height, columns.OfBin(bin + 1), bottom}, marks);
    }
}

// As many as stand apart; the ticks of a scale that lies on its side.
void AddValueLabels(PlotPicture& picture, const NoiseHistogram& histogram, const Columns& columns,
                    std::string_view unit, const std::function<int(std::string_view)>& width)
{
    const std::string longest = Format("%.3g", histogram.high) + "00";
    const ScaleLine line{{0, static_cast<std::int32_t>(kNoiseBins)}, histogram.low, histogram.high, false};
    const int y = picture.box.bottom + kLabelBelowBox;
    const int left = picture.box.left - kLeftMargin;
    int end = picture.box.right;  // of the labels, for the unit stands at the right end
    const std::string name(unit);
    picture.labels.push_back({{end, y}, name, TextAlign::kRight});
    end -= width(name) + kLabelApart;
    const int apart = (width(longest) + kLabelApart + 1) / 2;
    for (const ScaleTick& tick : PlaceScaleTicks(line, 0, picture.box.Width(), std::max(apart, 1))) {
        const int x = columns.At(tick.value);
        AddColumnTick(picture, x, PlotTick::kShort);
        const int half = width(tick.label) / 2;
        if (x + half > end || x - half < left) continue;
        picture.labels.push_back({{x, y}, tick.label, TextAlign::kCentre});
    }
}

// --- Files ----------------------------------------------------------------------------------------------------------

std::string CsvOf(float value)
{
    return std::isfinite(value) ? CsvNumber(value) : std::string();
}

std::string CsvOf(double value)
{
    return CsvNumber(static_cast<float>(value));
}

std::string KindOfCounts(const NoiseMeasurement& measured)
{
    const std::string kind = measured.raw ? "raw" : "corrected";
    return measured.changes.empty() ? kind : kind + ", " + measured.changes;
}

ImageHeaderRecord HeaderOf(const NoiseMeasurement& measured, const NoiseFigures& figures)
{
    const HeaderKeeper former;  // the record on view stays as it is
    ImageHeaderRecord header;
    BuildImageHeader(&header, 0, 0, 0, 0, measured.columns - 1, measured.rows - 1);
    header.ImageWidth = static_cast<std::int16_t>(measured.columns);
    header.ImageHeight = static_cast<std::int16_t>(measured.rows);
    header.ByteSwap = 0xFFFF;
    header.FrameCount = 1;
    header.SampleBytes = kFloatBytes;
    header.DataType = kFloatData;
    header.FramesAveraged =
        static_cast<std::int16_t>(std::min<std::uint32_t>(measured.frames, std::numeric_limits<std::int16_t>::max()));
    // Values aren't counts: no temperature can be read from them.
    header.IntensityCold = kUncalibratedIntensity;
    header.IntensityHot = kUncalibratedIntensity;
    header.TemperatureCold = kUncalibratedTemperature;
    header.TemperatureHot = kUncalibratedTemperature;
    const NoiseRange range = MapRangeOf(figures);
    constexpr double kHighest = std::numeric_limits<std::int16_t>::max();
    header.DisplayLow = static_cast<std::int16_t>(std::clamp(std::floor(range.low), 0.0, kHighest - 1));
    header.DisplayHigh = static_cast<std::int16_t>(
        std::clamp(std::ceil(range.high), static_cast<double>(header.DisplayLow) + 1, kHighest));
    return header;
}

}  // namespace

std::string_view NoiseUnit(NoiseQuantity quantity)
{
    return quantity == NoiseQuantity::kNetd ? "mK" : "counts";
}

std::span<const float> NoiseValues(const NoiseMeasurement& measured, NoiseQuantity quantity)
{
    return quantity == NoiseQuantity::kNetd ? measured.noise.netd : measured.noise.deviation;
}

NoiseRange MapRangeOf(const NoiseFigures& figures)
{
    constexpr double kLeastPart = 1e-3;
    constexpr double kLeast = 0.01;
    const double least = std::max(std::fabs(figures.smallest) * kLeastPart, kLeast);
    return {figures.smallest, std::max(figures.worst, figures.smallest + least)};
}

DeviceBitmap NoisePicture(std::span<const float> values, std::int32_t columns, const NoiseRange& range,
                          std::span<const std::uint32_t> colors, std::uint32_t leftOut)
{
    if (columns < 1 || colors.empty()) return {};
    DeviceBitmap picture{
        .width = columns, .height = static_cast<int>(values.size() / static_cast<std::size_t>(columns)), .pixels = {}};
    picture.pixels.reserve(values.size());
    for (const float value : values) {
        picture.pixels.push_back(
            std::isfinite(value) ? colors[ColorOf(static_cast<double>(value), range, colors.size())] : leftOut);
    }
    return picture;
}

NoiseLayout LayOutNoise(const Rect& area, std::int32_t columns, std::int32_t rows, int scaleWidth, int lineHeight)
{
    const int room = area.Width() - kBarGap - kBarWidth - scaleWidth;
    if (columns < 1 || rows < 1 || room < 1 || area.Height() <= 3 * lineHeight) return {};
    // Below the bar the unit has a line of its own, and half of one is the lowest tick's.
    const double tall = area.Height() - 3 * lineHeight;
    const double scale = std::min(static_cast<double>(room) / columns, tall / rows);
    // Whole blocks where little is lost by them, so that all pixels are alike.
    const double zoom = scale >= kWholeBlocks ? std::floor(scale) : scale;
    const int width = std::max(static_cast<int>(zoom * columns), 1);
    const int height = std::max(static_cast<int>(zoom * rows), 1);
    const int left = area.left + std::max((room - width) / 2, 0);
    const int top = area.top + std::max((area.Height() - height) / 2, 0);
    const int bar = left + width + kBarGap;
    return {.map = {left, top, left + width, top + height}, .bar = {bar, top, bar + kBarWidth, top + height}};
}

bool NoisePixelAt(const NoiseLayout& layout, std::int32_t columns, std::int32_t rows, Point at, Point& pixel)
{
    const Rect& map = layout.map;
    if (map.Empty() || at.x < map.left || at.x >= map.right || at.y < map.top || at.y >= map.bottom) return false;
    pixel = {static_cast<int>(std::int64_t{at.x - map.left} * columns / map.Width()),
             static_cast<int>(std::int64_t{at.y - map.top} * rows / map.Height())};
    return true;
}

NoiseHistogram HistogramOfNoise(std::span<const float> values, const NoiseFigures& figures)
{
    constexpr double kBeyond = 0.25;
    const NoiseRange range = MapRangeOf(figures);
    return CountNoise(values, range.low, range.high + kBeyond * (range.high - range.low), kNoiseBins);
}

PlotPicture NoisePlot(const Rect& area, const NoiseHistogram& histogram, const NoiseFigures& figures,
                      std::string_view unit, const std::function<int(std::string_view)>& width)
{
    PlotPicture picture;
    picture.box = {area.left + kLeftMargin, area.top + kTopMargin, area.right - kRightMargin,
                   area.bottom - kBottomMargin};
    picture.clip = picture.box;
    if (picture.box.Empty() || histogram.bins.empty()) return picture;
    AddFrame(picture, picture.box);
    const Columns columns(picture.box, histogram);
    const std::array marks{columns.At(figures.median), columns.At(figures.worst)};  // in this order along the axis
    AddBars(picture, histogram, columns, marks);
    for (const int x : marks) {
        picture.lines.push_back({{x, picture.box.top}, {x, picture.box.bottom}, PlotPen::kGrayDashed});
    }
    AddValueLabels(picture, histogram, columns, unit, width);
    return picture;
}

std::string NoiseCsv(const NoiseMeasurement& measured, const NoiseFigures& figures, NoiseQuantity quantity)
{
    std::string text = CsvNote("program", "Kelvo " KELVO_VERSION);
    text += CsvNote("measured", UtcText(measured.beganUtcNs));
    text += CsvNote("source", measured.source);
    text += CsvNote("counts", KindOfCounts(measured));
    text += CsvNote("calibration", measured.calibration);
    text += CsvNote("size", Format("%d rows, %d columns", measured.rows, measured.columns));
    text += CsvNote("frames", Format("%u", measured.frames));
    text += CsvNote("lost between them", Format("%lld", static_cast<long long>(measured.lost)));
    text += CsvNote("bad pixels left out", Format("%zu", measured.noise.badPixels));
    text += CsvNote("saturated pixels", measured.knowsSaturated ? Format("%zu", measured.noise.saturatedPixels) : "");
    text += CsvNote("counts a degree", measured.countsPerDegree ? CsvOf(*measured.countsPerDegree) : "");
    const std::string unit = " (" + std::string(NoiseUnit(quantity)) + ")";
    const bool some = figures.pixels > 0;
    text += CsvNote("median" + unit, some ? CsvOf(figures.median) : "");
    text += CsvNote("rms" + unit, some ? CsvOf(figures.rms) : "");
    text += CsvNote("99th percentile" + unit, some ? CsvOf(figures.worst) : "");
    text += "row,column,mean,deviation,netd_mK\n";
    const PixelNoise& noise = measured.noise;
    for (std::size_t i = 0; i < noise.deviation.size(); ++i) {
        const auto columns = static_cast<std::size_t>(measured.columns);
        text += Format("%zu,%zu,", i / columns, i % columns) + CsvNumber(noise.mean[i]) + ',' +
                CsvOf(noise.deviation[i]) + ',' + (noise.netd.empty() ? std::string() : CsvOf(noise.netd[i])) + '\n';
    }
    return text;
}

bool SaveNoiseImage(const std::string& path, const NoiseMeasurement& measured, const NoiseFigures& figures,
                    NoiseQuantity quantity)
{
    const ImageHeaderRecord header = HeaderOf(measured, figures);
    const std::span<const std::byte> values = std::as_bytes(NoiseValues(measured, quantity));
    std::optional<NewFile> file = NewFile::Begin(path);
    if (!file) return false;
    const std::span<const std::byte> head = std::as_bytes(std::span(&header, 1));
    return file->Contents().Write(head) == head.size() && file->Contents().Write(values) == values.size() &&
           file->Keep();
}

}  // namespace kelvo
