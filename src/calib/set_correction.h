// The correction that a calibration set makes of stored raw frames, straight from its files. No state, no box.
#pragma once

#include "calib/stored_correction.h"

#include <cstddef>
#include <optional>
#include <string>

namespace kelvo {

// For frames of pixels pixels, columns a row: gathered by the set's table, as the live picture is. nullopt with why, a
// sentence that names the file: the set isn't there, is no calibration with one or two sources, or has a list that
// can't be read or doesn't fit; or "no memory is left".
std::optional<StoredCorrection> CorrectionOfSet(const std::string& calPath, std::size_t pixels, std::size_t columns,
                                                std::string& why);

}  // namespace kelvo
