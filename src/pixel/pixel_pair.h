// Pairs of a row and a column as text: lists of bad detectors, search patterns and the image set-up dialog hold them.
#pragma once

#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

struct PixelPair {
    std::int32_t row = 0;
    std::int32_t column = 0;
    friend bool operator==(const PixelPair&, const PixelPair&) = default;
};

constexpr std::size_t kLongestPairLine = 79;  // characters of a line in the files; a longer one comes in pieces

// The reader's next line, with its newline; false at the end.
bool NextPairLine(LineReader& reader, std::string& line);

// "%d,%d": blanks before either number, none before the comma; what follows doesn't matter. nullopt where two numbers
// don't stand there.
std::optional<PixelPair> ScanPixelPair(std::string_view line);

// "%4d,%4d", without a newline.
std::string PixelPairText(const PixelPair& pair);

}  // namespace kelvo
