// Which pixels of a picture a calibration set says are bad.
#pragma once

#include "calib/set_reader.h"
#include "pixel/bad_marks.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

// For frames of columns x rows, image order: what the set's .bad lists, and, of a set with gains (type 2), the pixels
// whose detectors have none. Nothing is told; nullopt with the reason in why, a whole sentence: a file of the set can't
// be read, was made for frames of another size, or lists what lies outside of this one; memory is refused.
std::optional<BadDetMap> BadDetectorsOfSet(const std::string& calPath, std::int32_t columns, std::int32_t rows,
                                           std::string& why);
// Of a set that has been read for as many pixels.
std::optional<BadDetMap> BadDetectorsOfSet(const CalibrationSet& set, std::int32_t columns, std::int32_t rows,
                                           std::string& why);

// Whether all the files of the set stand that it takes, readable or not.
bool TellsBadDetectors(const CalibrationSet& set);

}  // namespace kelvo
