// Calibration runs that can't write their files, and runs that are killed while they do.
#include "calib/calibration_set.h"
#include "calib/last_set.h"
#include "calib/one_point_run.h"
#include "calib/run_fixture.h"
#include "state/cal_settings_write.h"
#include "support/full_disk.h"
#include "support/rounds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <set>

namespace kelvo {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr uid_t kNobody = 65534;
constexpr const char* kFormerStand =
    "The calibration is in force, but its files couldn't be saved.\nThe former ones stand:";

// Hundreds of processes are killed here: in memory, where there is such a place, nobody waits for a disk.
class InMemory {
  public:
    InMemory()
    {
        if (access("/dev/shm", W_OK | X_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
    }
};

class InterruptedRun : private InMemory, public CalibrationRun {
  protected:
    using Files = std::vector<std::string>;  // contents in the order of kSetExtensions, "none" where one isn't there

    Files FilesOf(const std::string& calPath) const
    {
        Files files;
        for (const std::string_view extension : kSetExtensions) {
            const std::string path = SetFile(calPath, extension);
            files.push_back(std::filesystem::exists(path) ? FileContents(path) : "none");
        }
        return files;
    }
    void ExpectNothingAside() const
    {
        for (const auto& entry : std::filesystem::directory_iterator(DefaultDir)) {
            const std::string name = entry.path().filename().string();
            EXPECT_THAT(name, Not(testing::EndsWith(".former")));
            EXPECT_NE(name, ".calibration.journal");
        }
    }

    // Runs the work in a process of its own, whose expectations count, and whose limits end with it.
    static void InAnotherProcess(const std::function<void()>& work)
    {
        const pid_t child = fork();
        if (child == 0) {
            work();
            _exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status));
        ASSERT_EQ(WEXITSTATUS(status), 0);
    }
    // Bytes beyond the limit don't fit on this disk.
    static void BecomeAnOrdinaryUser() { ASSERT_TRUE(geteuid() != 0 || setuid(kNobody) == 0); }

    // Two sets that differ in each of the six files.
    int RunOf(int generation)
    {
        Frame quiet = kLow;
        Frame flickering = kLow;
        quiet[2] = 980;
        flickering[2] = 1000;
        const bool even = generation % 2 == 0;
        write::calSet.CalSettings.BadDetFile.clear();  // a new list
        write::calSet.CalSettings.NumFrames = 2;
        write::calSet.CalSettings.PRSfile = InDirectory("nearccw.prs");
        AtLow(even ? std::vector<Frame>{kLow} : std::vector<Frame>{quiet, flickering}, even ? "20" : "21");
        AtHigh({kHigh}, even ? "25" : "26");
        return TwoPoint();
    }
};

TEST_F(InterruptedRun, OnADiskThatIsFullBeforeItSavesLeavesTheFormerSet)
{
    ASSERT_EQ(RunOf(0), 1);
    const Files former = FilesOf(LastCalPath());
    InAnotherProcess([&] {
        AtLow({kLow});
        AtHigh({kHigh}, "", [] { LimitFiles(8); });
        EXPECT_EQ(TwoPoint(), 0);
        EXPECT_THAT(BoxTexts(), Contains("Failed to save file: " + LastCalPath()));
        ExpectUnity();
    });
    EXPECT_EQ(FilesOf(LastCalPath()), former);
    ExpectNothingAside();
}

TEST_F(InterruptedRun, OnADiskThatFillsUpWhileItSavesIsInForceBesideTheFormerSet)
{
    ASSERT_EQ(RunOf(0), 1);
    const Files former = FilesOf(LastCalPath());
    for (const rlim_t bytes : {8U, 20U, 34U, 300U}) {  // the offsets, the gains, the bad detectors, the settings
        SCOPED_TRACE(bytes);
        InAnotherProcess([&] {
            op->AtNextBox([bytes](const FrontBox& box) {
                ASSERT_EQ(box.caption, "Bad pixel count");
                LimitFiles(bytes);
            });
            EXPECT_EQ(RunOf(1), 1);
            EXPECT_EQ(CalType, 2);
            EXPECT_THAT(BoxTexts(), Contains(HasSubstr(kFormerStand)));
            const bool offsetsFit = bytes >= 16;
            const bool gainsFit = bytes >= 32;
            EXPECT_EQ(testing::Matches(Contains(HasSubstr("Last.off")))(BoxTexts()), !offsetsFit);
            EXPECT_EQ(testing::Matches(Contains(HasSubstr("Last.gai")))(BoxTexts()), !gainsFit);
            EXPECT_EQ(CalSettings.CalFile, LastCalPath());
        });
        EXPECT_EQ(FilesOf(LastCalPath()), former);
        ExpectNothingAside();
    }
}

TEST_F(InterruptedRun, InADirectoryWithoutWritePermissionLeavesTheFormerSet)
{
    ASSERT_EQ(RunOf(0), 1);
    const Files former = FilesOf(LastCalPath());
    std::filesystem::permissions(DefaultDir, std::filesystem::perms(0555));
    InAnotherProcess([&] {
        BecomeAnOrdinaryUser();
        EXPECT_EQ(RunOf(1), 0);
        EXPECT_THAT(BoxTexts(), Contains("Failed to save file: " + LastCalPath()));
        EXPECT_EQ(CalType, 0);
    });
    std::filesystem::permissions(DefaultDir, std::filesystem::perms(0755));
    EXPECT_EQ(FilesOf(LastCalPath()), former);
    ExpectNothingAside();
}

TEST_F(InterruptedRun, AnUpdateThatCantWriteItsSetLeavesTheFormerOne)
{
    ASSERT_EQ(RunOf(0), 1);
    const Files former = FilesOf(LastCalPath());
    const auto update = [&](const std::function<void()>& before) {
        op->Do([before] {
            SetBoardFrames({kLow});
            before();
            OperatePress(DialogInFront(), kIdOk);
        });
        return OnePointCalibrate(hWndMain);
    };
    InAnotherProcess([&] {
        EXPECT_EQ(update([] { LimitFiles(8); }), 0);
        EXPECT_THAT(BoxTexts(), Contains("Failed to save file: " + LastCalPath()));
        EXPECT_EQ(CalType, 0);
    });
    EXPECT_EQ(FilesOf(LastCalPath()), former);
    InAnotherProcess([&] {
        op->AtNextBox([](const FrontBox& box) {
            ASSERT_EQ(box.caption, "Calibration results");
            LimitFiles(8);
        });
        EXPECT_EQ(update([] {}), 1);
        EXPECT_EQ(CalType, 2);
        EXPECT_THAT(BoxTexts(), Contains(HasSubstr("Last.off")));
        EXPECT_THAT(BoxTexts(), Contains(HasSubstr(kFormerStand)));
    });
    EXPECT_EQ(FilesOf(LastCalPath()), former);
    std::filesystem::permissions(DefaultDir, std::filesystem::perms(0555));
    InAnotherProcess([&] {
        BecomeAnOrdinaryUser();
        write::calSet.CalSettings.GainFile = InDirectory("Last.gai");
        EXPECT_EQ(update([] {}), 0);
        EXPECT_EQ(CalType, 0);
    });
    std::filesystem::permissions(DefaultDir, std::filesystem::perms(0755));
    EXPECT_EQ(FilesOf(LastCalPath()), former);
    ExpectNothingAside();
}

// --- Killed ---------------------------------------------------------------------------------------------------------

class KilledRun : public InterruptedRun {
  protected:
    using Clock = std::chrono::steady_clock;

