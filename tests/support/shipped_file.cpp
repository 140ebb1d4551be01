#include "support/shipped_file.h"

namespace kelvo {

std::string ShippedFile(std::string_view name)
{
    std::string path = KELVO_DEFAULTS;
    if (!name.empty()) path.append("/").append(name);
    return path;
}

}  // namespace kelvo
