// Where a picture lies on a page, and which part of it a band of the page takes: pure arithmetic in the printer's
// pixels, from the top left of what can be printed on. Rectangles' right and bottom are exclusive.
#pragma once

#include "platform/print.h"
#include "platform/types.h"

#include <optional>

namespace kelvo {

// How large a picture is printed.
constexpr int kPrintBestFit = 1;  // as wide as the page, in its own proportions
constexpr int kPrintStretch = 2;  // the whole page
constexpr int kPrintScale = 3;    // each pixel so many of the printer's, in either direction

// The rectangle of a picture of size columns and rows, which may reach beyond the page; empty for an empty picture. A
// best fit's height is truncated from
//     page width x rows x vertical pixels per inch / (columns x horizontal pixels per inch).
// Sides beyond 32 bits are cut to their limit.
Rect PrintRectangle(Point size, int option, int xScale, int yScale, const PrinterPage& page);

// What reaches beyond the page isn't printed.
bool ReachesBeyond(const Rect& rectangle, const PrinterPage& page);

// A stripe of the page, as a printer may ask for one after the other.
struct PrintBand {
    Rect area;
    bool hasGraphics = true;
};

// What of a picture goes where: a part of the page, and the part of the picture, counted from its top, that is
// stretched to it.
struct BandCopy {
    Rect destination;
    Rect source;
    friend bool operator==(const BandCopy&, const BandCopy&) = default;
};

// The edges of the part are the nearest whole pixels, halves away from the top left. nullopt where the band shows
// nothing of the picture: it lies beside the rectangle, holds no graphics, or less than half a pixel.
std::optional<BandCopy> CopyOfBand(const Rect& rectangle, const PrintBand& band, Point size);

}  // namespace kelvo
