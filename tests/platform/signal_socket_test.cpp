// The socket on which a signal comes, as another process sees it.
#include "platform/signal_socket.h"

#include "platform/digest.h"
#include "support/operator.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

namespace kelvo {
namespace {

namespace fs = std::filesystem;

class SignalSocketTest : public testing::Test {
  protected:
    SignalSocketTest()
    {
        fs::create_directory(directory / "runtime");
        fs::permissions(directory / "runtime", fs::perms::owner_all);
        setenv("XDG_RUNTIME_DIR", (directory / "runtime").c_str(), 1);
        fs::create_directory(directory / "data");
        path = SignalSocketPath(directory / "data");
    }
    std::unique_ptr<SignalSocket> Open()
    {
        return SignalSocket::Open(path, [this] { ++signals; });
    }

    TempDirectory directory;
    std::string path;
    int signals = 0;
};

TEST_F(SignalSocketTest, IsNamedAsTheEventInADirectoryOfTheDataDirectory)
{
    const std::string mark = Sha256Of(fs::canonical(directory / "data").string()).substr(0, 16);
    EXPECT_EQ(path, directory / ("runtime/kelvo-" + mark + "/{5A963C81-A69C-11d0-AC11-00A024BBB05E}"));
    fs::create_directory_symlink(directory / "data", directory / "link");
    EXPECT_EQ(SignalSocketPath(directory / "link"), path);
    EXPECT_NE(SignalSocketPath(directory.Path()), path) << "another Kelvo's";
}

TEST_F(SignalSocketTest, LiesElsewhereWhereTheRuntimeDirectoryIsOpenToOthers)
{
    fs::permissions(directory / "runtime", fs::perms::group_read, fs::perm_options::add);
    EXPECT_NE(SignalSocketPath(directory / "data"), path);
    unsetenv("XDG_RUNTIME_DIR");
    const std::string without = SignalSocketPath(directory / "data");
    EXPECT_NE(without, path);
    struct stat status {};
    ASSERT_EQ(stat(fs::path(without).parent_path().parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(SignalSocketTest, TellsOfASignalOnceForAllThatCame)
{
    const auto socket = Open();
    ASSERT_TRUE(socket);
    EXPECT_EQ(signals, 0);
    EXPECT_TRUE(SendSignal(path));
    socket->TakeSignals();
    EXPECT_EQ(signals, 1);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(SendSignal(path));
    socket->TakeSignals();
    socket->TakeSignals();
    EXPECT_EQ(signals, 2);
}

TEST_F(SignalSocketTest, NeverBlocksItsSender)
{
    const auto socket = Open();
    for (int i = 0; i < 2000; ++i) ASSERT_TRUE(SendSignal(path));
    socket->TakeSignals();
    EXPECT_EQ(signals, 1);
}

TEST_F(SignalSocketTest, OnlyTheUserMayEnter)
{
    const auto socket = Open();
    struct stat status {};
    ASSERT_EQ(stat(fs::path(path).parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(SignalSocketTest, IsGoneWithItsOwner)
{
    Open().reset();
    EXPECT_FALSE(fs::exists(path));
    EXPECT_TRUE(fs::is_empty(directory / "runtime"));
    EXPECT_FALSE(SendSignal(path));
    EXPECT_FALSE(SendSignal(""));
    EXPECT_FALSE(SendSignal(std::string(200, 'x')));
}

TEST_F(SignalSocketTest, ReplacesADeadOwnersAndLeavesALivingOnes)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    fs::create_directory(fs::path(path).parent_path());
    fs::permissions(fs::path(path).parent_path(), fs::perms::owner_all);
    const int dead = socket(AF_UNIX, SOCK_DGRAM, 0);
    ASSERT_EQ(bind(dead, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(dead);  // the name stays, as after a kill

    const auto socket = Open();
    ASSERT_TRUE(socket);
    EXPECT_FALSE(Open()) << "one listens";
    EXPECT_TRUE(SendSignal(path));
    socket->TakeSignals();
    EXPECT_EQ(signals, 1);
}

TEST_F(SignalSocketTest, TakesNoDirectoryThatOthersMayEnter)
{
    fs::create_directory(fs::path(path).parent_path());
    fs::permissions(fs::path(path).parent_path(), fs::perms::owner_all | fs::perms::others_all);
    EXPECT_FALSE(Open());
}

}  // namespace
}  // namespace kelvo
