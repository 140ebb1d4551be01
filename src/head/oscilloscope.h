// The oscilloscope of the video set-up, as calculation: every pixel of a frame is a dot over its pixel number, in
// reading order. A dot is a bit set in a block; nothing here knows a window.
#pragma once

#include "platform/paint.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

constexpr int kScopeDivisions = 10;
constexpr int kScopeMarks = kScopeDivisions + 1;

// One bit a dot: rows of width / 8 bytes from the top, the highest bit of a byte is its leftmost column.
struct ScopePlot {
    int width = 0;  // a multiple of 16
    int height = 0;
    std::vector<std::uint8_t> bits;
};

// Makes room for a plot of that size, its width rounded down to a multiple of 16. False where memory is refused; then
// the plot is empty.
bool AllocatePlot(ScopePlot& plot, int width, int height);

// Clears the plot and sets a bit for each plotted value. Each column takes the next n = frame.size() / width values, at
// least 1, of which every resolution-th (below 1: every one) is plotted; the last eight columns share what remains of
// the frame. A value is limited to low to high; high is the top row, low the bottom row. Where high isn't above low all
// dots lie in the top row.
void PlotFrame(ScopePlot& plot, std::span<const std::int16_t> frame, std::int32_t low, std::int32_t high,
               std::int32_t resolution);

// The signal is good between these counts of the 14-bit converter: a tenth of its range is kept free at each end, for
// what a scene, the drift of the head and the spread of the detectors add.
constexpr std::int32_t kGoodSignalLow = 1638;
constexpr std::int32_t kGoodSignalHigh = 14745;
// The row of a plot of that height where a count lies; nullopt outside low to high, and where high isn't above low.
std::optional<int> RowOfCount(std::int32_t count, std::int32_t low, std::int32_t high, int height);

// "Saturated: 0.13 %", of a share from 0 to 1.
std::string SaturatedText(double share);

// The plot as a picture: black dots on a background (0x00RRGGBB). The picture's memory is used again while the plot
// keeps its size.
void PlotPicture(const ScopePlot& plot, std::uint32_t background, DeviceBitmap& picture);

// The rows of the marks beside a plot of that height, top down: the tenths of the height, from 0 to height - 1.
std::array<int, kScopeMarks> MarkRows(int height);
// The counts at the marks, top down: high to low in tenths of the range.
std::array<std::int32_t, kScopeMarks> MarkCounts(std::int32_t low, std::int32_t high);

// "Temperature (\xB0" "C) vs Pixel Number".
std::string ScopeTitle(std::int32_t unit);

// A frame rate (Hz) as its list shows it: one decimal above 10, two above 1, three above 0.1, otherwise four.
std::string FrameRateText(float rateHz);

// The row of a list that a page key leads to: 4 back, not below 0; 4 on, not beyond count - 2, so that one row is left
// to step to. Never below 0.
int PageBack(int row);
int PageOn(int row, int count);

}  // namespace kelvo
