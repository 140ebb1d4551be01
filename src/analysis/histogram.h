// Counting the values of a rectangle of a frame, and what its samples measure. Pure arithmetic on the block that it is
// given.
//
// A sample is a signed 16-bit count. All of them are counted by value first, in one pass; the bins of any limits follow
// from that, so that an axis that follows the data needs no second look at the frame.
#pragma once

#include "analysis/plot_report.h"
#include "display/frame_bitmap.h"
#include "platform/types.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

// What the operator chose; the fields are keys of section Histogram of kelvo.ini. The rectangle is told by its centre,
// in image pixels; the axes' ends are counts and numbers of samples.
struct HistSettingsRecord {
    std::int32_t Xsize = 0;
    std::int32_t Ysize = 0;
    std::int32_t Xposition = 0;  // centre column
    std::int32_t Yposition = 0;  // centre row
    std::int32_t XplotMin = 0;   // value axis, within kLowestCount to kHighestCount
    std::int32_t YplotMin = 0;   // number axis
    std::int32_t XplotMax = 0;
    std::int32_t YplotMax = 0;
    std::int32_t Xautoscale = 1;  // 1: the axis follows the data
    std::int32_t Yautoscale = 1;
    std::int32_t Xgridlines = 0;  // 1: vertical grid
    std::int32_t Ygridlines = 0;  // 1: horizontal grid
    std::int32_t Yscaling = 0;    // number axis: 0 linear, 1 logarithmic
    friend bool operator==(const HistSettingsRecord&, const HistSettingsRecord&) = default;
};

// What a sample can be, and so the widest value axis.
constexpr std::int32_t kLowestCount = -32768;
constexpr std::int32_t kHighestCount = 32767;

// --- The rectangle --------------------------------------------------------------------------------------------------

// The rectangle has a size of at least 1 x 1 and lies within a frame of that size (columns, rows), as it is tested when
// the dialog opens: from centre - floor(size / 2) to centre + ceil(size / 2), all of it from 0 to size - 1.
bool RectangleFits(const HistSettingsRecord& settings, Point size);
// Puts a quarter of the frame, at least a pixel, in its middle.
void CentreRectangle(HistSettingsRecord& settings, Point size);
// What is counted: from centre + 1 - ceil(size / 2) to centre + floor(size / 2), a left or top below 1 as 0, right and
// bottom held to the frame's size. That is another pixel than the test's, and one past the last column where the
// rectangle reaches there: figures that were noted down rest on both.
FrameRect CountedRectangle(const HistSettingsRecord& settings, Point size);

// --- Counting -------------------------------------------------------------------------------------------------------

// How often each count stands in a rectangle; [count - kLowestCount].
using CountTable = std::vector<std::uint32_t>;

// The samples of a rectangle in the order in which they are visited, top to bottom, left to right. Column c of row r is
// the sample r x width + c, also at c = width, which is the next row's first; what lies beyond the frame is left out.
// One span a row.
std::vector<std::span<const std::int16_t>> RowsOf(std::span<const std::int16_t> frame, std::int32_t width,
                                                  const FrameRect& rectangle);

// table is made kHighestCount - kLowestCount + 1 entries long, with what the rows hold.
void CountSamples(std::span<const std::span<const std::int16_t>> rows, CountTable& table);

// Bins: [0] counts the samples below low, the last those above high, [1 + v - low] the value v. bins is as long as they
// need, high + 3 - low.
void FillBins(const CountTable& table, std::int32_t low, std::int32_t high, std::span<std::uint32_t> bins);

// The largest and the smallest count of the bins but for the two outer ones.
struct BinRange {
    std::uint32_t smallest = 0;
    std::uint32_t largest = 0;
};
BinRange RangeOfBins(std::span<const std::uint32_t> bins);

// --- What the samples measure ---------------------------------------------------------------------------------------

struct SampleFigures {
    std::uint64_t samples = 0;
    float mean = 0;                   // in the unit: (float) sum / (float) samples
    std::optional<double> deviation;  // in the unit, of the population; none for fewer than 2 samples
    double sumOfSquares = 0;          // what the deviation is made of
    Extremes extremes;                // in counts, the first of equal ones
};

// Mean and deviation in the unit that valueOf gives: sums in double, in the order of the samples. valueOf is asked once
// for each count that occurs. The deviation is sqrt(sum of squares / samples) of the differences mean - value, taken at
// full width, of which one factor is rounded to a float. (That is another deviation than RegionStatistics': the two are
// not to be merged.)
SampleFigures MeasureSamples(std::span<const std::span<const std::int16_t>> rows, const FrameRect& rectangle,
                             const CountTable& table, const std::function<float(std::int32_t)>& valueOf);

// --- The axes' ends -------------------------------------------------------------------------------------------------

// The value axis follows the data: from the minimum, at least -0x7FFF, to the maximum, at least one above and at most
// 0x7FFF.
void FitValueAxis(HistSettingsRecord& settings, const SampleFigures& figures);
// The number axis: from the smallest to the largest bin where it follows the data; in any case to at least 2, from at
// least one below.
void FitNumberAxis(HistSettingsRecord& settings, std::span<const std::uint32_t> bins);

}  // namespace kelvo
