// The readout order of the detector, and the table that turns a raw frame into an image.
#pragma once

#include "config/camera_config.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo {

// Vroi x Hroi entries in image order, each the raw index of an image pixel: the plain order. nullopt where memory is
// refused or the size is none.
std::optional<std::vector<std::uint32_t>> LoadDecomList(const CameraConfig& config);

}  // namespace kelvo
