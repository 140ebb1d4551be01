// The pointer: its shape, its place, and a rectangle that holds it. Where the system can't confine or move the pointer,
// the position that the logic reads is limited instead.
#pragma once

#include "platform/types.h"

namespace kelvo {

enum class Pointer { kArrow, kCross, kTrackball, kHourglass, kHand };
// The shape over the main window's client area. The hourglass shows over the whole program.
void SetPointer(Pointer shape);
Pointer CurrentPointer();

// Shows the hourglass, and at the end of the scope what was there before.
class Hourglass {
  public:
    Hourglass();
    ~Hourglass();
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;

  private:
    Pointer before_;
};

// Screen coordinates. For the main window's picture area they follow its scrolling (platform/window.h,
// SetScrollExtent).
Point GetPointerPosition();
void SetPointerPosition(Point screen);
// Some window systems let no program move the pointer; the fault "fixed pointer" makes any like them.
bool PointerCanBeMoved();
void ClipPointer(const Rect& screen);  // the position read lies inside: right and bottom exclusive
void ReleasePointerClip();
bool PointerIsClipped();

bool PointerPresent();  // a mouse or trackball; the fault "no mouse" takes it away

// The arrow, free and where it stands.
void ResetPointer();

}  // namespace kelvo
