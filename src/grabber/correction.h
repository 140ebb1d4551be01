// From a raw frame to an image: the gather through DecomList with offset and gain of each detector, exact to the count.
//
// CorrectByDefinition is the definition. CorrectFrame gives the same bit for bit, from image-order copies of the lists
// and a description of the gather that are derived once per change of a list (PrepareCorrection).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

// What correction works from: lists as in calib/cal_state.h (decom in image order; offset and gain in readout order),
// DataOffset, CalType. Lists that a CalType doesn't need may be empty.
struct CorrectionLists {
    std::int32_t calType = 0;
    std::int32_t dataOffset = 0;
    std::span<const std::uint32_t> decom;
    std::span<const std::int16_t> offset;
    std::span<const float> gain;
};

// frame[i] for each image pixel i, with d = decom[i], r = raw[d]:
//   calType 1: dataOffset + r - offset[d], stored as 16 bits without limiting;
//   calType 2: trunc((dataOffset + r - offset[d]) / gain[d]), the quotient in double; 16 bits without limiting (a
//              quotient beyond 32 bits or not a number gives the low half of INT32_MIN, 0);
//   any other: dataOffset + r, or 0 if that is negative.
// An entry of decom beyond raw reads 0. raw and frame don't overlap.
void CorrectByDefinition(const CorrectionLists& lists, std::span<const std::int16_t> raw,
                         std::span<std::int16_t> frame);

// The lists made ready for the fast path. Prepare again whenever a list, CalType or DataOffset changes.
struct CorrectionPlan;
// width: image pixels a row.
CorrectionPlan* NewCorrectionPlan(const CorrectionLists& lists, std::size_t width, std::size_t rawSize);
struct CorrectionPlanDeleter {
    void operator()(CorrectionPlan* plan) const;
};
void CorrectFrame(const CorrectionPlan& plan, std::span<const std::int16_t> raw, std::span<std::int16_t> frame);
// The same, and each count looked up in lut (indexed by the count as unsigned; beyond it 255 x (count at all)) to
// pixels.
void CorrectAndLookUp(const CorrectionPlan& plan, std::span<const std::int16_t> raw, std::span<const std::uint8_t> lut,
                      std::span<std::int16_t> frame, std::span<std::uint8_t> pixels);

// CorrectFrame with the lists in force (calib/cal_state.h; Hroi pixels a row). The plan is made again when a list,
// CalType or dataOffset changed.
void CorrectLiveFrame(std::span<const std::int16_t> raw, std::span<std::int16_t> frame, std::int32_t dataOffset);

// Apply the live calibration (calib/cal_state.h) to a gathered frame of Hroi x Vroi values in place, through the same
// buffer, so that an entry already overwritten is read as it then stands. Other CalTypes leave the frame. No
// DataOffset.
void CalibrateRawFrame16(std::span<std::int16_t> frame);
void CalibrateRawFrame32(std::span<std::int32_t> frame);
void CalibrateRawFrameFloat(std::span<float> frame);

// The lists have changed: the next frame prepares them again. Whoever writes DecomList, OffsetList, GainList, CalType
// or DataOffset calls it.
void CalibrationListsChanged();

}  // namespace kelvo
