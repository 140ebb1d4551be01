// The counts of regions out of a frame, and nothing else of it: of a frame as the screen shows it, or straight from a
// frame of the board, of which only their pixels are corrected.
#pragma once

#include "grabber/correction.h"
#include "regions/region.h"
#include "regions/trace.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

class RegionCounts {
  public:
    // Of frames of columns x rows. bad: non-zero for each pixel, image order, that is left out; empty, none is. nullopt
    // with a sentence for the operator in why: a region has no pixel in the frame ("R1 lies outside of the picture."),
    // none that is left in ("All pixels of R1 are bad."), there are no regions ("There is no region to trace."), memory
    // is refused.
    static std::optional<RegionCounts> Make(std::span<const Region> regions, std::int32_t columns, std::int32_t rows,
                                            std::string& why, std::span<const std::uint8_t> bad = {});
    // Readies FromRaw: with the lists, CalType and DataOffset in force now, as the live picture is corrected. False
    // where they aren't of a camera with frames of this size, or memory is refused.
    bool PrepareCorrection();

    std::size_t Regions() const { return ends_.size(); }
    // frame: columns x rows counts, in image order.
    void FromFrame(std::span<const std::int16_t> frame);
    // raw: as the board gave it. Any thread, one at a time; only after PrepareCorrection.
    void FromRaw(std::span<const std::int16_t> raw);
    // Of the frame that came last, in the region's own order.
    std::span<const std::int16_t> CountsOf(std::size_t region) const;
    std::size_t LeftOutOf(std::size_t region) const { return leftOut_[region]; }
    std::size_t PixelsOfRegion(std::size_t region) const { return CountsOf(region).size(); }
    TracePoint Measure(std::size_t region) const { return MeasureCounts(CountsOf(region)); }

  private:
    std::vector<std::uint32_t> pixels_;  // places in the frame, region behind region
    std::vector<std::size_t> ends_;      // of each region, in pixels_
    std::vector<std::size_t> leftOut_;   // bad pixels of each region
    std::vector<std::int16_t> counts_;   // of pixels_
    std::size_t frameValues_ = 0;
    CorrectionPlanPtr plan_;
};

}  // namespace kelvo
