// The settings files that Kelvo ships, as they stand in the source tree.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// The path of one of them; of their directory for an empty name.
std::string ShippedFile(std::string_view name);

}  // namespace kelvo
