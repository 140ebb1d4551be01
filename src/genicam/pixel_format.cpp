#include "genicam/pixel_format.h"

#include "genicam/unpack_kernels.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace kelvo {

namespace {

// Codes and names: PFNC 2.4; those that end in "Packed" are GigE Vision's own.
constexpr PixelFormat kFormats[] = {
    {0x01100007, "Mono16", PixelLayout::kWords, 16},
    {0x01100025, "Mono14", PixelLayout::kWords, 14},
    {0x010E0104, "Mono14p", PixelLayout::kBitStream, 14},
    {0x01100005, "Mono12", PixelLayout::kWords, 12},
    {0x010C0047, "Mono12p", PixelLayout::kBitStream, 12},
    {0x010C0006, "Mono12Packed", PixelLayout::kPackedPairs, 12},
    {0x01100003, "Mono10", PixelLayout::kWords, 10},
    {0x010A0046, "Mono10p", PixelLayout::kBitStream, 10},
    {0x010C0004, "Mono10Packed", PixelLayout::kPackedPairs, 10},
    {0x01080001, "Mono8", PixelLayout::kBytes, 8},
};

using CountLimits = std::numeric_limits<std::int16_t>;

std::int16_t CountOf(std::int32_t sample, const CountRule& rule)
{
    const std::int32_t count = (sample - rule.pedestal) >> rule.shift;
    return static_cast<std::int16_t>(std::clamp<std::int32_t>(count, CountLimits::min(), CountLimits::max()));
}

void UnpackBytes(std::span<const std::uint8_t> packed, std::span<std::int16_t> out)
{
    std::copy_n(packed.begin(), out.size(), out.begin());
}

void UnpackPairs10(std::span<const std::uint8_t> packed, std::span<std::int16_t> out)
{
    for (std::size_t i = 0; i < out.size(); ++i) {
        const std::size_t pair = i / 2 * 3;
        const bool second = i % 2 != 0;
        const std::int32_t low = second ? packed[pair + 1] >> 4 : packed[pair + 1];
        out[i] = static_cast<std::int16_t>(packed[pair + (second ? 2 : 0)] << 2 | (low & 3));
    }
}

// Bits are gathered from the lowest byte on; of a count there are always enough, as its bytes have been counted.
void UnpackStream(std::int32_t bits, std::span<const std::uint8_t> packed, std::span<std::int16_t> out)
{
    const std::uint32_t mask = (1U << bits) - 1U;
    std::uint32_t gathered = 0;
    std::int32_t have = 0;
    std::size_t at = 0;
    for (std::int16_t& count : out) {
        while (have < bits) {
            gathered |= static_cast<std::uint32_t>(packed[at++]) << have;
            have += 8;
        }
        count = static_cast<std::int16_t>(gathered & mask);
        gathered >>= bits;
        have -= bits;
    }
}

// Counts of at most 14 bits, as they are.
void UnpackPlain(const PixelFormat& format, std::span<const std::uint8_t> packed, std::span<std::int16_t> out)
{
    constexpr std::int32_t kTwelve = 12;
    switch (format.layout) {
        case PixelLayout::kBytes:
            return UnpackBytes(packed, out);
        case PixelLayout::kPackedPairs:
            return format.bits == kTwelve ? UnpackPairs12(packed.data(), out.size(), out.data())
                                          : UnpackPairs10(packed, out);
        case PixelLayout::kBitStream:
            return format.bits == kTwelve ? UnpackStream12(packed.data(), out.size(), out.data())
                                          : UnpackStream(format.bits, packed, out);
        case PixelLayout::kWords:
            break;
    }
}

void UnpackPart(const PixelFormat& format, const CountRule& rule, std::span<const std::uint8_t> packed,
                std::span<std::int16_t> out)
{
    if (format.layout == PixelLayout::kWords) {
        return UnpackWords(packed.data(), out.size(), rule.pedestal, rule.shift, out.data());
    }
    UnpackPlain(format, packed, out);
    if (rule == CountRule()) return;
    for (std::int16_t& count : out) count = CountOf(count, rule);
}

}  // namespace

std::span<const PixelFormat> KnownPixelFormats()
{
    return kFormats;
}

std::optional<PixelFormat> PixelFormatOf(std::uint32_t code)
{
    const auto* const found = std::ranges::find(kFormats, code, &PixelFormat::code);
    return found == std::end(kFormats) ? std::nullopt : std::optional(*found);
}

std::optional<PixelFormat> PixelFormatNamed(std::string_view name)
{
    const auto* const found = std::ranges::find(kFormats, name, &PixelFormat::name);
    return found == std::end(kFormats) ? std::nullopt : std::optional(*found);
}

std::size_t BytesOfPixels(const PixelFormat& format, std::size_t pixels)
{
    switch (format.layout) {
        case PixelLayout::kBytes:
            return pixels;
        case PixelLayout::kWords:
            return 2 * pixels;
        case PixelLayout::kPackedPairs:
            return (3 * pixels + 1) / 2;
        case PixelLayout::kBitStream:
            break;
    }
    return (pixels * static_cast<std::size_t>(format.bits) + 7) / 8;
}

CountRule DefaultCountRule(std::int32_t bits)
{
    return {.shift = bits > 15 ? 1 : 0};
}

std::string CountRuleText(const CountRule& rule)
{
    std::string text;
    if (rule.pedestal != 0) text = std::to_string(rule.pedestal) + " subtracted";
    if (rule.shift != 0) text += (text.empty() ? "" : ", then ") + ("shifted right by " + std::to_string(rule.shift));
    return text;
}

std::int32_t BitsOfCounts(std::int32_t bits, const CountRule& rule)
{
    return std::clamp(bits - rule.shift, 1, 16);
}

bool UnpackPixels(const PixelFormat& format, const CountRule& rule, std::span<const std::uint8_t> packed,
                  std::span<std::int16_t> out)
{
    if (packed.size() < BytesOfPixels(format, out.size())) return false;
    if (out.empty()) return true;
    if (format.layout == PixelLayout::kWords && format.bits < 16 && rule == CountRule()) {
        std::memcpy(out.data(), packed.data(), out.size_bytes());
        return true;
    }
    // A part at a time, which stays in the nearest cache, is copied to its place: that is faster than to store counts
    // there one register after the other (bench/genicam_bench.cpp).
    constexpr std::size_t kPart = 4096;  // a multiple of 8: it begins with a whole byte in each format
    std::array<std::int16_t, kPart> part{};
    for (std::size_t i = 0; i < out.size(); i += kPart) {
        const std::size_t pixels = std::min(kPart, out.size() - i);
        UnpackPart(format, rule, packed.subspan(BytesOfPixels(format, i)), std::span(part).first(pixels));
        std::memcpy(out.data() + i, part.data(), pixels * sizeof part[0]);
    }
    return true;
}

}  // namespace kelvo
