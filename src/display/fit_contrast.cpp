#include "display/fit_contrast.h"

#include "display/gray_lookup.h"
#include "platform/text.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

namespace kelvo {

namespace {

// The first count, in the direction of the histogram's iterator, at which more than that many pixels have been passed.
template <typename Bins>
std::size_t PixelsBefore(const Bins& bins, std::size_t pixels)
{
    std::size_t seen = 0;
    std::size_t bin = 0;
    for (const std::size_t count : bins) {
        seen += count;
        if (seen > pixels) break;
        ++bin;
    }
    return bin;
}

constexpr std::int32_t kLowest = std::numeric_limits<std::int16_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int16_t>::max();

// How many pixels have each count, and how many there are.
struct Histogram {
    std::vector<std::size_t> bins = std::vector<std::size_t>(std::size_t{1} << 16);
    std::size_t pixels = 0;
};

Histogram HistogramOf(std::span<const std::int16_t> frame, std::span<const std::uint8_t> bad)
{
    Histogram histogram;
    for (std::size_t i = 0; i < frame.size(); ++i) {
        if (!bad.empty() && bad[i] != 0) continue;
        ++histogram.bins[static_cast<std::size_t>(frame[i] - kLowest)];
        ++histogram.pixels;
    }
    return histogram;
}

// Where the marks don't fit the frame, or leave nothing, all are good.
Histogram HistogramOfGood(std::span<const std::int16_t> frame, std::span<const std::uint8_t> bad)
{
    if (bad.size() != frame.size()) return HistogramOf(frame, {});
    Histogram histogram = HistogramOf(frame, bad);
    return histogram.pixels == 0 ? HistogramOf(frame, {}) : histogram;
}

}  // namespace

CountRange CentralCounts(std::span<const std::int16_t> frame, std::span<const std::uint8_t> bad)
{
    const Histogram histogram = HistogramOfGood(frame, bad);
    const std::vector<std::size_t>& bins = histogram.bins;

    const std::size_t outside = (histogram.pixels - 1) / 200;
    const std::span<const std::size_t> rising(bins);
    const std::vector<std::size_t> falling(bins.rbegin(), bins.rend());
    return {kLowest + static_cast<std::int32_t>(PixelsBefore(rising, outside)),
            kHighest - static_cast<std::int32_t>(PixelsBefore(falling, outside))};
}

ContrastFit FitContrast(std::span<const std::int16_t> frame, CountRange range, CountRange live,
                        std::span<const std::uint8_t> bad)
{
    if (frame.empty()) return {0, 0, "There is no picture to fit the contrast to."};
    if (range.Span() != kSmoothSpan) {
        return {0, 0,
                Format("The contrast can't be fitted to this picture.\n\nIts range of counts is %d to %d. Contrast "
                       "follows in small steps only\nwhere the range spans %d counts, as 0 to %d does.",
                       range.low, range.high, static_cast<int>(kSmoothSpan), static_cast<int>(kSmoothSpan))};
    }

    // Counts as the table meets them: its first entry belongs to live.low, and a negative count shows as count 0.
    const CountRange central = CentralCounts(frame, bad);
    const std::int64_t low = std::int64_t{std::max(central.low, 0)} + live.low;
    const std::int64_t high = std::int64_t{std::max(central.high, 0)} + live.low;

    ContrastFit best;
    std::int64_t leastMisfit = std::numeric_limits<std::int64_t>::max();
    for (std::int32_t contrast = kMinContrast; contrast <= kMaxContrast; ++contrast) {
        const std::int64_t width = WindowWidth(range.Span(), contrast);
        for (std::int32_t brightness = kMinBrightness; brightness <= kMaxBrightness; ++brightness) {
            const LutWindow window = PlaceWindow(range.Span(), width, brightness);
            const std::int64_t misfit = std::abs(window.start - low) + std::abs(window.end - high);
            if (misfit >= leastMisfit) continue;
            leastMisfit = misfit;
            best = {contrast, brightness, {}};
        }
    }
    return best;
}

bool HardlySeen(std::span<const std::int16_t> frame, std::span<const std::uint8_t> lut,
                std::span<const std::uint8_t> bad)
{
    constexpr std::uint8_t kFirstShade = 0;
    constexpr std::uint8_t kLastShade = 255;
    GrayTable shades{};
    FillGrayTable(shades, lut);
    const Histogram histogram = HistogramOfGood(frame, bad);
    std::size_t ends = 0;
    for (std::int32_t count = kLowest; count <= kHighest; ++count) {
        const std::uint8_t shade = shades[static_cast<std::uint16_t>(count)];
        if (shade == kFirstShade || shade == kLastShade)
            ends += histogram.bins[static_cast<std::size_t>(count - kLowest)];
    }
    return ends * 100 > histogram.pixels * 95;
}

}  // namespace kelvo
