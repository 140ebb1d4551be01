// The camera head's two register records: the timing and the focal plane's serial word. Each exists twice, as what is
// wanted and as what was sent last.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo {

// The model byte. It is also the address of the head's timing register.
constexpr std::uint8_t kInSbHead = 0x50;    // one channel, 14 bits, window programmed digitally
constexpr std::uint8_t kHgCdTeHead = 0x90;  // one channel, 14 bits, 64 x 64, fixed frame

constexpr std::size_t kIntegrationSlots = 4;

// The head's timing: what is to be sent, or what was sent last. Frame sizes in pixels.
struct HeadTimingRecord {
    std::uint8_t HeadModel = 0;
    std::uint8_t MasterClockMinIndex = 2;
    std::uint8_t MasterClockMaxIndex = 63;
    std::uint8_t MasterClockIndex = 0;
    std::int32_t MasterClockFrequency = 48000000;  // Hz
    std::int16_t TimingRows = 0;
    std::int16_t TimingCols = 0;
    std::array<std::int16_t, kIntegrationSlots> IntegrationLines{};
    std::array<std::int16_t, kIntegrationSlots> IntegrationCols{};
    std::uint8_t ExtraTimingRows = 0;
    std::uint8_t ExtraTimingCols = 0;
    std::uint8_t AdDelay = 0;
    std::uint8_t LineStartDelay = 0;
    std::uint8_t FrameStartDelay = 0;
    std::uint8_t SuperframeMode = 0;  // no frame carries these two
    std::uint8_t TimingTestMode = 0;
};

// The focal plane's serial command word. Window limits in pixels, all inclusive.
struct FpaSerialWordRecord {
    std::uint8_t SerialReg = 0x60;
    std::uint8_t SerialBitA = 0;
    std::uint8_t DetBias = 15;
    std::uint8_t PedBias = 3;
    std::uint8_t ColGain = 4;
    std::uint8_t SerialBitsB = 0;
    std::uint8_t FlipCols = 0;
    std::uint8_t FlipRows = 0;
    std::uint8_t FastFrame = 1;
    std::int32_t ColStart = 0;
    std::int32_t ColEnd = 0;
    std::uint8_t ColBits = 1;
    std::int32_t RowStart = 0;
    std::int32_t RowEnd = 0;
    std::uint8_t RowBit = 1;
};

// Mirrors the low width bits of value; the bits above stay.
constexpr std::uint32_t ReverseBits(std::uint32_t value, int width)
{
    std::uint32_t result = value & ~((1U << width) - 1U);
    for (int k = 0; k < width; ++k) {
        if (value & (1U << k)) result |= 1U << (width - 1 - k);
    }
    return result;
}

}  // namespace kelvo
