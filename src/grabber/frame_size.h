// The size of the frame on view: of the stored one while a file is on view, otherwise of the camera's.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Columns (x) and rows (y). A hostile header or camera section may give any number.
Point FrameSizeOnView();

}  // namespace kelvo
