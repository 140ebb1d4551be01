// Pictures as portable network graphics.
#pragma once

#include "platform/paint.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

// A picture of 8-bit indices into a colour table of 1 to 256 colours.
struct IndexedPicture {
    int width = 0;
    int height = 0;
    std::ptrdiff_t rowBytes = 0;                      // negative: the first row lies last
    std::span<const std::uint8_t> pixels;             // all rows
    std::vector<std::array<std::uint8_t, 3>> colors;  // red, green, blue
};

// The bytes of a PNG file of 8 bits a pixel with that colour table; empty where the picture is none or its rows
// don't fill its size, nullopt where memory is refused.
std::optional<std::string> PngOf(const IndexedPicture& picture);

// A picture of colours, three bytes a pixel: blue, green, red.
struct ColorPicture {
    int width = 0;
    int height = 0;
    std::ptrdiff_t rowBytes = 0;           // negative: the first row lies last
    std::span<const std::uint8_t> pixels;  // all rows
};

// The same of a PNG file of three times 8 bits a pixel.
std::optional<std::string> PngOf(const ColorPicture& picture);

// What is told inside of the file: a keyword of at most 79 letters ("Software"), and its text.
struct PngText {
    std::string keyword;
    std::string text;
};

// The same of a picture of device pixels, with texts.
std::optional<std::string> PngOf(const DeviceBitmap& picture, std::span<const PngText> texts);

}  // namespace kelvo
