// Which pixels of an exported picture are bad detectors, as a calibration tells it: its list, and detectors without a
// gain. Maps have one byte a pixel, rows x columns in image order, 1 marks a bad one. No box; lines of a list that
// name no pixel are passed over.
//
// nullopt with an empty why: nobody knows. With a sentence in why: it is known, and couldn't be found out now; an
// export that went on would pass bad detectors off as good ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

// Of a set: its .bad, and where it has gains those within -0.001 to 0.001. Nobody knows where the set or its list isn't
// there.
std::optional<std::vector<std::uint8_t>> BadDetectorsOfSet(const std::string& calPath, std::size_t columns,
                                                           std::size_t rows, std::string& why);
// Of the calibration in force, for frames of the camera. Nobody knows where none is, or its list isn't there.
std::optional<std::vector<std::uint8_t>> BadDetectorsInForce(std::size_t columns, std::size_t rows, std::string& why);

}  // namespace kelvo
