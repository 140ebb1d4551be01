// The list of bad detectors as the image set-up dialog edits it.
#pragma once

#include "pixel/pixel_pair.h"
#include "state/camera_config.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

struct EditableBadList {
    std::vector<PixelPair> pairs;
    bool isTooLong = false;  // above Vactive x Hactive / 10 lines: reading stopped there, and the list isn't edited
};

// The pairs of a .bad file with rows 0 to Vactive - 1 and columns 0 to Hactive (a list may name the column behind the
// last); other lines are passed over. nullopt where the file can't be opened; nothing is told.
std::optional<EditableBadList> ReadEditableBadList(const std::string& path, const CameraConfig& config);

// The first line whose text, without its blanks, begins with what is typed, blanks taken out: "12,3" finds 12,3 and
// 12,30. nullopt where none does, and for nothing typed.
std::optional<std::size_t> FindPair(std::span<const PixelPair> lines, std::string_view typed);

// A list with one pair more: in the list it follows line place - 1; in the file it stands before that line.
struct ListWithPair {
    std::vector<PixelPair> lines;
    std::vector<PixelPair> fileLines;
    std::size_t place = 0;
};
// The pair goes behind the first line whose next line has a greater row; or that has the pair's row and a lesser
// column, the next line a greater column; or that is the last. nullopt for an empty list, which has no line to go
// behind.
std::optional<ListWithPair> InsertPair(std::span<const PixelPair> lines, const PixelPair& added);

// The list as a .bad file's text.
std::string BadListText(std::span<const PixelPair> lines);

}  // namespace kelvo
