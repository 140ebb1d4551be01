#include "analysis/noise_figures.h"

#include "acquire/frame_sums.h"
#include "imagefile/header.h"
#include "pixel/bad_marks.h"
#include "pixel/saturation.h"
#include "platform/memory.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelvo {

namespace {

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr double kMillikelvin = 1000;
constexpr double kPartThatIsntWorst = 0.99;

// Of an image pixel; nullopt where it has no sums, no gain that says anything, or is marked.
std::optional<std::size_t> GoodEntry(std::size_t pixel, const NoiseLists& lists, std::size_t sums)
{
    if (pixel < lists.bad.size() && lists.bad[pixel] != 0) return std::nullopt;
    if (!lists.order.empty() && pixel >= lists.order.size()) return std::nullopt;
    const std::size_t entry = lists.order.empty() ? pixel : lists.order[pixel];
    if (entry >= sums) return std::nullopt;
    if (lists.gains.empty()) return entry;
    if (entry >= lists.gains.size() || HasNoGain(lists.gains[entry])) return std::nullopt;
    return entry;
}

double MeanOfPixel(std::size_t pixel, const NoiseLists& lists, const NoiseSums& sums)
{
    if (lists.order.empty()) return sums.MeanOf(pixel);
    const bool has = pixel < lists.order.size() && lists.order[pixel] < sums.Pixels();
    return has ? sums.MeanOf(lists.order[pixel]) : 0;
}

double MedianOf(std::span<const float> sorted)
{
    const std::size_t middle = sorted.size() / 2;
    if (sorted.size() % 2 == 1) return static_cast<double>(sorted[middle]);
    return (static_cast<double>(sorted[middle - 1]) + static_cast<double>(sorted[middle])) / 2;
}

}  // namespace

std::optional<NoiseSums> NoiseSums::Make(std::size_t pixels)
{
    NoiseSums made;
    const bool hasRoom = AllocateBlock(made.sums_, pixels) && AllocateBlock(made.squares_, pixels) &&
                         AllocateBlock(made.saturated_, pixels);
    if (!hasRoom) return std::nullopt;
    return made;
}

void NoiseSums::Add(std::span<const std::int16_t> frame)
{
    if (frame.size() != Pixels() || frames_ == kMostNoiseFrames) return;
    AddFrame(frame, std::span(sums_), std::span(squares_));
    for (std::size_t i = 0; i < frame.size(); ++i) {
        saturated_[i] |= static_cast<std::uint8_t>(IsSaturated(frame[i]) ? 1 : 0);
    }
    ++frames_;
}

double NoiseSums::MeanOf(std::size_t pixel) const
{
    return frames_ == 0 ? 0 : static_cast<double>(sums_[pixel]) / frames_;
}

// n times the sum of squares less the square of the sum: whole numbers below 2^62.
double NoiseSums::DeviationOf(std::size_t pixel) const
{
    if (frames_ < kLeastNoiseFrames) return 0;
    const auto n = std::int64_t{frames_};
    const auto sum = std::int64_t{sums_[pixel]};
    const std::int64_t spread = n * static_cast<std::int64_t>(squares_[pixel]) - sum * sum;
    return std::sqrt(static_cast<double>(spread) / static_cast<double>(n * (n - 1)));
}

std::optional<double> CountsPerDegree(const NoisePair& pair)
{
    constexpr float kAbsoluteZeroC = -273.15F;
    const bool told = pair.intensityCold != kUncalibratedIntensity && pair.intensityHot != kUncalibratedIntensity &&
                      pair.temperatureCold > kAbsoluteZeroC && pair.temperatureHot > kAbsoluteZeroC;
    const double degrees = static_cast<double>(pair.temperatureHot) - static_cast<double>(pair.temperatureCold);
    const double counts = static_cast<double>(pair.intensityHot) - static_cast<double>(pair.intensityCold);
    if (!told || counts == 0 || degrees == 0 || !std::isfinite(degrees)) return std::nullopt;
    return std::fabs(counts / degrees);
}

std::optional<PixelNoise> NoiseOf(const NoiseSums& sums, const NoiseLists& lists, std::optional<double> countsPerDegree)
{
    PixelNoise noise;
    const std::size_t pixels = sums.Pixels();
    if (!AllocateBlock(noise.mean, pixels) || !AllocateBlock(noise.deviation, pixels)) return std::nullopt;
    if (countsPerDegree && !AllocateBlock(noise.netd, pixels)) return std::nullopt;
    std::ranges::fill(noise.deviation, kNoNumber);
    std::ranges::fill(noise.netd, kNoNumber);
    for (std::size_t i = 0; i < pixels; ++i) {
        noise.mean[i] = static_cast<float>(MeanOfPixel(i, lists, sums));
        const std::optional<std::size_t> entry = GoodEntry(i, lists, pixels);
        if (!entry) {
            ++noise.badPixels;
            continue;
        }
        if (sums.WasSaturated(*entry)) ++noise.saturatedPixels;
        const double deviation = sums.DeviationOf(*entry);
        noise.deviation[i] = static_cast<float>(deviation);
        if (!countsPerDegree) continue;
        const double gain = lists.gains.empty() ? 1 : std::fabs(static_cast<double>(lists.gains[*entry]));
        noise.netd[i] = static_cast<float>(deviation / (gain * *countsPerDegree) * kMillikelvin);
    }
    return noise;
}

std::optional<NoiseFigures> FiguresOfNoise(std::span<const float> values)
{
    std::vector<float> sorted;
    if (!AllocateBlock(sorted, values.size())) return std::nullopt;
    sorted.clear();
    double squares = 0;
    for (const float value : values) {
        if (!std::isfinite(value)) continue;
        sorted.push_back(value);
        squares += static_cast<double>(value) * static_cast<double>(value);
    }
    NoiseFigures figures;
    figures.pixels = sorted.size();
    if (sorted.empty()) return figures;

    std::ranges::sort(sorted);
    const auto held =
        static_cast<std::size_t>(std::ceil(kPartThatIsntWorst * static_cast<double>(sorted.size()) - 1e-9));
    const float worst = sorted[held - 1];
    figures.median = MedianOf(sorted);
    figures.rms = std::sqrt(squares / static_cast<double>(sorted.size()));
    figures.smallest = static_cast<double>(sorted.front());
    figures.largest = static_cast<double>(sorted.back());
    figures.worst = static_cast<double>(worst);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isfinite(values[i]) && values[i] > worst) figures.above.push_back(i);
    }
    std::ranges::stable_sort(figures.above, [&](std::size_t a, std::size_t b) { return values[a] > values[b]; });
    return figures;
}

NoiseHistogram CountNoise(std::span<const float> values, double low, double high, std::size_t bins)
{
    NoiseHistogram histogram{.low = low, .high = high, .bins = std::vector<std::uint32_t>(bins)};
    const double perBin = (high - low) / static_cast<double>(bins);
    for (const float single : values) {
        const auto value = static_cast<double>(single);
        if (!std::isfinite(value)) continue;
        if (value < low) {
            ++histogram.below;
        } else if (!(value < high)) {
            ++histogram.above;
        } else {
            const auto bin = static_cast<std::size_t>((value - low) / perBin);
            ++histogram.bins[std::min(bin, bins - 1)];
        }
    }
    return histogram;
}

}  // namespace kelvo
