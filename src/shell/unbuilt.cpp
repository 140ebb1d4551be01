#include "shell/unbuilt.h"

namespace kelvo {

void ReadGraphicsKeys() {}
void InitUserModules() {}
void RegisterExternalSignal() {}
void BuildTiffTemplate() {}

void SignalExternalThread() {}

}  // namespace kelvo
