// The frames and the three flags that carry the system's main state.
//
// A frame is Hroi x Vroi signed 16-bit counts, row-major, native byte order. RawFrame is in readout order, all others
// in image order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

extern const std::int32_t& CameraOn;     // 1: the head is programmed.
extern const std::int32_t& LiveVideo;    // 1: the grab runs.
extern const std::int32_t& ViewingFile;  // 1: a stored frame is on view.
extern const std::int32_t&
    DisplayEnabled;  // 1: each new frame is drawn. Starts at 1: a viewer has no board set-up to set it
extern const std::int32_t& GrabberPresent;  // 1: the board layer is initialised

// Hroi x Vroi counts once the board is set up for the size; empty before.
extern const std::vector<std::int16_t>& RawFrame;
extern const std::vector<std::int16_t>& LiveFrame;

// The stored frame on view, or the frame kept at freezing, behind a prefix of ImageHeaderDataOffset bytes. Bytes;
// empty: none.
extern const std::vector<std::uint8_t>& ImageBuffer;
// The samples of ImageBuffer: from ImageHeaderDataOffset rounded down to even, to its end.
std::span<const std::int16_t> ImageBufferPixels(std::int32_t dataOffset);

// The sequence on view: 1 while load next and load last step through it; its path; the frame on view, -1 before the
// first; its last frame. Frame numbers are compared as unsigned. The second name of each is the
// same variable.
extern const std::int32_t& SteppingFrames;
extern const std::string& LoadName;
extern const std::uint32_t& CurrentFrame;
extern const std::uint32_t& LastFrame;
extern const std::int32_t& ViewingSequence;
extern const std::string& SequencePath;
extern const std::uint32_t& SequenceFrameIndex;
extern const std::uint32_t& SequenceLastFrame;

// The image cursor's pixel as the last refresh stamped it, and the count under it (unsigned 16 bits). Valid while
// ImageCursorOn.
extern const std::int32_t& CursorX;
extern const std::int32_t& CursorY;
extern const std::uint16_t& CursorValue;
extern const std::int32_t& ImageCursorOn;  // 1: the image cursor is shown

}  // namespace kelvo
