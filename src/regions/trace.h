// A trace: what regions measure in one frame after the other, over true seconds. Plain values, no window: whoever has
// the frames, a file (regions/trace_file.h) or the live camera (record/live_trace.h), appends to it.
//
// A trace has as many points as there were frames; what is missing between two of them stays missing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

// Of a region in one frame, in counts.
struct TracePoint {
    double mean = 0;
    double deviation = 0;  // the sample's (n - 1); 0 of a single pixel
    std::int16_t minimum = 0;
    std::int16_t maximum = 0;
    friend bool operator==(const TracePoint&, const TracePoint&) = default;
};

// counts: at least one. The sums are whole numbers, taken about the rounded mean, so that only the last operations are
// rounded.
TracePoint MeasureCounts(std::span<const std::int16_t> counts);

// How the counts of a region are read in a unit, on a straight line: value = zero + step x counts. So the value of a
// mean is the mean of the pixels' values.
struct TraceScale {
    double zero = 0;
    double step = 1;
    friend bool operator==(const TraceScale&, const TraceScale&) = default;
};
// A point in a unit. A deviation has no zero. minimum and maximum are rounded to single, as a pixel's value is wherever
// it is read.
struct TraceValue {
    double mean = 0;
    double deviation = 0;
    float minimum = 0;
    float maximum = 0;
    friend bool operator==(const TraceValue&, const TraceValue&) = default;
};
TraceValue ValueOf(const TracePoint& point, const TraceScale& scale);

// A unit that a trace can be read in, as it was when the trace began.
struct TraceUnit {
    std::int32_t unit = 0;             // display/units.h
    std::string text = "counts";       // Latin-1
    std::vector<TraceScale> scales{};  // of each line
};

struct TraceFrame {
    std::int64_t number = 0;   // by the camera's board, from 1; where it isn't known the place in the file, from 1
    std::int64_t clockNs = 0;  // since the first frame of the trace, by a clock that never jumps
    std::int64_t utcNs = 0;    // since 1 January 1970; 0: not known
    std::int64_t missing = 0;  // frames between the one before and this one; 0 of the first
    bool startsAnew = false;   // the count or the clock doesn't go on from the frame before: another run
    friend bool operator==(const TraceFrame&, const TraceFrame&) = default;
};

struct TraceLine {
    std::string name;         // of the region
    std::size_t pixels = 0;   // that are measured
    std::size_t leftOut = 0;  // bad ones that lie in it and aren't
    std::string surface{};    // "emissivity 0.8, reflected 30 \xB0" "C"; empty: a black body, or no temperature
    std::vector<TracePoint> points{};  // one a frame
};

struct Trace {
    bool hasTimes = true;  // false: neither clock nor rate is known, and clockNs is 0 throughout
    std::vector<TraceFrame> frames{};
    std::vector<TraceLine> lines{};
    std::vector<TraceUnit> units{};  // counts first; none: counts
    // Where it comes from, name and value, as a file of it tells ("camera", "head settings", ...).
    std::vector<std::pair<std::string, std::string>> origin{};
};

// Of a line in units[unit]; that of counts where there is none.
TraceScale ScaleOf(const Trace& trace, std::size_t unit, std::size_t line);
// "counts", "\xB0" "C"
std::string UnitTextOf(const Trace& trace, std::size_t unit);

// From the first frame, 0 without times.
double SecondsOf(const TraceFrame& frame);

// The number and the moment by which a frame is joined to the one before.
struct FrameMoment {
    std::int64_t number = 0;       // by the board; negative: it doesn't count
    std::int64_t monotonicNs = 0;  // of a clock whose zero is unknown
    std::int64_t utcNs = 0;        // 0: not known
    std::int64_t told = 0;         // frames that are said to be missing before it; holds where the board doesn't count
    bool startsAnew = false;       // it is said to begin another run
};
// Makes the frames of a trace out of moments, in order.
class TraceClock {
  public:
    // A board that doesn't count: frames are numbered by their order, what is told as missing left out. Where the
    // monotonic clock went back (another run after the machine was started again) UTC tells how long it was, or
    // nothing.
    TraceFrame Next(const FrameMoment& moment);

  private:
    FrameMoment before_;
    TraceFrame last_;
    bool any_ = false;
};

// What is missing: before which frame, and how many (0: not known, another run begins).
struct TraceGap {
    std::size_t before = 0;
    std::int64_t missing = 0;
    friend bool operator==(const TraceGap&, const TraceGap&) = default;
};
// A gap is where the frames' numbers go on by more than one and a half times the usual step, the median: a recording of
// each hundredth frame has none as long as it goes on so.
std::vector<TraceGap> TraceGapsOf(std::span<const TraceFrame> frames);

// Frames that follow each other without a gap.
struct TraceRun {
    std::size_t first = 0;
    std::size_t frames = 0;
    friend bool operator==(const TraceRun&, const TraceRun&) = default;
};
// All of them, in order; empty without frames.
std::vector<TraceRun> TraceRunsOf(std::span<const TraceFrame> frames);
// The longest one, of equal ones the first.
TraceRun LongestRunOf(std::span<const TraceFrame> frames);

}  // namespace kelvo
