// The names of numbered files, run after run: which file follows another and which precedes it, as load next and load
// last step through them. Only the last three characters of the base name (no drive, directory or extension) matter.
//
// The two directions are not each other's mirror: forward, 99 behind a letter falls back to 10 and does not widen to
// 100, while backward the way from 100 to 99 is known. Operators' runs are numbered by that.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

// The base name of the file after or before the given one; nullopt where there is none: the operator hears a beep and
// the name stays. An empty name is never stepped. A missing second or third character from the end counts as no digit.
std::optional<std::string> NextSequenceName(std::string_view name);
std::optional<std::string> PreviousSequenceName(std::string_view name);

// The same for a whole path: drive, directory and extension stay.
std::optional<std::string> NextSequencePath(std::string_view path);
std::optional<std::string> PreviousSequencePath(std::string_view path);

}  // namespace kelvo
