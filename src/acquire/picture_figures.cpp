#include "acquire/picture_figures.h"

#include "pixel/saturation.h"

#include <algorithm>
#include <cmath>

namespace kelvo {

std::optional<PictureFigures> FiguresOf(std::span<const std::int16_t> rawCounts)
{
    if (rawCounts.empty()) return std::nullopt;
    // Whole numbers, and exact: the largest frames stay far below 2^63.
    std::int64_t sum = 0;
    std::int64_t squares = 0;
    for (const std::int64_t count : rawCounts) {
        sum += count;
        squares += count * count;
    }
    const auto number = static_cast<double>(rawCounts.size());
    const double mean = static_cast<double>(sum) / number;
    const double spread = static_cast<double>(squares) - static_cast<double>(sum) * mean;
    const double deviation = number > 1 ? std::sqrt(std::max(spread, 0.0) / (number - 1)) : 0;
    return PictureFigures{.mean = mean, .deviation = deviation, .saturatedShare = SaturatedShare(rawCounts)};
}

void MeanWatch::Add(std::int64_t ms, double mean)
{
    means_.push_back({ms, mean});
    while (means_.size() > 1 && means_[1].ms <= ms - kSpanMs) means_.pop_front();
}

bool MeanWatch::IsSteady() const
{
    if (means_.empty() || means_.back().ms - means_.front().ms < kSpanMs) return false;
    const auto [least, most] = std::ranges::minmax_element(means_, {}, &Entry::mean);
    return most->mean - least->mean < kSteadyCounts;
}

}  // namespace kelvo
