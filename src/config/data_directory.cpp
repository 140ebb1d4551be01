#include "config/data_directory.h"

#include "platform/application.h"
#include "platform/files.h"
#include "platform/profile.h"

#include <filesystem>

namespace kelvo {

std::string DataDirectoryByDefault()
{
    const std::string winIni = UserConfigDirectory() + "/kelvo/win.ini";
    const std::string configured = GetPrivateProfileString("Kelvo", "DefaultDir", "", winIni);
    if (configured.empty()) return UserDataDirectory() + "/kelvo";
    // Whole before the working directory changes: all paths are formed from it.
    return std::filesystem::absolute(ResolvePath(configured)).lexically_normal().string();
}

}  // namespace kelvo
