#include "pixel/decommutation.h"

#include "platform/memory.h"

#include <numeric>

namespace kelvo {

std::optional<std::vector<std::uint32_t>> LoadDecomList(const CameraConfig& config)
{
    if (config.Hroi < 1 || config.Vroi < 1) return std::nullopt;
    std::vector<std::uint32_t> list;
    if (!AllocateBlock(list, static_cast<std::size_t>(config.Hroi) * static_cast<std::size_t>(config.Vroi))) {
        return std::nullopt;
    }
    std::iota(list.begin(), list.end(), std::uint32_t{0});
    return list;
}

}  // namespace kelvo
