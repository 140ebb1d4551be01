// The image cursor and the trackball mode: what the pointer's place in the picture means.
//
// The cursor confines the pointer to the picture, the trackball mode to the picture's area between the panel and the
// status line.
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

// Confines the pointer to the picture, or to its area where nothing is painted, and gives the image pixel under it: the
// one that is painted there (display/display_pipeline.h, PixelUnder). Where the pointer can't be confined it is the
// nearest one.
Point ImageCursorPosition();
// Puts the pointer back over an image pixel, in its middle; the picture scrolls where that is out of sight.
void PutPointerOverPixel(Point pixel);

// Enters or leaves the trackball mode (F10, right mouse button). Leaving writes Contrast and Brightness to kelvo.ini.
void TrackballToggle();
// The same by the operator's hand: while the mode is on, the status line says how it ends; afterwards it has its
// earlier text again.
void ToggleTrackballMode();
// To be called at each pointer motion in the mode: sideways motion moves brightness in proportion, up and down motion
// moves contrast by one beyond 20 pixels. The pointer goes back to its rest. Where it can't be moved
// (PointerCanBeMoved), what counts is the way from where it last changed something.
void TrackballMotion();
// The pointer has left the window: where it comes back is no motion.
void TrackballPointerLeft();

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
