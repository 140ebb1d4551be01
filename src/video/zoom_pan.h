// Zoom and pan. The commands 200 to 217, by which keys and panel move the picture, change its pan; the wheel, and the
// commands of the View menu, change the zoom and move the view over the picture alone (ViewPosition).
#pragma once

#include "platform/types.h"
#include "video/video.h"

#include <cstdint>
#include <optional>

namespace kelvo {

// What limits a geometry: the frame on view, the region of interest, and the view, all in pixels.
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

// The wheel: that many steps of zoom, up to the limits that the commands have, about a point of the main window: the
// pixel there stays under it. Pan and grab are left alone. Nothing happens where the commands' zoom would be lost.
void ZoomAbout(int steps, Point at);
// The largest zoom at which the whole picture is seen, with the picture in the middle; 1 where none is small enough.
void FitView();
// Zoom 1, about the middle of the view.
void ShowOneToOne();

}  // namespace kelvo
