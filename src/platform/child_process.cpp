#include "platform/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <string_view>
#include <thread>
#include <utility>

namespace kelvo {

namespace {

constexpr int kMostWaitToWriteMs = 30'000;
constexpr std::chrono::seconds kMostWaitForEnd(120);
constexpr std::chrono::milliseconds kLookAgain(10);

// Which file of ours becomes which of the child's first three.
class FileActions {
  public:
    FileActions() { posix_spawn_file_actions_init(&actions_); }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    void Hand(int ours, int theirs) { posix_spawn_file_actions_adddup2(&actions_, ours, theirs); }
    void Discard(int theirs) { posix_spawn_file_actions_addopen(&actions_, theirs, "/dev/null", O_WRONLY, 0); }
    const posix_spawn_file_actions_t* Get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

// A group of its own: Ctrl+C in a terminal is for the program that started it, which ends it when it is done with it.
class OwnGroup {
  public:
    OwnGroup()
    {
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP);
        posix_spawnattr_setpgroup(&attributes_, 0);
    }
    ~OwnGroup() { posix_spawnattr_destroy(&attributes_); }
    OwnGroup(const OwnGroup&) = delete;
    OwnGroup& operator=(const OwnGroup&) = delete;
    const posix_spawnattr_t* Get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

std::optional<pid_t> Spawn(const std::vector<std::string>& words, int input, int errors)
{
    FileActions actions;
    actions.Hand(input, STDIN_FILENO);
    actions.Discard(STDOUT_FILENO);
    actions.Hand(errors, STDERR_FILENO);
    std::vector<std::string> own = words;
    std::vector<char*> arguments;
    arguments.reserve(own.size() + 1);
    for (std::string& word : own) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const OwnGroup group;
    pid_t process = -1;
    const int fault = posix_spawnp(&process, arguments.front(), actions.Get(), group.Get(), arguments.data(), environ);
    return fault == 0 ? std::optional(process) : std::nullopt;
}

}  // namespace

std::optional<ChildProcess> ChildProcess::Start(const std::vector<std::string>& programAndArguments)
{
    if (programAndArguments.empty()) return std::nullopt;
    ErrorFile errors(std::tmpfile());
    // A socket in place of a pipe: writing to one whose reader is gone gives an error, and no signal.
    std::array<int, 2> ends{};
    if (!errors || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return std::nullopt;
    const std::optional<pid_t> process = Spawn(programAndArguments, ends[1], fileno(errors.get()));
    close(ends[1]);
    if (!process) {
        close(ends[0]);
        return std::nullopt;
    }
    return ChildProcess(*process, ends[0], std::move(errors));
}

ChildProcess::ChildProcess(pid_t process, int input, ErrorFile errors)
    : process_(process), input_(input), errors_(std::move(errors))
{
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : process_(std::exchange(other.process_, -1)),
      input_(std::exchange(other.input_, -1)),
      errors_(std::move(other.errors_))
{
}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept
{
    std::swap(process_, other.process_);
    std::swap(input_, other.input_);
    std::swap(errors_, other.errors_);
    return *this;
}

ChildProcess::~ChildProcess()
{
    CloseInput();
    if (process_ < 0) return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

void ChildProcess::CloseInput()
{
    if (input_ >= 0) close(std::exchange(input_, -1));
}

bool ChildProcess::Write(std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        pollfd waited{.fd = input_, .events = POLLOUT, .revents = 0};
        const int ready = poll(&waited, 1, kMostWaitToWriteMs);
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return false;
        const ssize_t taken = send(input_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (taken < 0 && errno != EINTR && errno != EAGAIN) return false;
        if (taken > 0) bytes = bytes.subspan(static_cast<std::size_t>(taken));
    }
    return true;
}

bool ChildProcess::Finish()
{
    CloseInput();
    const auto end = std::chrono::steady_clock::now() + kMostWaitForEnd;
    while (process_ >= 0) {
        int status = 0;
        const pid_t ended = waitpid(process_, &status, WNOHANG);
        if (ended == process_) {
            process_ = -1;
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        }
        if (ended < 0 && errno != EINTR) process_ = -1;
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(kLookAgain);
    }
    return false;
}

std::string ChildProcess::LastError()
{
    constexpr off_t kLongestLine = 2000;
    const int file = fileno(errors_.get());
    const off_t length = lseek(file, 0, SEEK_END);
    std::array<char, kLongestLine> block{};
    const ssize_t read = pread(file, block.data(), block.size(), std::max<off_t>(0, length - kLongestLine));
    std::string_view text(block.data(), read > 0 ? static_cast<std::size_t>(read) : 0);
    while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ') text.remove_suffix(1);
    std::string line(text.substr(text.find_last_of("\r\n") + 1));
    std::erase_if(line, [](char c) { return static_cast<unsigned char>(c) < ' '; });
    return line;
}

}  // namespace kelvo
