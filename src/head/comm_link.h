// The serial link to the camera head: opens one RS-232 port, moves frames of four bytes, logs them on demand. It knows
// nothing of what a frame means. Everything is synchronous, on the main thread; a transaction with a silent head takes
// a little over a second.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

using CommFrame = std::array<std::uint8_t, 4>;

extern const std::int32_t& CommPortOpen;  // what clients test before a transaction
extern const std::int32_t& CommEchoMode;  // 1: each write waits for a reply of four bytes.

// The number of the port that nCommPort stands for: 2 where it is below 1.
std::int32_t CommPortNumber();
// Opens and configures port nCommPort (below 1: 2, stored back). 1, or -1 after the box of the step that
// failed; why a port doesn't open stands in the status line. Of an open port it does nothing.
std::int32_t OpenXComm();
// OpenXComm; 1, or 0 after the box "Error opening rs232 communications!  Check port, baud rate, etc.".
std::int32_t OpenCommLink();
// 1, also of a closed port.
std::int32_t CloseCommLink();

// Sends a frame. In echo mode it collects the reply: 1 and the reply in frame, or 0 (frame unchanged) where fewer than
// four bytes come within a second or the reply begins with 0x69, the head's refusal. Without echo mode always 1.
std::int32_t WriteCommFrame(CommFrame& frame, std::size_t length);
// Reads into buffer until it is full or more than 1000 ms have passed; the number of bytes read.
std::size_t ReadCommFrame(std::span<std::uint8_t> buffer);
// What has arrived, at once; the number of bytes. Where the device has gone (unplugged) the link is closed after it.
std::size_t ReadCommBytes(std::int32_t ignored, std::span<std::uint8_t> buffer);

// The serial log as before the first frame of a run: with that frame the log before moves aside, and key CommLog of
// section Setup is read. Its frames are numbered from nextNumber on.
void ResetCommLog(std::uint32_t nextNumber = 0);

// "text, Error number N" under "Comm Error", with the number of the last failure of the port.
void ShowCommError(std::int32_t ignored, std::string_view text);

// The line is closed without a word to the head, and no log was begun: as at start.
void ResetCommLink();

}  // namespace kelvo
