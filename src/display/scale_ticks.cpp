#include "display/scale_ticks.h"

#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace kelvo {

namespace {

constexpr double kLargestValue = 1e12;
constexpr int kMostDecimals = 9;
constexpr double kLinesATick = 2.0;  // lines of text from one tick to the next, at least

// Long enough that ticks of single precision differ, and small enough to be written beside them.
bool HasLength(const ScaleLine& line)
{
    constexpr double kSmallestSpan = 1e-6;  // in the unit
    constexpr double kSmallestPart = 1e-6;  // of the values
    const double largest = std::max(std::fabs(line.lowValue), std::fabs(line.highValue));
    const double span = std::fabs(line.highValue - line.lowValue);
    return line.counts.Span() > 0 && largest < kLargestValue && span > kSmallestSpan && span > kSmallestPart * largest;
}

// 1, 2 or 5 times a power of ten, at least the given distance.
double RoundStep(double least)
{
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least * (1 - 1e-9)) return factor * power;
    }
    return 10 * power;
}

int DecimalsOf(double step)
{
    return std::clamp(static_cast<int>(-std::floor(std::log10(step) + 1e-9)), 0, kMostDecimals);
}

}  // namespace

ScaleBar PlaceScaleBar(int height, int labelHeight)
{
    return {kScaleTitleTop + labelHeight + labelHeight, height - labelHeight};
}

std::vector<ScaleTick> PlaceScaleTicks(const ScaleLine& line, int top, int bottom, int labelHeight)
{
    const double span = line.highValue - line.lowValue;
    const int height = bottom - top;
    if (!HasLength(line) || height <= 0 || labelHeight <= 0) return {};

    const double apart = kLinesATick * labelHeight;
    double step = RoundStep(std::fabs(span) * std::min(apart / height, 1.0));
    if (line.whole) step = std::max(step, 1.0);
    const int decimals = DecimalsOf(step);

    std::vector<ScaleTick> ticks;
    const double low = std::min(line.lowValue, line.highValue);
    const double high = std::max(line.lowValue, line.highValue);
    const auto last = static_cast<std::int64_t>(std::floor(high / step + 1e-9));
    for (auto multiple = static_cast<std::int64_t>(std::ceil(low / step - 1e-9)); multiple <= last; ++multiple) {
        const double value = static_cast<double>(multiple) * step;
        const double along = std::clamp((value - line.lowValue) / span, 0.0, 1.0);
        const int y = std::min(bottom - static_cast<int>(std::lround(along * height)), bottom - 1);
        ticks.push_back({value, y, Format("%.*f", decimals, value)});
    }
    return ticks;
}

}  // namespace kelvo
