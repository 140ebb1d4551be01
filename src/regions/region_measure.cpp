#include "regions/region_measure.h"

#include "pixel/saturation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelvo {

namespace {

__extension__ using Wide = __int128;  // n S2 of a frame of 2^30 pixels

// So many counts that their sum, and the sums of either half of their squares, fit 32 bits: the processor adds several
// at once then.
constexpr std::size_t kBlock = 16384;

struct BlockSums {
    std::int32_t sum = 0;
    std::uint32_t lowHalves = 0;  // of the squares, 16 bits each
    std::uint32_t highHalves = 0;
    std::int16_t least = std::numeric_limits<std::int16_t>::max();
    std::int16_t most = std::numeric_limits<std::int16_t>::min();
};

BlockSums SumsOf(std::span<const std::int16_t> counts)
{
    BlockSums sums;
    for (const std::int16_t count : counts) {
        const auto square = static_cast<std::uint32_t>(std::int32_t{count} * count);
        sums.sum += count;
        sums.lowHalves += square & 0xFFFFU;
        sums.highHalves += square >> 16U;
        sums.least = std::min(sums.least, count);
        sums.most = std::max(sums.most, count);
    }
    return sums;
}

// The measuring of one frame, stretch by stretch: pixels of one row that lie beside one another and all count.
class Measurement {
  public:
    Measurement(std::span<const std::int16_t> frame, std::int32_t columns, const MeasureOptions& options)
        : frame_(frame),
          columns_(columns),
          options_(options),
          hasRaw_(!options.raw.empty() && !options.decomList.empty())
    {
        if (options.countsAreRaw || hasRaw_) figures_.saturated = 0;
        if (options.sources) figures_.outsideSources = 0;
    }

    void AddRun(const PixelRun& run)
    {
        const std::size_t start = Index(run.row, run.first);
        const std::size_t end = Index(run.row, run.last) + 1;
        if (options_.bad.size() != frame_.size()) {
            AddStretch(start, end);
            return;
        }
        std::size_t good = start;
        for (std::size_t i = start; i < end; ++i) {
            if (options_.bad[i] == 0) continue;
            AddStretch(good, i);
            ++figures_.leftOut;
            good = i + 1;
        }
        AddStretch(good, end);
    }

    RegionFigures Figures()
    {
        const std::size_t n = figures_.pixels;
        if (n == 0) return figures_;
        figures_.mean = static_cast<double>(figures_.sum) / static_cast<double>(n);
        if (n > 1) {
            const Wide pixels = static_cast<Wide>(n);
            const Wide spread = pixels * squares_ - Wide{figures_.sum} * figures_.sum;
            figures_.deviation = std::sqrt(static_cast<double>(spread) / static_cast<double>(pixels * (pixels - 1)));
        }
        return figures_;
    }

  private:
    std::size_t Index(std::int32_t row, std::int32_t column) const
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(column);
    }

    void AddStretch(std::size_t start, std::size_t end)
    {
        if (start >= end) return;
        const std::span<const std::int16_t> counts = frame_.subspan(start, end - start);
        std::int64_t sum = 0;
        std::int64_t squares = 0;
        std::int16_t least = std::numeric_limits<std::int16_t>::max();
        std::int16_t most = std::numeric_limits<std::int16_t>::min();
        for (std::size_t at = 0; at < counts.size(); at += kBlock) {
            const BlockSums block = SumsOf(counts.subspan(at, std::min(kBlock, counts.size() - at)));
            sum += block.sum;
            squares += (std::int64_t{block.highHalves} << 16) + block.lowHalves;
            least = std::min(least, block.least);
            most = std::max(most, block.most);
        }
        if (figures_.pixels == 0 || least < figures_.least.count) figures_.least = FirstOf(least, start, counts);
        if (figures_.pixels == 0 || most > figures_.most.count) figures_.most = FirstOf(most, start, counts);
        figures_.pixels += counts.size();
        figures_.sum += sum;
        squares_ += squares;
        if (figures_.saturated) *figures_.saturated += SaturatedIn(start, counts);
        if (figures_.outsideSources && options_.sources) {
            *figures_.outsideSources += Outside(*options_.sources, counts, least, most);
        }
    }

    PixelCount FirstOf(std::int16_t count, std::size_t start, std::span<const std::int16_t> counts) const
    {
        const auto place = static_cast<std::size_t>(std::ranges::find(counts, count) - counts.begin()) + start;
        const auto columns = static_cast<std::size_t>(columns_);
        return {count, static_cast<std::int32_t>(place % columns), static_cast<std::int32_t>(place / columns)};
    }

    std::size_t SaturatedIn(std::size_t start, std::span<const std::int16_t> counts) const
    {
        if (options_.countsAreRaw) return static_cast<std::size_t>(std::ranges::count_if(counts, IsSaturated));
        std::size_t saturated = 0;
        for (std::size_t i = start; i < start + counts.size() && i < options_.decomList.size(); ++i) {
            const std::size_t detector = options_.decomList[i];
            if (detector < options_.raw.size() && IsSaturated(options_.raw[detector])) ++saturated;
        }
        return saturated;
    }

    static std::size_t Outside(CountRange sources, std::span<const std::int16_t> counts, std::int16_t least,
                               std::int16_t most)
    {
        if (least >= sources.low && most <= sources.high) return 0;
        return static_cast<std::size_t>(
            std::ranges::count_if(counts, [&](std::int16_t c) { return c < sources.low || c > sources.high; }));
    }

    std::span<const std::int16_t> frame_;
    std::int32_t columns_;
    const MeasureOptions& options_;
    bool hasRaw_;
    RegionFigures figures_;
    std::int64_t squares_ = 0;  // at most 2^30 each
};

}  // namespace

RegionFigures MeasureRegion(std::span<const std::int16_t> frame, std::int32_t columns, std::int32_t rows,
                            std::span<const PixelRun> runs, const MeasureOptions& options)
{
    if (columns <= 0 || rows <= 0) return {};
    const std::size_t pixels = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    if (frame.size() < pixels) return {};
    Measurement measurement(frame.first(pixels), columns, options);
    for (PixelRun run : runs) {
        run.first = std::max(run.first, 0);
        run.last = std::min(run.last, columns - 1);
        if (run.row >= 0 && run.row < rows && run.first <= run.last) measurement.AddRun(run);
    }
    return measurement.Figures();
}

}  // namespace kelvo
