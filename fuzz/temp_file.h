// A file of a fuzz target's own, written anew for each input and gone with the process.
#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace kelvo {

class FuzzFile {
  public:
    FuzzFile()
    {
        const char* const base = getenv("TMPDIR");
        directory_ = std::string(base ? base : "/tmp") + "/kelvo-fuzz-XXXXXX";
        if (!mkdtemp(directory_.data())) abort();
        path_ = directory_ + "/input";
    }
    FuzzFile(const FuzzFile&) = delete;
    FuzzFile& operator=(const FuzzFile&) = delete;
    ~FuzzFile()
    {
        unlink(path_.c_str());
        rmdir(directory_.c_str());
    }

    const std::string& Put(const std::uint8_t* data, std::size_t size)
    {
        const int descriptor = open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (descriptor < 0 || ::write(descriptor, data, size) != static_cast<ssize_t>(size)) abort();
        close(descriptor);
        return path_;
    }

  private:
    std::string directory_;
    std::string path_;
};

}  // namespace kelvo
