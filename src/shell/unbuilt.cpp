#include "shell/unbuilt.h"

namespace kelvo {

void ReadGraphicsKeys() {}
void InitUserModules() {}
void BuildTiffTemplate() {}

}  // namespace kelvo
