// The saturation overlay: marks in the picture at each pixel whose raw count stands at an end of the converter, where a
// count tells nothing of the flux any more. Correction hides that: it makes ordinary values of them.
//
// Marks are a layer over the picture; FrameBitmap and what is saved or copied from it stay as they are. They are found
// once a frame, in one pass, from the raw frame of live or frozen video, or from the stored counts of a file whose
// header tells that they are raw. For any other file the menu item stands gray.
#pragma once

#include "display/frame_bitmap.h"
#include "pixel/saturation.h"

#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

enum SaturationMark : std::uint8_t { kNotSaturated = 0, kSaturatedLow = 1, kSaturatedHigh = 2 };

// A mark for each pixel of the picture's bitmap, row-major from the top.
struct SaturationMarks {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> marks;  // SaturationMark; keeps its block while the size stays
};

// Marks the part of a frame that the picture shows. rect: as the frame's bitmap was made from it (rows start at row x
// (width + left) + left; its top shortens the picture at the bottom). counts: the frame in image order.
void MarkStoredCounts(std::span<const std::int16_t> counts, const FrameRect& rect, SaturationMarks& result);
// The same of a raw frame in readout order through decomList (image order). An index that leads nowhere isn't marked.
void MarkRawCounts(std::span<const std::int16_t> raw, std::span<const std::uint32_t> decomList, const FrameRect& rect,
                   SaturationMarks& result);

// Two colours (0x00RRGGBB) that stand out from all of a map's and from each other: for the low end and the high end.
struct MarkColors {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
};
MarkColors ColorsAgainst(std::span<const std::uint8_t> colorMap);

// At start: on or off as it was at the end (key SaturationOverlay of section View).
void OpenSaturationOverlay();
// The command of the View menu.
void ToggleSaturationOverlay();

// Off, and offered.
void ResetSaturationOverlay();

}  // namespace kelvo
