// The image cursor and the trackball mode: what the pointer's place in the picture means.
//
// Both confine the pointer to the picture's area, between the panel and the status line.
#pragma once

#include "platform/types.h"
#include "state/windows.h"

#include <cstdint>

namespace kelvo {

// 1: pointer motion changes brightness and contrast.
extern const std::int32_t& TrackballMode;

// Where the pointer rests in the mode, in the main window's client coordinates.
constexpr std::int32_t TrackballCentreX = 320;
constexpr std::int32_t TrackballCentreY = 240;

// What maps the pointer to a pixel: the frame, the pan, the pixels shown, and the area they are counted over.
struct CursorMapping {
    Point frame;  // width, height
    Point pan;
    Point shown;
    Point clip;  // width, height of the area
};
// The pixel under a pointer, counted from the area's top left corner; always inside the frame (0, 0 for an empty area).
Point PixelUnder(double x, double y, const CursorMapping& mapping);
// The place over whose pixel PixelUnder gives pixel: its middle as nearly as the pointer's whole steps allow.
Point PlaceOver(Point pixel, const CursorMapping& mapping);

// Confines the pointer to the picture's area and gives the image pixel under it.
Point ImageCursorPosition();
// Puts the pointer back over an image pixel.
void PutPointerOverPixel(Point pixel);

// Enters or leaves the trackball mode (F10, right mouse button). Leaving writes Contrast and Brightness to kelvo.ini.
void TrackballToggle();
// To be called at each pointer motion in the mode: sideways motion moves brightness in proportion, up and down motion
// moves contrast by one beyond 20 pixels. The pointer goes back to its rest.
void TrackballMotion();

// The change of contrast and brightness for a motion by (dx, dy) pixels.
struct TrackballLevels {
    std::int32_t contrast = 0;
    std::int32_t brightness = 0;
    friend bool operator==(const TrackballLevels&, const TrackballLevels&) = default;
};
TrackballLevels LevelsAfterMotion(TrackballLevels levels, int dx, int dy);

// Off, and nothing remembered of it.
void ResetImageCursor();

}  // namespace kelvo
