#include "shell/unbuilt.h"

namespace kelvo {

void ReadGraphicsKeys() {}

}  // namespace kelvo
