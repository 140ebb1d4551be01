#include "platform/standard_streams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>

namespace kelvo {
namespace {

// In a process of its own, whose streams are its own too. What it gives is the exit code.
int InAnotherProcess(int (*act)())
{
    const pid_t process = fork();
    if (process == 0) _exit(act());
    int status = 0;
    if (process < 0 || waitpid(process, &status, 0) != process) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(StandardStreams, NoFileTakesThePlaceOfAClosedOne)
{
    EXPECT_EQ(InAnotherProcess([] {
                  for (int stream = 0; stream < 3; ++stream) close(stream);
                  HoldStandardStreams();
                  char c = 0;
                  const bool isHeld = open("/dev/zero", O_RDWR) > 2;
                  return isHeld && read(0, &c, 1) < 0 && write(1, "x", 1) < 0 && write(2, "x", 1) < 0 ? 0 : 1;
              }),
              0);
}

TEST(StandardStreams, OpenOnesStayWhatTheyAre)
{
    EXPECT_EQ(InAnotherProcess([] {
                  std::array<int, 2> pipe{};
                  if (::pipe(pipe.data()) != 0 || dup2(pipe[0], 0) < 0 || dup2(pipe[1], 2) < 0) return 1;
                  HoldStandardStreams();
                  WriteErrorStream("told");
                  std::array<char, 8> read{};
                  const ssize_t bytes = ::read(0, read.data(), read.size());
                  return bytes > 0 && std::string(read.data(), static_cast<std::size_t>(bytes)) == "told" ? 0 : 2;
              }),
              0);
}

TEST(StandardStreams, AReaderOfTheErrorStreamMayGo)
{
    EXPECT_EQ(InAnotherProcess([] {
                  std::array<int, 2> pipe{};
                  if (::pipe(pipe.data()) != 0 || dup2(pipe[1], 2) < 0) return 1;
                  close(pipe[0]);
                  close(pipe[1]);
                  std::signal(SIGPIPE, SIG_DFL);
                  WriteErrorStream("told");
                  sigset_t pending;
                  sigpending(&pending);
                  if (sigismember(&pending, SIGPIPE) != 0) return 2;
                  std::raise(SIGPIPE);  // it is as deadly as before
                  return 3;
              }),
              -SIGPIPE);
}

}  // namespace
}  // namespace kelvo
