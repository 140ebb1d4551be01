#include "shell/unbuilt.h"

namespace kelvo {

void InitUserModules() {}
void BuildTiffTemplate() {}

}  // namespace kelvo
