#include "export/frame_sink.h"

#include "platform/files.h"

#include <cerrno>
#include <cstring>

namespace kelvo {

std::string WhyTargetIsRefused(const std::string& path, bool replace)
{
    if (DirectoryExists(path)) return path + " is a directory";
    return !replace && FileExists(path) ? path + " stands already" : std::string();
}

std::string CantBeWritten(const std::string& path)
{
    return path + " can't be written: " + std::strerror(errno);
}

std::string DiskRefuses(const std::string& path)
{
    return path + " can't be written: the disk refuses";
}

}  // namespace kelvo
