#include "platform/disk_space.h"

#include "platform/faults.h"
#include "platform/files.h"

#include <sys/statvfs.h>

#include <filesystem>
#include <limits>
#include <string>

namespace kelvo {

namespace {

std::optional<std::int64_t> FreeBytesOf(const std::string& path)
{
    struct statvfs status {};
    if (statvfs(path.c_str(), &status) != 0) return std::nullopt;
    const double bytes = static_cast<double>(status.f_bavail) * static_cast<double>(status.f_frsize);
    constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
    return bytes < static_cast<double>(kMost) ? static_cast<std::int64_t>(bytes) : kMost;
}

}  // namespace

std::optional<std::int64_t> FreeDiskBytes(std::string_view path)
{
    if (FaultIsSet("little disk space")) return 1;
    const std::string resolved = AbsolutePath(path);
    const auto ofFile = FreeBytesOf(resolved);
    return ofFile ? ofFile : FreeBytesOf(std::filesystem::path(resolved).parent_path().string());
}

}  // namespace kelvo
