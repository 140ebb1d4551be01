#include "pixel/region_statistics.h"

#include "pixel/region_sums.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelvo {

namespace {

struct Region {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::int64_t right = 0;
    std::int64_t bottom = 0;
    std::int64_t stride = 0;

    std::int64_t Samples() const { return (right + 1 - left) * (bottom + 1 - top); }
    bool HasSamples() const { return right >= left && bottom >= top; }
    bool LiesIn(std::int64_t samples) const
    {
        if (!HasSamples()) return true;
        const bool inRows = left >= 0 && top >= 0 && right < stride;
        return inRows && bottom < samples && bottom * stride + right < samples;
    }
    SampleRows Rows(std::span<const std::byte> data) const
    {
        return {.first = data.data() + static_cast<std::size_t>(top * stride + left) * sizeof(float),
                .columns = static_cast<std::size_t>(right + 1 - left),
                .rows = static_cast<std::size_t>(bottom + 1 - top),
                .strideBytes = static_cast<std::size_t>(stride) * sizeof(float)};
    }
};

// A sample as the extremes keep it.
std::int32_t Whole(std::int32_t sample)
{
    return sample;
}
std::int32_t Whole(float sample)
{
    constexpr double kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr double kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(static_cast<double>(sample), kLeast, kMost));
}

struct Sums {
    double sum = 0;
    double squares = 0;
};

// The extremes take their samples at the end: truncated, the least of all is the least of each.
template <typename Sample>
Sums Take(const RegionSums<Sample>& region, std::int32_t& minimum, std::int32_t& maximum)
{
    minimum = std::min(minimum, Whole(region.least));
    maximum = std::max(maximum, Whole(region.most));
    return {region.sum, region.squares};
}

Sums Visit(const SampleRows& rows, std::int32_t type, std::int32_t& minimum, std::int32_t& maximum)
{
    return type == kFloatSamples ? Take(SumFloats(rows), minimum, maximum) : Take(SumIntegers(rows), minimum, maximum);
}

}  // namespace

double RegionStatistics(std::span<const std::byte> data, std::int32_t left, std::int32_t top, std::int32_t right,
                        std::int32_t bottom, std::int32_t stride, std::int32_t type, float* stdDev,
                        std::int32_t& minimum, std::int32_t& maximum)
{
    static_assert(sizeof(float) == sizeof(std::int32_t));
    const Region region{.left = left, .top = top, .right = right, .bottom = bottom, .stride = stride};
    const std::int64_t n = region.Samples();
    if (n < 1 || !region.LiesIn(std::ssize(data) / static_cast<std::int64_t>(sizeof(float)))) return 0.0;
    const Sums sums = region.HasSamples() ? Visit(region.Rows(data), type, minimum, maximum) : Sums{};
    const auto count = static_cast<double>(n);
    if (stdDev) {
        const double aboutMean = std::fabs(sums.squares - sums.sum / count * sums.sum);
        *stdDev = n == 1 ? 0.0F : static_cast<float>(std::sqrt(aboutMean / (count - 1)));
    }
    return sums.sum / count;
}

}  // namespace kelvo
