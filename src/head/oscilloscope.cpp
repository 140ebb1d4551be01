#include "head/oscilloscope.h"

#include "display/units.h"
#include "platform/memory.h"
#include "platform/text.h"

#include <algorithm>
#include <cstddef>

namespace kelvo {

namespace {

constexpr int kColumnsPerByte = 8;
constexpr int kWidthStep = 16;
constexpr std::uint8_t kLeftmostBit = 0x80;
constexpr std::uint32_t kDotColor = 0x000000;
constexpr int kPageRows = 4;

// From counts to rows of the plot.
class RowScale {
  public:
    RowScale(std::int32_t low, std::int32_t high, int height)
        : low_(low), high_(high), range_(static_cast<double>(high) - low), lastRow_(height - 1)
    {
    }

    std::size_t RowOf(std::int16_t value) const
    {
        if (range_ <= 0) return 0;
        const auto below = static_cast<double>(high_) - std::clamp<std::int32_t>(value, low_, high_);
        // Multiplied first: a quotient of whole numbers is exact where it is whole, so that the lowest count always
        // falls on the last row.
        return static_cast<std::size_t>(below * lastRow_ / range_);
    }

  private:
    std::int32_t low_;
    std::int32_t high_;
    double range_;
    double lastRow_;
};

// Hands out the frame's values, column by column.
class Columns {
  public:
    explicit Columns(std::span<const std::int16_t> frame) : rest_(frame) {}

    std::span<const std::int16_t> Next(std::size_t count)
    {
        const auto column = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(column.size());
        return column;
    }
    std::size_t Left() const { return rest_.size(); }

  private:
    std::span<const std::int16_t> rest_;
};

}  // namespace

bool AllocatePlot(ScopePlot& plot, int width, int height)
{
    const int columns = std::max(width, 0) / kWidthStep * kWidthStep;
    const int rows = std::max(height, 0);
    plot.width = columns;
    plot.height = rows;
    const auto bytes = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns) / kColumnsPerByte;
    if (AllocateBlock(plot.bits, bytes)) return true;
    plot = {};
    return false;
}

void PlotFrame(ScopePlot& plot, std::span<const std::int16_t> frame, std::int32_t low, std::int32_t high,
               std::int32_t resolution)
{
    std::ranges::fill(plot.bits, std::uint8_t{0});
    if (plot.bits.empty()) return;
    const auto rowBytes = static_cast<std::size_t>(plot.width) / kColumnsPerByte;
    const auto step = static_cast<std::size_t>(std::max(resolution, 1));
    const RowScale scale(low, high, plot.height);
    Columns columns(frame);

    std::size_t perColumn = std::max<std::size_t>(frame.size() / static_cast<std::size_t>(plot.width), 1);
    for (std::size_t byte = 0; byte < rowBytes; ++byte) {
        if (byte + 1 == rowBytes) perColumn = columns.Left() / kColumnsPerByte;
        for (unsigned bit = kLeftmostBit; bit != 0; bit >>= 1) {
            const auto column = columns.Next(perColumn);
            for (std::size_t i = 0; i < column.size(); i += step) {
                plot.bits[scale.RowOf(column[i]) * rowBytes + byte] |= static_cast<std::uint8_t>(bit);
            }
        }
    }
}

std::optional<int> RowOfCount(std::int32_t count, std::int32_t low, std::int32_t high, int height)
{
    if (count < low || count > high || high <= low || height < 1) return std::nullopt;
    return static_cast<int>((static_cast<double>(high) - count) * (height - 1) / (static_cast<double>(high) - low));
}

std::string SaturatedText(double share)
{
    return Format("Saturated: %.2f %%", share * 100);
}

void PlotPicture(const ScopePlot& plot, std::uint32_t background, DeviceBitmap& picture)
{
    picture.width = plot.width;
    picture.height = plot.height;
    picture.pixels.resize(plot.bits.size() * kColumnsPerByte);
    std::uint32_t* pixel = picture.pixels.data();
    for (const std::uint8_t byte : plot.bits) {
        for (unsigned bit = kLeftmostBit; bit != 0; bit >>= 1) *pixel++ = (byte & bit) != 0 ? kDotColor : background;
    }
}

std::array<int, kScopeMarks> MarkRows(int height)
{
    std::array<int, kScopeMarks> rows{};
    for (int mark = 0; mark < kScopeMarks; ++mark) {
        rows.at(static_cast<std::size_t>(mark)) = mark * std::max(height - 1, 0) / kScopeDivisions;
    }
    return rows;
}

std::array<std::int32_t, kScopeMarks> MarkCounts(std::int32_t low, std::int32_t high)
{
    std::array<std::int32_t, kScopeMarks> counts{};
    const std::int64_t range = std::int64_t{high} - low;
    for (int mark = 0; mark < kScopeMarks; ++mark) {
        const std::int64_t aboveLow = range * (kScopeDivisions - mark) / kScopeDivisions;
        counts.at(static_cast<std::size_t>(mark)) = static_cast<std::int32_t>(low + aboveLow);
    }
    return counts;
}

std::string ScopeTitle(std::int32_t unit)
{
    std::string name;
    std::string unitText;
    GetUnitName(unit, name, unitText);
    return Format("%s (%s) vs Pixel Number", name.c_str(), unitText.c_str());
}

std::string FrameRateText(float rateHz)
{
    const auto rate = static_cast<double>(rateHz);
    if (rateHz > 10) return Format("%.1f", rate);
    if (rateHz > 1) return Format("%.2f", rate);
    if (rate > 0.1) return Format("%.3f", rate);
    return Format("%.4f", rate);
}

int PageBack(int row)
{
    return std::max(row - kPageRows, 0);
}

int PageOn(int row, int count)
{
    return std::max(std::min(row + kPageRows, count - 2), 0);
}

}  // namespace kelvo
