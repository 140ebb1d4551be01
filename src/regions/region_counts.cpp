#include "regions/region_counts.h"

#include "grabber/board_state.h"
#include "grabber/frame_size.h"
#include "platform/memory.h"
#include "state/cal_state.h"

namespace kelvo {

namespace {

constexpr const char* kNoMemory = "There is not enough memory to trace the regions.";

}  // namespace

std::optional<RegionCounts> RegionCounts::Make(std::span<const Region> regions, std::int32_t columns, std::int32_t rows,
                                               std::string& why, std::span<const std::uint8_t> bad)
{
    why = regions.empty() ? "There is no region to trace." : "";
    RegionCounts counts;
    counts.frameValues_ = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    for (const Region& region : regions) {
        const std::vector<PixelRun> runs = PixelsOf(region.shape, region.place, columns, rows);
        const std::size_t before = counts.pixels_.size();
        for (const PixelRun& run : runs) {
            for (std::int32_t column = run.first; column <= run.last; ++column) {
                const auto pixel = static_cast<std::uint32_t>(run.row * columns + column);
                if (pixel >= bad.size() || bad[pixel] == 0) counts.pixels_.push_back(pixel);
            }
        }
        const std::size_t left = counts.pixels_.size() - before;
        if (left == 0) {
            why = runs.empty() ? region.name + " lies outside of the picture."
                               : "All pixels of " + region.name + " are bad.";
            break;
        }
        counts.ends_.push_back(counts.pixels_.size());
        counts.leftOut_.push_back(PixelCountOf(runs) - left);
    }
    if (why.empty() && !AllocateBlock(counts.counts_, counts.pixels_.size())) why = kNoMemory;
    if (!why.empty()) return std::nullopt;
    return counts;
}

bool RegionCounts::PrepareCorrection()
{
    if (frameValues_ != CameraFrameValues() || DecomList.size() < frameValues_) return false;
    std::vector<std::uint32_t> detectors;
    detectors.reserve(pixels_.size());
    for (const std::uint32_t pixel : pixels_) detectors.push_back(DecomList[pixel]);
    // One row of pixels: shapes have none of their own.
    plan_ = NewCorrectionPlan({CalType, DataOffset, detectors, OffsetList, GainList}, detectors.size(), frameValues_);
    return plan_ != nullptr;
}

void RegionCounts::FromFrame(std::span<const std::int16_t> frame)
{
    if (frame.size() < frameValues_) return;
    for (std::size_t i = 0; i < pixels_.size(); ++i) counts_[i] = frame[pixels_[i]];
}

void RegionCounts::FromRaw(std::span<const std::int16_t> raw)
{
    if (plan_) CorrectFrame(*plan_, raw, counts_);
}

std::span<const std::int16_t> RegionCounts::CountsOf(std::size_t region) const
{
    const std::size_t begin = region == 0 ? 0 : ends_[region - 1];
    return std::span(counts_).subspan(begin, ends_[region] - begin);
}

}  // namespace kelvo
