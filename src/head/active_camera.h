// The active camera's section, read where another one may have been in force before.
#pragma once

namespace kelvo {

// Reads the section of ActiveCamera into ActiveConfig. Where the frames have another size than before, what was made
// for the old one is dropped (FrameSizeChanged); where the head hangs on another port, the link is closed, so that the
// next client reaches the new one.
void ReadActiveCamera();

}  // namespace kelvo
