// The frames on the wire, worked out by hand.
#include "head/head_frames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::ElementsAre;

TEST(ReverseBits, MirrorsTheLowBitsAndKeepsThoseAbove)
{
    EXPECT_EQ(ReverseBits(4, 3), 1U);        // 100 -> 001
    EXPECT_EQ(ReverseBits(11, 4), 13U);      // 1011 -> 1101
    EXPECT_EQ(ReverseBits(39, 7), 114U);     // 0100111 -> 1110010
    EXPECT_EQ(ReverseBits(31, 6), 62U);      // 011111 -> 111110
    EXPECT_EQ(ReverseBits(0x83, 7), 0xE0U);  // bit 7 stays, 0000011 -> 1100000
    EXPECT_EQ(ReverseBits(1, 2), 2U);
    EXPECT_EQ(ReverseBits(0xFFFFFFFF, 7), 0xFFFFFFFFU);
}

TEST(HeadFrames, InSbTimingGoesInFourFrames)
{
    HeadTimingRecord timing;
    timing.HeadModel = kInSbHead;
    timing.MasterClockIndex = 5;
    timing.TimingRows = 256;  // 64 x 4
    timing.TimingCols = 320;  // 80 x 4
    timing.IntegrationLines = {242, 12, 0, 0};
    timing.IntegrationCols = {159, 0, 0, 0};
    timing.FrameStartDelay = 9;
    timing.LineStartDelay = 6;
    timing.AdDelay = 3;  // not part of it on this head
    EXPECT_THAT(ClockFrame(timing), ElementsAre(0x50, 0x00, 0x00, 0x05));
    EXPECT_THAT(FrameSizeFrame(timing), ElementsAre(0x50, 0x01, 0x40, 0x50));
    EXPECT_THAT(IntegrationFrame(timing, 0), ElementsAre(0x50, 0x03, 0xF4, 0x28));  // 244; 162 / 4 = 40
    EXPECT_THAT(IntegrationFrame(timing, 1), ElementsAre(0x50, 0x03, 0x0E, 0x00));  // 14; 3 / 4 = 0
    EXPECT_THAT(StartDelayFrame(timing), ElementsAre(0x50, 0x05, 0x00, 0x96));      // 9 x 16 + 6
}

TEST(HeadFrames, ValuesBeyondAByteKeepTheirLowBits)
{
    HeadTimingRecord timing;
    timing.HeadModel = kInSbHead;
    timing.TimingRows = 1024;                  // 256
    timing.TimingCols = 1028;                  // 257
    timing.IntegrationLines = {254, 0, 0, 0};  // 256
    timing.IntegrationCols = {1279, 0, 0, 0};  // 1282 / 4 = 320 = 256 + 64
    timing.FrameStartDelay = 17;               // 272 + 1 = 256 + 17
    timing.LineStartDelay = 1;
    EXPECT_THAT(FrameSizeFrame(timing), ElementsAre(0x50, 0x01, 0x00, 0x01));
    EXPECT_THAT(IntegrationFrame(timing, 0), ElementsAre(0x50, 0x03, 0x00, 0x40));
    EXPECT_THAT(StartDelayFrame(timing), ElementsAre(0x50, 0x05, 0x00, 0x11));
}

TEST(HeadFrames, TheHgCdTeClockCarriesTheDelays)
{
    HeadTimingRecord timing;
    timing.HeadModel = kHgCdTeHead;
    timing.MasterClockIndex = 5;
    timing.FrameStartDelay = 3;
    timing.LineStartDelay = 2;
    timing.AdDelay = 1;
    EXPECT_THAT(ClockFrame(timing), ElementsAre(0x90, 0x05, 0x0B, 0xE1));  // 11; 192 + 32 + 1 = 225
}

TEST(HeadFrames, EachDacHasItsBit)
{
    constexpr std::array<std::uint8_t, 8> kSelectors = {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80};
    for (std::size_t dac = 0; dac < kSelectors.size(); ++dac) {
        EXPECT_THAT(DacFrame(112, dac, 200), ElementsAre(0x70, kSelectors[dac], 0xC8, 0x00)) << dac;
    }
    EXPECT_THAT(DacFrame(112, 0, 300), ElementsAre(0x70, 0x01, 0x2C, 0x00)) << "300 - 256 = 44";
}

TEST(HeadFrames, BiasesAreEnabledByTwoBits)
{
    EXPECT_THAT(BiasEnableFrame(128, true), ElementsAre(0x80, 0x03, 0x00, 0x00));
    EXPECT_THAT(BiasEnableFrame(128, false), ElementsAre(0x80, 0x00, 0x00, 0x00));
}

