// Unpacking of pixels with the registers of the machine at hand. UnpackPixels of pixel_format.h is what callers use.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvo {

// Words of 16 bits without a sign, less the pedestal, shifted right; from any address.
void UnpackWords(const std::uint8_t* packed, std::size_t pixels, std::int32_t pedestal, std::int32_t shift,
                 std::int16_t* out);

// Two pixels of 12 bits in three bytes, the first pixel's bits below the second's (a bit stream), or as GigE Vision
// packs them. Counts as they are; the last of an odd number takes two bytes.
void UnpackStream12(const std::uint8_t* packed, std::size_t pixels, std::int16_t* out);
void UnpackPairs12(const std::uint8_t* packed, std::size_t pixels, std::int16_t* out);

}  // namespace kelvo
