#include "calib/stored_correction.h"

#include "platform/memory.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace kelvo {

namespace {

// The places of the frame that no entry of the table reaches; nullopt where memory is refused.
std::optional<std::vector<std::uint32_t>> UnreachedPlaces(const std::vector<std::uint32_t>& decom)
{
    std::vector<std::uint8_t> reached;
    if (!AllocateBlock(reached, decom.size())) return std::nullopt;
    for (const std::uint32_t entry : decom) {
        if (entry < reached.size()) reached[entry] = 1;
    }
    std::vector<std::uint32_t> places;
    for (std::size_t i = 0; i < reached.size(); ++i) {
        if (reached[i] == 0) places.push_back(static_cast<std::uint32_t>(i));
    }
    return places;
}

// The pixels whose entry reaches no detector.
std::vector<std::uint32_t> PixelsWithoutDetector(const std::vector<std::uint32_t>& decom)
{
    std::vector<std::uint32_t> pixels;
    for (std::size_t i = 0; i < decom.size(); ++i) {
        if (decom[i] >= decom.size()) pixels.push_back(static_cast<std::uint32_t>(i));
    }
    return pixels;
}

// A list in readout order as one in image order.
template <typename Entry>
bool Gather(std::vector<Entry>& list, const std::vector<std::uint32_t>& decom)
{
    if (list.empty()) return true;
    std::vector<Entry> gathered;
    if (!AllocateBlock(gathered, decom.size())) return false;
    for (std::size_t i = 0; i < decom.size(); ++i) {
        if (decom[i] < list.size()) gathered[i] = list[decom[i]];
    }
    list = std::move(gathered);
    return true;
}

template <typename Entry>
bool CopyList(const std::vector<Entry>& list, std::vector<Entry>& copy)
{
    if (!AllocateBlock(copy, list.size())) return false;
    std::ranges::copy(list, copy.begin());
    return true;
}

}  // namespace

std::optional<StoredCorrection> StoredCorrection::Make(std::int32_t calType, StoredLists lists, std::size_t width,
                                                       StoredOrder order)
{
    StoredCorrection made;
    made.calType_ = calType;
    made.width_ = width;
    made.lists_ = std::move(lists);
    std::vector<std::uint32_t>& decom = made.lists_.decom;
    if (order == StoredOrder::kReadoutInPlace) {
        std::optional<std::vector<std::uint32_t>> unreached = UnreachedPlaces(decom);
        if (!unreached) return std::nullopt;
        made.unreached_ = std::move(*unreached);
    } else {
        made.unreached_ = PixelsWithoutDetector(decom);
    }
    if (order == StoredOrder::kImageInPlace &&
        (!Gather(made.lists_.offset, decom) || !Gather(made.lists_.gain, decom))) {
        return std::nullopt;
    }
    if (order != StoredOrder::kReadoutToImage) std::iota(decom.begin(), decom.end(), 0U);
    made.plan_ = NewCorrectionPlan(made.Lists(), width, decom.size());
    return made;
}

std::optional<StoredCorrection> StoredCorrection::Copy() const
{
    StoredCorrection copy;
    copy.calType_ = calType_;
    copy.width_ = width_;
    const bool copied = CopyList(lists_.decom, copy.lists_.decom) && CopyList(lists_.offset, copy.lists_.offset) &&
                        CopyList(lists_.gain, copy.lists_.gain) && CopyList(unreached_, copy.unreached_);
    if (!copied) return std::nullopt;
    copy.plan_ = NewCorrectionPlan(copy.Lists(), width_, copy.lists_.decom.size());
    return copy;
}

void StoredCorrection::Correct(std::span<const std::int16_t> counts, std::span<std::int16_t> corrected) const
{
    const std::size_t pixels = lists_.decom.size();
    if (counts.size() < pixels || corrected.size() < pixels) return;
    if (plan_) {
        CorrectFrame(*plan_, counts, corrected);
    } else {
        CorrectByDefinition(Lists(), counts.first(pixels), corrected.first(pixels));
    }
    for (const std::uint32_t place : unreached_) corrected[place] = 0;
}

}  // namespace kelvo
