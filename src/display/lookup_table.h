// The lookup table's arithmetic: from contrast, brightness and a range of counts to one gray value per count.
//
// Contrast sets the width of a window of counts, brightness its place in the range. Below the window all counts show
// black, above it white, and inside it gray rises in a straight line. Values only: display_pipeline owns the table in
// force.
#pragma once

#include "imagefile/header.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo {

// The table's length: every count of 0 to 65534.
constexpr std::size_t kLutEntries = 65535;

// The one span for which the width runs smoothly from nearly the span at contrast 1 to 16 at contrast 100.
constexpr std::int64_t kSmoothSpan = 16383;

constexpr std::int32_t kMinContrast = 1;
constexpr std::int32_t kMaxContrast = 100;
constexpr std::int32_t kMinBrightness = 1;
constexpr std::int32_t kMaxBrightness = 1000;

struct CountRange {
    std::int32_t low = 0;
    std::int32_t high = 0;
    std::int64_t Span() const { return std::int64_t{high} - low; }
    friend bool operator==(const CountRange&, const CountRange&) = default;
};

// Counts, relative to the start of the range: black below start, white from end on.
struct LutWindow {
    std::int64_t width = 0;
    std::int64_t start = 0;
    std::int64_t end = 0;
    friend bool operator==(const LutWindow&, const LutWindow&) = default;
};

// The range that contrast and brightness work on. header is null for live video, otherwise the header of the file on
// view: before version 4 headers held no range. A negative low counts as 0, a high of 0 as the live one.
CountRange LutRange(CountRange live, const ImageHeaderRecord* header);

// The window's width in counts at a contrast: at most the span, then at least 16 (the floor wins where they cross).
// Doubles throughout. A width beyond 32 bits keeps its low 32 bits, read as signed, and is 0 from 2^63 on; so is one
// that is no number (a span of 0 or below).
std::int64_t WindowWidth(std::int64_t span, std::int32_t contrast);

// Where a window of that width lies at a brightness: 1 puts it at the top of the span, 1000 at 0.
LutWindow PlaceWindow(std::int64_t span, std::int64_t width, std::int32_t brightness);

LutWindow WindowOf(std::int64_t span, std::int32_t contrast, std::int32_t brightness);

// Writes the table from its first entry on: black for the counts from live.low up to the window's start, the ramp, then
// white up to and including live.high. Since the first entry takes live.low, a live.low above 0 moves the ramp toward
// lower entries by that amount. Entries beyond the last one written stay; what would go beyond the table is dropped.
void FillLut(std::span<std::uint8_t> table, const LutWindow& window, CountRange live);

}  // namespace kelvo
