// The mark around one pixel of the picture: it shows the operator where an entry of a list lies. It is painted over the
// picture, so that frames, stored and live, stay clean.
#pragma once

#include "calib/orientation.h"
#include "pixel/pixel_pair.h"
#include "platform/types.h"
#include "state/camera_config.h"

#include <cstdint>
#include <vector>

namespace kelvo {

// Where a detector of the list shows in the picture: rotated, then its columns and its rows mirrored. The sides are
// Hactive and Vactive themselves (a rotated row is counted from Hactive too), so that a turned entry lies one pixel
// further on than its detector.
PixelPair DisplayedPlace(const PixelPair& detector, const Orientation& orientation, const CameraConfig& config);

// The pixels of an outline one pixel outside a pixel, in a picture of size columns (x) and rows (y). An edge in row or
// column 0 isn't drawn; right and bottom end in the last column and row.
std::vector<PixelPair> OutlineOf(const PixelPair& pixel, const Point& size);

// Shows the mark in the colour of count 0, in place of the one that stands.
void MarkPixel(const PixelPair& pixel);
void RemoveMark();

// No pixel is marked; nothing is painted.
void ResetMark();

}  // namespace kelvo
