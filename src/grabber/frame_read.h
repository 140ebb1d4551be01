// One frame from the board into host memory, with what the operator sees when it doesn't come.
#pragma once

#include <cstdint>
#include <span>

namespace kelvo {

// Raises the priority, waits for the next blank and reads the whole frame, in readout order. buffer holds Hroi x Vroi
// values. On success the priority stays raised. False after "Timeout waiting for vertical blank!" or
// "icp_read_area() Error"; false at once while such a box is still open. A frame that came and couldn't be read is lost
// in the frame account; one that was read is for the caller to account for.
bool ReadBoardFrame(std::span<std::int16_t> buffer);

// The last whole frame into buffer, without a wait; false after its box.
bool ReadBoardArea(std::span<std::int16_t> buffer);

}  // namespace kelvo
