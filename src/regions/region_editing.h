// Regions drawn, moved and resized by hand: what presses of the left button on the picture and keys of the main window
// mean while the window REGIONS is open and shows them. A drag is one gesture (ui/undo.h), arrow keys that follow each
// other are one.
#pragma once

#include "platform/types.h"
#include "regions/region_picture.h"

#include <cstdint>
#include <optional>

namespace kelvo {

// What a drag over the picture makes; nullopt: it selects and moves. It holds until it is changed.
std::optional<RegionShape> DrawnShape();
void DrawShape(std::optional<RegionShape> shape);

// Points as the main window's mouse messages give them. False: nothing of the regions', the press means what it always
// does. A press on the ground beside the picture changes nothing. On the picture it begins the shape that is drawn, or
// takes hold of the selected region's grip, of a region, or selects none. A shape that was drawn without moving is
// none, except a point.
bool PressRegions(Point at);
bool DragRegions(Point at);  // false: none is being dragged
void EndRegionDrag();
// Escape: what is dragged is where it was, what is being drawn is none, and nothing is there to take back. False: none
// is being dragged.
bool GiveUpRegionDrag();

// A command of the main window: arrows move the selected region by a pixel, with Shift by ten, with Ctrl they resize
// it, Del removes it. False where none is selected or edited, or the command isn't one of these.
bool RegionTakesCommand(int id);

// A new region of a shape, a quarter of the frame on view wide and high, in the middle of it, selected; its number. 0
// with the reason in why.
std::int32_t AddRegionInTheMiddle(RegionShape shape, std::string& why);

// Nothing is edited or dragged.
void ResetRegionEditing();

}  // namespace kelvo
