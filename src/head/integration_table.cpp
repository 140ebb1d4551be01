#include "head/integration_table.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr std::int64_t kMostSteps = 252;  // of 4 rows
constexpr std::int64_t kFineRows = 15;    // the last rows, in fifths of a line
constexpr std::int64_t kFineEntries = 75;

// 64 bits throughout: limits read from a settings file may be any number.
struct Window {
    std::int64_t width = 0;   // ColEnd - ColStart
    std::int64_t height = 0;  // RowEnd - RowStart
};

struct Pair {
    std::int64_t lines = 0;
    std::int64_t cols = 0;
};

Pair UnclampedCounters(std::int64_t index, const Window& window)
{
    const std::int64_t steps = std::min((window.height + 1 - 16) / 4, kMostSteps);
    const std::int64_t total = (window.width + 1) / 4 - 1 + kFineEntries + 3 * steps;
    const std::int64_t fineFirst = 3 * steps;
    const std::int64_t fine = index - fineFirst;
    if (fine < 0) {
        return {2 + window.height / 4 * 4 - index / 3 * 4, (2 - index % 3) * (window.width / 2)};
    }
    if (fine < kFineEntries) return {kFineRows - fine / 5, (4 - fine % 5) * (window.width / 4)};
    return {0, (total - index) * 4};
}

// True where value lay inside 0 to size - 1. Where the frame has no size yet the upper limit is -1, and it stays.
bool ClampToFrame(std::int16_t& value, std::int16_t size)
{
    const bool below = value < 0;
    if (below) value = 0;
    const int highest = size - 1;
    const bool above = value > highest;
    if (above) value = static_cast<std::int16_t>(highest);
    return !below && !above;
}

}  // namespace

IntegrationCounters LookUpIntegration(std::int32_t index, const FpaSerialWordRecord& word,
                                      const HeadTimingRecord& timing)
{
    const Window window{std::int64_t{word.ColEnd} - word.ColStart, std::int64_t{word.RowEnd} - word.RowStart};
    const Pair pair = UnclampedCounters(index, window);
    IntegrationCounters counters{static_cast<std::int16_t>(pair.lines), static_cast<std::int16_t>(pair.cols)};
    const bool colsFit = ClampToFrame(counters.cols, timing.TimingCols);
    const bool linesFit = ClampToFrame(counters.lines, timing.TimingRows);
    counters.inTable = colsFit && linesFit;
    return counters;
}

double IntegrationMsec(const IntegrationCounters& counters, const HeadTimingRecord& timing, float frameRate)
{
    const std::int32_t pixels = timing.TimingRows * timing.TimingCols;
    if (pixels == 0 || !(frameRate > 0)) return 0;
    const std::int64_t integrated = std::int64_t{counters.lines} * timing.TimingCols + counters.cols;
    const auto numerator = static_cast<std::int32_t>(integrated * 1000);  // a 32-bit integer
    return numerator / (static_cast<double>(pixels) * static_cast<double>(frameRate));
}

}  // namespace kelvo
