// From a raw frame to an image: the gather through DecomList with offset and gain of each detector, exact to the count.
//
// CorrectByDefinition is the definition. CorrectFrame gives the same bit for bit, from image-order copies of the lists
// and a description of the gather that are derived once per change of a list (PrepareCorrection).
#pragma once

#include "display/gray_lookup.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace kelvo {

// What correction works from: lists as in state/cal_state.h (decom in image order; offset and gain in readout order),
// DataOffset in counts, CalType. Lists that a CalType doesn't need may be empty.
struct CorrectionLists {
    std::int32_t calType = 0;
    std::int32_t dataOffset = 0;
    std::span<const std::uint32_t> decom;
    std::span<const std::int16_t> offset;
    std::span<const float> gain;
};

// frame[i] for each image pixel i, with d = decom[i], r = raw[d]; sums are taken in 32 bits and wrap:
//   calType 1: dataOffset + r - offset[d], stored as 16 bits without limiting;
//   calType 2: trunc((dataOffset + r - offset[d]) / gain[d]), the quotient in double; 16 bits without limiting (a
//              quotient beyond 32 bits or not a number gives the low half of INT32_MIN, 0);
//   any other: dataOffset + r, or 0 if that is negative; 16 bits without limiting.
// An entry of decom beyond a list, or beyond raw, reads 0 there. Pixels beyond decom or frame are left. raw and frame
// don't overlap.
void CorrectByDefinition(const CorrectionLists& lists, std::span<const std::int16_t> raw,
                         std::span<std::int16_t> frame);

// The lists made ready for the fast path. Prepare again whenever a list, CalType or DataOffset changes. A plan holds
// the line buffers that it works with: one frame at a time.
struct CorrectionPlan;
struct CorrectionPlanDeleter {
    void operator()(CorrectionPlan* plan) const;
};
using CorrectionPlanPtr = std::unique_ptr<CorrectionPlan, CorrectionPlanDeleter>;
// width: image pixels a row; rawSize: counts of the raw frame. Null where memory is refused; nothing is told.
CorrectionPlanPtr NewCorrectionPlan(const CorrectionLists& lists, std::size_t width, std::size_t rawSize);
// The frame of the plan's lists. raw holds at least rawSize counts and frame at least as many as decom had entries:
// otherwise nothing happens.
void CorrectFrame(const CorrectionPlan& plan, std::span<const std::int16_t> raw, std::span<std::int16_t> frame);
// The same, and the gray values of the counts in the same pass. Rows of grays beyond the image's are left.
void CorrectAndLookUp(const CorrectionPlan& plan, std::span<const std::int16_t> raw, std::span<std::int16_t> frame,
                      const GrayRows& grays);

// The live path: CorrectAndLookUp with the lists in force (state/cal_state.h; Hroi pixels a row). The plan is made
// again when a list, CalType or dataOffset changed; where there is no memory for it the definition works instead. True
// if the gray values were made too: not without a table, not by the definition, not with a list that has fewer rows
// than grays. The counts are the same in all cases.
bool CorrectLiveFrame(std::span<const std::int16_t> raw, std::span<std::int16_t> frame, std::int32_t dataOffset,
                      const GrayRows& grays = {});

// Apply the live calibration (state/cal_state.h) to a gathered frame of Hroi x Vroi values in place, through the same
// buffer, so that an entry already overwritten is read as it then stands. With d = DecomList[i]:
//   CalType 1: trunc(frame[d] - OffsetList[d]);   CalType 2: trunc((frame[d] - OffsetList[d]) / GainList[d]),
// in double, stored without limiting (beyond 32 bits: INT32_MIN, of which 16 bits keep 0); floats aren't truncated.
// Other CalTypes leave the frame. No DataOffset. A pixel whose entry lies beyond the frame or a list is left.
void CalibrateRawFrame16(std::span<std::int16_t> frame);
void CalibrateRawFrame32(std::span<std::int32_t> frame);
void CalibrateRawFrameFloat(std::span<float> frame);

// The same formula, reading from a copy of the gathered values: a mirrored or substituted pixel takes its detector's
// own value. gathered is as long as frame.
void CalibrateGathered(std::span<const std::int16_t> gathered, std::span<std::int16_t> frame);
void CalibrateGathered(std::span<const std::int32_t> gathered, std::span<std::int32_t> frame);
void CalibrateGathered(std::span<const float> gathered, std::span<float> frame);

// The same formula for a frame that stands in image order already, as a stored burst does: pixel i takes the offset and
// gain of its detector, DecomList[i], and keeps its place.
void CalibrateImageFrame(std::span<std::int16_t> frame);

// No plan of the live correction: the next frame makes one.
void ResetCorrection();

}  // namespace kelvo
