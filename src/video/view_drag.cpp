#include "video/view_drag.h"

#include "display/display_pipeline.h"
#include "platform/pointer.h"
#include "ui/undo.h"

#include <optional>

namespace kelvo {

namespace {

struct Drag {
    Point taken;  // on the picture's surface
    Pointer shapeBefore = Pointer::kArrow;
};
std::optional<Drag> drag;

}  // namespace

void TakePicture(Point at)
{
    if (drag || !FrameBitmap) return;
    drag = {at, CurrentPointer()};
    SetPointer(Pointer::kHand);
    BeginGesture({});
}

bool DragPicture(Point at)
{
    if (!drag) return false;
    // What was taken comes back under the pointer.
    const Point view = ViewPosition();
    SetViewPosition({view.x + drag->taken.x - at.x, view.y + drag->taken.y - at.y});
    return true;
}

void ReleasePicture()
{
    if (!drag) return;
    SetPointer(drag->shapeBefore);
    drag.reset();
    EndGesture();
}

void ResetViewDrag()
{
    drag.reset();
}

}  // namespace kelvo
