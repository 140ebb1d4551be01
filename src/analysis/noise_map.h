// What a noise measurement shows and leaves behind: the map of its pixels in colours, the plot of their histogram, and
// its files. Pure, but for SaveNoiseImage.
#pragma once

#include "analysis/noise_gather.h"
#include "analysis/plot_picture.h"
#include "display/scale_ticks.h"
#include "platform/paint.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

enum class NoiseQuantity { kNetd, kDeviation };

// "mK", "counts".
std::string_view NoiseUnit(NoiseQuantity quantity);
// One value a pixel, row by row; empty where the measurement has none of that kind.
std::span<const float> NoiseValues(const NoiseMeasurement& measured, NoiseQuantity quantity);

// --- The map --------------------------------------------------------------------------------------------------------

// The values that the first and the last colour stand for: the smallest one and the 99th percentile, so that a few
// noisy pixels don't take all the colours for themselves. high lies above low, by what can be read from a scale.
struct NoiseRange {
    double low = 0;
    double high = 1;
};
NoiseRange MapRangeOf(const NoiseFigures& figures);

// A pixel each, 0x00RRGGBB; what isn't a number in the colour for pixels that are left out. colors: 256 of them.
DeviceBitmap NoisePicture(std::span<const float> values, std::int32_t columns, const NoiseRange& range,
                          std::span<const std::uint32_t> colors, std::uint32_t leftOut);

// Where map, colour bar and ticks stand in an area (0, 0, width, height): the map as large as its shape allows, the bar
// at its right.
struct NoiseLayout {
    Rect map;
    Rect bar;
};
NoiseLayout LayOutNoise(const Rect& area, std::int32_t columns, std::int32_t rows, int scaleWidth, int lineHeight);
// The pixel that a point shows, column and row; false beside the map.
bool NoisePixelAt(const NoiseLayout& layout, std::int32_t columns, std::int32_t rows, Point at, Point& pixel);

// --- The histogram --------------------------------------------------------------------------------------------------

constexpr std::size_t kNoiseBins = 100;
// From the smallest value to a quarter beyond the 99th percentile.
NoiseHistogram HistogramOfNoise(std::span<const float> values, const NoiseFigures& figures);

// Bars over the values, dashed lines at the median and at the 99th percentile. width: of a text in pixels.
PlotPicture NoisePlot(const Rect& area, const NoiseHistogram& histogram, const NoiseFigures& figures,
                      std::string_view unit, const std::function<int(std::string_view)>& width);

// --- Files ----------------------------------------------------------------------------------------------------------

// "# name: value" lines that say where it comes from, always the same ones, of which those are empty that nobody knows;
// then "row,column,mean,deviation,netd_mK" and a line for each pixel, numbers as they read back; what isn't a number is
// empty.
std::string NoiseCsv(const NoiseMeasurement& measured, const NoiseFigures& figures, NoiseQuantity quantity);

// An image of 4-byte floats in the quantity's unit, pixels that are left out not a number, whole or not at all; false
// where it couldn't be written. FramesAveraged is the number of frames, and the display range the map's.
bool SaveNoiseImage(const std::string& path, const NoiseMeasurement& measured, const NoiseFigures& figures,
                    NoiseQuantity quantity);

}  // namespace kelvo