TEST(HeadFrames, GainIndexesGoByTheTableOfCodes)
{
    constexpr std::array<int, 14> kCodes = {8, 4, 2, 12, 10, 6, 1, 14, 9, 5, 3, 13, 11, 7};
    for (int index = 1; index <= 14; ++index)
        EXPECT_EQ(GainCode(index), kCodes.at(static_cast<std::size_t>(index) - 1));
    EXPECT_EQ(GainCode(0), 0);
    EXPECT_EQ(GainCode(15), 15);
    EXPECT_EQ(GainCode(16), 15);
    EXPECT_EQ(GainCode(-1), 0);
    EXPECT_THAT(GainFrame(96, 4), ElementsAre(0x60, 0x30, 0x00, 0x00));   // code 12 x 4
    EXPECT_THAT(GainFrame(96, 15), ElementsAre(0x60, 0x3C, 0x00, 0x00));  // code 15 x 4
}

FpaSerialWordRecord WordOf(std::int32_t cols, std::int32_t rows)
{
    FpaSerialWordRecord word;
    word.ColEnd = cols - 1;
    word.RowEnd = rows - 1;
    return word;
}

TEST(SerialWord, DefaultsAt320By256)
{
    const FpaSerialWordRecord encoded = EncodedSerialWord(WordOf(320, 256));
    EXPECT_EQ(encoded.ColGain, 1);   // 100 -> 001
    EXPECT_EQ(encoded.DetBias, 15);  // 1111
    EXPECT_EQ(encoded.ColEnd, 114);  // 319 / 8 = 39 = 0100111 -> 1110010
    EXPECT_EQ(encoded.RowEnd, 62);   // 255 / 8 = 31 = 011111 -> 111110
    EXPECT_EQ(encoded.ColBits, 2);
    // 0x7E = 15 x 8 + 3 x 2 + (1 >> 2); 0x42 = 1 x 64 + 1 x 2
    EXPECT_THAT(SerialBiasFrame(encoded), ElementsAre(0x60, 0x00, 0x7E, 0x42));
    // 0x01 = 114 >> 6; 0xCA = (2 + 114 x 4) - 256
    EXPECT_THAT(SerialColumnFrame(encoded), ElementsAre(0x60, 0x02, 0x01, 0xCA));
    EXPECT_THAT(SerialRowFrame(encoded), ElementsAre(0x60, 0x04, 0x80, 0x3E));
}

TEST(SerialWord, EveryFieldHasItsBits)
{
    FpaSerialWordRecord word;
    word.SerialReg = 0x61;
    word.DetBias = 1;  // 0001 -> 1000
    word.PedBias = 2;  // 10, not mirrored
    word.ColGain = 3;  // 011 -> 110
    word.SerialBitsB = 1;
    word.FlipCols = 1;
    word.FlipRows = 1;
    word.FastFrame = 0;
    word.ColStart = 64;      // 8 = 0001000 -> 0001000
    word.ColEnd = 64 + 127;  // 191 / 8 = 23 = 0010111 -> 1110100 = 116
    word.RowStart = 40;      // 5 = 000101 -> 101000 = 40
    word.RowEnd = 40 + 63;   // 103 / 8 = 12 = 001100 -> 001100 = 12
    const FpaSerialWordRecord encoded = EncodedSerialWord(word);
    // 0 1000 10 1: 8 x 8 + 2 x 2 + (6 >> 2 = 1) = 69
    // 10 01 1 1 0 0: (6 x 64 = 384 -> 128) + 16 + 8 + 4 = 156
    EXPECT_THAT(SerialBiasFrame(encoded), ElementsAre(0x61, 0x00, 0x45, 0x9C));
    // 8 x 2 + (116 >> 6 = 1) = 17; 2 + 116 x 4 = 466 - 256 = 210
    EXPECT_THAT(SerialColumnFrame(encoded), ElementsAre(0x61, 0x02, 0x11, 0xD2));
    // 128 + (40 >> 2 = 10) = 138; (40 x 64 = 2560 -> 0) + 12
    EXPECT_THAT(SerialRowFrame(encoded), ElementsAre(0x61, 0x04, 0x8A, 0x0C));
}

TEST(SerialWord, AWidthOf128EndsAt15)
{
    const FpaSerialWordRecord encoded = EncodedSerialWord(WordOf(128, 128));
    EXPECT_EQ(encoded.ColEnd, 120);                                                // 127 / 8 = 15 = 0001111 -> 1111000
    EXPECT_THAT(SerialColumnFrame(encoded), ElementsAre(0x60, 0x02, 0x01, 0xE2));  // 120 >> 6; 2 + 480 - 256
}

}  // namespace
}  // namespace kelvo
