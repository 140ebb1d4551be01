// The colour scale: a bar at the right edge of the picture's area with the 256 colours of the map in force, and the
// values that they stand for, in the unit on view (display/scale_line.h). Below its lower end all is the first colour,
// from its upper end on the last.
//
// It follows map, contrast, brightness, unit, range and window at the next picture, at once when the panel's unit
// changes, and a quarter of a second later otherwise. It is a window of its own in the main window: the picture beneath
// stays as it is and scrolls clear of it.
#pragma once

namespace kelvo {

// At start: shown or not as it was at the end (key ColorScale of section View).
void OpenColorScale();
// The command of the View menu.
void ToggleColorScale();

// After a change of the main window's size.
void PlaceColorScale();
// After a change of what it shows: paints it again if it differs.
void FollowDisplay();

// Nothing is shown; its window is gone.
void ResetColorScale();

}  // namespace kelvo
