#include "shell/unbuilt.h"

namespace kelvo {

void InitUserModules() {}

}  // namespace kelvo
