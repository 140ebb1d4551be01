#include "platform/machine.h"

#include "platform/profile.h"
#include "shell/windows.h"

namespace kelvo {

std::string PlatformFilePath()
{
    return DefaultDir + "/platform.ini";
}

std::string MachineSetting(std::string_view section, std::string_view key, std::string_view defaultValue)
{
    return GetPrivateProfileString(section, key, defaultValue, PlatformFilePath());
}

}  // namespace kelvo
