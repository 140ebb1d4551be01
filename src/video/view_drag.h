// The picture dragged with the middle button: the view moves over it, the pan stays.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Points as the main window's mouse messages give them. The picture follows the pointer from where it was taken, as far
// as some of it stays in sight; meanwhile the pointer is a closed hand.
void TakePicture(Point at);
bool DragPicture(Point at);  // false: none is being dragged
void ReleasePicture();

// None is being dragged.
void ResetViewDrag();

}  // namespace kelvo
