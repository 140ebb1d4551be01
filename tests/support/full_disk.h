// A disk that fills up: no file can grow beyond so many bytes.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace kelvo {

// Until the process ends, for one that was made for it.
inline void LimitFiles(rlim_t bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);  // the write fails instead
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    limit.rlim_cur = bytes;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

// As long as it lives.
class FullDisk {
  public:
    explicit FullDisk(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        LimitFiles(bytes);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    rlimit before_{};
};

}  // namespace kelvo
