#include "platform/one_process.h"

#include "platform/files.h"
#include "support/operator.h"
#include "support/temp_directory.h"

#include <QLockFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

namespace kelvo {
namespace {

using ::testing::StartsWith;

constexpr int kLong = 60'000;  // ms: more than it ever takes

void NobodyCalls(const Handover& /*handover*/)
{
    FAIL() << "nobody hands anything over";
}

ClaimResult ClaimFor(const std::string& directory, int waitMs)
{
    return ClaimDataDirectory(directory, {}, NobodyCalls, waitMs);
}

// A process that holds the lock of a directory, and answers nobody.
class SilentOwner {
  public:
    explicit SilentOwner(const std::string& directory)
    {
        int ready[2] = {};
        EXPECT_EQ(pipe(ready), 0);
        process_ = fork();
        if (process_ == 0) {
            QLockFile lock(QString::fromStdString(directory + "/kelvo.lock"));
            lock.setStaleLockTime(0);
            const char got = lock.tryLock(0) ? 'y' : 'n';
            if (write(ready[1], &got, 1) != 1) _exit(1);
            for (;;) pause();
        }
        char got = 0;
        EXPECT_EQ(read(ready[0], &got, 1), 1);
        EXPECT_EQ(got, 'y');
        close(ready[0]);
        close(ready[1]);
    }
    ~SilentOwner() { Kill(); }
    SilentOwner(const SilentOwner&) = delete;
    SilentOwner& operator=(const SilentOwner&) = delete;

    void Kill()
    {
        if (process_ <= 0) return;
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
        process_ = 0;
    }
    pid_t Process() const { return process_; }

  private:
    pid_t process_ = 0;
};

TEST(OneProcess, HoldsADirectoryUntilItGivesItBack)
{
    TestOperator op;
    const TempDirectory directory;
    EXPECT_EQ(ClaimFor(directory.Path(), 0).claim, Claim::kHeld);
    EXPECT_THAT(FileContents(directory / "kelvo.lock"), StartsWith(std::to_string(getpid()) + "\n"));
    ReleaseDataDirectory();
    EXPECT_FALSE(std::filesystem::exists(directory / "kelvo.lock"));
    EXPECT_FALSE(std::filesystem::exists(HandoverLine(directory.Path())));
    EXPECT_EQ(ClaimFor(directory.Path(), 0).claim, Claim::kHeld);
}

TEST(OneProcess, LeavesWhatALivingProcessHolds)
{
    const TempDirectory directory;
    SilentOwner owner(directory.Path());
    const std::string before = FileContents(directory / "kelvo.lock");
    TestOperator op;
    const ClaimResult result = ClaimFor(directory.Path(), 200);
    EXPECT_EQ(result.claim, Claim::kRefused);
    EXPECT_EQ(result.owner, "process " + std::to_string(owner.Process()));
    EXPECT_EQ(FileContents(directory / "kelvo.lock"), before);
}

TEST(OneProcess, TakesOverWhatADeadProcessHeld)
{
    const TempDirectory directory;
    SilentOwner owner(directory.Path());
    owner.Kill();
    EXPECT_TRUE(std::filesystem::exists(directory / "kelvo.lock"));
    TestOperator op;
    EXPECT_EQ(ClaimFor(directory.Path(), 0).claim, Claim::kHeld);
    EXPECT_THAT(FileContents(directory / "kelvo.lock"), StartsWith(std::to_string(getpid()) + "\n"));
}

// A machine that lost its power leaves a lock that tells nothing; that it is held is known to the system, not by its
// text.
TEST(OneProcess, ALockThatTellsNothingCountsWhereItIsHeld)
{
    const TempDirectory directory;
    SilentOwner owner(directory.Path());
    PutFile(directory / "kelvo.lock", "");
    TestOperator op;
    EXPECT_EQ(ClaimFor(directory.Path(), 2300).claim, Claim::kRefused);
    owner.Kill();
    EXPECT_EQ(ClaimFor(directory.Path(), kLong).claim, Claim::kHeld);
}

// Its owner's number may long have gone to another process of that name.
TEST(OneProcess, ALockOfALivingProcessThatDoesntHoldItIsTakenOver)
{
    const TempDirectory directory;
    SilentOwner owner(directory.Path());
    const std::string text = FileContents(directory / "kelvo.lock");
    std::filesystem::remove(directory / "kelvo.lock");
    PutFile(directory / "kelvo.lock", text);
    TestOperator op;
    EXPECT_EQ(ClaimFor(directory.Path(), 200).claim, Claim::kRefused);
    EXPECT_EQ(ClaimFor(directory.Path(), kLong).claim, Claim::kHeld);
}

// From here nobody can tell whether it lives.
TEST(OneProcess, ALockOfAnotherMachineStays)
{
    TestOperator op;
    const TempDirectory directory;
    const std::string text = "4711\nkelvo\nfar-away\n\n\n";
    PutFile(directory / "kelvo.lock", text);
    const ClaimResult result = ClaimFor(directory.Path(), 2300);
    EXPECT_EQ(result.claim, Claim::kRefused);
    EXPECT_EQ(result.owner, "process 4711 on far-away");
    EXPECT_EQ(FileContents(directory / "kelvo.lock"), text);
}

TEST(OneProcess, GoesOnWithoutALockWhereNoFileCanBeMade)
{
    TestOperator op;
    const TempDirectory directory;
    PutFile(directory / "file", "");
    EXPECT_EQ(ClaimFor(directory / "file", 0).claim, Claim::kUnlocked);
    EXPECT_EQ(ClaimFor(directory / "file/data", 0).claim, Claim::kUnlocked);
    EXPECT_EQ(ClaimFor(directory / "none", 0).claim, Claim::kUnlocked);
}

TEST(OneProcess, HasALineOfItsOwnForEachDirectory)
{
    const TempDirectory directory;
    const std::string line = HandoverLine(directory.Path());
    std::filesystem::create_directory(directory / "other");
    std::filesystem::create_symlink(directory.Path(), directory / "other/link");
    EXPECT_NE(HandoverLine(directory / "other"), line);
    EXPECT_EQ(HandoverLine(directory / "other/link/"), line);
    EXPECT_EQ(HandoverLine(directory / "other/.."), line);

    const std::string deep = directory / std::string(200, 'x');
    std::filesystem::create_directories(deep + "/" + std::string(200, 'y'));
    EXPECT_LE(HandoverLine(deep + "/" + std::string(200, 'y')).size(), 107U);

    // Nobody else gets into the place where it lies.
    struct stat status {};
    ASSERT_EQ(stat(std::filesystem::path(line).parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 077U, 0U);
    EXPECT_EQ(status.st_uid, getuid());
}

// The environment of a terminal and that of a desktop lead to the same line.
TEST(OneProcess, FindsItsLineUnderAnyEnvironment)
{
    const TempDirectory directory;
    const std::string line = HandoverLine(directory.Path());
    for (const char* variable : {"XDG_RUNTIME_DIR", "TMPDIR", "HOME"}) {
        setenv(variable, directory.Path().c_str(), 1);
        EXPECT_EQ(HandoverLine(directory.Path()), line) << variable;
    }
}

}  // namespace
}  // namespace kelvo
