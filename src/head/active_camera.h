// The active camera's section, read where another one may have been in force before.
#pragma once

namespace kelvo {

// ReadActiveSection (grabber/board.h): where the frames have another size than before, what was made
// for the old one is dropped (FrameSizeChanged); where the head hangs on another port, the link is closed, so that the
// next client reaches the new one.
void ReadActiveCamera();

}  // namespace kelvo
