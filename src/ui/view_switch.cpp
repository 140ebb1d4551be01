#include "ui/view_switch.h"

#include "platform/menu.h"
#include "state/windows.h"
#include "ui/window_file.h"

namespace kelvo {

bool ViewSwitchIsOn(const ViewSwitch& viewSwitch)
{
    return WindowFileInt(kViewSection, viewSwitch.key, 0) != 0;
}

void KeepViewSwitch(const ViewSwitch& viewSwitch, bool on)
{
    WriteWindowFile(kViewSection, viewSwitch.key, on ? "1" : "0");
    CheckMenuItem(hWndMain, viewSwitch.command, on);
}

}  // namespace kelvo
