// The readout order of the detector, and the table that turns a raw frame into an image. Orientation and bad-pixel
// substitution live in the same table.
#pragma once

#include "config/camera_config.h"
#include "config/frame_rate_table.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo {

// Vroi x Hroi entries in image order, each the raw index of an image pixel.
using DecomTable = std::vector<std::uint32_t>;

// The table of DecomScheme, without orientation and substitution. nullopt after "Failure to Lock Decommuation list in
// Memory". readoutShift: ReadoutShift of the frame rate row in force, 0 in all present configurations. A destination
// that stays negative or falls past the table is dropped; a source that stays negative is refused with the table.
std::optional<DecomTable> BuildDecomList(const CameraConfig& config, std::int32_t readoutShift);

// Permutes the table in place: rows mirrored, then columns, then rotated left. 1; 0 after "Failure to allocate and lock
// Temporary memory!", the table unchanged.
std::int32_t ReorderDecomList(DecomTable& list, const CameraConfig& config, std::int32_t mirrorHoriz,
                              std::int32_t mirrorVert, std::int32_t rotateCcw);

// The table position of image pixel (row, column); -1 where it lies outside the table.
std::int64_t DecomPosition(const CameraConfig& config, std::int32_t row, std::int32_t column);

// A new table from DECOM.TMP, or a freshly built one where that can't be opened. nullopt after a box.
std::optional<DecomTable> LoadDecomList(const CameraConfig& config);

}  // namespace kelvo
