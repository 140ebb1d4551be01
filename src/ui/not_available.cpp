#include "ui/not_available.h"

#include "platform/box.h"
#include "state/windows.h"

namespace kelvo {

void TellNotAvailable()
{
    MessageBox(hWndMain, "This command is not available in this version of Kelvo.", kMessageCaption,
               BoxIcon::kInformation);
}

}  // namespace kelvo
