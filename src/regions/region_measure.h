// What the pixels of a region measure in one frame, in counts. Pure arithmetic: no window, no state. Sums are taken in
// integers and are exact; a mean and a deviation are rounded once they are made of them.
#pragma once

#include "display/lookup_table.h"
#include "regions/region.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

// A pixel of the frame with its count.
struct PixelCount {
    std::int16_t count = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
    friend bool operator==(const PixelCount&, const PixelCount&) = default;
};

struct MeasureOptions {
    // Non-zero for each pixel (image order, columns x rows) that is left out; empty, or of another size: none is.
    std::span<const std::uint8_t> bad{};
    // Whose ends of the converter (pixel/saturation.h) are counted: the frame's own counts where they are the
    // converter's, else those of the raw frame (readout order) that it was made of, through the table of that time.
    // Without either the number is unknown.
    bool countsAreRaw = false;
    std::span<const std::int16_t> raw{};
    std::span<const std::uint32_t> decomList{};
    // The counts of the two sources; without them the number outside is unknown.
    std::optional<CountRange> sources{};
};

struct RegionFigures {
    std::size_t pixels = 0;   // that were measured; of 0 the other figures say nothing
    std::size_t leftOut = 0;  // that lie in the frame and were left out
    std::int64_t sum = 0;
    double mean = 0;
    double deviation = 0;  // of the sample: divided by n - 1; 0 of a single pixel
    PixelCount least{};    // of equal ones the first, row by row from the left
    PixelCount most{};
    std::optional<std::size_t> saturated{};
    std::optional<std::size_t> outsideSources{};  // below the one or above the other; on them is inside
};

// frame: columns x rows counts in image order, of which the runs (PixelsOf, from above) are measured. A frame of fewer
// counts has no pixels; runs end with the frame.
//
// The deviation is sqrt((n S2 - S1^2) / (n (n - 1))) with the sums S1 of the counts and S2 of their squares.
RegionFigures MeasureRegion(std::span<const std::int16_t> frame, std::int32_t columns, std::int32_t rows,
                            std::span<const PixelRun> runs, const MeasureOptions& options);

}  // namespace kelvo
