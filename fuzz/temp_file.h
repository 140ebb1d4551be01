// A file of a fuzz target's own, or one and another beside it, written anew for each input and gone with the process.
#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

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
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }

    const std::string& Put(const std::uint8_t* data, std::size_t size)
    {
        Write(path_, data, size);
        return path_;
    }
    // Under the same name with an ending.
    void PutBeside(const char* ending, const std::uint8_t* data, std::size_t size)
    {
        Write(path_ + ending, data, size);
    }

  private:
    static void Write(const std::string& path, const std::uint8_t* data, std::size_t size)
    {
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (descriptor < 0 || ::write(descriptor, data, size) != static_cast<ssize_t>(size)) abort();
        close(descriptor);
    }

    std::string directory_;
    std::string path_;
};

}  // namespace kelvo
