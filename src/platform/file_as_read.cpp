#include "platform/file_as_read.h"

#include <sys/stat.h>

#include <ctime>

namespace kelvo {

namespace {

std::int64_t NsOf(const timespec& time)
{
    constexpr std::int64_t kNsPerSecond = 1000000000;
    return static_cast<std::int64_t>(time.tv_sec) * kNsPerSecond + time.tv_nsec;
}

}  // namespace

FileAsRead FileAsRead::Of(const std::string& path)
{
    constexpr std::int64_t kStepNs = 100000000;  // file times advance in steps of some milliseconds
    FileAsRead file;
    file.identity_ = IdentityOf(path);
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    file.isSettled_ = file.identity_.bytes < 0 || NsOf(now) - file.identity_.changedNs > kStepNs;
    return file;
}

bool FileAsRead::IsStill(const std::string& path) const
{
    return isSettled_ && IdentityOf(path) == identity_;
}

FileAsRead::Identity FileAsRead::IdentityOf(const std::string& path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return {};
    return {.device = status.st_dev,
            .inode = status.st_ino,
            .bytes = status.st_size,
            .modifiedNs = NsOf(status.st_mtim),
            .changedNs = NsOf(status.st_ctim)};
}

}  // namespace kelvo
