// One frame from the board into host memory, with what the operator sees when it doesn't come.
#pragma once

#include "grabber/capture.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

// Raises the priority, waits for the next blank and reads the whole frame, in readout order. buffer holds Hroi x Vroi
// values. On success the priority stays raised. False after "Timeout waiting for vertical blank!" or
// "icp_read_area() Error", which aren't shown while the camera is lost (CameraReport); false at once while such a box
// is still open. A frame that came and couldn't be read is lost in the frame account; one that was read is for the
// caller to account for.
//
// While a recording runs (grabber/recording.h) the frame comes from the ring: the newest one, or with a TakesNextFrame
// the next one, none twice and none left out. The waits and the boxes are the same.
bool ReadBoardFrame(std::span<std::int16_t> buffer);

// Who records, as long as it lives: ReadBoardFrame, and with it GetVideoData and ReadFrameNow, takes the next frame.
class TakesNextFrame {
  public:
    explicit TakesNextFrame(FrameFate fate = FrameFate::kRecorded);
    ~TakesNextFrame();
    TakesNextFrame(const TakesNextFrame&) = delete;
    TakesNextFrame& operator=(const TakesNextFrame&) = delete;
};
// What is known of the frame that was taken so last; without its values.
const CapturedFrame& LastTakenFrame();

// Why a frame didn't come, as the operator reads it.
struct FrameReadFault {
    std::string_view text;
    std::string_view caption;
};
// As long as it lives ReadBoardFrame tells nothing in a box: who reads many frames tells a fault when it is time to.
class ReadsWithoutBoxes {
  public:
    ReadsWithoutBoxes();
    ~ReadsWithoutBoxes();
    ReadsWithoutBoxes(const ReadsWithoutBoxes&) = delete;
    ReadsWithoutBoxes& operator=(const ReadsWithoutBoxes&) = delete;
};
// Of the frame that failed last; empty texts: none has.
const FrameReadFault& LastFrameReadFault();

// The last whole frame into buffer, without a wait; false after its box.
bool ReadBoardArea(std::span<std::int16_t> buffer);

// No stamp, no fault, and nobody takes frames.
void ResetFrameRead();

}  // namespace kelvo
