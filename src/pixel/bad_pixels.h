// Bad detectors: which ones are bad, as gains and lists on disk tell it, and which neighbour answers for each.
//
// A bad pixel is never patched in an image: its entry in DecomList is pointed at the raw sample of a good neighbour, so
// that substitution costs nothing per frame and takes the neighbour's gain and offset along. The map says which pixels
// want that.
//
// A .bad file is text, one detector a line, image row first, then column: "%4d,%4d". There is no header line.
#pragma once

#include "state/camera_config.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace kelvo {

// One byte a pixel, image order, Vroi x Hroi; non-zero marks a bad detector.
using BadDetMap = std::vector<std::uint8_t>;

// The map of the last calibration; empty before.
extern const BadDetMap& BadDetList;
// Image indices of the pixels that the last run or rebuild replaced, in the order of repair.
extern const std::vector<std::uint32_t>& ReplacedPixels;

// Reads a .bad file into a map of Vroi x Hroi bytes; marks that stand are kept. 1, or 0 after the box "Could not open
// file %s" where the file can't be opened or is longer than 64 MB.
//
// Lines that don't scan, or name a pixel outside the region, are told and don't stop the reading: "Line #%d
// ignored,\"%s\"", the number being the last index worked out (row x Hroi + column) plus 1. A line that doesn't scan,
// also one of a single field, marks the pixel of the last line that did again; a pixel outside the region isn't marked.
// From the 21st such line on only their number is told, in one box at the end. Lines are read in pieces of 79
// characters; empty ones are passed over.
int LoadBadDetFile(std::string_view path, BadDetMap& badMap, const CameraConfig& config);

// Writes every marked pixel, row-major. 1, or 0 after the box "Could not save file: %s" (a file that stood there
// stays).
int WriteBadDetFile(std::string_view path, const BadDetMap& badMap, const CameraConfig& config);

// The same reading into a new map of width x height bytes. nullopt after a box under "ReadBadPixelFile() Error":
// "Memory allocation failure!" (also for sides that aren't positive) or "Could not open file %s". Boxes about lines
// stand under that title too.
std::optional<BadDetMap> ReadBadPixelFile(std::string_view path, std::int32_t width, std::int32_t height);

// A detector whose gain lies within -kNullGain to kNullGain, both included, doesn't respond.
constexpr float kNullGain = 0.001F;

// Marks every pixel with such a gain; marks that stand are kept. gainList is in
// readout order and reached through decomList, whose place for a pixel DecomPosition tells. The number marked by gain.
//
// A pixel without a place in the table is an index error, an entry above Vroi x Hroi an address error: entry 0 of the
// gain list answers for both, and a box for each kind under "IdentifyBadDet() Error" tells how many there were. An
// entry of exactly Vroi x Hroi takes entry 0 without being counted.
std::int32_t IdentifyBadDet(BadDetMap& badMap, std::span<const float> gainList,
                            std::span<const std::uint32_t> decomList, const CameraConfig& config);

// Points the entry of each marked pixel at that of its first usable neighbour in the order of the pattern file
// (CalSettings.PRSfile; pixel/search_pattern.h): one inside the region that isn't marked itself. A repaired pixel never
// serves as a source. A pixel without such a neighbour keeps its entry. decomList is indexed row x Hroi + column.
// 1, with BadDetCount the pixels replaced; also where the pattern has no step, BadDetCount and table as they were. 0
// after a box of ReadSearchPattern, the table untouched.
int ReplaceBadDet(std::span<std::uint32_t> decomList, const BadDetMap& badMap, const CameraConfig& config);

// The step of a calibration. Without SubstBadPixels: CalSettings.BadDetFile becomes empty, 1. Otherwise the list that
// BadDetFile names is joined with what the gains show into BadDetList, decomList is rewritten by it, and the union is
// saved beside CalSettings.CalFile with the extension .bad, which BadDetFile then names. A failed write is only told;
// listIsSaved is false then, and what stands under that name is another list. 0 after a box: "Failure to allocate
// memory for bad detector list", or those of LoadBadDetFile and ReplaceBadDet; BadDetList is then empty.
int SubstituteBadPixels(std::span<const float> gainList, std::span<std::uint32_t> decomList,
                        bool* listIsSaved = nullptr);

// No bad detectors known, none replaced.
void ResetBadPixels();

}  // namespace kelvo
