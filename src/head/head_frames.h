// The four bytes that go over the wire, worked out from the records. Pure: nothing is sent here. Values beyond a byte
// keep their low 8 bits, as the head's registers do; divisions truncate.
#pragma once

#include "head/comm_link.h"
#include "head/head_records.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo {

// Frames that never change.
constexpr CommFrame kIdentifyFrame = {0x20, 0x00, 0x00, 0x00};
constexpr CommFrame kClocksOffFrame = {0x90, 0x10, 0x00, 0x00};
constexpr CommFrame kClocksOnFrame = {0x90, 0x30, 0x00, 0x00};
// The rest of the greeting. What registers 0x70 and 0x40 do in the head isn't known; each head wants them once.
constexpr CommFrame kInSbDacGreeting = {0x70, 0x00, 0x00, 0x00};
constexpr CommFrame kInSbGreeting = {0x40, 0x00, 0xBF, 0x00};
constexpr CommFrame kHgCdTeGreeting = {0x80, 0x00, 0x00, 0x00};

constexpr std::size_t kDacCount = 8;

// Pixel clock divider; on the HgCdTe head the delays travel with it. model tells which; any other has no such frame.
CommFrame ClockFrame(const HeadTimingRecord& timing);
// Rows and columns in units of 4.
CommFrame FrameSizeFrame(const HeadTimingRecord& timing);
// The integration counters of a slot, columns in units of 4, rounded up.
CommFrame IntegrationFrame(const HeadTimingRecord& timing, std::size_t slot);
CommFrame StartDelayFrame(const HeadTimingRecord& timing);

// The selector of DAC 0 to 7 is one bit.
CommFrame DacFrame(std::int32_t dacReg, std::size_t dac, std::int32_t value);
CommFrame BiasEnableFrame(std::int32_t biasEnableReg, bool enabled);
// The gain stage's code (0 to 15) of a gain index: 1 to 14 by its table, in order of rising gain; others pass through,
// clamped.
std::uint8_t GainCode(std::int32_t index);
CommFrame GainFrame(std::int32_t gainReg, std::int32_t index);

// The serial word as the focal plane shifts it in, least significant bit first: gains, biases and limits mirrored, the
// window in units of 8 pixels.
FpaSerialWordRecord EncodedSerialWord(const FpaSerialWordRecord& word);
// The three frames of an encoded word: biases and flips, columns, rows.
CommFrame SerialBiasFrame(const FpaSerialWordRecord& encoded);
CommFrame SerialColumnFrame(const FpaSerialWordRecord& encoded);
CommFrame SerialRowFrame(const FpaSerialWordRecord& encoded);

}  // namespace kelvo
