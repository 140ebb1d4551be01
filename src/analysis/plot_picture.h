// A plot as shapes: what stands where, in the logical pixels of the control that shows it. Pure: the three plots work
// out their positions as values, and analysis/plot_paint.h puts them on the screen.
//
// The box is the area of the data; its value axis stands left of it, its other axis below.
#pragma once

#include "platform/paint.h"
#include "platform/types.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

enum class PlotPen { kBlack, kGrayDotted, kGrayDashed };

// Level or upright: from its first pixel up to its end, which isn't part of it.
struct PlotLine {
    Point from;
    Point to;
    PlotPen pen = PlotPen::kBlack;
    friend bool operator==(const PlotLine&, const PlotLine&) = default;
};

// One line of text, its top at y; x is its left end, its right end or its middle.
struct PlotLabel {
    Point at;
    std::string text;
    TextAlign align = TextAlign::kLeft;
    friend bool operator==(const PlotLabel&, const PlotLabel&) = default;
};

struct PlotPicture {
    Rect box;
    std::vector<PlotLine> lines;
    std::vector<PlotLabel> labels;
    std::vector<Rect> bars;           // filled red, as far as they lie inside clip; right and bottom exclusive
    std::vector<Point> trace;         // a red line from point to point, clipped likewise
    std::vector<std::size_t> breaks;  // points of the trace that aren't joined to the one before
    Rect clip;
};

// The whole part of a position: i steps of a size in pixels that was rounded to single, multiplied at full width.
int PlotPosition(std::int64_t i, float pixels);

// The frame of a rectangle: its outermost pixels.
void AddFrame(PlotPicture& picture, const Rect& frame);

// The marks of the value axis: for i from 0 to ticks, PlotPosition(i, spacing) below the box's top, a tick of 3 pixels
// on each side of the box. With grid a line across the box at each but the first and the last, as far as it lies
// inside.
void AddValueTicks(PlotPicture& picture, int ticks, float spacing, bool grid, PlotPen pen = PlotPen::kGrayDotted);

// A mark of the other axis at column x: 6 pixels below the box and 6 above it, or 3 for a short one.
enum class PlotTick { kShort, kLong };
void AddColumnTick(PlotPicture& picture, int x, PlotTick tick);
// A line up the box at column x, from gap pixels below its top to its bottom.
void AddColumnGrid(PlotPicture& picture, int x, int gap, PlotPen pen = PlotPen::kGrayDotted);

// Puts a line that goes rightward into a picture's trace. Points that share a column of pixels show as that column from
// their highest to their lowest place; of however many points the trace has no more than four a column.
class PlotTrace {
  public:
    explicit PlotTrace(PlotPicture& picture) : picture_(picture) {}
    void Add(const Point& at);
    void Break();  // the next point isn't joined to the last one
    void End();    // to be called behind the last one

  private:
    void Put(const Point& at);
    PlotPicture& picture_;
    std::size_t first_ = 0;  // of the piece, in the trace
    Point lowest_;           // of the last column
    Point highest_;
    Point last_;
};

// The first step whose bound lies above n; otherwise last.
struct PlotStep {
    std::int64_t below = 0;
    std::int64_t step = 0;
};
std::int64_t StepFor(std::int64_t n, std::span<const PlotStep> steps, std::int64_t last);

}  // namespace kelvo
