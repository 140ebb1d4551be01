#include "shell/unbuilt.h"

namespace kelvo {

void ReadGraphicsKeys() {}
void InitUserModules() {}

}  // namespace kelvo
