// Correction of stored frames: the arithmetic of a calibration apart from where its lists come from and where the
// frames lie. Stored counts have DataOffset in them, so none is added.
#pragma once

#include "grabber/correction.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

// The lists of a calibration as a value, one entry a pixel of the frame: decom in image order, the other two in readout
// order. An entry of decom beyond the frame reaches no detector.
struct StoredLists {
    std::vector<std::uint32_t> decom;
    std::vector<std::int16_t> offset;
    std::vector<float> gain;  // may be empty for offsets alone
};

// In which order the counts lie, and in which the corrected ones are to lie.
enum class StoredOrder {
    kReadoutInPlace,  // readout order stays: the table only tells which detectors are used
    kReadoutToImage,  // gathered by the table, as the live picture is
    kImageInPlace,    // image order stays: pixel i is corrected with the lists at decom[i]
};

class StoredCorrection {
  public:
    // calType 1: counts - offset; 2: (counts - offset) / gain; low 16 bits of the truncated result, 0 for a quotient
    // that isn't finite or leaves 32 bits. width: image pixels a row. nullopt where memory is refused; nothing is told.
    static std::optional<StoredCorrection> Make(std::int32_t calType, StoredLists lists, std::size_t width,
                                                StoredOrder order);

    // Another one that does the same, for another thread; nullopt where memory is refused.
    std::optional<StoredCorrection> Copy() const;

    // One thread's at a time. Both spans hold at least as many counts as decom has entries, and don't overlap. What no
    // entry of the table reaches is 0.
    void Correct(std::span<const std::int16_t> counts, std::span<std::int16_t> corrected) const;

  private:
    StoredCorrection() = default;

    CorrectionLists Lists() const { return {calType_, 0, lists_.decom, lists_.offset, lists_.gain}; }

    std::int32_t calType_ = 0;
    std::size_t width_ = 0;
    StoredLists lists_;
    std::vector<std::uint32_t> unreached_;
    CorrectionPlanPtr plan_;  // null where there was no memory for it: the definition works instead
};

}  // namespace kelvo
