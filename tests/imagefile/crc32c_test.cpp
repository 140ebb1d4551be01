#include "imagefile/crc32c.h"

#include <gtest/gtest.h>

#include <random>
#include <string_view>
#include <vector>

namespace kelvo {
namespace {

std::span<const std::byte> Bytes(std::string_view text)
{
    return std::as_bytes(std::span(text));
}

// The polynomial division itself, bit by bit.
std::uint32_t ByDefinition(std::span<const std::byte> bytes)
{
    std::uint32_t rest = 0xFFFFFFFF;
    for (const std::byte byte : bytes) {
        rest ^= std::to_integer<std::uint32_t>(byte);
        for (int bit = 0; bit < 8; ++bit) rest = (rest & 1) != 0 ? (rest >> 1) ^ 0x82F63B78 : rest >> 1;
    }
    return ~rest;
}

TEST(Crc32c, GivesThePublishedValues)
{
    EXPECT_EQ(Crc32c(Bytes("123456789")), 0xE3069283U);
    EXPECT_EQ(Crc32c({}), 0U);
    // RFC 3720, appendix B.4
    const std::vector<std::byte> zeros(32);
    EXPECT_EQ(Crc32c(zeros), 0x8A9136AAU);
    const std::vector<std::byte> ones(32, std::byte{0xFF});
    EXPECT_EQ(Crc32c(ones), 0x62A8AB43U);
    std::vector<std::byte> rising(32);
    for (std::size_t i = 0; i < rising.size(); ++i) rising[i] = static_cast<std::byte>(i);
    EXPECT_EQ(Crc32c(rising), 0x46DD794EU);
    EXPECT_EQ(Crc32cByTable(rising), 0x46DD794EU);
}

TEST(Crc32c, IsTheDivisionAtEveryLengthAndPlace)
{
    std::mt19937 random(7);
    std::vector<std::byte> bytes(40'000);
    for (std::byte& byte : bytes) byte = static_cast<std::byte>(random());
    for (const std::size_t length : {0U, 1U, 7U, 8U, 9U, 4095U, 12'287U, 12'288U, 12'289U, 24'580U, 39'000U}) {
        for (const std::size_t from : {0U, 1U, 5U}) {
            const std::span<const std::byte> part = std::span(bytes).subspan(from, length);
            EXPECT_EQ(Crc32c(part), ByDefinition(part)) << length;
            EXPECT_EQ(Crc32cByTable(part), ByDefinition(part)) << length;
        }
    }
}

TEST(Crc32c, GoesOnBehindWhatStandsBefore)
{
    EXPECT_EQ(Crc32c(Bytes("6789"), Crc32c(Bytes("12345"))), 0xE3069283U);
    EXPECT_EQ(Crc32cByTable(Bytes("6789"), Crc32cByTable(Bytes("12345"))), 0xE3069283U);
}

}  // namespace
}  // namespace kelvo
