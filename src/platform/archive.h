// Several texts as one archive, which any desktop opens.
#pragma once

#include <ctime>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

struct NamedText {
    std::string name;  // of the file in the archive: ASCII, at least a character
    std::string text;  // its bytes
};

// A zip archive of the texts, deflated, in their order; each with this time, and none with an owner. nullopt where
// there is no memory for it.
std::optional<std::string> ZipOf(std::span<const NamedText> texts, std::time_t time);

}  // namespace kelvo
