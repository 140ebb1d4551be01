#include "platform/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

namespace kelvo {

namespace {

// While it lives, writing to a pipe without a reader is an error for this thread, and no signal.
class NoPipeSignal {
  public:
    NoPipeSignal()
    {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        wasPending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &former_);
    }
    ~NoPipeSignal()
    {
        const timespec atOnce{};
        if (!wasPending_) sigtimedwait(&pipe_, nullptr, &atOnce);
        pthread_sigmask(SIG_SETMASK, &former_, nullptr);
    }
    NoPipeSignal(const NoPipeSignal&) = delete;
    NoPipeSignal& operator=(const NoPipeSignal&) = delete;

  private:
    sigset_t pipe_{};
    sigset_t former_{};
    bool wasPending_ = false;
};

}  // namespace

void HoldStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const bool isClosed = fcntl(stream, F_GETFD) < 0 && errno == EBADF;
        // The lowest free number is taken, which is this one; the wrong way round, so that it neither gives nor takes.
        if (isClosed && open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) return;
    }
}

void WriteErrorStream(std::string_view text)
{
    const NoPipeSignal quietly;
    while (!text.empty()) {
        const ssize_t taken = write(STDERR_FILENO, text.data(), text.size());
        if (taken <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(taken));
    }
}

}  // namespace kelvo
