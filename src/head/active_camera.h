// The active camera's section, read where another one may have been in force before.
#pragma once

namespace kelvo {

// Reads the section of ActiveCamera into ActiveConfig (ReadActiveSection of grabber/board.h, which drops frames and
// lists of another size). Where the head hangs on another port than before, the link is closed, so that the next client
// reaches the new one.
void ReadActiveCamera();

}  // namespace kelvo
