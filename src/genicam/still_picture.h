// A camera's bytes as a picture to look at. Pure.
#pragma once

#include "genicam/pixel_format.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

// A frame of the camera as a picture: gray values, the darkest count black, the brightest white, rows x columns.
struct StillPicture {
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    std::vector<std::uint8_t> gray;
};

// The frame's counts between the darkest and the brightest as gray values 0 to 255; one gray, 0, where all are alike.
// nullopt where the bytes are too few for columns x rows of the format.
std::optional<StillPicture> MakeStillPicture(std::span<const std::uint8_t> bytes, const PixelFormat& format,
                                             std::int32_t columns, std::int32_t rows);

}  // namespace kelvo
