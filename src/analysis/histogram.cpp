#include "analysis/histogram.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelvo {

namespace {

constexpr std::size_t kCounts = kHighestCount - kLowestCount + 1;

constexpr std::int32_t kLowestAxis = -0x7FFF;
constexpr std::int32_t kHighestAxis = 0x7FFF;
constexpr std::int32_t kLeastNumberMax = 2;

std::int64_t FloorHalf(std::int32_t size)
{
    return std::int64_t{size} >> 1;
}

std::int64_t CeilHalf(std::int32_t size)
{
    return (std::int64_t{size} + 1) >> 1;
}

std::int32_t Narrowed(std::int64_t value)
{
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, std::numeric_limits<std::int32_t>::min(),
                                                              std::numeric_limits<std::int32_t>::max()));
}

bool SideFits(std::int32_t centre, std::int32_t size, int full)
{
    return size >= 1 && centre - FloorHalf(size) >= 0 && centre + CeilHalf(size) <= std::int64_t{full} - 1;
}

struct Side {
    std::int32_t first = 0;
    std::int32_t last = 0;
};

Side CountedSide(std::int32_t centre, std::int32_t size, int full)
{
    const std::int64_t from = std::int64_t{centre} + 1 - CeilHalf(size);
    const std::int64_t first = from < 1 ? 0 : from;
    const std::int64_t last = std::min(centre + FloorHalf(size), std::max<std::int64_t>(full, first + 1));
    return {Narrowed(first), Narrowed(last)};
}

std::size_t PlaceOf(std::int32_t count)
{
    return static_cast<std::size_t>(count - kLowestCount);
}

std::int32_t CountAt(std::ptrdiff_t place)
{
    return static_cast<std::int32_t>(place) + kLowestCount;
}

// The lowest and the highest count that occur; the table holds one at least.
std::int32_t LowestIn(const CountTable& table)
{
    return CountAt(std::ranges::find_if(table, [](std::uint32_t n) { return n > 0; }) - table.begin());
}

std::int32_t HighestIn(const CountTable& table)
{
    return CountAt(table.rend() - std::find_if(table.rbegin(), table.rend(), [](std::uint32_t n) { return n > 0; }) -
                   1);
}

std::uint64_t SumOf(std::span<const std::uint32_t> counters)
{
    std::uint64_t sum = 0;
    for (const std::uint32_t counter : counters) sum += counter;
    return sum;
}

Point FirstPlaceOf(std::int32_t count, std::span<const std::span<const std::int16_t>> rows, const FrameRect& rectangle)
{
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const auto found = std::ranges::find(rows[row], count);
        if (found == rows[row].end()) continue;
        return {rectangle.left + static_cast<int>(found - rows[row].begin()), rectangle.top + static_cast<int>(row)};
    }
    return {};
}

// A sum over the samples in their order, of what a table says of each count from lowest on. The order is part of the
// result: sums in double round.
double SumInOrder(std::span<const std::span<const std::int16_t>> rows, std::span<const double> terms,
                  std::int32_t lowest)
{
    double sum = 0;
    for (const std::span<const std::int16_t> row : rows) {
        for (const std::int16_t sample : row) sum += terms[static_cast<std::size_t>(sample - lowest)];
    }
    return sum;
}

}  // namespace

bool RectangleFits(const HistSettingsRecord& settings, Point size)
{
    return SideFits(settings.Xposition, settings.Xsize, size.x) && SideFits(settings.Yposition, settings.Ysize, size.y);
}

void CentreRectangle(HistSettingsRecord& settings, Point size)
{
    settings.Xposition = (size.x - 1) / 2;
    settings.Yposition = (size.y - 1) / 2;
    settings.Xsize = std::max(size.x / 4, 1);
    settings.Ysize = std::max(size.y / 4, 1);
}

FrameRect CountedRectangle(const HistSettingsRecord& settings, Point size)
{
    const Side columns = CountedSide(settings.Xposition, settings.Xsize, size.x);
    const Side rows = CountedSide(settings.Yposition, settings.Ysize, size.y);
    return {.left = columns.first, .top = rows.first, .right = columns.last, .bottom = rows.last};
}

