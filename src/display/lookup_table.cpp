#include "display/lookup_table.h"

#include <algorithm>
#include <cmath>

namespace kelvo {

namespace {

// Width = base ^ contrast x factor.
struct WidthFormula {
    double factor;
    double base;
};

constexpr std::int64_t kMinWidth = 16;
constexpr double kLastContrastStep = 99.0;  // contrast 1 to 100
constexpr double kBrightnessSteps = 999.0;  // brightness 1 to 1000
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr std::uint8_t kWhite = 255;

// The 14-bit full scale: 16383 x (16 / 16383)^((contrast - 1) / 99).
constexpr WidthFormula kFullScale{17571.151923916, 0.93238053321369};

// Away from the full scale factor and base have changed places, so that the width leaves the span after a step or two
// of contrast and lands on the span or on the floor. Pictures are stored with contrasts that were set by eye on it.
WidthFormula FormulaFor(std::int64_t span)
{
    if (span == kSmoothSpan) return kFullScale;
    const auto counts = static_cast<double>(span);
    const double factor = std::pow(10.0, std::log10(static_cast<double>(kMinWidth) / counts) / kLastContrastStep);
    return {factor, counts / factor};
}

std::int32_t LowWord32(double value)
{
    if (!(std::fabs(value) < kTwoTo63)) return 0;  // also what is no number
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::int64_t>(value)));
}

// What is left of the table while it is written front to back.
class TableWriter {
  public:
    explicit TableWriter(std::span<std::uint8_t> table) : rest_(table) {}

    void Repeat(std::int64_t count, std::uint8_t value)
    {
        const std::span<std::uint8_t> part = Take(count);
        std::ranges::fill(part, value);
    }

    // Single precision in step and sum: which entry takes the next gray value depends on their rounding.
    void Ramp(std::int64_t count)
    {
        if (count <= 0) return;
        const auto step = static_cast<float>(255.0 / static_cast<double>(count));
        float sum = 0.0F;
        for (std::uint8_t& entry : Take(count)) {
            entry = static_cast<std::uint8_t>(sum);
            sum += step;
        }
    }

  private:
    std::span<std::uint8_t> Take(std::int64_t count)
    {
        const auto length = std::clamp<std::int64_t>(count, 0, static_cast<std::int64_t>(rest_.size()));
        const std::span<std::uint8_t> part = rest_.first(static_cast<std::size_t>(length));
        rest_ = rest_.subspan(part.size());
        return part;
    }

    std::span<std::uint8_t> rest_;
};

}  // namespace

CountRange LutRange(CountRange live, const ImageHeaderRecord* header)
{
    constexpr std::int16_t kFirstVersionWithRange = 4;
    CountRange range = live;
    if (header && header->HeaderVersion < kFirstVersionWithRange) {
        range = {0, static_cast<std::int32_t>(std::clamp<std::int64_t>(live.Span(), INT32_MIN, INT32_MAX))};
    } else if (header) {
        range = {header->DisplayLow, header->DisplayHigh};
    }
    range.low = std::max(range.low, 0);
    if (range.high == 0) range.high = live.high;
    return range;
}

std::int64_t WindowWidth(std::int64_t span, std::int32_t contrast)
{
    const WidthFormula formula = FormulaFor(span);
    const std::int64_t width = LowWord32(std::pow(formula.base, contrast) * formula.factor);
    return std::max(std::min(width, span), kMinWidth);
}

LutWindow PlaceWindow(std::int64_t span, std::int64_t width, std::int32_t brightness)
{
    const double room = static_cast<double>(span - width) * (kMaxBrightness - static_cast<double>(brightness));
    const auto start = static_cast<std::int64_t>(room / kBrightnessSteps);
    return {width, start, std::min(start + width, span)};
}

LutWindow WindowOf(std::int64_t span, std::int32_t contrast, std::int32_t brightness)
{
    return PlaceWindow(span, WindowWidth(span, contrast), brightness);
}

void FillLut(std::span<std::uint8_t> table, const LutWindow& window, CountRange live)
{
    TableWriter writer(table.first(std::min(table.size(), kLutEntries)));
    writer.Repeat(window.start - live.low, 0);
    writer.Ramp(window.end - window.start);
    writer.Repeat(std::int64_t{live.high} - window.end + 1, kWhite);
}

}  // namespace kelvo
