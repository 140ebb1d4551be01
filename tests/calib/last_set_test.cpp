// A set's files replaced as one thing: commits, failures, and processes that end in between.
#include "calib/last_set.h"

#include "calib/calibration_set.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/windows_write.h"
#include "support/full_disk.h"
#include "support/rounds.h"
#include "support/shown.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <set>

namespace kelvo {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr uid_t kNobody = 65534;

// Hundreds of processes are killed here: in memory, where there is such a place, nobody waits for a disk.
class InMemory {
  public:
    InMemory()
    {
        if (access("/dev/shm", W_OK | X_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
    }
};

class LastSet : private InMemory, public testing::Test {
  protected:
    void SetUp() override
    {
        SetDefaultDir(directory.Path());
        PutFile(IniFilePath, "[Setup]\nGeneration=settings\n");
    }

    std::string Last(std::string_view extension) { return directory / ("Last" + std::string(extension)); }

    void PutSet(const std::string& calPath, const std::string& generation)
    {
        for (const std::string_view extension : kSetExtensions) {
            PutFile(SetFile(calPath, extension), std::string(extension) + generation);
        }
    }
    static std::string Contents(const std::string& calPath)
    {
        std::string all;
        for (const std::string_view extension : kSetExtensions) {
            const std::string file = SetFile(calPath, extension);
            all += std::filesystem::exists(file) ? FileContents(file) + " " : "- ";
        }
        return all;
    }
    std::set<std::string> Names() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    // What a process does that doesn't come to its end: it is gone without its destructors.
    static void InAnotherProcess(const std::function<void()>& work)
    {
        const pid_t child = fork();
        if (child == 0) {
            work();
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status));
        ASSERT_EQ(WEXITSTATUS(status), 0);
    }

    static constexpr const char* kOldSet = ".gaiold .offold .noiold .dcmold .badold .calold ";

    TempDirectory directory;
};

TEST_F(LastSet, LiesBesideTheSettings)
{
    EXPECT_EQ(LastCalPath(), Last(".cal"));
    EXPECT_EQ(LastSetFile(".dcm"), Last(".dcm"));
    EXPECT_EQ(SetFile("c:\\sets\\warm.CAL", ".gai"), "c:\\sets\\warm.gai");
}

TEST_F(LastSet, WithoutACommitTheFormerFilesComeBack)
{
    PutSet(Last(".cal"), "old");
    {
        SetReplacement last(LastCalPath());
        ASSERT_EQ(last.Begin(), 1);
        PutFile(Last(".gai"), "new");
        PutFile(Last(".cal"), "new");
        std::filesystem::remove(Last(".noi"));
    }
    EXPECT_EQ(Contents(Last(".cal")), kOldSet);
    EXPECT_THAT(Names(), SizeIs(7)) << "nothing lies aside any more";
}

TEST_F(LastSet, ACommitKeepsTheNewFiles)
{
    PutSet(Last(".cal"), "old");
    SetReplacement last(LastCalPath());
    ASSERT_EQ(last.Begin(), 1);
    PutSet(Last(".cal"), "new");
    std::filesystem::remove(Last(".noi"));
    EXPECT_EQ(last.Commit(), 1);
    last.RollBack();
    EXPECT_EQ(Contents(Last(".cal")), ".gainew .offnew - .dcmnew .badnew .calnew ");
    EXPECT_THAT(Names(), SizeIs(6));
}

TEST_F(LastSet, AFileCutInPlaceComesBackTooBecauseACopyLiesAside)
{
    PutSet(Last(".cal"), "old");
    {
        SetReplacement last(LastCalPath());
        ASSERT_EQ(last.Begin(), 1);
        auto file = File::Open(Last(".noi"), FileMode::kCreate);
        ASSERT_TRUE(file);
    }
    EXPECT_EQ(FileContents(Last(".noi")), ".noiold");
}

TEST_F(LastSet, FilesThatWereNotThereGo)
{
    {
        SetReplacement last(LastCalPath());
        ASSERT_EQ(last.Begin(), 1);
        PutSet(Last(".cal"), "new");
    }
    EXPECT_THAT(Names(), ElementsAre("kelvo.ini"));
}

TEST_F(LastSet, AFormerSetInOtherLetterCaseIsTheSameOne)
{
    PutFile(directory / "LAST.GAI", "old");
    {
        SetReplacement last(LastCalPath());
        ASSERT_EQ(last.Begin(), 1);
        ASSERT_TRUE(ReplaceFile(Last(".gai"), "new"));
        EXPECT_EQ(FileContents(directory / "LAST.GAI"), "new");
    }
    EXPECT_EQ(FileContents(directory / "LAST.GAI"), "old");
}

TEST_F(LastSet, TheNextStartUndoesWhatAProcessLeftHalfDone)
{
    PutSet(Last(".cal"), "old");
    InAnotherProcess([&] {
        SetReplacement last(LastCalPath());
        if (!last.Begin()) _exit(1);
        PutFile(Last(".gai"), "new");
        PutFile(Last(".off"), "new");
        std::filesystem::remove(Last(".cal"));
        _exit(0);
    });
    EXPECT_EQ(FileContents(Last(".gai")), "new");
    LoadCalibrationSettings();
    EXPECT_EQ(Contents(Last(".cal")), kOldSet);
    EXPECT_THAT(Names(), SizeIs(7));
}

TEST_F(LastSet, AnUndoThatWasItselfBrokenOffIsFinished)
{
    PutSet(Last(".cal"), "old");
    InAnotherProcess([&] {
        SetReplacement last(LastCalPath());
        if (!last.Begin()) _exit(1);
        PutSet(Last(".cal"), "new");
        // The first three are back, then the process ends again.
        for (const char* extension : {".gai", ".off", ".noi"}) {
            std::filesystem::rename(directory / (".Last" + std::string(extension) + ".former"), Last(extension));
        }
        _exit(0);
    });
    EXPECT_EQ(FinishInterruptedReplacement(), 1);
    EXPECT_EQ(Contents(Last(".cal")), kOldSet);
}

TEST_F(LastSet, AnUndoBrokenOffAtItsLastStepKeepsWhatIsBack)
{
    PutSet(Last(".cal"), "old");
    InAnotherProcess([&] {
        SetReplacement last(LastCalPath());
        if (!last.Begin()) _exit(1);
        PutSet(Last(".cal"), "new");
        for (const std::string_view extension : kSetExtensions) {
            std::filesystem::rename(directory / (".Last" + std::string(extension) + ".former"), Last(extension));
        }
        _exit(0);
    });
    EXPECT_EQ(FinishInterruptedReplacement(), 1);
    EXPECT_EQ(Contents(Last(".cal")), kOldSet);
    EXPECT_THAT(Names(), SizeIs(7));
}

TEST_F(LastSet, AJournalThatCantBeReadNowIsFollowedOnceItCan)
{
    PutSet(Last(".cal"), "old");
    InAnotherProcess([&] {
        SetReplacement last(LastCalPath());
        if (!last.Begin()) _exit(1);
        PutSet(Last(".cal"), "new");
        _exit(0);
    });
    SetFault("disk read", true);
    EXPECT_EQ(FinishInterruptedReplacement(), 0);
    EXPECT_EQ(SetReplacement(LastCalPath()).Begin(), 0);
    ClearFaults();
    EXPECT_EQ(FinishInterruptedReplacement(), 1);
    EXPECT_EQ(Contents(Last(".cal")), kOldSet);
    EXPECT_THAT(Names(), SizeIs(7));
    ASSERT_THAT(BoxesShown(), SizeIs(1));
    EXPECT_THAT(BoxesShown()[0].text, StartsWith("The files of this calibration couldn't be put back:\n"));
}

TEST_F(LastSet, AJournalOfAnyBytesHarmsNothing)
{
    PutSet(Last(".cal"), "old");
    for (const std::string& journal :
         {std::string(), std::string("replacing .gai"), std::string("nonsense\n") + Last(".cal"),
          std::string("\0\xFF\n\0", 4), std::string(70000, 'x'), std::string("copying\n/no/such/place/set.cal")}) {
        PutFile(directory / ".calibration.journal", journal);
        EXPECT_EQ(FinishInterruptedReplacement(), 1);
        EXPECT_EQ(Contents(Last(".cal")), kOldSet);
        EXPECT_THAT(Names(), SizeIs(7));
    }
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(LastSet, TheSettingsAreCopiedWithWhatIsPendingForThem)
{
    WritePrivateProfileString("Setup", "Generation", "pending", IniFilePath);
    EXPECT_EQ(CopySettingsTo(LastCalPath()), 1);
    EXPECT_EQ(FileContents(Last(".cal")), "[Setup]\nGeneration=pending\n");
    EXPECT_EQ(GetPrivateProfileString("Setup", "Generation", "", LastCalPath()), "pending");
}

// Bytes beyond the limit don't fit on this disk.
TEST_F(LastSet, AFullDiskLeavesTheFormerFiles)
{
    PutSet(Last(".cal"), "old");
    PutFile(Last(".gai"), std::string(5000, 'g'));
    InAnotherProcess([] {
        LimitFiles(4096);
        SetReplacement last(LastCalPath());
        _exit(last.Begin() == 0 ? 0 : 1);
    });
    EXPECT_EQ(FileContents(Last(".gai")), std::string(5000, 'g'));
    EXPECT_THAT(Names(), SizeIs(7)) << "what was copied before is gone";
}

TEST_F(LastSet, ADiskThatFillsUpInTheMiddleBringsTheFormerFilesBack)
{
    PutSet(Last(".cal"), "old");
    InAnotherProcess([&] {
        SetReplacement last(LastCalPath());
        if (!last.Begin()) _exit(1);
        LimitFiles(4096);
        if (!ReplaceFile(Last(".gai"), "new")) _exit(2);
        if (ReplaceFile(Last(".off"), std::string(5000, 'o'))) _exit(3);
        last.RollBack();
        _exit(0);
    });
    EXPECT_EQ(Contents(Last(".cal")), kOldSet);
    EXPECT_THAT(Names(), SizeIs(7));
}

TEST_F(LastSet, ADirectoryWithoutWritePermissionChangesNothing)
{
    PutSet(Last(".cal"), "old");
    std::filesystem::permissions(directory.Path(), std::filesystem::perms(0555));
    InAnotherProcess([] {
        if (geteuid() == 0 && setuid(kNobody) != 0) _exit(1);
        SetReplacement last(LastCalPath());
        _exit(last.Begin() == 0 ? 0 : 2);
    });
    std::filesystem::permissions(directory.Path(), std::filesystem::perms(0755));
    EXPECT_EQ(Contents(Last(".cal")), kOldSet);
    EXPECT_THAT(Names(), SizeIs(7));
}

TEST_F(LastSet, FilesThatCantBePutBackAreToldAndWaitForTheNextStart)
{
    PutSet(Last(".cal"), "old");
    InAnotherProcess([&] {
        SetReplacement last(LastCalPath());
        if (!last.Begin()) _exit(1);
        PutSet(Last(".cal"), "new");
        _exit(0);
    });
    std::filesystem::permissions(directory.Path(), std::filesystem::perms(0555));
    InAnotherProcess([] {
        if (geteuid() == 0 && setuid(kNobody) != 0) _exit(1);
        if (FinishInterruptedReplacement() != 0) _exit(2);
        const auto boxes = BoxesShown();
        const bool told = boxes.size() == 1 && boxes[0].caption == "Kelvo File Error!" &&
                          boxes[0].text == "The files of this calibration couldn't be put back:\n" + LastCalPath();
        SetReplacement next(LastCalPath());
        _exit(told && next.Begin() == 0 ? 0 : 3);
    });
    std::filesystem::permissions(directory.Path(), std::filesystem::perms(0755));
    EXPECT_EQ(FinishInterruptedReplacement(), 1);
    EXPECT_EQ(Contents(Last(".cal")), kOldSet);
}

TEST_F(LastSet, OnADiskThatIsAwayWaitsForItsReturn)
{
    std::filesystem::create_directory(directory / "stick");
    const std::string kept = directory / "stick/kept.cal";
    PutSet(kept, "old");
    InAnotherProcess([&] {
        SetReplacement set(kept);
        if (!set.Begin()) _exit(1);
        PutSet(kept, "new");
        _exit(0);
    });
    std::filesystem::rename(directory / "stick", directory / "away");
    EXPECT_EQ(FinishInterruptedReplacement(), 0);
    ASSERT_THAT(BoxesShown(), SizeIs(1));
    EXPECT_EQ(BoxesShown()[0].text, "The files of this calibration couldn't be put back:\n" + kept);
    std::filesystem::rename(directory / "away", directory / "stick");
    EXPECT_EQ(FinishInterruptedReplacement(), 1);
    EXPECT_EQ(Contents(kept), kOldSet);
}

TEST_F(LastSet, OnADiskThatStaysAwayDoesNotKeepOthersFromBeingMade)
{
    std::filesystem::create_directory(directory / "stick");
    const std::string kept = directory / "stick/kept.cal";
    PutSet(kept, "old");
    InAnotherProcess([&] {
        SetReplacement set(kept);
        if (!set.Begin()) _exit(1);
        PutSet(kept, "new");
        _exit(0);
    });
    std::filesystem::rename(directory / "stick", directory / "away");
    PutSet(Last(".cal"), "old");
    SetReplacement last(LastCalPath());
    EXPECT_EQ(last.Begin(), 1);
    PutSet(Last(".cal"), "new");
    EXPECT_EQ(last.Commit(), 1);
    EXPECT_EQ(Contents(Last(".cal")), ".gainew .offnew .noinew .dcmnew .badnew .calnew ");
    EXPECT_EQ(FileContents(directory / "away/.kept.gai.former"), ".gaiold");
}

// --- Killed at any moment -------------------------------------------------------------------------------------------

class KilledProcess : public LastSet {
  protected:
    // Runs work over and over in another process and kills it after a time of up to twice what one run takes.
    void Kill(const std::function<void()>& work)
    {
        const pid_t child = fork();
        if (child == 0) {
            for (;;) work();
        }
        usleep(static_cast<useconds_t>(random_() % (2 * runUs_ + 1)));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "it came to an end of its own";
        if (std::filesystem::exists(directory / ".calibration.journal")) ++hits_;
    }

    void Measure(const std::function<void()>& work)
    {
        const auto start = std::chrono::steady_clock::now();
        InAnotherProcess(work);
        const auto took = std::chrono::steady_clock::now() - start;
        runUs_ = static_cast<unsigned>(std::chrono::duration_cast<std::chrono::microseconds>(took).count());
    }

    void ExpectNothingAside()
    {
        for (const std::string& name : Names()) {
            EXPECT_THAT(name, testing::Not(testing::EndsWith(".former")));
            EXPECT_NE(name, ".calibration.journal");
        }
    }

    static constexpr int kRounds = 200;
    const int rounds_ = Rounds(kRounds);
    int hits_ = 0;  // kills that met a replacement under way

  private:
    std::mt19937 random_{20};
    unsigned runUs_ = 1000;
};

std::string GenerationIn(const std::string& contents)
{
    const std::size_t place = contents.find("Generation=");
    return place == std::string::npos ? contents : contents.substr(place + 11, contents.find('\n', place) - place - 11);
}

// The generation of a whole set; "none" where no file of it is there, "mixed" where they don't belong together.
std::string WholeGeneration(const std::string& calPath)
{
    std::set<std::string> generations;
    for (const std::string_view extension : kSetExtensions) {
        const std::string file = SetFile(calPath, extension);
        generations.insert(std::filesystem::exists(file) ? GenerationIn(FileContents(file)) : "none");
    }
    return generations.size() == 1 ? *generations.begin() : "mixed";
}

void PutGeneration(const std::string& calPath, const std::string& generation)
{
    for (const std::string_view extension : kSetExtensions) PutFile(SetFile(calPath, extension), generation);
    PutFile(calPath, "[Setup]\nGeneration=" + generation + "\n");
}

TEST_F(KilledProcess, FindsTheFormerLastSetOrTheNewOne)
{
    PutGeneration(LastCalPath(), "0");
    int generation = 0;
    const auto calibrate = [&] {
        const std::string text = Format("%d", ++generation);
        SetReplacement last(LastCalPath());
        if (!last.Begin()) _exit(1);
        for (const char* extension : {".noi", ".off", ".bad", ".gai", ".dcm"}) {
            if (!ReplaceFile(LastSetFile(extension), text)) _exit(1);
        }
        WritePrivateProfileString("Setup", "Generation", text, IniFilePath);
        if (!CopySettingsTo(LastCalPath()) || !last.Commit()) _exit(1);
    };
    Measure(calibrate);
    std::set<std::string> seen;
    for (int round = 0; round < rounds_; ++round) {
        generation = 1000 * round;
        Kill(calibrate);
        ForgetProfile(IniFilePath);
        LoadCalibrationSettings();
        const std::string whole = WholeGeneration(LastCalPath());
        ASSERT_THAT(whole, testing::Not(AnyOf("none", "mixed")))
            << "round " << round << ": " << Contents(LastCalPath());
        seen.insert(whole);
        ExpectNothingAside();
    }
    if (!AllRounds()) return;  // where a few kills fall is chance
    EXPECT_GT(hits_, kRounds / 10);
    EXPECT_GT(seen.size(), 10U) << "some came to their end before";
}

TEST_F(KilledProcess, FindsASetSavedAsWholeOrNotAtAll)
{
    const std::string target = directory / "kept.cal";
    PutGeneration(directory / "one.cal", "1");
    PutGeneration(directory / "two.cal", "2");
    int source = 0;
    const auto save = [&] {
        source = 3 - std::max(source, 1);
        const std::string from = directory / (source == 1 ? "one.cal" : "two.cal");
        write::cal.CalType = 2;
        write::calSet.CalSettings.CalFile = from;
        write::calSet.CalSettings.GainFile = SetFile(from, ".gai");
        write::calSet.CalSettings.OffsetFile = SetFile(from, ".off");
        write::calSet.CalSettings.DecomFile = SetFile(from, ".dcm");
        write::calSet.CalSettings.BadDetFile = SetFile(from, ".bad");
        if (!SaveCalibrationAs(target)) _exit(1);
    };
    Measure(save);
    std::set<std::string> seen;
    for (int round = 0; round < rounds_; ++round) {
        const bool fresh = round % 2 == 0;
        if (fresh) {
            for (const std::string_view extension : kSetExtensions) std::filesystem::remove(SetFile(target, extension));
        } else {
            PutGeneration(target, "former");
        }
        Kill(save);
        // Whatever the disk holds, no .cal stands with lists of another set.
        if (std::filesystem::exists(target)) {
            ASSERT_NE(WholeGeneration(target), "mixed") << "round " << round;
        }
        LoadCalibrationSettings();
        const std::string whole = WholeGeneration(target);
        ASSERT_NE(whole, "mixed") << "round " << round << ": " << Contents(target);
        if (!fresh) {
            ASSERT_NE(whole, "none") << "round " << round;
        }
        seen.insert(whole);
        ExpectNothingAside();
    }
    if (!AllRounds()) return;  // where a few kills fall is chance
    EXPECT_GT(hits_, kRounds / 10);
    EXPECT_THAT(seen, testing::IsSupersetOf({"1", "2"}));
}

}  // namespace
}  // namespace kelvo
