#include "imagefile/crc32c.h"

#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <nmmintrin.h>
#endif

namespace kelvo {

namespace {

constexpr std::uint32_t kReversedPolynomial = 0x82F63B78;

constexpr std::array<std::uint32_t, 256> TableOfBytes()
{
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t rest = byte;
        for (int bit = 0; bit < 8; ++bit) rest = (rest >> 1) ^ ((rest & 1) != 0 ? kReversedPolynomial : 0);
        table[byte] = rest;
    }
    return table;
}
constexpr std::array<std::uint32_t, 256> kTable = TableOfBytes();

#if defined(__x86_64__)

// Three parts of so many bytes are worked on at once: the instruction gives its result three cycles later, and may be
// begun in each.
constexpr std::size_t kPartBytes = 4096;

// A checksum moved on over kPartBytes zero bytes is linear in its bits: a table for each of its four bytes.
using ShiftTable = std::array<std::array<std::uint32_t, 256>, 4>;

std::uint32_t OverZeros(std::uint32_t rest)
{
    for (std::size_t i = 0; i < kPartBytes; ++i) rest = kTable[rest & 0xFF] ^ (rest >> 8);
    return rest;
}

ShiftTable MakeShiftTable()
{
    ShiftTable table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        std::array<std::uint32_t, 8> ofBit{};
        for (std::size_t bit = 0; bit < ofBit.size(); ++bit) ofBit[bit] = OverZeros(1U << (byte * 8 + bit));
        for (std::size_t value = 0; value < 256; ++value) {
            for (std::size_t bit = 0; bit < ofBit.size(); ++bit) {
                if ((value >> bit & 1) != 0) table[byte][value] ^= ofBit[bit];
            }
        }
    }
    return table;
}

std::uint32_t Shifted(std::uint64_t rest)
{
    static const ShiftTable table = MakeShiftTable();
    return table[0][rest & 0xFF] ^ table[1][rest >> 8 & 0xFF] ^ table[2][rest >> 16 & 0xFF] ^
           table[3][rest >> 24 & 0xFF];
}

std::uint64_t Word(std::span<const std::byte> bytes, std::size_t at)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data() + at, sizeof word);
    return word;
}

[[gnu::target("sse4.2")]] std::uint32_t ByInstruction(std::span<const std::byte> bytes, std::uint32_t before)
{
    std::uint64_t rest = ~before;
    for (; bytes.size() >= 3 * kPartBytes; bytes = bytes.subspan(3 * kPartBytes)) {
        std::uint64_t second = 0;
        std::uint64_t third = 0;
        for (std::size_t at = 0; at < kPartBytes; at += sizeof(std::uint64_t)) {
            rest = _mm_crc32_u64(rest, Word(bytes, at));
            second = _mm_crc32_u64(second, Word(bytes, at + kPartBytes));
            third = _mm_crc32_u64(third, Word(bytes, at + 2 * kPartBytes));
        }
        rest = Shifted(Shifted(rest) ^ second) ^ third;
    }
    for (; bytes.size() >= sizeof(std::uint64_t); bytes = bytes.subspan(sizeof(std::uint64_t))) {
        rest = _mm_crc32_u64(rest, Word(bytes, 0));
    }
    auto low = static_cast<std::uint32_t>(rest);
    for (const std::byte byte : bytes) low = _mm_crc32_u8(low, std::to_integer<std::uint8_t>(byte));
    return ~low;
}

bool HasInstruction()
{
    static const bool has = __builtin_cpu_supports("sse4.2") != 0;
    return has;
}

#else

bool HasInstruction()
{
    return false;
}
std::uint32_t ByInstruction(std::span<const std::byte> bytes, std::uint32_t before)
{
    return Crc32cByTable(bytes, before);
}

#endif

}  // namespace

std::uint32_t Crc32c(std::span<const std::byte> bytes, std::uint32_t before)
{
    return HasInstruction() ? ByInstruction(bytes, before) : Crc32cByTable(bytes, before);
}

std::uint32_t Crc32cByTable(std::span<const std::byte> bytes, std::uint32_t before)
{
    std::uint32_t rest = ~before;
    for (const std::byte byte : bytes) {
        rest = kTable[(rest ^ std::to_integer<std::uint32_t>(byte)) & 0xFF] ^ (rest >> 8);
    }
    return ~rest;
}

}  // namespace kelvo
