// Zoom and pan: the commands 200 to 217, by which keys, wheel and panel move the picture.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <optional>

namespace kelvo {

// The six values that place the picture: pan in image pixels, zoom 1 to 16, offset in screen units.
struct DisplayGeometry {
    std::int32_t xpan = 0;
    std::int32_t ypan = 0;
    std::int32_t xzoom = 1;
    std::int32_t yzoom = 1;
    std::int32_t xoffset = 0;
    std::int32_t yoffset = 0;
    friend bool operator==(const DisplayGeometry&, const DisplayGeometry&) = default;
};

// What limits them: the frame on view, the region of interest, and the view, all in pixels.
struct ViewLimits {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t hroi = 0;
    std::int32_t vroi = 0;
    std::int32_t viewWidth = 0;
    std::int32_t viewHeight = 0;
};

// The image pixel in the middle of what is shown; {0, 0} while a zoom is below 1.
Point ViewCentre(const DisplayGeometry& geometry, const ViewLimits& limits);

// The geometry after a command; nullopt where it is refused because a value already stands at its limit (or beyond an
// upper one), and for ids that aren't zoom or pan. After a zoom the pivot pixel stays as near to the middle as the
// frame allows. All divisions truncate.
std::optional<DisplayGeometry> ZoomPanned(int id, const DisplayGeometry& geometry, const ViewLimits& limits,
                                          Point pivot);

DisplayGeometry GeometryInForce();
// SetDisplayGeometry; with the image cursor on, the pointer stays over its pixel.
void PlacePicture(const DisplayGeometry& geometry);

// Carries a command out on the picture. With the image cursor on, the picture moves around it and the pointer stays
// over its pixel. A command at its limit does nothing, silently.
void ZoomPanCommand(int id);

}  // namespace kelvo
