// Pictures on paper.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Prints a capture of the whole window; 1, or 0 where no printer takes it, which the operator is told in a box.
int PrintImage(HWND window);

}  // namespace kelvo
