#include "ui/view_switch.h"

#include "platform/menu.h"
#include "platform/profile.h"
#include "state/windows.h"

namespace kelvo {

namespace {

constexpr const char* kSection = "View";

}  // namespace

bool ViewSwitchIsOn(const ViewSwitch& viewSwitch)
{
    return GetPrivateProfileInt(kSection, viewSwitch.key, 0, IniFilePath) != 0;
}

void KeepViewSwitch(const ViewSwitch& viewSwitch, bool on)
{
    WritePrivateProfileString(kSection, viewSwitch.key, on ? "1" : "0", IniFilePath);
    CheckMenuItem(hWndMain, viewSwitch.command, on);
}

}  // namespace kelvo
