// A picture that stands still: who measures a frame shows it, with marks that are drawn into a copy, for as long as the
// operator looks at the figures.
#pragma once

namespace kelvo {

// While one lives the live timer, replay and playing neither read nor draw. Frames that pass meanwhile count as missed,
// not as lost. What who holds the picture reads and draws itself is its own.
class HeldPicture {
  public:
    HeldPicture();
    ~HeldPicture();
    HeldPicture(const HeldPicture&) = delete;
    HeldPicture& operator=(const HeldPicture&) = delete;
};

bool PictureIsHeld();

}  // namespace kelvo
