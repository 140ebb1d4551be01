#include "platform/machine.h"

#include "platform/files.h"
#include "platform/profile.h"

namespace kelvo {

std::string PlatformFilePath()
{
    return KelvoDirectory() + "/platform.ini";
}

std::string MachineSetting(std::string_view section, std::string_view key, std::string_view defaultValue)
{
    return GetPrivateProfileString(section, key, defaultValue, PlatformFilePath());
}

}  // namespace kelvo
