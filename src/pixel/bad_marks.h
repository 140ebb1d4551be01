// Which pixels are known to be bad, for what measures, fits or exports. Maps have one byte a pixel in image order,
// non-zero marks a bad one. Nothing is told in a box.
#pragma once

#include "pixel/bad_pixels.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

// Of a detector that doesn't respond (pixel/bad_pixels.h, kNullGain). One that isn't a number says the same.
bool HasNoGain(float gain);

// Marks the pixels whose detectors have none; gains in readout order, decomList gives the detector of each pixel. One
// without an entry, or without a gain there, stays as it is.
void MarkWithoutGain(BadDetMap& map, std::span<const float> gains, std::span<const std::uint32_t> decomList);

struct ListMarks {
    bool isRead = true;
    std::string amiss;  // the first thing that is, a sentence; empty: nothing is
};
// Marks what a .bad lists, of rows of so many columns. Amiss is "NAME can't be read." (no file, or longer than 64 MB;
// nothing is marked then), or a line that is no pair or names what lies outside of the map: the others are marked.
ListMarks MarkListed(BadDetMap& map, std::int32_t columns, const std::string& path);

// Those of the camera's picture, Vroi x Hroi: what the list of the calibration in force names. That is the set's
// BadDetFile, or its own memory where its files couldn't be written (pixel/unsaved_set.h). nullopt with an empty why:
// nobody knows, for the list isn't there or the section names no size. With a sentence in why: the list can't be read
// now, or memory is refused.
std::optional<BadDetMap> ListedInForce(std::string& why);
// And those whose detectors have no gain, where gains are in force.
std::optional<BadDetMap> BadDetectorsInForce(std::string& why);
// Why is what they leave empty: "The list of bad detectors isn't there."
inline constexpr std::string_view kNoListInForce = "The list of bad detectors isn't there.";

}  // namespace kelvo
