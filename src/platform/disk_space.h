// How much a disk still takes.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvo {

// Bytes that this user can still write to the file system on which path lies, or would lie: of a file that isn't there,
// its directory's. The fault "little disk space" leaves 1 byte. nullopt where neither is there or it can't be told.
std::optional<std::int64_t> FreeDiskBytes(std::string_view path);

}  // namespace kelvo
