#include "ui/window_file.h"

#include "platform/profile.h"
#include "state/windows.h"

namespace kelvo {

std::string WindowFilePath()
{
    return StateDir + "/window.ini";
}

std::int32_t WindowFileInt(std::string_view section, std::string_view key, std::int32_t defaultValue)
{
    return GetPrivateProfileInt(section, key, defaultValue, WindowFilePath());
}

std::string WindowFileText(std::string_view section, std::string_view key)
{
    return GetPrivateProfileString(section, key, "", WindowFilePath());
}

void WriteWindowFile(std::string_view section, std::string_view key, std::string_view value)
{
    const std::string path = WindowFilePath();
    if (HasProfileKey(section, key, path) && GetPrivateProfileString(section, key, "", path) == value) return;
    WritePrivateProfileString(section, key, value, path);
}

}  // namespace kelvo
