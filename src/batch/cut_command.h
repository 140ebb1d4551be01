// "kelvo cut --frames A:B IN OUT": a range of a sequence as a sequence of its own.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

// "10:20" is frames 10 to 19, ":20" from the first, "10:" to the last, ":" all: first, and one behind the last (-1: the
// end). nullopt: it isn't a range.
std::optional<std::pair<std::int64_t, std::int64_t>> FrameRangeOf(std::string_view text);
inline constexpr std::string_view kFrameRangeForm =
    "--frames A:B says which frames, counted from 0, without frame B";  // what is told then

// cut --frames A:B IN OUT: 0, or 2 with the reason on the error stream. OUT must not stand.
int CutCommand(std::span<const std::string> arguments);

}  // namespace kelvo
