// Averaging: through this every feature that wants an image of a rectangle gets it.
#pragma once

#include <cstdint>
#include <span>
#include <variant>

namespace kelvo {

// Bits of mode. Exactly one of the first three.
constexpr std::uint32_t kAverage16 = 0x001;        // the mean, rounded down, 16 bits
constexpr std::uint32_t kSum32 = 0x004;            // the sum, 32-bit integers, not divided
constexpr std::uint32_t kAverageFloat = 0x008;     // the mean, 32-bit floats
constexpr std::uint32_t kWithoutBoard = 0x020;     // passed by callers that have none; not tested
constexpr std::uint32_t kTakeNewFrames = 0x040;    // when clear, see kUseStoredFrames
constexpr std::uint32_t kPlainFrame = 0x080;       // passed by some callers; not tested
constexpr std::uint32_t kShowProgress = 0x200;     // in the status window
constexpr std::uint32_t kUseStoredFrames = 0x400;  // BufferFirstFrame to BufferLastFrame, in the buffer's rectangle
constexpr std::uint32_t kNewFramesOnly = 0x800;    // a batch that can't be captured whole ends the run

// The caller's block: 16-bit, 32-bit or float values as mode says (the block's type decides), at least as many as the
// rectangle has.
using AverageBlock = std::variant<std::span<std::int16_t>, std::span<std::int32_t>, std::span<float>>;

// Gathers count frames of a rectangle (inclusive, columns left to right, rows top to bottom) and leaves their mean or
// sum in result, corrected by the calibration in force; deviation gets each pixel's standard deviation of raw counts
// (empty: not wanted; untouched where count is 1). Blocks while frames come. 1, or 0 after a box: the operator said no
// to a single frozen frame, memory was refused, or there are no host frames. A capture that fails is told, and the run
// goes on with what the store holds. With kNewFramesOnly it ends there with 0, and also, which isn't told, where the
// board gave no new frame in time: what the store holds is of an earlier capture. Escape ends a run of several frames
// with 0 (ui/gather.h): GatherWasStopped tells it.
//
// A burst that is stored (FramesInBuffer above 0) stays as it is: the run gathers into frames of its own then, and
// without memory for both the host frames count as missing.
//
// Frames are read from host memory as flat copies in readout order (ReadHostFrameRect), and the calibration finds each
// pixel's value through DecomList: both are exact for whole frames. For a part of the frame the pixels are those of the
// flat copy, and the ones whose entry lies beyond it stay uncorrected.
int AverageFrames(AverageBlock result, std::span<float> deviation, std::uint32_t count, std::int32_t left,
                  std::int32_t top, std::int32_t right, std::int32_t bottom, std::uint32_t mode);

}  // namespace kelvo
