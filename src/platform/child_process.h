// A program of the machine's that is handed bytes: started with its arguments, written to, and waited for. Nothing of
// it stays: whoever drops it before its end ends it.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

class ChildProcess {
  public:
    // Looked for as the shell does (PATH). A signal from the terminal's keys doesn't reach it. Its standard input is
    // what is written here, its output goes nowhere. nullopt where there is no such program, or the machine starts
    // none.
    static std::optional<ChildProcess> Start(const std::vector<std::string>& programAndArguments);
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    // False where it takes no more: it has ended, or hasn't read for half a minute.
    bool Write(std::span<const std::byte> bytes);
    // The end of its input; waits for its own end. True where it ended with 0; false also where it took more than two
    // minutes and was ended.
    bool Finish();
    // The last line that it wrote to its error stream so far, without control characters; empty: none.
    std::string LastError();

  private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using ErrorFile = std::unique_ptr<std::FILE, CloseFile>;
    ChildProcess(pid_t process, int input, ErrorFile errors);
    void CloseInput();

    pid_t process_ = -1;
    int input_ = -1;
    ErrorFile errors_;
};

}  // namespace kelvo
