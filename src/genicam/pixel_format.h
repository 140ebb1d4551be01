// The monochrome pixel formats of GenICam cameras: their codes and names by the pixel format naming convention (PFNC
// 2.4), how their bits lie in a buffer, and how counts of 16 bits with a sign are made of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

// How the bits of a pixel lie in the buffer.
enum class PixelLayout {
    kBytes,        // a byte a pixel
    kWords,        // a little-endian word of 16 bits a pixel, right aligned
    kPackedPairs,  // GigE Vision's "Packed": two pixels in three bytes, their upper 8 bits in the outer ones
    kBitStream,    // "p": bits one behind the other, the lowest first, without gaps
};

struct PixelFormat {
    std::uint32_t code = 0;  // as a buffer and the feature PixelFormat have it
    std::string_view name;
    PixelLayout layout = PixelLayout::kBytes;
    std::int32_t bits = 0;  // of a count, 8 to 16
};

// All that are understood, those with more bits first: Mono16, 14, 14p, 12, 12p, 12Packed, 10, 10p, 10Packed, 8.
std::span<const PixelFormat> KnownPixelFormats();
std::optional<PixelFormat> PixelFormatOf(std::uint32_t code);
std::optional<PixelFormat> PixelFormatNamed(std::string_view name);

// Bytes of so many pixels without padding between lines, the last one whole.
std::size_t BytesOfPixels(const PixelFormat& format, std::size_t pixels);

// What is done to a camera's counts so that they fit into 16 bits with a sign: the pedestal is taken off, then they are
// shifted right. What still doesn't fit is the nearest that does.
struct CountRule {
    std::int32_t pedestal = 0;  // counts, 0 to 65535
    std::int32_t shift = 0;     // bits, 0 to 8
    friend bool operator==(const CountRule&, const CountRule&) = default;
};
// The rule of a camera for which none is set: 16 bits are shifted by one, fewer are taken as they are.
CountRule DefaultCountRule(std::int32_t bits);
// "shifted right by 1", "32768 subtracted", "32768 subtracted, then shifted right by 1"; empty: nothing is done.
std::string CountRuleText(const CountRule& rule);
// Bits that a count has then, 1 to 16: what a format of so many bits gives less the shift.
std::int32_t BitsOfCounts(std::int32_t bits, const CountRule& rule);

// Unpacks out.size() pixels; packed holds their bytes (BytesOfPixels). False, and out is as it was, where it holds
// fewer.
bool UnpackPixels(const PixelFormat& format, const CountRule& rule, std::span<const std::uint8_t> packed,
                  std::span<std::int16_t> out);

}  // namespace kelvo
