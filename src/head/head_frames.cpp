#include "head/head_frames.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr std::int32_t kIntegrationLineBias = 2;

// Selectors of the timing register.
constexpr std::uint8_t kSelectClock = 0;
constexpr std::uint8_t kSelectFrameSize = 1;
constexpr std::uint8_t kSelectIntegration = 3;
constexpr std::uint8_t kSelectStartDelay = 5;
// Selectors of the serial word's register.
constexpr std::uint8_t kSelectBias = 0;
constexpr std::uint8_t kSelectColumns = 2;
constexpr std::uint8_t kSelectRows = 4;

constexpr std::uint8_t kBiasesOn = 3;

// From the lowest gain to the highest, by index 1 to 14.
constexpr std::array<std::uint8_t, 14> kGainCodes = {8, 4, 2, 12, 10, 6, 1, 14, 9, 5, 3, 13, 11, 7};

constexpr std::uint8_t Byte(std::int32_t value)
{
    return static_cast<std::uint8_t>(value);
}

std::int32_t Mirrored(std::int32_t value, int width)
{
    return static_cast<std::int32_t>(ReverseBits(static_cast<std::uint32_t>(value), width));
}

// A limit of the window in units of 8 pixels.
std::int32_t MirroredLimit(std::int32_t pixels, int width)
{
    return Mirrored(pixels / 8, width);
}

}  // namespace

CommFrame ClockFrame(const HeadTimingRecord& timing)
{
    if (timing.HeadModel != kHgCdTeHead) return {timing.HeadModel, kSelectClock, 0, timing.MasterClockIndex};
    return {timing.HeadModel, timing.MasterClockIndex, Byte(timing.MasterClockIndex * 2 + 1),
            Byte(timing.FrameStartDelay * 64 + timing.LineStartDelay * 16 + timing.AdDelay)};
}

CommFrame FrameSizeFrame(const HeadTimingRecord& timing)
{
    return {timing.HeadModel, kSelectFrameSize, Byte(timing.TimingRows / 4), Byte(timing.TimingCols / 4)};
}

CommFrame IntegrationFrame(const HeadTimingRecord& timing, std::size_t slot)
{
    return {timing.HeadModel, kSelectIntegration, Byte(timing.IntegrationLines.at(slot) + kIntegrationLineBias),
            Byte((timing.IntegrationCols.at(slot) + 3) / 4)};
}

// AdDelay stands in the HgCdTe head's clock frame only.
CommFrame StartDelayFrame(const HeadTimingRecord& timing)
{
    return {timing.HeadModel, kSelectStartDelay, 0, Byte(timing.FrameStartDelay * 16 + timing.LineStartDelay)};
}

CommFrame DacFrame(std::int32_t dacReg, std::size_t dac, std::int32_t value)
{
    return {Byte(dacReg), Byte(1 << dac), Byte(value), 0};
}

CommFrame BiasEnableFrame(std::int32_t biasEnableReg, bool enabled)
{
    return {Byte(biasEnableReg), enabled ? kBiasesOn : std::uint8_t{0}, 0, 0};
}

std::uint8_t GainCode(std::int32_t index)
{
    if (index >= 1 && index <= static_cast<std::int32_t>(kGainCodes.size())) {
        return kGainCodes.at(static_cast<std::size_t>(index - 1));
    }
    return Byte(std::clamp(index, 0, 15));
}

CommFrame GainFrame(std::int32_t gainReg, std::int32_t index)
{
    return {Byte(gainReg), Byte(GainCode(index) * 4), 0, 0};
}

FpaSerialWordRecord EncodedSerialWord(const FpaSerialWordRecord& word)
{
    FpaSerialWordRecord encoded = word;
    encoded.ColGain = Byte(Mirrored(word.ColGain, 3));
    encoded.DetBias = Byte(Mirrored(word.DetBias, 4));
    encoded.RowStart = MirroredLimit(word.RowStart, 6);
    encoded.RowEnd = MirroredLimit(word.RowEnd, 6);
    encoded.ColStart = MirroredLimit(word.ColStart, 7);
    encoded.ColEnd = MirroredLimit(word.ColEnd, 7);
    encoded.ColBits = Byte(Mirrored(word.ColBits, 2));
    return encoded;
}

CommFrame SerialBiasFrame(const FpaSerialWordRecord& encoded)
{
    return {encoded.SerialReg, kSelectBias,
            Byte(encoded.SerialBitA * 128 + encoded.DetBias * 8 + encoded.PedBias * 2 + (encoded.ColGain >> 2)),
            Byte(encoded.ColGain * 64 + encoded.SerialBitsB * 16 + encoded.FlipCols * 8 + encoded.FlipRows * 4 +
                 encoded.FastFrame * 2)};
}

CommFrame SerialColumnFrame(const FpaSerialWordRecord& encoded)
{
    const auto start = static_cast<std::uint32_t>(encoded.ColStart);
    const auto end = static_cast<std::uint32_t>(encoded.ColEnd);
    return {encoded.SerialReg, kSelectColumns, static_cast<std::uint8_t>((end >> 6) + start * 2),
            static_cast<std::uint8_t>(encoded.ColBits + end * 4)};
}

CommFrame SerialRowFrame(const FpaSerialWordRecord& encoded)
{
    const auto start = static_cast<std::uint32_t>(encoded.RowStart);
    const auto end = static_cast<std::uint32_t>(encoded.RowEnd);
    return {encoded.SerialReg, kSelectRows, static_cast<std::uint8_t>(encoded.RowBit * 128U + (start >> 2)),
            static_cast<std::uint8_t>(start * 64 + end)};
}

}  // namespace kelvo
