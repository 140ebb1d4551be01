#include "genicam/pixel_format.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace kelvo {
namespace {

using testing::ElementsAre;

PixelFormat Named(std::string_view name)
{
    return PixelFormatNamed(name).value();
}

std::vector<std::int16_t> Unpacked(std::string_view name, const std::vector<std::uint8_t>& bytes, std::size_t pixels,
                                   const CountRule& rule = {})
{
    std::vector<std::int16_t> out(pixels, -77);
    EXPECT_TRUE(UnpackPixels(Named(name), rule, bytes, out));
    return out;
}

TEST(PixelFormats, AreKnownByCodeAndByName)
{
    EXPECT_EQ(PixelFormatOf(0x01080001)->name, "Mono8");
    EXPECT_EQ(PixelFormatOf(0x010C0047)->name, "Mono12p");
    EXPECT_EQ(PixelFormatOf(0x010C0006)->name, "Mono12Packed");
    EXPECT_EQ(PixelFormatOf(0x01100025)->bits, 14);
    EXPECT_EQ(PixelFormatOf(0x02180014), std::nullopt) << "RGB8";
    EXPECT_EQ(PixelFormatNamed("BayerRG8"), std::nullopt);
    // The third byte of a code is how many bits of the buffer a pixel takes.
    for (const PixelFormat& format : KnownPixelFormats()) {
        EXPECT_EQ(BytesOfPixels(format, 80), 10 * ((format.code >> 16) & 0xFF)) << format.name;
    }
}

TEST(PixelFormats, CountTheBytesOfAPartOfAPair)
{
    EXPECT_EQ(BytesOfPixels(Named("Mono12p"), 3), 5U);
    EXPECT_EQ(BytesOfPixels(Named("Mono12Packed"), 3), 5U);
    EXPECT_EQ(BytesOfPixels(Named("Mono10p"), 3), 4U);
    EXPECT_EQ(BytesOfPixels(Named("Mono14p"), 1), 2U);
    EXPECT_EQ(BytesOfPixels(Named("Mono16"), 0), 0U);
}

// By hand: 0xABC and 0x123 in three bytes, and so on.
TEST(Unpacking, TakesEachLayoutApart)
{
    EXPECT_THAT(Unpacked("Mono8", {0, 7, 255}, 3), ElementsAre(0, 7, 255));
    EXPECT_THAT(Unpacked("Mono10", {0xFF, 0x03, 0x01, 0x00}, 2), ElementsAre(1023, 1));
    EXPECT_THAT(Unpacked("Mono12", {0xBC, 0x0A, 0x23, 0x01}, 2), ElementsAre(0xABC, 0x123));
    EXPECT_THAT(Unpacked("Mono14", {0xFF, 0x3F, 0x00, 0x20}, 2), ElementsAre(16383, 8192));
    EXPECT_THAT(Unpacked("Mono16", {0xFF, 0x7F, 0x01, 0x00}, 2), ElementsAre(32767, 1));
    EXPECT_THAT(Unpacked("Mono12p", {0xBC, 0x3A, 0x12}, 2), ElementsAre(0xABC, 0x123));
    EXPECT_THAT(Unpacked("Mono12Packed", {0xAB, 0x3C, 0x12}, 2), ElementsAre(0xABC, 0x123));
    EXPECT_THAT(Unpacked("Mono12p", {0xBC, 0x0A}, 1), ElementsAre(0xABC));
    EXPECT_THAT(Unpacked("Mono12Packed", {0xAB, 0x0C}, 1), ElementsAre(0xABC));
    // 10 bits: 1101001011 (0x34B) and 0000000001.
    EXPECT_THAT(Unpacked("Mono10Packed", {0xD2, 0x13, 0x00}, 2), ElementsAre(0x34B, 1));
    EXPECT_THAT(Unpacked("Mono10p", {0x4B, 0x07, 0x00}, 2), ElementsAre(0x34B, 1));
    // 14 bits: 0x2BCD and 0x0001: the second one's lowest bit is bit 14.
    EXPECT_THAT(Unpacked("Mono14p", {0xCD, 0x6B, 0x00, 0x00}, 2), ElementsAre(0x2BCD, 1));
}

// Packed bit by bit, by the definitions; lengths around those of the machine's registers.
std::vector<std::uint8_t> Packed(const PixelFormat& format, const std::vector<std::uint16_t>& samples)
{
    std::vector<std::uint8_t> bytes(BytesOfPixels(format, samples.size()));
    const auto bits = static_cast<std::size_t>(format.bits);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        for (std::size_t bit = 0; bit < bits; ++bit) {
            if ((samples[i] >> bit & 1) == 0) continue;
            std::size_t place = 0;
            switch (format.layout) {
                case PixelLayout::kBytes:
                    place = 8 * i + bit;
                    break;
                case PixelLayout::kWords:
                    place = 16 * i + bit;
                    break;
                case PixelLayout::kBitStream:
                    place = bits * i + bit;
                    break;
                case PixelLayout::kPackedPairs: {
                    const std::size_t low = bits - 8;  // bits that stand in the middle byte, from 0 or from 4
                    const std::size_t middle = i / 2 * 24 + 8;
                    if (bit < low) place = middle + bit + (i % 2) * 4;
                    if (bit >= low) place = middle - 8 + (i % 2) * 16 + bit - low;
                    break;
                }
            }
            bytes[place / 8] = static_cast<std::uint8_t>(bytes[place / 8] | 1U << place % 8);
        }
    }
    return bytes;
}