    // The processes have the message loop's descriptor in common: one that was killed may have read the wake-up that
    // another waits for.
    static void WakeLoop()
    {
        const std::uint64_t once = 1;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            if (std::filesystem::read_symlink(entry, gone) != "anon_inode:[eventfd]") continue;
            const int descriptor = std::stoi(entry.path().filename().string());
            if (::write(descriptor, &once, sizeof once) != sizeof once) _exit(3);
        }
    }

    // From the box before the first file is written to the end of the run.
    std::int64_t SavingUs()
    {
        Clock::time_point start;
        op->AtNextBox([&start](const FrontBox&) { start = Clock::now(); });
        EXPECT_EQ(RunOf(0), 1);
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();
    }
    // Runs over and over in another process, which is killed that long after the first box of its first run.
    void Kill(int generation, std::int64_t afterUs)
    {
        std::array<int, 2> pipes{};
        ASSERT_EQ(pipe(pipes.data()), 0);
        const pid_t child = fork();
        if (child == 0) {
            WakeLoop();
            op->AtNextBox([&](const FrontBox&) {
                if (::write(pipes[1], "x", 1) != 1) _exit(1);
            });
            for (;; ++generation) {
                if (RunOf(generation) != 1) _exit(2);
            }
        }
        close(pipes[1]);
        char started = 0;
        EXPECT_EQ(read(pipes[0], &started, 1), 1);
        close(pipes[0]);
        usleep(static_cast<useconds_t>(afterUs));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "it came to an end of its own";
    }

    std::mt19937 random_{73};
};

TEST_F(KilledRun, LeavesTheSixFormerFilesOrTheSixNewOnes)
{
    constexpr int kRounds = 200;
    const int rounds = Rounds(kRounds);
    ASSERT_EQ(RunOf(1), 1);
    const Files odd = FilesOf(LastCalPath());
    const std::int64_t savingUs = SavingUs();
    const Files even = FilesOf(LastCalPath());
    for (std::size_t i = 0; i < even.size(); ++i) ASSERT_NE(even[i], odd[i]) << kSetExtensions[i];
    int underWay = 0;
    std::array<int, 2> seen{};
    for (int round = 0; round < rounds; ++round) {
        Kill(round, static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(savingUs * 5 / 4)));
        if (FileExists(InDirectory(".calibration.journal"))) ++underWay;
        ForgetProfile(IniFilePath);
        LoadCalibrationSettings();  // the next start
        const Files files = FilesOf(LastCalPath());
        for (std::size_t i = 0; i < files.size(); ++i) {
            const Files& whole = files[0] == odd[0] ? odd : even;
            ASSERT_EQ(files[i], whole[i]) << kSetExtensions[i] << " in round " << round;
        }
        ++seen.at(files == odd ? 1 : 0);
        ExpectNothingAside();
    }
    if (!AllRounds()) return;  // where a few kills fall is chance
    EXPECT_GT(underWay, kRounds / 4) << "kills that met a set half written";
    EXPECT_GT(seen[0], kRounds / 10);
    EXPECT_GT(seen[1], kRounds / 10);
}

}  // namespace
}  // namespace kelvo