std::vector<std::span<const std::int16_t>> RowsOf(std::span<const std::int16_t> frame, std::int32_t width,
                                                  const FrameRect& rectangle)
{
    std::vector<std::span<const std::int16_t>> rows;
    if (width < 1 || rectangle.left < 0 || rectangle.top < 0 || rectangle.Width() < 1) return rows;
    const auto end = static_cast<std::int64_t>(frame.size());
    for (std::int64_t row = rectangle.top; row <= rectangle.bottom; ++row) {
        const std::int64_t first = row * width + rectangle.left;
        if (first >= end) break;
        rows.push_back(frame.subspan(static_cast<std::size_t>(first),
                                     static_cast<std::size_t>(std::min(rectangle.Width(), end - first))));
    }
    return rows;
}

void CountSamples(std::span<const std::span<const std::int16_t>> rows, CountTable& table)
{
    table.assign(kCounts, 0);
    // Neighbours are often alike, and one counter can't be raised again before it is written: they take turns.
    CountTable other(kCounts);
    std::uint32_t* const even = table.data() - kLowestCount;
    std::uint32_t* const odd = other.data() - kLowestCount;
    for (const std::span<const std::int16_t> row : rows) {
        std::size_t i = 0;
        for (; i + 1 < row.size(); i += 2) {
            ++even[row[i]];
            ++odd[row[i + 1]];
        }
        if (i < row.size()) ++even[row[i]];
    }
    for (std::size_t i = 0; i < kCounts; ++i) table[i] += other[i];
}

void FillBins(const CountTable& table, std::int32_t low, std::int32_t high, std::span<std::uint32_t> bins)
{
    const std::span<const std::uint32_t> counters(table);
    const std::size_t first = PlaceOf(low);
    const std::size_t values = static_cast<std::size_t>(high - low) + 1;
    bins.front() = static_cast<std::uint32_t>(SumOf(counters.first(first)));
    std::ranges::copy(counters.subspan(first, values), bins.begin() + 1);
    bins.back() = static_cast<std::uint32_t>(SumOf(counters.subspan(first + values)));
}

BinRange RangeOfBins(std::span<const std::uint32_t> bins)
{
    if (bins.size() < 3) return {};
    const auto [smallest, largest] = std::ranges::minmax(bins.subspan(1, bins.size() - 2));
    return {.smallest = smallest, .largest = largest};
}

SampleFigures MeasureSamples(std::span<const std::span<const std::int16_t>> rows, const FrameRect& rectangle,
                             const CountTable& table, const std::function<float(std::int32_t)>& valueOf)
{
    SampleFigures figures;
    figures.samples = SumOf(table);
    if (figures.samples == 0) return figures;
    const std::int32_t lowest = LowestIn(table);
    const std::int32_t highest = HighestIn(table);

    std::vector<double> terms(static_cast<std::size_t>(highest - lowest) + 1);
    for (std::int32_t count = lowest; count <= highest; ++count) {
        if (table[PlaceOf(count)] > 0) terms[static_cast<std::size_t>(count - lowest)] = valueOf(count);
    }
    const double sum = SumInOrder(rows, terms, lowest);
    figures.mean = static_cast<float>(sum) / static_cast<float>(figures.samples);
    for (double& term : terms) {
        const double difference = static_cast<double>(figures.mean) - term;
        term = difference * static_cast<double>(static_cast<float>(difference));
    }
    figures.sumOfSquares = SumInOrder(rows, terms, lowest);
    if (figures.samples > 1) figures.deviation = std::sqrt(figures.sumOfSquares / static_cast<double>(figures.samples));

    figures.extremes.Take(lowest, FirstPlaceOf(lowest, rows, rectangle));
    figures.extremes.Take(highest, FirstPlaceOf(highest, rows, rectangle));
    return figures;
}

void FitValueAxis(HistSettingsRecord& settings, const SampleFigures& figures)
{
    if (figures.samples == 0) return;
    settings.XplotMin = std::max(figures.extremes.minimum, kLowestAxis);
    settings.XplotMax = std::min(std::max(figures.extremes.maximum, settings.XplotMin + 1), kHighestAxis);
}

void FitNumberAxis(HistSettingsRecord& settings, std::span<const std::uint32_t> bins)
{
    if (settings.Yautoscale) {
        const BinRange range = RangeOfBins(bins);
        settings.YplotMin = Narrowed(range.smallest);
        settings.YplotMax = Narrowed(range.largest);
    }
    settings.YplotMax = std::max(settings.YplotMax, kLeastNumberMax);
    settings.YplotMin = std::min(settings.YplotMin, settings.YplotMax - 1);
}

}  // namespace kelvo