TEST(Unpacking, GivesBackWhatWasPackedBitByBit)
{
    constexpr std::size_t kLengths[] = {1, 2, 7, 8, 9, 15, 16, 17, 31, 33, 63, 64, 65, 1001, 4095, 4096, 4097, 8200};
    std::mt19937 random(15);
    for (const PixelFormat& format : KnownPixelFormats()) {
        for (const std::size_t pixels : kLengths) {
            std::vector<std::uint16_t> samples(pixels);
            for (std::uint16_t& sample : samples) {
                sample = static_cast<std::uint16_t>(random() & ((1U << format.bits) - 1U));
            }
            for (const CountRule& rule :
                 {CountRule(), CountRule{.shift = 1}, CountRule{.pedestal = 32768}, CountRule{.pedestal = 1},
                  CountRule{.pedestal = 65535}, CountRule{.pedestal = 300, .shift = 2}}) {
                std::vector<std::int16_t> expected;
                for (const std::uint16_t sample : samples) {
                    const double less = std::floor((sample - rule.pedestal) / std::exp2(rule.shift));
                    expected.push_back(static_cast<std::int16_t>(std::clamp(less, -32768.0, 32767.0)));
                }
                std::vector<std::int16_t> out(pixels);
                ASSERT_TRUE(UnpackPixels(format, rule, Packed(format, samples), out));
                ASSERT_EQ(out, expected) << format.name << ", " << pixels << " pixels, pedestal " << rule.pedestal
                                         << ", shift " << rule.shift;
            }
        }
    }
}

TEST(Unpacking, RefusesABufferThatIsTooShort)
{
    std::vector<std::int16_t> out = {1, 2};
    const std::vector<std::uint8_t> bytes = {1, 2};
    EXPECT_FALSE(UnpackPixels(Named("Mono12p"), {}, bytes, out));
    EXPECT_THAT(out, ElementsAre(1, 2));
}

TEST(CountRules, MakeSignedCountsOfSixteenBits)
{
    const std::vector<std::uint8_t> ends = {0x00, 0x00, 0xFF, 0x7F, 0x00, 0x80, 0xFF, 0xFF};
    EXPECT_THAT(Unpacked("Mono16", ends, 4), ElementsAre(0, 32767, 32767, 32767)) << "cut where nothing is done";
    EXPECT_THAT(Unpacked("Mono16", ends, 4, DefaultCountRule(16)), ElementsAre(0, 16383, 16384, 32767));
    EXPECT_THAT(Unpacked("Mono16", ends, 4, {.pedestal = 32768}), ElementsAre(-32768, -1, 0, 32767));
    EXPECT_EQ(DefaultCountRule(14), CountRule());
    EXPECT_EQ(BitsOfCounts(16, {.shift = 1}), 15);
    EXPECT_EQ(BitsOfCounts(12, {}), 12);
}

TEST(CountRules, AreToldInWords)
{
    EXPECT_EQ(CountRuleText({}), "");
    EXPECT_EQ(CountRuleText({.shift = 1}), "shifted right by 1");
    EXPECT_EQ(CountRuleText({.pedestal = 32768}), "32768 subtracted");
    EXPECT_EQ(CountRuleText({.pedestal = 16, .shift = 2}), "16 subtracted, then shifted right by 2");
}

}  // namespace
}  // namespace kelvo
