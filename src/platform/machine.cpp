#include "platform/machine.h"

#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"

#include <sys/stat.h>
#include <unistd.h>

namespace kelvo {

namespace {

constexpr mode_t kOwnersOnly = 0700;

}  // namespace

std::string PlatformFilePath()
{
    return KelvoDirectory() + "/platform.ini";
}

std::string MachineSetting(std::string_view section, std::string_view key, std::string_view defaultValue)
{
    return GetPrivateProfileString(section, key, defaultValue, PlatformFilePath());
}

bool IsPrivateDirectory(const std::string& directory)
{
    struct stat status {};
    return lstat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == getuid() &&
           (status.st_mode & 077U) == 0;
}

std::string SocketDirectory()
{
    std::string ofSession = Format("/run/user/%u", getuid());
    if (IsPrivateDirectory(ofSession) && access(ofSession.c_str(), W_OK) == 0) return ofSession;
    std::string own = Format("/tmp/kelvo-%u", getuid());
    mkdir(own.c_str(), kOwnersOnly);  // it may stand already
    return IsPrivateDirectory(own) ? own : std::string();
}

}  // namespace kelvo
