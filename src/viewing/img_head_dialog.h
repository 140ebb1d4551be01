// Which header the operator would like in front of image files: a stored preference. Every file is written with the
// standard header, whatever is chosen here.
#pragma once

#include "platform/types.h"

namespace kelvo {

// 0 standard (512 bytes), 1 NIH (1024 bytes), 2 another, 3 none, in key ImageHeader of section Setup. 1 when the
// operator confirmed; 0: cancelled, or "Unable to display dialog" under "System Error".
int ImgHeadDialog(HWND window);

}  // namespace kelvo
