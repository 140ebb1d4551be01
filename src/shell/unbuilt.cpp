#include "shell/unbuilt.h"

#include "platform/box.h"
#include "state/windows.h"

namespace kelvo {

void TellNotAvailable()
{
    MessageBox(hWndMain, "This command is not available in this version of Kelvo.", kMessageCaption,
               BoxIcon::kInformation);
}

void ReadGraphicsKeys() {}
void InitUserModules() {}
void RegisterExternalSignal() {}
void BuildTiffTemplate() {}

void SignalExternalThread() {}

}  // namespace kelvo
