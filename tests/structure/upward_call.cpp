// A call from the display to the main window's commands, as no floor may make it.
#include "platform/types.h"

namespace kelvo {

LRESULT RunCommand(HWND window, int id);  // shell/commands.h

LRESULT CallUpward()
{
    return RunCommand(nullptr, 0);
}

}  // namespace kelvo
