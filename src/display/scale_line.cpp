#include "display/scale_line.h"

#include "display/difference_view.h"
#include "display/units.h"
#include "imagefile/header.h"
#include "state/display_state.h"
#include "state/frame_state.h"

#include <algorithm>

namespace kelvo {

namespace {

bool ValuesAreCounts(const ScaleLine& line)
{
    return line.lowValue == line.counts.low && line.highValue == line.counts.high;
}

}  // namespace

CountRange SpreadCounts(const LutWindow& window, CountRange live)
{
    // The table's first entry takes live.low: what stands above it moves down by that amount.
    const std::int64_t low = std::clamp<std::int64_t>(window.start - live.low, 0, INT32_MAX);
    const std::int64_t length = std::clamp<std::int64_t>(window.end - window.start, 0, INT32_MAX - low);
    return {static_cast<std::int32_t>(low), static_cast<std::int32_t>(low + length)};
}

CountRange SpreadCountsOnView()
{
    const CountRange live{DisplayLow, DisplayHigh};
    const CountRange range = LutRange(live, ViewingFile ? &ImageHeader : nullptr);
    return SpreadCounts(WindowOf(range.Span(), Contrast, Brightness), live);
}

std::int32_t ReadableUnit(std::int32_t unit)
{
    if (IsUnitAvailable(unit)) return unit;
    for (std::int32_t other = 0; other < kUnitCount; ++other) {
        if (IsUnitAvailable(other)) return other;
    }
    return kUnitCounts;
}

ScaleLine ScaleLineOf(CountRange counts, std::int32_t unit)
{
    ScaleLine line{counts, static_cast<double>(CountsToUnit(counts.low, unit, nullptr)),
                   static_cast<double>(CountsToUnit(counts.high, unit, nullptr)), false};
    line.whole = ValuesAreCounts(line);
    return line;
}

std::string ScaleTitleOf(std::int32_t unit)
{
    std::string name;
    std::string text;
    GetUnitName(unit, name, text);
    return text.empty() ? name : text;
}

ScaleLine ScaleLineOnView(CountRange counts, std::int32_t unit)
{
    ScaleLine line = ScaleLineOf(counts, unit);
    if (!DifferenceOnView()) return line;
    const auto none = static_cast<double>(CountsToUnit(DifferenceZero(), unit, nullptr));
    line.lowValue -= none;
    line.highValue -= none;
    return line;
}

std::string ScaleTitleOnView(std::int32_t unit)
{
    return DifferenceOnView() ? "+/- " + ScaleTitleOf(unit) : ScaleTitleOf(unit);
}

}  // namespace kelvo
